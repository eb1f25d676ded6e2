// SPDX-License-Identifier: MIT
// The table of commands and the reading of their words; raw writes for changes that no method
// makes.
#include "multiprocess/api_commands.h"

#include <cstdio>
#include <functional>
#include <map>
#include <sstream>

namespace kora4::test {
namespace {

using Words = std::istringstream;

template <typename Value>
Value Next(Words& words) {
    Value value{};
    words >> value;
    return value;
}

KORA4APITechnology NextTechnology(Words& words) {
    return static_cast<KORA4APITechnology>(Next<int>(words));
}

std::wstring NextName(Words& words) {
    const std::string name = Next<std::string>(words);
    return std::wstring(name.begin(), name.end());
}

HRESULT SetSimplePatchValue(IVeltoKORA4API& api, Words& words) {
    KORA4PatchValueUnion value{};
    value.m_technology = NextTechnology(words);
    if (value.m_technology == eVolumeLeveler || value.m_technology == eIntelligentEQ)
        value.m_values.m_volumeSlider = Next<ULONG>(words);
    else
        value.m_values.m_enhancementSlider = Next<float>(words);
    return api.SetSimplePatchValue(&value);
}

HRESULT SetGraphicEQData(IVeltoKORA4API& api, Words& words) {
    GraphicEQData data{};
    data.m_bands = Next<ULONG>(words);
    for (ULONG band = 0; band < data.m_bands; ++band)
        data.m_freq[band] = static_cast<float>(100 * (band + 1));
    data.m_gain[0] = Next<float>(words);
    return api.SetGraphicEQData(&data);
}

using ApiCommand = std::function<HRESULT(IVeltoKORA4API&, Words&)>;

const std::map<std::string, ApiCommand>& ApiCommands() {
    static const std::map<std::string, ApiCommand> commands = {
        {"Initialize", [](auto& api, auto&) { return api.Initialize(); }},
        {"SetActiveProfile",
         [](auto& api, auto& words) { return api.SetActiveProfile(Next<LONG>(words)); }},
        {"RevertActiveProfile", [](auto& api, auto&) { return api.RevertActiveProfile(); }},
        {"SetDemoProfileAndEnable",
         [](auto& api, auto& words) {
             const LONG profile = Next<LONG>(words);
             return api.SetDemoProfileAndEnable(profile, Next<BOOL>(words));
         }},
        {"RevertFromDemoMode", [](auto& api, auto&) { return api.RevertFromDemoMode(); }},
        {"ForceRevertFromDemoMode",
         [](auto& api, auto&) { return api.ForceRevertFromDemoMode(); }},
        {"SetVeltoEnable",
         [](auto& api, auto& words) { return api.SetVeltoEnable(Next<BOOL>(words)); }},
        {"ToggleVeltoEnable",
         [](auto& api, auto&) {
             BOOL enable = FALSE;
             return api.ToggleVeltoEnable(&enable);
         }},
        {"SetVisualizationSamplingPeriod",
         [](auto& api, auto& words) {
             return api.SetVisualizationSamplingPeriod(Next<ULONG>(words));
         }},
        {"SetTechnologyOnElseOff",
         [](auto& api, auto& words) {
             const KORA4APITechnology technology = NextTechnology(words);
             return api.SetTechnologyOnElseOff(technology, Next<BOOL>(words));
         }},
        {"SetSimplePatchValue", SetSimplePatchValue},
        {"SetGraphicEQData", SetGraphicEQData},
        {"CreateCustomProfile",
         [](auto& api, auto& words) {
             const LONG profile = Next<LONG>(words);
             return api.CreateCustomProfile(profile, NextName(words).c_str());
         }},
        {"SetCustomProfileName",
         [](auto& api, auto& words) {
             const LONG profile = Next<LONG>(words);
             return api.SetCustomProfileName(profile, NextName(words).c_str());
         }},
        {"DeleteCustomProfile",
         [](auto& api, auto& words) { return api.DeleteCustomProfile(Next<LONG>(words)); }},
    };
    return commands;
}

void WriteRawValue(std::uint32_t technology, std::uint32_t profile, std::uint32_t value) {
    const auto raw = static_cast<RawTechnology>(technology);
    const RawTransaction transaction;
    wchar_t text[32];
    switch (raw) {
        case RawTechnology::eVolume:
            RawStore::SetNumber(cStatic, PatchName(raw, profile, 3), value);
            break;
        case RawTechnology::eDynamicEQ:
            RawStore::SetNumber(cStatic, PatchName(raw, profile, 5), value);
            break;
        case RawTechnology::eStandardEQ:
            std::swprintf(text, 32, L"0100,0001,%04x", value * 256);
            RawStore::SetText(cStatic, PatchName(raw, profile, 3), L"0001,0001,0064");
            RawStore::SetText(cStatic, PatchName(raw, profile, 4), text);
            break;
        default:
            std::swprintf(text, 32, L"%u.000000", value);
            RawStore::SetText(cStatic, PatchName(raw, profile, 3), text);
            break;
    }
    // Readers look at a value once they see this.
    RawStore::Bump(TriggerName(raw));
}

}  // namespace

std::string RandomCommand(std::mt19937& random) {
    const auto below = [&](unsigned bound) { return std::to_string(random() % bound); };
    switch (random() % 11) {
        case 0:
            return "SetActiveProfile " + below(9);
        case 1:
            return "SetDemoProfileAndEnable 24" + below(3) + " " + below(2);
        case 2:
            return "RevertFromDemoMode";
        case 3:
            return "RevertActiveProfile";
        case 4:
            return "CreateCustomProfile " + std::to_string(3 + random() % 6) + " new";
        case 5:
            return "SetCustomProfileName " + std::to_string(3 + random() % 6) + " other";
        case 6:
            return "DeleteCustomProfile " + std::to_string(3 + random() % 6);
        case 7:
            return "SetGraphicEQData " + std::to_string(1 + random() % 40) + " " + below(12);
        case 8:
            return "SetSimplePatchValue " + below(6) + " " + below(2);
        case 9:
            return "SetTechnologyOnElseOff " + below(6) + " " + below(2);
        default:
            return "SetVeltoEnable " + below(2);
    }
}

HRESULT RunApiCommand(IVeltoKORA4API& api, const std::string& line) {
    Words words(line);
    const auto found = ApiCommands().find(Next<std::string>(words));
    return found == ApiCommands().end() ? E_NOTIMPL : found->second(api, words);
}

bool RawWriter::Run(const std::string& line) {
    Words words(line);
    const std::string command = Next<std::string>(words);
    if (command == "begin") {
        m_transaction = std::make_unique<RawTransaction>();
    } else if (command == "end") {
        m_transaction.reset();
    } else if (command == "profile") {
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), Next<DWORD>(words));
    } else if (command == "enable") {
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), Next<DWORD>(words));
    } else if (command == "table") {
        RawStore::Bump(SettingName(cTablePid));
    } else if (command == "flag") {
        const auto technology = static_cast<RawTechnology>(Next<std::uint32_t>(words));
        const auto profile = Next<std::uint32_t>(words);
        RawStore::SetNumber(cDynamic, PatchName(technology, profile, 0), Next<DWORD>(words));
    } else if (command == "value") {
        const auto technology = Next<std::uint32_t>(words);
        const auto profile = Next<std::uint32_t>(words);
        WriteRawValue(technology, profile, Next<std::uint32_t>(words));
    } else {
        return false;
    }
    return true;
}

namespace {

constexpr const char* cTechnologyNames[] = {"eVolumeLeveler", "eGraphicEQ",
                                            "eIntelligentEQ", "eDialogEnhancer",
                                            "eVirtualizerHP", "eVirtualizerSpkr"};

}  // namespace

std::string ToldValue(KORA4APITechnology technology, std::uint32_t value) {
    const std::string text = std::to_string(value);
    return technology == eGraphicEQ ? "OnGraphicEQChange(1 bands, first gain " + text + ")"
                                    : std::string("OnSimplePatchValueChange(") +
                                          cTechnologyNames[technology] + ", " + text + ")";
}

std::string ToldFlag(KORA4APITechnology technology, bool flag) {
    return std::string("OnTechnologyOnElseOffChange(") + cTechnologyNames[technology] +
           (flag ? ", 1)" : ", 0)");
}

}  // namespace kora4::test
