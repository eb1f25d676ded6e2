// SPDX-License-Identifier: MIT
// The general settings of the store, which belong to no technology: where each is stored, what
// it means and who uses it.
#pragma once

#include <cstdint>
#include <string_view>

#include "contract/defaults.h"
#include "contract/profiles.h"
#include "contract/property_key.h"
#include "contract/trace_flags.h"
#include "contract/value_kind.h"

namespace kora4::contract {

// Whom a setting belongs to, for programs that save or move the settings of a machine.
enum class SettingRole {
    eUser,     // what the user chose
    eMachine,  // what the installer, the engine or support put there
    ePassing,  // no setting: a counter, a saved state, the engine's levels
};

// One setting. The documents and kora4ctl use these texts.
struct GeneralSetting {
    const char* name;
    PropertyKey key;
    KORA4KeySet keySet;
    ValueKind kind;
    SettingRole role;
    std::uint32_t defaultNumber;  // of switches and numbers; texts and blobs have none
    const char* meaning;
    const char* writtenBy;  // methods and people; "-" when nobody does
    const char* readBy;
    // Whether each client loads the (static) setting at its start and keeps it, although no
    // operation of the library depends on it.
    bool isKept = false;

    // Whether an absent value counts as a number; an absent text or blob has no value.
    constexpr bool HasDefault() const {
        return kind == ValueKind::eSwitch || kind == ValueKind::eNumber;
    }
};

namespace detail {

// Who writes a setting that is only carried.
inline constexpr char cNobody[] = "-";
inline constexpr char cInstaller[] = "the installer";
inline constexpr char cClientsAndEngine[] = "clients, engine";
inline constexpr char cCarried[] = "carried; nothing depends on it yet";

// Values that every client loads, but that nothing writes or uses yet.
constexpr GeneralSetting Carried(const char* name, std::uint32_t pid, ValueKind kind,
                                 std::uint32_t defaultNumber, const char* meaning = cCarried) {
    return {name,
            pkey::Setting(pid),
            eKeySetStatic,
            kind,
            SettingRole::eMachine,
            defaultNumber,
            meaning,
            cNobody,
            cClientsAndEngine,
            true};
}

// The command line of a companion application.
constexpr GeneralSetting Command(const char* name, std::uint32_t pid, const char* meaning) {
    return {
        name,    pkey::Setting(pid), eKeySetApp,  ValueKind::eText, SettingRole::eMachine, 0,
        meaning, cInstaller,         "Initialize"};
}

}  // namespace detail

// In the order of the property ids; the engine mask, which has a GUID of its own, is last.
inline constexpr GeneralSetting cGeneralSettings[] = {
    {"enable", pkey::Setting(pkey::cMasterEnablePid), eKeySetDynamic, ValueKind::eSwitch,
     SettingRole::eUser, 1, "master enable: all processing on or off",
     "the enable methods, demo entry and exit", detail::cClientsAndEngine},
    {"profile", pkey::Setting(pkey::cActivePresetPid), eKeySetDynamic, ValueKind::eNumber,
     SettingRole::eUser, cMovieProfile, "the active profile",
     "SetActiveProfile, demo entry and exit", detail::cClientsAndEngine},
    {"sampling-period", pkey::Setting(pkey::cSamplingPeriodPid), eKeySetStatic,
     ValueKind::eNumber, SettingRole::eUser, defaults::cSamplingPeriod,
     "how often a display should read the levels, in milliseconds",
     "SetVisualizationSamplingPeriod", detail::cClientsAndEngine},
    {"levels", pkey::Setting(pkey::cVisualizationDataPid), eKeySetStatic, ValueKind::eBlob,
     SettingRole::ePassing, 0, "the engine's levels", "the engine", "GetVisualizationData"},
    {"table-counter", pkey::Setting(pkey::cProfileTableCounterPid), eKeySetDynamic,
     ValueKind::eNumber, SettingRole::ePassing, 0,
     "counts the changes of the table of custom profiles", "create, rename, delete", "clients"},
    {"dynamic-switch", pkey::Setting(pkey::cDynamicSwitchPid), eKeySetDynamic,
     ValueKind::eSwitch, SettingRole::eMachine, 1,
     "carried and kept as it is; nothing depends on it yet", detail::cNobody,
     detail::cClientsAndEngine},
    {"saved-enable", pkey::Setting(pkey::cSavedEnablePid), eKeySetStatic, ValueKind::eSwitch,
     SettingRole::ePassing, 1, "the master enable before the demo", "demo entry", "demo exit"},
    {"saved-profile", pkey::Setting(pkey::cSavedProfilePid), eKeySetStatic, ValueKind::eNumber,
     SettingRole::ePassing, cMovieProfile, "the active profile before the demo", "demo entry",
     "demo exit"},
    detail::Carried("refresh-1", pkey::cFirstRefreshSwitchPid, ValueKind::eSwitch, 0,
                    "first refresh switch, ordinary profiles; nothing depends on it yet"),
    detail::Carried("refresh-1-demo", pkey::cFirstRefreshSwitchDemoPid, ValueKind::eSwitch, 0,
                    "first refresh switch, demo profiles; nothing depends on it yet"),
    detail::Carried("refresh-2", pkey::cSecondRefreshSwitchPid, ValueKind::eSwitch, 0,
                    "second refresh switch, ordinary profiles; nothing depends on it yet"),
    detail::Carried("refresh-2-demo", pkey::cSecondRefreshSwitchDemoPid, ValueKind::eSwitch, 0,
                    "second refresh switch, demo profiles; nothing depends on it yet"),
    detail::Carried("switch-54", pkey::cStaticSwitch54Pid, ValueKind::eSwitch, 0),
    detail::Carried("switch-55", pkey::cStaticSwitch55Pid, ValueKind::eSwitch, 0),
    detail::Carried("switch-56", pkey::cStaticSwitch56Pid, ValueKind::eSwitch, 0),
    detail::Carried("number-57", pkey::cStaticNumber57Pid, ValueKind::eNumber,
                    defaults::cStaticNumber57),
    detail::Carried("number-58", pkey::cStaticNumber58Pid, ValueKind::eNumber, 0),
    detail::Carried("switch-59", pkey::cStaticSwitch59Pid, ValueKind::eSwitch, 0),
    detail::Command("profile-editor-command", pkey::cProfileEditorCommandPid,
                    "command line of the profile editor"),
    detail::Command("profile-selector-command", pkey::cProfileSelectorCommandPid,
                    "command line of the profile selector"),
    detail::Command("demo-app-command", pkey::cDemoAppCommandPid,
                    "command line of the demo application"),
    {"trace-flags", pkey::Setting(pkey::cTraceFlagsPid), eKeySetStatic, ValueKind::eNumber,
     SettingRole::eMachine, trace::cDefaultFlags,
     "the trace word; the default is the word a process starts with", "support", "Initialize"},
    {"engine-mask",
     {pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid},
     eKeySetStatic,
     ValueKind::eNumber,
     SettingRole::eMachine,
     0,
     "which technologies the installed engine supports: bit n is number n + 1 of the engine",
     detail::cInstaller,
     "Initialize"},
};

// The row of a property id of the settings' own family, which must have one.
consteval GeneralSetting GeneralSettingOf(std::uint32_t pid) {
    const GeneralSetting* pRow = cGeneralSettings;
    while (!(pRow->key == pkey::Setting(pid)))
        ++pRow;  // past the last row the compilation ends
    return *pRow;
}

// Null if there is no such setting.
constexpr const GeneralSetting* FindGeneralSetting(std::string_view name) {
    for (const GeneralSetting& setting : cGeneralSettings)
        if (name == setting.name)
            return &setting;
    return nullptr;
}

constexpr const GeneralSetting* FindGeneralSetting(const PropertyKey& key) {
    for (const GeneralSetting& setting : cGeneralSettings)
        if (key == setting.key)
            return &setting;
    return nullptr;
}

}  // namespace kora4::contract
