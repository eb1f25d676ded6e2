// SPDX-License-Identifier: MIT
// The methods of the API, by the identifiers of the settings table.
#include "kora4ctl/access/api_settings.h"

#include <algorithm>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/profile_names.h"
#include "kora4ctl/registration/library_file.h"
#include "settings/band_rule.h"

namespace kora4::tools {

namespace {

// None when there is no such value.
using Answer = std::optional<Value>;
using Profile = std::optional<std::uint32_t>;

KORA4APITechnology ApiTechnologyOf(const Setting& setting) {
    return static_cast<KORA4APITechnology>(WordOf(setting.technology).apiNumber.value());
}

// Of methods with one number, in the platform's type for it.
template <auto method, typename Ours>
Answer ReadNumber(const Setting& setting, Profile, Api& api) {
    return static_cast<Ours>(Check((api.*method)(), "Reading " + setting.name));
}

template <auto method, typename Native, typename Ours>
void WriteNumber(const Setting& setting, Profile, const Value& value, Api& api) {
    Check((api.*method)(static_cast<Native>(std::get<Ours>(value))), "Setting " + setting.name);
}

Answer ReadVersion(const Setting&, Profile, Api& api) {
    return VersionText(Check(api.GetVeltoKORA4Version(), "Reading the version").numbers);
}

Answer ReadSwitch(const Setting& setting, Profile, Api& api) {
    return Check(api.GetTechnologyOnElseOff(ApiTechnologyOf(setting)),
                 "Reading " + setting.name);
}

void WriteSwitch(const Setting& setting, Profile, const Value& value, Api& api) {
    Check(api.SetTechnologyOnElseOff(ApiTechnologyOf(setting), std::get<bool>(value)),
          "Setting " + setting.name);
}

Answer ReadPatch(const Setting& setting, Profile, Api& api) {
    return ContentOf(
        Check(api.GetSimplePatchValue(ApiTechnologyOf(setting)), "Reading " + setting.name));
}

void WritePatch(const Setting& setting, Profile, const Value& value, Api& api) {
    const float* const amount = std::get_if<float>(&value);
    const kora4::Value wanted(ApiTechnologyOf(setting),
                              amount != nullptr
                                  ? static_cast<double>(*amount)
                                  : static_cast<double>(std::get<std::uint32_t>(value)));
    Check(api.SetSimplePatchValue(wanted), "Setting " + setting.name);
}

template <auto member>
Answer ReadBands(const Setting& setting, Profile, Api& api) {
    std::vector<float> numbers;
    for (const Band& band : Check(api.GetGraphicEQData(), "Reading " + setting.name))
        numbers.push_back(band.*member);
    return numbers;
}

// One of the two arrays; the other one stays.
template <auto member>
void WriteBands(const Setting& setting, Profile, const Value& value, Api& api) {
    const auto& wanted = std::get<std::vector<float>>(value);
    Bands bands = Check(api.GetGraphicEQData(), "Reading " + setting.name);
    CheckCount(bands.size(), wanted.size(),
               setting.methods == ApiMethods::eGains ? "gains" : "frequencies");
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i].*member = wanted[i];
    CheckFrequencies(bands);
    Check(api.SetGraphicEQData(bands), "Setting " + setting.name);
}

std::uint32_t ProfileOf(Profile named, const Api& api) {
    return named ? *named : ActiveProfile(api);
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
    return NarrowIfAny(Check((api.*method)(), "Reading " + setting.name));
}

// By methods; null where there are none that write.
struct Row {
    ApiMethods methods;
    Answer (*read)(const Setting&, Profile, Api&);
    void (*write)(const Setting&, Profile, const Value&, Api&) = nullptr;
};
constexpr Row cRows[] = {
    {ApiMethods::eActiveProfile, ReadNumber<&Api::GetActiveProfile, std::uint32_t>,
     WriteNumber<&Api::SetActiveProfile, LONG, std::uint32_t>},
    {ApiMethods::eEnable, ReadNumber<&Api::GetVeltoEnable, bool>,
     WriteNumber<&Api::SetVeltoEnable, bool, bool>},
    {ApiMethods::eSamplingPeriod,
     ReadNumber<&Api::GetVisualizationSamplingPeriod, std::uint32_t>,
     WriteNumber<&Api::SetVisualizationSamplingPeriod, ULONG, std::uint32_t>},
    {ApiMethods::eEngineMask, ReadNumber<&Api::GetTechnologyMasterEnables, std::uint32_t>},
    {ApiMethods::eEditorCommand, ReadCommand<&Api::GetVeltoProfileEditorCommand>},
    {ApiMethods::eSelectorCommand, ReadCommand<&Api::GetVeltoProfileSelectorCommand>},
    {ApiMethods::eDemoCommand, ReadCommand<&Api::GetVeltoDemoAppCommand>},
    {ApiMethods::eVersion, ReadVersion},
    {ApiMethods::eProfileName, ReadName, WriteName},
    {ApiMethods::eSwitch, ReadSwitch, WriteSwitch},
    {ApiMethods::ePatchValue, ReadPatch, WritePatch},
    {ApiMethods::eFrequencies, ReadBands<&Band::frequency>, WriteBands<&Band::frequency>},
    {ApiMethods::eGains, ReadBands<&Band::gain>, WriteBands<&Band::gain>},
    {ApiMethods::eBands, ReadBands<&Band::gain>},
};

const Row& RowOf(const Setting& setting) {
    for (const Row& row : cRows) {
        if (row.methods == setting.methods)
            return row;
    }
    throw Failure(ExitCode::eFailed, "The API does not serve '" + setting.name + "'.");
}

}  // namespace

std::uint32_t ActiveProfile(const Api& api) {
    return static_cast<std::uint32_t>(
        Check(api.GetActiveProfile(), "Reading the active profile"));
}

Value ContentOf(const kora4::Value& value) {
    if (value.IsWhole())
        return static_cast<std::uint32_t>(value.Amount());
    return static_cast<float>(value.Amount());
}

std::optional<Value> ReadThroughApi(const Setting& setting, Profile profile, Api& api) {
    return RowOf(setting).read(setting, profile, api);
}

void WriteThroughApi(const Setting& setting, Profile profile, const Value& value, Api& api) {
    RowOf(setting).write(setting, profile, value, api);
}

}  // namespace kora4::tools
