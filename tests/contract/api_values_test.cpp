// SPDX-License-Identifier: MIT
// The slider-type values and the graphic EQ: limits, storing and reading.
#include <cmath>
#include <limits>

#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

constexpr float cNaN = std::numeric_limits<float>::quiet_NaN();

KORA4PatchValueUnion Number(KORA4APITechnology technology, ULONG value) {
    KORA4PatchValueUnion record{};
    record.m_technology = technology;
    record.m_values.m_volumeSlider = value;
    return record;
}

KORA4PatchValueUnion Slider(KORA4APITechnology technology, float value) {
    KORA4PatchValueUnion record{};
    record.m_technology = technology;
    record.m_values.m_enhancementSlider = value;
    return record;
}

template <typename Base>
class Valued : public Base {
  protected:
    void SetUp() override {
        Base::SetUp();
        m_spApi = Base::Initialized();
    }
    HRESULT Set(KORA4PatchValueUnion value) { return m_spApi->SetSimplePatchValue(&value); }
    KORA4PatchValueUnion Get(KORA4APITechnology technology) {
        KORA4PatchValueUnion value = Number(technology, 0xAAAAAAAA);
        EXPECT_EQ(S_OK, m_spApi->GetSimplePatchValue(&value));
        EXPECT_EQ(technology, value.m_technology);
        return value;
    }
    ComPtr<IVeltoKORA4API> m_spApi;
};

using ApiValues = Valued<ApiTest>;
class ApiValuesTrace : public Valued<ApiTraceTest> {
  protected:
    void SetUp() override {
        Valued<ApiTraceTest>::SetUp();
        m_log.Clear();
    }
};

TEST_F(ApiValues, TheLevelerTakesZeroToTen) {
    for (ULONG value : {10u, 0u}) {
        EXPECT_EQ(S_OK, Set(Number(eVolumeLeveler, value)));
        EXPECT_EQ(value, Get(eVolumeLeveler).m_values.m_volumeSlider);
    }
    for (ULONG value : {11u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(E_INVALIDARG, Set(Number(eVolumeLeveler, value)));
    EXPECT_EQ(0u, RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, 0, 3)));
}

TEST_F(ApiValues, TheIntelligentEQTakesSixPatches) {
    EXPECT_EQ(S_OK, Set(Number(eIntelligentEQ, 5)));
    EXPECT_EQ(5u, Get(eIntelligentEQ).m_values.m_dynamicEQPatchIndex);
    EXPECT_EQ(E_INVALIDARG, Set(Number(eIntelligentEQ, 6)));
    EXPECT_EQ(5u, RawStore::Number(cStatic, PatchName(RawTechnology::eDynamicEQ, 0, 5)));
}

TEST_F(ApiValues, TheDialogEnhancerTakesZeroToOne) {
    for (float value : {1.0f, 0.0f}) {
        EXPECT_EQ(S_OK, Set(Slider(eDialogEnhancer, value)));
        EXPECT_EQ(value, Get(eDialogEnhancer).m_values.m_enhancementSlider);
    }
    for (float value : {1.0000001f, -0.0001f, cNaN, INFINITY, -INFINITY})
        EXPECT_EQ(E_INVALIDARG, Set(Slider(eDialogEnhancer, value))) << value;
}

TEST_F(ApiValues, TheVirtualizersTakeZeroToSix) {
    for (KORA4APITechnology technology : {eVirtualizerHP, eVirtualizerSpkr}) {
        for (float value : {6.0f, 0.0f, 2.5f}) {
            EXPECT_EQ(S_OK, Set(Slider(technology, value)));
            EXPECT_EQ(value, Get(technology).m_values.m_headphoneVirtualizerSlider);
        }
        for (float value : {6.0000005f, -0.0001f, cNaN})
            EXPECT_EQ(E_INVALIDARG, Set(Slider(technology, value))) << value;
    }
}

TEST_F(ApiValues, AStoredValueOutsideTheLimitsIsReadAsItIs) {
    EXPECT_EQ(cMovieVolume, Get(eVolumeLeveler).m_values.m_volumeSlider);
    EXPECT_EQ(10.0f, Get(eVirtualizerSpkr).m_values.m_speakerVirtualizerSlider);
}

TEST_F(ApiValues, WhatIsNoSliderIsRefusedAndLeftAsItIs) {
    for (int technology : {1, 6, -1}) {
        KORA4PatchValueUnion value = Number(static_cast<KORA4APITechnology>(technology), 42);
        EXPECT_EQ(E_INVALIDARG, m_spApi->GetSimplePatchValue(&value));
        EXPECT_EQ(E_INVALIDARG, m_spApi->SetSimplePatchValue(&value));
        EXPECT_EQ(42u, value.m_values.m_volumeSlider);
    }
}

TEST_F(ApiValues, ValuesBelongToTheActiveProfile) {
    EXPECT_EQ(S_OK, Set(Number(eVolumeLeveler, 5)));
    m_spApi->SetActiveProfile(1);
    EXPECT_EQ(0u, Get(eVolumeLeveler).m_values.m_volumeSlider);
    m_spApi->SetActiveProfile(0);
    EXPECT_EQ(5u, Get(eVolumeLeveler).m_values.m_volumeSlider);
}

TEST_F(ApiValues, ADemoProfileReadsAsItsBuiltInValues) {
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, KORA4_PROFILE_DEMO_MUSIC, 3),
                        9);
    m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, TRUE);
    EXPECT_EQ(0u, Get(eVolumeLeveler).m_values.m_volumeSlider);
    EXPECT_EQ(S_OK, Set(Number(eVolumeLeveler, 4)));
    EXPECT_EQ(0u, Get(eVolumeLeveler).m_values.m_volumeSlider);
}

TEST_F(ApiValues, SettingAnnouncesTheTechnology) {
    EXPECT_EQ(S_OK, Set(Number(eVolumeLeveler, 5)));
    EXPECT_EQ(1u, RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)));
    EXPECT_EQ(E_INVALIDARG, Set(Number(eVolumeLeveler, 11)));
    EXPECT_EQ(1u, RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)));
}

GraphicEQData TenBands() {
    GraphicEQData graphicEQ{};
    graphicEQ.m_bands = 10;
    for (int band = 0; band < KORA4_GRAPHIC_EQ_MAX_BANDS; ++band) {
        graphicEQ.m_freq[band] = 100.0f * static_cast<float>(band + 1);
        graphicEQ.m_gain[band] = 0.5f * static_cast<float>(band % 10);
    }
    return graphicEQ;
}

TEST_F(ApiValues, TheGraphicEQReadsBackWithZerosBehindItsBands) {
    GraphicEQData written = TenBands();
    EXPECT_EQ(S_OK, m_spApi->SetGraphicEQData(&written));
    GraphicEQData read = TenBands();
    read.m_bands = 99;
    EXPECT_EQ(S_OK, m_spApi->GetGraphicEQData(&read));
    EXPECT_EQ(10u, read.m_bands);
    for (int band = 0; band < KORA4_GRAPHIC_EQ_MAX_BANDS; ++band) {
        EXPECT_EQ(band < 10 ? written.m_freq[band] : 0.0f, read.m_freq[band]) << band;
        EXPECT_EQ(band < 10 ? written.m_gain[band] : 0.0f, read.m_gain[band]) << band;
    }
}

TEST_F(ApiValues, GainsAreLimitedAndTheCallersRecordIsNot) {
    GraphicEQData graphicEQ = TenBands();
    graphicEQ.m_gain[0] = 13.0f;
    graphicEQ.m_gain[1] = -20.0f;
    graphicEQ.m_gain[2] = cNaN;
    EXPECT_EQ(S_OK, m_spApi->SetGraphicEQData(&graphicEQ));
    EXPECT_EQ(13.0f, graphicEQ.m_gain[0]);
    EXPECT_EQ(-20.0f, graphicEQ.m_gain[1]);
    EXPECT_TRUE(std::isnan(graphicEQ.m_gain[2]));
    GraphicEQData read{};
    m_spApi->GetGraphicEQData(&read);
    EXPECT_EQ(12.0f, read.m_gain[0]);
    EXPECT_EQ(-12.0f, read.m_gain[1]);
    EXPECT_EQ(-12.0f, read.m_gain[2]);
}

TEST_F(ApiValues, MoreThanFortyBandsAreStoredAsForty) {
    GraphicEQData graphicEQ = TenBands();
    graphicEQ.m_bands = 0xFFFFFFFF;
    EXPECT_EQ(S_OK, m_spApi->SetGraphicEQData(&graphicEQ));
    EXPECT_EQ(0xFFFFFFFFu, graphicEQ.m_bands);
    GraphicEQData read{};
    m_spApi->GetGraphicEQData(&read);
    EXPECT_EQ(ULONG{KORA4_GRAPHIC_EQ_MAX_BANDS}, read.m_bands);
    EXPECT_EQ(4000.0f, read.m_freq[39]);
}

constexpr char cOk[] = "<< hr: 0x00000000";
constexpr char cInvalid[] = "<< hr: 0x80070057";

TEST_F(ApiValuesTrace, AcceptedValuesAreTold) {
    Set(Number(eVolumeLeveler, 7));
    Set(Number(eIntelligentEQ, 5));
    Set(Slider(eDialogEnhancer, 0.5f));
    Set(Slider(eVirtualizerHP, 1.5f));
    Set(Slider(eVirtualizerSpkr, 6.0f));
    EXPECT_EQ((Lines{"eVolumeLeveler set to 7", "Intelligent EQ patch set to eWarm  (5)",
                     "eDialogEnhancer set to 0.500000", "eVirtualizerHP set to 1.500000",
                     "eVirtualizerSpkr set to 6.000000"}),
              LinesOf("ValidatePatchField"));
    m_log.Clear();
    Get(eVolumeLeveler);
    Get(eIntelligentEQ);
    Get(eDialogEnhancer);
    Get(eVirtualizerHP);
    Get(eVirtualizerSpkr);
    EXPECT_EQ((Lines{">>", "eVolumeLeveler = 7", cOk, ">>", "eIntelligentEQ = 5", cOk, ">>",
                     "eDialogEnhancer = 0.500000", cOk, ">>", "eVirtualizerHP = 1.500000", cOk,
                     ">>", "eVirtualizerSpkr = 6.000000", cOk}),
              LinesOf("GetSimplePatchValue"));
}

TEST_F(ApiValuesTrace, RefusedValuesAreToldWithTheirLimit) {
    Set(Number(eVolumeLeveler, 11));
    Set(Number(eIntelligentEQ, 6));
    Set(Slider(eDialogEnhancer, -1.0f));
    Set(Slider(eDialogEnhancer, 2.0f));
    Set(Slider(eVirtualizerHP, 7.0f));
    Set(Slider(eVirtualizerHP, -1.0f));
    Set(Slider(eVirtualizerSpkr, 7.0f));
    Set(Slider(eVirtualizerSpkr, -1.0f));
    const std::string end = " Returning E_INVALIDARG";
    EXPECT_EQ(
        (Lines{
            "**** Error: eVolumeLeveler value of 11 > cVeltoVolumeLevelerAmountMax (10)." + end,
            "**** Error: eIntelligentEQ value of 6 >= eNumberIEQPatches (0)." + end,
            "**** Error: eDialogEnhancer value of -1.000000 < cDialogEnhancerAmountMin "
            "(0.000000)." +
                end,
            "**** Error: eDialogEnhancer value of 2.000000 > cDialogEnhancerAmountMax "
            "(1.000000)." +
                end,
            "**** Error: eVirtualizerHP value of 7.000000 > cSurroundCompBoostMax (6.000000)." +
                end,
            "**** Error: eVirtualizerHP value of -1.000000 < cSurroundCompBoostMin "
            "(0.000000)." +
                end,
            "**** Error: eVirtualizerSpkr value of 7.000000 > cSurroundCompBoostMax "
            "(6.000000)." +
                end,
            "**** Error: eVirtualizerSpkr value of -1.000000 < cSurroundCompBoostMin "
            "(0.000000)." +
                end,
        }),
        LinesOf("ValidatePatchField"));
}

TEST_F(ApiValuesTrace, WhatIsNotANumberIsTooLow) {
    Set(Slider(eDialogEnhancer, cNaN));
    Set(Slider(eVirtualizerHP, cNaN));
    Set(Slider(eVirtualizerSpkr, cNaN));
    const Lines lines = LinesOf("ValidatePatchField");
    ASSERT_EQ(3u, lines.size());
    EXPECT_THAT(lines[0], testing::HasSubstr(" < cDialogEnhancerAmountMin "));
    EXPECT_THAT(lines[1], testing::HasSubstr(" < cSurroundCompBoostMin "));
    EXPECT_THAT(lines[2], testing::HasSubstr(" < cSurroundCompBoostMin "));
}

TEST_F(ApiValuesTrace, WhatIsNoSliderIsToldByTheKeysClient) {
    Set(Number(eGraphicEQ, 0));
    bool told = false;
    for (const std::string& message : Messages(m_log.Read("KORA4UIKeysClient")))
        told = told || message == "Invalid API technology: 1";
    EXPECT_TRUE(told);
    EXPECT_EQ((Lines{">>", cInvalid}), LinesOf("SetSimplePatchValue"));
    EXPECT_TRUE(LinesOf("ValidatePatchField").empty());
}

TEST_F(ApiValuesTrace, EachLimitedGainIsTold) {
    GraphicEQData graphicEQ = TenBands();
    graphicEQ.m_gain[0] = 13.0f;
    graphicEQ.m_gain[9] = -20.0f;
    graphicEQ.m_gain[10] = 99.0f;
    m_spApi->SetGraphicEQData(&graphicEQ);
    EXPECT_EQ((Lines{"Graphic EQ gain band 0 limited to 12.000000 (was 13.000000).",
                     "Graphic EQ gain band 9 limited to -12.000000 (was -20.000000)."}),
              LinesOf("ValidateAndLimitGraphicEQ"));
    m_spApi->GetGraphicEQData(&graphicEQ);
    EXPECT_EQ((Lines{">>", cOk}), LinesOf("SetGraphicEQData"));
    EXPECT_EQ((Lines{">>", cOk}), LinesOf("GetGraphicEQData"));
}

}  // namespace
}  // namespace kora4::test
