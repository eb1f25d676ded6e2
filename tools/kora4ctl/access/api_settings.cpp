// SPDX-License-Identifier: MIT
// The settings that the library's interface reads and writes, by the names of its methods.
#include <algorithm>
#include <iterator>
#include <string_view>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/profile_names.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/equalizer/equalizer.h"

namespace kora4::tools {

namespace {

// None: there is no such value.
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
    std::string version = std::to_string(numbers[0]);
    for (unsigned i = 1; i < 4; ++i)
        version += "." + std::to_string(numbers[i]);
    return version;
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

bool HasFrequencies(const Setting& setting) {
    return setting.unit == "Hz";
}

Answer ReadBands(const Setting& setting, Profile, IVeltoKORA4API& api) {
    const GraphicEQData eq = ReadEq(setting, api);
    const float* const first = HasFrequencies(setting) ? eq.m_freq : eq.m_gain;
    return std::vector<float>(first, first + eq.m_bands);
}

// The library would store other frequencies as something else.
void RefuseBadFrequencies(const Setting& setting, const std::vector<float>& frequencies) {
    for (const float frequency : frequencies) {
        if (frequency < 1 || frequency > cHighestFrequency)
            throw Failure(ExitCode::eBadInput, Decimal(frequency) + " is not a value for '" +
                                                   setting.name + "': bands lie from " +
                                                   FrequencyRange() + ".");
    }
}

void WriteBands(const Setting& setting, Profile, const Value& value, IVeltoKORA4API& api) {
    const auto& wanted = std::get<std::vector<float>>(value);
    GraphicEQData eq = ReadEq(setting, api);
    if (HasFrequencies(setting)) {
        RefuseBadFrequencies(setting, wanted);
        eq.m_bands = static_cast<ULONG>(std::min(wanted.size(), std::size(eq.m_freq)));
        std::copy_n(wanted.begin(), eq.m_bands, eq.m_freq);
    } else if (wanted.size() != eq.m_bands) {
        throw Failure(ExitCode::eBadInput,
                      "There are " + std::to_string(eq.m_bands) + " bands, and " +
                          std::to_string(wanted.size()) + " gains were given.",
                      "Change the frequencies first, or use 'kora4ctl eq import'.");
    } else {
        std::copy(wanted.begin(), wanted.end(), eq.m_gain);
    }
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

struct Reader {
    std::string_view method;
    Answer (*read)(const Setting&, Profile, IVeltoKORA4API&);
};
constexpr Reader cReaders[] = {
    {"GetActiveProfile", ReadProfile},
    {"GetVeltoEnable", ReadEnable},
    {"GetVisualizationSamplingPeriod", ReadPeriod},
    {"GetTechnologyMasterEnables", ReadEngineMask},
    {"GetVeltoKORA4Version", ReadVersion},
    {"GetVeltoProfileEditorCommand",
     ReadCommand<&IVeltoKORA4API::GetVeltoProfileEditorCommand>},
    {"GetVeltoProfileSelectorCommand",
     ReadCommand<&IVeltoKORA4API::GetVeltoProfileSelectorCommand>},
    {"GetVeltoDemoAppCommand", ReadCommand<&IVeltoKORA4API::GetVeltoDemoAppCommand>},
    {"GetTechnologyOnElseOff", ReadSwitch},
    {"GetSimplePatchValue", ReadPatch},
    {"GetGraphicEQData", ReadBands},
    {"GetProfileTable", ReadName},
};

struct Writer {
    std::string_view method;
    void (*write)(const Setting&, Profile, const Value&, IVeltoKORA4API&);
};
constexpr Writer cWriters[] = {
    {"SetActiveProfile", WriteProfile},
    {"SetVeltoEnable", WriteEnable},
    {"SetVisualizationSamplingPeriod", WritePeriod},
    {"SetTechnologyOnElseOff", WriteSwitch},
    {"SetSimplePatchValue", WritePatch},
    {"SetGraphicEQData", WriteBands},
    {"SetCustomProfileName", WriteName},
};

template <typename Row, std::size_t count>
const Row& RowOf(const Row (&rows)[count], std::string_view method) {
    for (const Row& row : rows) {
        if (row.method == method)
            return row;
    }
    throw Failure(ExitCode::eFailed,
                  "This program does not know the method " + std::string(method) + ".");
}

}  // namespace

std::optional<Value> ReadThroughApi(const Setting& setting, Profile profile,
                                    const ApiSession& api) {
    return RowOf(cReaders, setting.reader).read(setting, profile, *api.Get());
}

void WriteThroughApi(const Setting& setting, Profile profile, const Value& value,
                     const ApiSession& api) {
    RowOf(cWriters, setting.writer).write(setting, profile, value, *api.Get());
}

}  // namespace kora4::tools
