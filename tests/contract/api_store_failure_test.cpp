// SPDX-License-Identifier: MIT
// What clients get when the store is not as it should be: keys that are gone, values that
// cannot be read, numbers that stand for no profile.
#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

// An object that has its keys open while they are deleted.
class ApiWithoutKeys : public ApiTest {
  protected:
    void SetUp() override {
        ApiTest::SetUp();
        m_spApi = Initialized();
        RawStore::DeleteKeys();
    }
    ComPtr<IVeltoKORA4API> m_spApi;
};

TEST_F(ApiWithoutKeys, WhatIsReadIsItsDefault) {
    LONG profile = -77;
    EXPECT_EQ(S_OK, m_spApi->GetActiveProfile(&profile));
    EXPECT_EQ(KORA4_PROFILE_MOVIE, profile);
    BOOL isOn = -77;
    EXPECT_EQ(S_OK, m_spApi->GetVeltoEnable(&isOn));
    EXPECT_EQ(TRUE, isOn);
    ULONG period = 77;
    EXPECT_EQ(S_OK, m_spApi->GetVisualizationSamplingPeriod(&period));
    EXPECT_EQ(static_cast<ULONG>(KORA4_SAMPLING_PERIOD_DEFAULT), period);
    EXPECT_EQ(S_OK, m_spApi->GetTechnologyOnElseOff(eIntelligentEQ, &isOn));
    EXPECT_EQ(FALSE, isOn);
    KORA4PatchValueUnion value{eVolumeLeveler, {}};
    EXPECT_EQ(S_OK, m_spApi->GetSimplePatchValue(&value));
    EXPECT_EQ(cMovieVolume, value.m_values.m_volumeSlider);
    GraphicEQData graphicEQ{};
    EXPECT_EQ(S_OK, m_spApi->GetGraphicEQData(&graphicEQ));
    EXPECT_EQ(10u, graphicEQ.m_bands);
}

TEST_F(ApiWithoutKeys, WhatIsWrittenFails) {
    EXPECT_EQ(E_FAIL, m_spApi->SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_EQ(E_FAIL, m_spApi->SetVeltoEnable(FALSE));
    EXPECT_EQ(E_FAIL, m_spApi->SetVisualizationSamplingPeriod(40));
    EXPECT_EQ(E_FAIL, m_spApi->SetTechnologyOnElseOff(eIntelligentEQ, TRUE));
    KORA4PatchValueUnion value{eVolumeLeveler, {}};
    EXPECT_EQ(E_FAIL, m_spApi->SetSimplePatchValue(&value));
    GraphicEQData graphicEQ{};
    EXPECT_EQ(E_FAIL, m_spApi->SetGraphicEQData(&graphicEQ));
    EXPECT_EQ(E_FAIL, m_spApi->RevertActiveProfile());
    EXPECT_EQ(E_FAIL, m_spApi->CreateCustomProfile(KORA4_PROFILE_P1, L"Night"));
}

TEST_F(ApiWithoutKeys, NamesAndLevelsFailToo) {
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    EXPECT_EQ(E_FAIL, m_spApi->GetProfileTable(names));
    float gain[KORA4_VISUALIZATION_BANDS] = {};
    float excitation[KORA4_VISUALIZATION_BANDS] = {};
    EXPECT_EQ(E_FAIL, m_spApi->GetVisualizationData(gain, excitation));
}

using ApiUnlistedProfile = ApiTest;

// 257 is 0x101: its low eight bits are Music's number, and they alone are in a value's name.
constexpr DWORD cUnlisted = 257;

TEST_F(ApiUnlistedProfile, IsToldAsItIsStored) {
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), cUnlisted);
    LONG profile = -77;
    EXPECT_EQ(S_OK, Initialized()->GetActiveProfile(&profile));
    EXPECT_EQ(static_cast<LONG>(cUnlisted), profile);
}

TEST_F(ApiUnlistedProfile, ReadsWhatIsStoredUnderItsLowEightBits) {
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), cUnlisted);
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, KORA4_PROFILE_MUSIC, 3), 7);
    RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eVolume, KORA4_PROFILE_MUSIC, 0), 0);
    const ComPtr<IVeltoKORA4API> spApi = Initialized();
    KORA4PatchValueUnion value{eVolumeLeveler, {}};
    EXPECT_EQ(S_OK, spApi->GetSimplePatchValue(&value));
    EXPECT_EQ(7u, value.m_values.m_volumeSlider);
    BOOL isOn = -77;
    EXPECT_EQ(S_OK, spApi->GetTechnologyOnElseOff(eVolumeLeveler, &isOn));
    EXPECT_EQ(FALSE, isOn);
}

TEST_F(ApiUnlistedProfile, HasMoviesValuesAndAllSwitchesOnWhereNothingIsStored) {
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), cUnlisted);
    const ComPtr<IVeltoKORA4API> spApi = Initialized();
    KORA4PatchValueUnion value{eVolumeLeveler, {}};
    EXPECT_EQ(S_OK, spApi->GetSimplePatchValue(&value));
    EXPECT_EQ(cMovieVolume, value.m_values.m_volumeSlider);
    BOOL isOn = -77;
    EXPECT_EQ(S_OK, spApi->GetTechnologyOnElseOff(eIntelligentEQ, &isOn));
    EXPECT_EQ(TRUE, isOn);
}

TEST_F(ApiUnlistedProfile, WhatIsSetStoresNothing) {
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), cUnlisted);
    KORA4PatchValueUnion value{eVolumeLeveler, {}};
    EXPECT_EQ(S_OK, Initialized()->SetSimplePatchValue(&value));
    EXPECT_EQ(std::nullopt, RawStore::Number(cStatic, PatchName(RawTechnology::eVolume,
                                                                KORA4_PROFILE_MUSIC, 3)));
}

}  // namespace
}  // namespace kora4::test
