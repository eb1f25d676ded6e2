// SPDX-License-Identifier: MIT
// The constants of the SDK against the built library: what each says is what a client meets.
#include "sdk/constants_c.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kora4api.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

#include "support/com_client.h"
#include "support/raw_store.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

class SdkConstants : public testing::Test {
  protected:
    void SetUp() override {
        m_spApi = m_library.Create();
        ASSERT_TRUE(m_spApi);
        ASSERT_EQ(S_OK, m_spApi->Initialize());
    }

    template <typename T>
    HRESULT Set(KORA4APITechnology technology, T amount) {
        KORA4PatchValueUnion value{};
        value.m_technology = technology;
        if constexpr (std::is_same_v<T, float>)
            value.m_values.m_enhancementSlider = amount;
        else
            value.m_values.m_volumeSlider = static_cast<ULONG>(amount);
        return m_spApi->SetSimplePatchValue(&value);
    }

    KORA4PatchValueUnion Get(KORA4APITechnology technology) {
        KORA4PatchValueUnion value{};
        value.m_technology = technology;
        EXPECT_EQ(S_OK, m_spApi->GetSimplePatchValue(&value));
        return value;
    }

    // The numbers, of many, that the call does not refuse as out of range.
    template <typename Call>
    static std::vector<LONG> Accepted(Call call) {
        std::vector<LONG> accepted;
        for (LONG number = -1; number < 300; ++number)
            if (call(number) != E_INVALIDARG)
                accepted.push_back(number);
        return accepted;
    }

    static std::vector<LONG> Range(LONG first, LONG last) {
        std::vector<LONG> range;
        for (LONG number = first; number <= last; ++number)
            range.push_back(number);
        return range;
    }

    RawStore m_store;
    Apartment m_apartment{COINIT_APARTMENTTHREADED};
    ApiLibrary m_library;
    ComPtr<IVeltoKORA4API> m_spApi;
};

TEST_F(SdkConstants, AreTheSameInC) {
    EXPECT_THAT(cConstantsInC, testing::ElementsAre(8, 242, 262151, -108, -12, 0x200));
}

TEST_F(SdkConstants, ProfilesAreThoseThatTheMethodsTake) {
    EXPECT_EQ(Range(KORA4_PROFILE_DEMO_MOVIE, KORA4_PROFILE_DEMO_GAMES),
              Accepted([&](LONG p) { return m_spApi->SetDemoProfileAndEnable(p, TRUE); }));
    EXPECT_EQ(S_OK, m_spApi->RevertFromDemoMode());
    EXPECT_EQ(Range(KORA4_PROFILE_MOVIE, KORA4_PROFILE_LAST_CUSTOM),
              Accepted([&](LONG p) { return m_spApi->SetActiveProfile(p); }));
    EXPECT_EQ(Range(KORA4_PROFILE_FIRST_CUSTOM, KORA4_PROFILE_LAST_CUSTOM),
              Accepted([&](LONG p) { return m_spApi->CreateCustomProfile(p, L"name"); }));
    EXPECT_EQ(KORA4_CUSTOM_PROFILES,
              KORA4_PROFILE_LAST_CUSTOM - KORA4_PROFILE_FIRST_CUSTOM + 1);
    EXPECT_EQ(KORA4_PRESET_PROFILES, KORA4_PROFILE_DEMO_GAMES - KORA4_PROFILE_DEMO_MOVIE + 1);
}

TEST_F(SdkConstants, ProfileTableHasAsManyEntriesAsThereAreProfiles) {
    EXPECT_EQ(S_OK, m_spApi->CreateCustomProfile(KORA4_PROFILE_P6, L"the last"));
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES + 1] = {};
    wchar_t behind[] = L"behind";
    names[KORA4_PROFILE_TABLE_ENTRIES] = behind;
    EXPECT_EQ(S_OK, m_spApi->GetProfileTable(names));
    EXPECT_STREQ(L"the last", names[KORA4_PROFILE_P6]);
    EXPECT_EQ(behind, names[KORA4_PROFILE_TABLE_ENTRIES]);
    CoTaskMemFree(names[KORA4_PROFILE_P6]);
}

TEST_F(SdkConstants, LongestNameIsTheLongestThatCanBeReadAgain) {
    const auto read = [&](LONG profile, std::size_t length) {
        const std::wstring name(length, L'n');
        EXPECT_EQ(S_OK, m_spApi->CreateCustomProfile(profile, name.c_str()));
        LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
        const HRESULT hr = m_spApi->GetProfileTable(names);
        for (LPWSTR text : names)
            CoTaskMemFree(text);
        return hr;
    };
    EXPECT_EQ(S_OK, read(KORA4_PROFILE_P1, KORA4_CUSTOM_NAME_MAX_LENGTH));
    EXPECT_EQ(E_FAIL, read(KORA4_PROFILE_P2, KORA4_CUSTOM_NAME_MAX_LENGTH + 1));
}

TEST_F(SdkConstants, WholeNumberLimitsAreTheFirstAndLastThatAreTaken) {
    EXPECT_EQ(Range(KORA4_VOLUME_LEVELER_MIN, KORA4_VOLUME_LEVELER_MAX),
              Accepted([&](LONG amount) { return Set(eVolumeLeveler, amount); }));
    EXPECT_EQ(Range(KORA4_INTELLIGENT_EQ_BALANCED, KORA4_INTELLIGENT_EQ_WARM),
              Accepted([&](LONG curve) { return Set(eIntelligentEQ, curve); }));
    EXPECT_EQ(KORA4_INTELLIGENT_EQ_CURVES, KORA4_INTELLIGENT_EQ_WARM + 1);
}

TEST_F(SdkConstants, FloatLimitsAreTheFirstAndLastThatAreTaken) {
    const struct {
        KORA4APITechnology technology;
        float lowest, highest;
    } all[] = {{eDialogEnhancer, KORA4_DIALOG_ENHANCER_MIN, KORA4_DIALOG_ENHANCER_MAX},
               {eVirtualizerHP, KORA4_VIRTUALIZER_MIN, KORA4_VIRTUALIZER_MAX},
               {eVirtualizerSpkr, KORA4_VIRTUALIZER_MIN, KORA4_VIRTUALIZER_MAX}};
    for (const auto& [technology, lowest, highest] : all) {
        EXPECT_EQ(E_INVALIDARG, Set(technology, std::nextafter(lowest, -1.0f))) << technology;
        EXPECT_EQ(S_OK, Set(technology, lowest)) << technology;
        EXPECT_EQ(S_OK, Set(technology, highest)) << technology;
        EXPECT_EQ(E_INVALIDARG, Set(technology, std::nextafter(highest, 99.0f))) << technology;
    }
}

// What a panel must show, and must not write back.
TEST_F(SdkConstants, DefaultsOutsideTheLimitsAreReadAndCannotBeSet) {
    EXPECT_EQ(ULONG{KORA4_VOLUME_LEVELER_MOVIE_DEFAULT},
              Get(eVolumeLeveler).m_values.m_volumeSlider);
    EXPECT_EQ(E_INVALIDARG, Set(eVolumeLeveler, KORA4_VOLUME_LEVELER_MOVIE_DEFAULT));
    for (LONG profile = KORA4_PROFILE_MOVIE; profile <= KORA4_PROFILE_GAMES; ++profile) {
        EXPECT_EQ(S_OK, m_spApi->SetActiveProfile(profile));
        EXPECT_EQ(KORA4_SPEAKER_VIRTUALIZER_DEFAULT,
                  Get(eVirtualizerSpkr).m_values.m_speakerVirtualizerSlider);
        EXPECT_EQ(E_INVALIDARG, Set(eVirtualizerSpkr, KORA4_SPEAKER_VIRTUALIZER_DEFAULT));
    }
}

TEST_F(SdkConstants, GraphicEQIsLimitedToTheGainsTheBandsAndTheFrequency) {
    GraphicEQData data{};
    data.m_bands = KORA4_GRAPHIC_EQ_MAX_BANDS + 1;
    for (std::size_t i = 0; i < KORA4_GRAPHIC_EQ_MAX_BANDS; ++i) {
        data.m_freq[i] = static_cast<float>(i + 1);
        data.m_gain[i] = i % 2 ? 99.0f : -99.0f;
    }
    data.m_freq[KORA4_GRAPHIC_EQ_MAX_BANDS - 1] = KORA4_GRAPHIC_EQ_MAX_FREQUENCY;
    EXPECT_EQ(S_OK, m_spApi->SetGraphicEQData(&data));
    EXPECT_EQ(S_OK, m_spApi->GetGraphicEQData(&data));
    EXPECT_EQ(ULONG{KORA4_GRAPHIC_EQ_MAX_BANDS}, data.m_bands);
    EXPECT_EQ(KORA4_GRAPHIC_EQ_MIN_GAIN, *std::ranges::min_element(data.m_gain));
    EXPECT_EQ(KORA4_GRAPHIC_EQ_MAX_GAIN, *std::ranges::max_element(data.m_gain));
    EXPECT_EQ(KORA4_GRAPHIC_EQ_MAX_FREQUENCY, data.m_freq[KORA4_GRAPHIC_EQ_MAX_BANDS - 1]);

    data.m_freq[0] = KORA4_GRAPHIC_EQ_MAX_FREQUENCY + 1;
    EXPECT_EQ(S_OK, m_spApi->SetGraphicEQData(&data));
    EXPECT_EQ(S_OK, m_spApi->GetGraphicEQData(&data));
    EXPECT_NE(KORA4_GRAPHIC_EQ_MAX_FREQUENCY + 1, data.m_freq[0]);
}

TEST_F(SdkConstants, BandsThatNobodyHasReadSilent) {
    // A picture of no processing object at all.
    RawStore::SetBytes(cStatic, SettingName(cBlobPid), {0, 0, 0, 0, 0, 0, 0, 0});
    constexpr std::size_t cBands = KORA4_VISUALIZATION_BANDS;
    constexpr float cUntouched = 1;
    std::vector<float> gains(cBands + 1, cUntouched), excitations(cBands + 1, cUntouched);
    EXPECT_EQ(S_OK, m_spApi->GetVisualizationData(gains.data(), excitations.data()));
    std::vector<float> expectedGains(cBands, KORA4_SILENT_GAIN);
    expectedGains.push_back(cUntouched);
    EXPECT_EQ(expectedGains, gains);
    std::vector<float> expectedExcitations(cBands, KORA4_SILENT_EXCITATION);
    expectedExcitations.push_back(cUntouched);
    EXPECT_EQ(expectedExcitations, excitations);
}

TEST_F(SdkConstants, SamplingPeriodIsTheDefaultUntilOneIsStored) {
    ULONG period = 0;
    EXPECT_EQ(S_OK, m_spApi->GetVisualizationSamplingPeriod(&period));
    EXPECT_EQ(ULONG{KORA4_SAMPLING_PERIOD_DEFAULT}, period);
}

TEST_F(SdkConstants, EngineMasksAreTheBitsOfTheirTechnologies) {
    const auto bits = [](std::vector<unsigned> technologies) {
        ULONG mask = 0;
        for (const unsigned technology : technologies)
            mask |= KORA4_ENGINE_TECHNOLOGY_BIT(technology);
        return mask;
    };
    EXPECT_EQ(ULONG{KORA4_ENGINE_FULL}, bits({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(ULONG{KORA4_ENGINE_STANDARD}, bits({1, 2, 3, 4, 5, 10}));
    EXPECT_EQ(ULONG{KORA4_ENGINE_BASIC}, bits({7, 9}));

    RawStore::SetNumber(cStatic, MasterEnablesName(), KORA4_ENGINE_STANDARD);
    const ComPtr<IVeltoKORA4API> spLater = m_library.Create();
    ULONG mask = 0;
    EXPECT_EQ(S_OK, spLater->Initialize());
    EXPECT_EQ(S_OK, spLater->GetTechnologyMasterEnables(&mask));
    EXPECT_EQ(ULONG{KORA4_ENGINE_STANDARD}, mask);
}

}  // namespace
}  // namespace kora4::test
