// SPDX-License-Identifier: MIT
// The words for profiles, technologies and values, and the reading of all settings through the
// API.
#include "sample_client.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>

namespace sample {

namespace {

struct ProfileName {
    LONG profile;
    const char* word;
};

constexpr ProfileName cProfileNames[] = {
    {KORA4_PROFILE_MOVIE, "Movie"},
    {KORA4_PROFILE_MUSIC, "Music"},
    {KORA4_PROFILE_GAMES, "Games"},
    {KORA4_PROFILE_P1, "P1"},
    {KORA4_PROFILE_P2, "P2"},
    {KORA4_PROFILE_P3, "P3"},
    {KORA4_PROFILE_P4, "P4"},
    {KORA4_PROFILE_P5, "P5"},
    {KORA4_PROFILE_P6, "P6"},
    {KORA4_PROFILE_DEMO_MOVIE, "demo of Movie"},
    {KORA4_PROFILE_DEMO_MUSIC, "demo of Music"},
    {KORA4_PROFILE_DEMO_GAMES, "demo of Games"},
};

// By number.
constexpr std::array<const char*, eNumberKORA4APITechnologies> cTechnologyNames = {
    "volume leveler",        "graphic EQ",         "intelligent EQ", "dialog enhancer",
    "headphone virtualizer", "speaker virtualizer"};

// UTF-8, from nothing to a full block.
constexpr const char* cBars[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

std::string Format(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

}  // namespace

HRESULT CreateApi(Microsoft::WRL::ComPtr<IVeltoKORA4API>& api) {
    HRESULT hr = CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_PPV_ARGS(&api));
    if (SUCCEEDED(hr)) {
        hr = api->Initialize();
    }
    return hr;
}

std::string ProfileWord(LONG profile) {
    for (const ProfileName& name : cProfileNames) {
        if (name.profile == profile) {
            return name.word;
        }
    }
    return std::to_string(profile);
}

bool FindProfile(const std::string& word, LONG& profile) {
    for (const ProfileName& name : cProfileNames) {
        if (word == name.word) {
            profile = name.profile;
            return true;
        }
    }
    return false;
}

bool FindTechnology(const std::string& word, KORA4APITechnology& technology) {
    for (std::size_t i = 0; i < cTechnologyNames.size(); ++i) {
        if (word == cTechnologyNames[i]) {
            technology = static_cast<KORA4APITechnology>(i);
            return true;
        }
    }
    return false;
}

std::string SwitchWord(BOOL onElseOff) {
    return onElseOff ? "on" : "off";
}

std::string SwitchName(KORA4APITechnology technology) {
    return cTechnologyNames[static_cast<std::size_t>(technology)];
}

std::string ValueName(KORA4APITechnology technology) {
    return SwitchName(technology) + " value";
}

std::string ValueWord(const KORA4PatchValueUnion& value) {
    switch (value.m_technology) {
        case eVolumeLeveler:
            return std::to_string(value.m_values.m_volumeSlider);
        case eIntelligentEQ:
            return std::to_string(value.m_values.m_dynamicEQPatchIndex);
        case eDialogEnhancer:
            return Format("%.2f", double{value.m_values.m_enhancementSlider});
        case eVirtualizerHP:
            return Format("%.2f", double{value.m_values.m_headphoneVirtualizerSlider});
        case eVirtualizerSpkr:
            return Format("%.2f", double{value.m_values.m_speakerVirtualizerSlider});
        default:
            return "no value";
    }
}

std::string CurveWord(const GraphicEQData& curve) {
    std::string word;
    for (ULONG band = 0; band < curve.m_bands && band < std::size(curve.m_gain); ++band) {
        word += Format(band == 0 ? "%+.1f" : " %+.1f", double{curve.m_gain[band]});
    }
    return word.empty() ? "no bands" : word + " dB";
}

std::string LevelsWord(const float* gains, const float* excitations) {
    std::string word;
    for (std::size_t band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        word += Format("%.1f ", double{gains[band]});
    }
    word += '/';
    for (std::size_t band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        word += Format(" %.1f", double{excitations[band]});
    }
    return word;
}

std::string LevelsBars(const float* gains) {
    constexpr float cFloor = -60;
    constexpr float cStep = -cFloor / static_cast<float>(std::size(cBars) - 1);
    std::string bars;
    for (std::size_t band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        const float gain = std::min(std::max(gains[band], cFloor), 0.0f);
        bars += cBars[static_cast<std::size_t>(std::lround((gain - cFloor) / cStep))];
    }
    return bars;
}

Settings ReadProfileTable(IVeltoKORA4API& api) {
    Settings settings;
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    const HRESULT hr = api.GetProfileTable(names);
    for (LONG profile = KORA4_PROFILE_FIRST_CUSTOM;
         SUCCEEDED(hr) && profile <= KORA4_PROFILE_LAST_CUSTOM; ++profile) {
        settings["custom profile " + ProfileWord(profile)] =
            names[profile] ? '"' + Narrow(names[profile]) + '"' : "none";
    }
    // A failed call hands out the names before the one that it could not read.
    for (LPWSTR name : names) {
        CoTaskMemFree(name);
    }
    return settings;
}

Settings ReadSettings(IVeltoKORA4API& api) {
    Settings settings = ReadProfileTable(api);
    LONG profile = 0;
    if (SUCCEEDED(api.GetActiveProfile(&profile))) {
        settings[cActiveProfile] = ProfileWord(profile);
    }
    BOOL onElseOff = FALSE;
    if (SUCCEEDED(api.GetVeltoEnable(&onElseOff))) {
        settings[cEnable] = SwitchWord(onElseOff);
    }
    for (int number = 0; number < eNumberKORA4APITechnologies; ++number) {
        const auto technology = static_cast<KORA4APITechnology>(number);
        if (SUCCEEDED(api.GetTechnologyOnElseOff(technology, &onElseOff))) {
            settings[SwitchName(technology)] = SwitchWord(onElseOff);
        }
        KORA4PatchValueUnion value{};
        value.m_technology = technology;
        if (SUCCEEDED(api.GetSimplePatchValue(&value))) {
            settings[ValueName(technology)] = ValueWord(value);
        }
    }
    GraphicEQData curve{};
    if (SUCCEEDED(api.GetGraphicEQData(&curve))) {
        settings[ValueName(eGraphicEQ)] = CurveWord(curve);
    }
    return settings;
}

std::wstring Widen(const std::string& text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
    return wide;
}

std::string Narrow(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return {};
    }
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
    narrow.pop_back();
    return narrow;
}

long long Now() {
    // File times count tenths of a microsecond since 1601.
    constexpr long long cFrom1601To1970 = 11'644'473'600'000'000;
    FILETIME time;
    GetSystemTimePreciseAsFileTime(&time);
    const ULARGE_INTEGER ticks{{time.dwLowDateTime, time.dwHighDateTime}};
    return static_cast<long long>(ticks.QuadPart / 10) - cFrom1601To1970;
}

void Report(long long when, const std::string& kind, const std::string& fields) {
    std::printf("%lld|%s|%s\n", when, kind.c_str(), fields.c_str());
    std::fflush(stdout);
}

}  // namespace sample
