// SPDX-License-Identifier: MIT
// The methods of the API, by the identifiers of the settings table.
#include "kora4ctl/access/api_settings.h"

#include <algorithm>
#include <iterator>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/profile_names.h"
#include "kora4ctl/equalizer/equalizer.h"
#include "kora4ctl/registration/library_file.h"

namespace kora4::tools {

namespace {

// None when there is no such value.
using Answer = std::optional<Value>;
using Profile = std::optional<std::uint32_t>;

KORA4APITechnology ApiTechnologyOf(const Setting& setting) {
    return static_cast<KORA4APITechnology>(WordOf(setting.technology).apiNumber.value());
}

Answer ReadProfile(const Setting&, Profile, IVeltoKORA4API& api) {
    LONG profile = 0;
    Check(api.GetActiveProfile(&profile), "Reading the active profile");
    return static_cast<std::uint32_t>(profile);
}

void WriteProfile(const Setting&, Profile, const Value& value, IVeltoKORA4API& api) {
    const std::uint32_t profile = std::get<std::uint32_t>(value);
    Check(api.SetActiveProfile(static_cast<LONG>(profile)),
          "Making " + ProfileName(profile) + " the active profile");
}

Answer ReadEnable(const Setting&, Profile, IVeltoKORA4API& api) {
    BOOL isOn = FALSE;
    Check(api.GetVeltoEnable(&isOn), "Reading the master enable");
    return isOn != FALSE;
}

void WriteEnable(const Setting&, Profile, const Value& value, IVeltoKORA4API& api) {
    Check(api.SetVeltoEnable(std::get<bool>(value)), "Switching the master enable");
}

Answer ReadPeriod(const Setting&, Profile, IVeltoKORA4API& api) {
    ULONG period = 0;
    Check(api.GetVisualizationSamplingPeriod(&period), "Reading the sampling period");
    return static_cast<std::uint32_t>(period);
}

void WritePeriod(const Setting&, Profile, const Value& value, IVeltoKORA4API& api) {
    Check(api.SetVisualizationSamplingPeriod(std::get<std::uint32_t>(value)),
          "Setting the sampling period");
}

Answer ReadEngineMask(const Setting&, Profile, IVeltoKORA4API& api) {
    ULONG mask = 0;
    Check(api.GetTechnologyMasterEnables(&mask), "Reading the engine mask");
    return static_cast<std::uint32_t>(mask);
}

Answer ReadVersion(const Setting&, Profile, IVeltoKORA4API& api) {
    ULONG numbers[4] = {};
    Check(api.GetVeltoKORA4Version(&numbers[0], &numbers[1], &numbers[2], &numbers[3]),
          "Reading the version");
    return VersionText(numbers);
}

Answer ReadSwitch(const Setting& setting, Profile, IVeltoKORA4API& api) {
    BOOL isOn = FALSE;
    Check(api.GetTechnologyOnElseOff(ApiTechnologyOf(setting), &isOn),
          "Reading " + setting.name);
    return isOn != FALSE;
}

void WriteSwitch(const Setting& setting, Profile, const Value& value, IVeltoKORA4API& api) {
    Check(api.SetTechnologyOnElseOff(ApiTechnologyOf(setting), std::get<bool>(value)),
          "Setting " + setting.name);
}

// The members of the union lie on top of one another: a number or a float.
Answer ReadPatch(const Setting& setting, Profile, IVeltoKORA4API& api) {
    KORA4PatchValueUnion patch = {};
    patch.m_technology = ApiTechnologyOf(setting);
    Check(api.GetSimplePatchValue(&patch), "Reading " + setting.name);
    if (setting.kind == Kind::eFloat)
        return patch.m_values.m_enhancementSlider;
    return static_cast<std::uint32_t>(patch.m_values.m_volumeSlider);
}

void WritePatch(const Setting& setting, Profile, const Value& value, IVeltoKORA4API& api) {
    KORA4PatchValueUnion patch = {};
    patch.m_technology = ApiTechnologyOf(setting);
    if (const float* amount = std::get_if<float>(&value))
        patch.m_values.m_enhancementSlider = *amount;
    else
        patch.m_values.m_volumeSlider = std::get<std::uint32_t>(value);
    Check(api.SetSimplePatchValue(&patch), "Setting " + setting.name);
}

GraphicEQData ReadEq(const Setting& setting, IVeltoKORA4API& api) {
    GraphicEQData eq = {};
    Check(api.GetGraphicEQData(&eq), "Reading " + setting.name);
    return eq;
}

Answer ReadFrequencies(const Setting& setting, Profile, IVeltoKORA4API& api) {
    const GraphicEQData eq = ReadEq(setting, api);
    return std::vector<float>(eq.m_freq, eq.m_freq + eq.m_bands);
}

Answer ReadGains(const Setting& setting, Profile, IVeltoKORA4API& api) {
    const GraphicEQData eq = ReadEq(setting, api);
    return std::vector<float>(eq.m_gain, eq.m_gain + eq.m_bands);
}

void WriteFrequencies(const Setting& setting, Profile, const Value& value,
                      IVeltoKORA4API& api) {
    const auto& wanted = std::get<std::vector<float>>(value);
    // The library would store other frequencies as something else.
    for (const float frequency : wanted) {
        if (frequency < 1 || frequency > cHighestFrequency)
            throw Failure(ExitCode::eBadInput, Decimal(frequency) + " is not a value for '" +
                                                   setting.name + "': bands lie from " +
                                                   FrequencyRange() + ".");
    }
    GraphicEQData eq = ReadEq(setting, api);
    eq.m_bands = static_cast<ULONG>(std::min(wanted.size(), std::size(eq.m_freq)));
    std::copy_n(wanted.begin(), eq.m_bands, eq.m_freq);
    Check(api.SetGraphicEQData(&eq), "Setting " + setting.name);
}

void WriteGains(const Setting& setting, Profile, const Value& value, IVeltoKORA4API& api) {
    const auto& wanted = std::get<std::vector<float>>(value);
    GraphicEQData eq = ReadEq(setting, api);
    if (wanted.size() != eq.m_bands)
        throw Failure(ExitCode::eBadInput,
                      "There are " + std::to_string(eq.m_bands) + " bands, and " +
                          std::to_string(wanted.size()) + " gains were given.",
                      "Change the frequencies first, or use 'kora4ctl eq import'.");
    std::copy(wanted.begin(), wanted.end(), eq.m_gain);
    Check(api.SetGraphicEQData(&eq), "Setting " + setting.name);
}

std::uint32_t ProfileOf(Profile named, IVeltoKORA4API& api) {
    LONG active = 0;
    if (!named)
        Check(api.GetActiveProfile(&active), "Reading the active profile");
    return named ? *named : static_cast<std::uint32_t>(active);
}

Answer ReadName(const Setting&, Profile named, IVeltoKORA4API& api) {
    const std::uint32_t profile = ProfileOf(named, api);
    return IsCustomProfile(profile) ? ReadProfileNames(api)[profile] : std::nullopt;
}

void WriteName(const Setting&, Profile named, const Value& value, IVeltoKORA4API& api) {
    const std::uint32_t profile = ProfileOf(named, api);
    RefuseUnlessCustom(profile);
    RenameProfile(profile, std::get<std::string>(value), api);
}

using ReadText = HRESULT (STDMETHODCALLTYPE IVeltoKORA4API::*)(LPWSTR*);

template <ReadText method>
Answer ReadCommand(const Setting& setting, Profile, IVeltoKORA4API& api) {
    LPWSTR text = nullptr;
    Check((api.*method)(&text), "Reading " + setting.name);
    return TakeText(text);
}

// By methods; null where there are none that write.
struct Row {
    ApiMethods methods;
    Answer (*read)(const Setting&, Profile, IVeltoKORA4API&);
    void (*write)(const Setting&, Profile, const Value&, IVeltoKORA4API&) = nullptr;
};
constexpr Row cRows[] = {
    {ApiMethods::eActiveProfile, ReadProfile, WriteProfile},
    {ApiMethods::eEnable, ReadEnable, WriteEnable},
    {ApiMethods::eSamplingPeriod, ReadPeriod, WritePeriod},
    {ApiMethods::eEngineMask, ReadEngineMask},
    {ApiMethods::eEditorCommand, ReadCommand<&IVeltoKORA4API::GetVeltoProfileEditorCommand>},
    {ApiMethods::eSelectorCommand,
     ReadCommand<&IVeltoKORA4API::GetVeltoProfileSelectorCommand>},
    {ApiMethods::eDemoCommand, ReadCommand<&IVeltoKORA4API::GetVeltoDemoAppCommand>},
    {ApiMethods::eVersion, ReadVersion},
    {ApiMethods::eProfileName, ReadName, WriteName},
    {ApiMethods::eSwitch, ReadSwitch, WriteSwitch},
    {ApiMethods::ePatchValue, ReadPatch, WritePatch},
    {ApiMethods::eFrequencies, ReadFrequencies, WriteFrequencies},
    {ApiMethods::eGains, ReadGains, WriteGains},
    {ApiMethods::eBands, ReadGains},
};

const Row& RowOf(const Setting& setting) {
    for (const Row& row : cRows) {
        if (row.methods == setting.methods)
            return row;
    }
    throw Failure(ExitCode::eFailed, "The API does not serve '" + setting.name + "'.");
}

}  // namespace

std::optional<Value> ReadThroughApi(const Setting& setting, Profile profile,
                                    const ApiSession& api) {
    return RowOf(setting).read(setting, profile, *api.Get());
}

void WriteThroughApi(const Setting& setting, Profile profile, const Value& value,
                     const ApiSession& api) {
    RowOf(setting).write(setting, profile, value, *api.Get());
}

}  // namespace kora4::tools
