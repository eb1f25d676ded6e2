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
#include "kora4ctl/equalizer/bands.h"
#include "kora4ctl/registration/library_file.h"

namespace kora4::tools {

namespace {

// None when there is no such value.
using Answer = std::optional<Value>;
using Profile = std::optional<std::uint32_t>;
using Api = IVeltoKORA4API;

KORA4APITechnology ApiTechnologyOf(const Setting& setting) {
    return static_cast<KORA4APITechnology>(WordOf(setting.technology).apiNumber.value());
}

// Of methods with one number, in the platform's type for it.
template <auto method, typename Native, typename Ours>
Answer ReadNumber(const Setting& setting, Profile, Api& api) {
    Native number{};
    Check((api.*method)(&number), "Reading " + setting.name);
    return static_cast<Ours>(number);
}

template <auto method, typename Native, typename Ours>
void WriteNumber(const Setting& setting, Profile, const Value& value, Api& api) {
    Check((api.*method)(static_cast<Native>(std::get<Ours>(value))), "Setting " + setting.name);
}

Answer ReadVersion(const Setting&, Profile, Api& api) {
    ULONG numbers[4] = {};
    Check(api.GetVeltoKORA4Version(&numbers[0], &numbers[1], &numbers[2], &numbers[3]),
          "Reading the version");
    return VersionText(numbers);
}

Answer ReadSwitch(const Setting& setting, Profile, Api& api) {
    BOOL isOn = FALSE;
    Check(api.GetTechnologyOnElseOff(ApiTechnologyOf(setting), &isOn),
          "Reading " + setting.name);
    return isOn != FALSE;
}

void WriteSwitch(const Setting& setting, Profile, const Value& value, Api& api) {
    Check(api.SetTechnologyOnElseOff(ApiTechnologyOf(setting), std::get<bool>(value)),
          "Setting " + setting.name);
}

// The members of the union lie on top of one another: a number or a float.
Answer ReadPatch(const Setting& setting, Profile, Api& api) {
    KORA4PatchValueUnion patch = {};
    patch.m_technology = ApiTechnologyOf(setting);
    Check(api.GetSimplePatchValue(&patch), "Reading " + setting.name);
    if (setting.kind == Kind::eFloat)
        return patch.m_values.m_enhancementSlider;
    return static_cast<std::uint32_t>(patch.m_values.m_volumeSlider);
}

void WritePatch(const Setting& setting, Profile, const Value& value, Api& api) {
    KORA4PatchValueUnion patch = {};
    patch.m_technology = ApiTechnologyOf(setting);
    if (const float* amount = std::get_if<float>(&value))
        patch.m_values.m_enhancementSlider = *amount;
    else
        patch.m_values.m_volumeSlider = std::get<std::uint32_t>(value);
    Check(api.SetSimplePatchValue(&patch), "Setting " + setting.name);
}

GraphicEQData ReadEq(const Setting& setting, Api& api) {
    GraphicEQData eq = {};
    Check(api.GetGraphicEQData(&eq), "Reading " + setting.name);
    return eq;
}

Answer ReadFrequencies(const Setting& setting, Profile, Api& api) {
    const GraphicEQData eq = ReadEq(setting, api);
    return std::vector<float>(eq.m_freq, eq.m_freq + eq.m_bands);
}

Answer ReadGains(const Setting& setting, Profile, Api& api) {
    const GraphicEQData eq = ReadEq(setting, api);
    return std::vector<float>(eq.m_gain, eq.m_gain + eq.m_bands);
}

void WriteFrequencies(const Setting& setting, Profile, const Value& value, Api& api) {
    const auto& wanted = std::get<std::vector<float>>(value);
    // The library would store other frequencies as something else.
    for (const float frequency : wanted) {
        if (frequency < 1 || frequency > KORA4_GRAPHIC_EQ_MAX_FREQUENCY)
            throw BadInput("Invalid value '" + Decimal(frequency) + "' for '" + setting.name +
                           "': frequencies range from " + FrequencyRange() + ".");
    }
    GraphicEQData eq = ReadEq(setting, api);
    eq.m_bands = static_cast<ULONG>(std::min(wanted.size(), std::size(eq.m_freq)));
    std::copy_n(wanted.begin(), eq.m_bands, eq.m_freq);
    Check(api.SetGraphicEQData(&eq), "Setting " + setting.name);
}

void WriteGains(const Setting& setting, Profile, const Value& value, Api& api) {
    const auto& wanted = std::get<std::vector<float>>(value);
    GraphicEQData eq = ReadEq(setting, api);
    if (wanted.size() != eq.m_bands)
        throw BadInput("Expected " + std::to_string(eq.m_bands) + " gains, got " +
                           std::to_string(wanted.size()) + ".",
                       "Change the frequencies first, or use 'kora4ctl eq import'.");
    std::copy(wanted.begin(), wanted.end(), eq.m_gain);
    Check(api.SetGraphicEQData(&eq), "Setting " + setting.name);
}

std::uint32_t ProfileOf(Profile named, Api& api) {
    LONG active = 0;
    if (!named)
        Check(api.GetActiveProfile(&active), "Reading the active profile");
    return named ? *named : static_cast<std::uint32_t>(active);
}

Answer ReadName(const Setting&, Profile named, Api& api) {
    const std::uint32_t profile = ProfileOf(named, api);
    return IsCustomProfile(profile) ? ReadProfileNames(api)[profile] : std::nullopt;
}

void WriteName(const Setting&, Profile named, const Value& value, Api& api) {
    const std::uint32_t profile = ProfileOf(named, api);
    CheckIsCustom(profile);
    RenameProfile(profile, std::get<std::string>(value), api);
}

template <auto method>
Answer ReadCommand(const Setting& setting, Profile, Api& api) {
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
    {ApiMethods::eActiveProfile, ReadNumber<&Api::GetActiveProfile, LONG, std::uint32_t>,
     WriteNumber<&Api::SetActiveProfile, LONG, std::uint32_t>},
    {ApiMethods::eEnable, ReadNumber<&Api::GetVeltoEnable, BOOL, bool>,
     WriteNumber<&Api::SetVeltoEnable, BOOL, bool>},
    {ApiMethods::eSamplingPeriod,
     ReadNumber<&Api::GetVisualizationSamplingPeriod, ULONG, std::uint32_t>,
     WriteNumber<&Api::SetVisualizationSamplingPeriod, ULONG, std::uint32_t>},
    {ApiMethods::eEngineMask,
     ReadNumber<&Api::GetTechnologyMasterEnables, ULONG, std::uint32_t>},
    {ApiMethods::eEditorCommand, ReadCommand<&Api::GetVeltoProfileEditorCommand>},
    {ApiMethods::eSelectorCommand, ReadCommand<&Api::GetVeltoProfileSelectorCommand>},
    {ApiMethods::eDemoCommand, ReadCommand<&Api::GetVeltoDemoAppCommand>},
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
