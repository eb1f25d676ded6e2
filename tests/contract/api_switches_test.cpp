// SPDX-License-Identifier: MIT
// The master enable, the technologies' switches and the mask of the engine.
#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

const KORA4APITechnology cTechnologies[] = {eVolumeLeveler,  eGraphicEQ,     eIntelligentEQ,
                                            eDialogEnhancer, eVirtualizerHP, eVirtualizerSpkr};
const RawTechnology cRawTechnologies[] = {
    RawTechnology::eVolume,      RawTechnology::eStandardEQ, RawTechnology::eDynamicEQ,
    RawTechnology::eEnhancement, RawTechnology::eHeadphone,  RawTechnology::eVirtualSurround};

std::optional<DWORD> StoredEnable() {
    return RawStore::Number(cDynamic, SettingName(cEnablePid));
}

class ApiSwitches : public ApiTest {
  protected:
    void SetUp() override {
        ApiTest::SetUp();
        m_spApi = Initialized();
    }
    ComPtr<IVeltoKORA4API> m_spApi;
};

TEST_F(ApiSwitches, AnEmptyStoreIsEnabled) {
    BOOL enable = -1;
    EXPECT_EQ(S_OK, m_spApi->GetVeltoEnable(&enable));
    EXPECT_EQ(TRUE, enable);
}

TEST_F(ApiSwitches, AnyNumberButZeroReadsAsEnabled) {
    RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 77);
    BOOL enable = -1;
    m_spApi->GetVeltoEnable(&enable);
    EXPECT_EQ(TRUE, enable);
}

TEST_F(ApiSwitches, AnyNumberButZeroEnables) {
    EXPECT_EQ(S_OK, m_spApi->SetVeltoEnable(FALSE));
    EXPECT_EQ(0u, StoredEnable());
    EXPECT_EQ(S_OK, m_spApi->SetVeltoEnable(2));
    EXPECT_EQ(1u, StoredEnable());
}

TEST_F(ApiSwitches, TogglingTwiceGivesTheStartingState) {
    m_spApi->SetVeltoEnable(TRUE);
    BOOL enable = -1;
    EXPECT_EQ(S_OK, m_spApi->ToggleVeltoEnable(&enable));
    EXPECT_EQ(FALSE, enable);
    EXPECT_EQ(0u, StoredEnable());
    EXPECT_EQ(S_OK, m_spApi->ToggleVeltoEnable(&enable));
    EXPECT_EQ(TRUE, enable);
    EXPECT_EQ(1u, StoredEnable());
}

TEST_F(ApiSwitches, TogglingStartsFromTheStoredState) {
    m_spApi->SetVeltoEnable(TRUE);
    RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
    BOOL enable = -1;
    m_spApi->ToggleVeltoEnable(&enable);
    EXPECT_EQ(TRUE, enable);
}

TEST_F(ApiSwitches, EachTechnologyHasItsSwitchInTheActiveProfile) {
    m_spApi->SetActiveProfile(2);
    for (std::size_t i = 0; i < std::size(cTechnologies); ++i) {
        const std::wstring name = PatchName(cRawTechnologies[i], 2, 0);
        EXPECT_EQ(S_OK, m_spApi->SetTechnologyOnElseOff(cTechnologies[i], 5));
        EXPECT_EQ(1u, RawStore::Number(cDynamic, name)) << i;
        EXPECT_EQ(S_OK, m_spApi->SetTechnologyOnElseOff(cTechnologies[i], FALSE));
        EXPECT_EQ(0u, RawStore::Number(cDynamic, name)) << i;
        RawStore::SetNumber(cDynamic, name, 1);
        BOOL on = -1;
        EXPECT_EQ(S_OK, m_spApi->GetTechnologyOnElseOff(cTechnologies[i], &on));
        EXPECT_EQ(TRUE, on) << i;
    }
}

TEST_F(ApiSwitches, AbsentSwitchesHaveTheProfilesDefault) {
    BOOL on = -1;
    m_spApi->GetTechnologyOnElseOff(eIntelligentEQ, &on);
    EXPECT_EQ(FALSE, on);
    m_spApi->SetActiveProfile(1);
    m_spApi->GetTechnologyOnElseOff(eIntelligentEQ, &on);
    EXPECT_EQ(TRUE, on);
}

TEST_F(ApiSwitches, TheMaskOfTheEngineIsTheOneOfInitialize) {
    ULONG mask = 99;
    EXPECT_EQ(S_OK, m_spApi->GetTechnologyMasterEnables(&mask));
    EXPECT_EQ(0u, mask);
    RawStore::SetNumber(cStatic, MasterEnablesName(), KORA4_ENGINE_STANDARD);
    EXPECT_EQ(S_OK, m_spApi->GetTechnologyMasterEnables(&mask));
    EXPECT_EQ(0u, mask);
    EXPECT_EQ(S_OK, Initialized()->GetTechnologyMasterEnables(&mask));
    EXPECT_EQ(KORA4_ENGINE_STANDARD, mask);
}

class ApiSwitchesTrace : public ApiObjectTraceTest {};

constexpr char cOk[] = "<< hr: 0x00000000";

TEST_F(ApiSwitchesTrace, TheEnableIsTold) {
    BOOL enable = -1;
    m_spApi->SetVeltoEnable(2);
    m_spApi->SetVeltoEnable(0);
    m_spApi->GetVeltoEnable(&enable);
    m_spApi->ToggleVeltoEnable(&enable);
    m_spApi->GetVeltoEnable(&enable);
    EXPECT_EQ((Lines{">>", " to Enabled", cOk, ">>", " to Disabled", cOk}),
              LinesOf("SetVeltoEnable"));
    EXPECT_EQ((Lines{">>", " is Disabled", cOk, ">>", " is Enabled", cOk}),
              LinesOf("GetVeltoEnable"));
    EXPECT_EQ((Lines{">>", "is now Enabled", cOk}), LinesOf("ToggleVeltoEnable"));
}

TEST_F(ApiSwitchesTrace, SwitchesAreToldInSixteenColumns) {
    BOOL on = -1;
    m_spApi->SetTechnologyOnElseOff(eGraphicEQ, 5);
    m_spApi->SetTechnologyOnElseOff(eVirtualizerSpkr, 0);
    m_spApi->GetTechnologyOnElseOff(eVirtualizerSpkr, &on);
    m_spApi->GetTechnologyOnElseOff(eDialogEnhancer, &on);
    EXPECT_EQ(
        (Lines{">>", "      eGraphicEQ to On", cOk, ">>", "eVirtualizerSpkr to Off", cOk}),
        LinesOf("SetTechnologyOnElseOff"));
    EXPECT_EQ(
        (Lines{">>", "eVirtualizerSpkr is Off", cOk, ">>", " eDialogEnhancer is On", cOk}),
        LinesOf("GetTechnologyOnElseOff"));
}

TEST_F(ApiSwitchesTrace, TheMaskIsClassifiedInOneLine) {
    const std::pair<DWORD, const char*> masks[] = {{KORA4_ENGINE_FULL, "(0x03FF)"},
                                                   {KORA4_ENGINE_STANDARD, "(0x021F)"},
                                                   {KORA4_ENGINE_BASIC, "(0x0140)"}};
    for (const auto& [stored, text] : masks) {
        RawStore::SetNumber(cStatic, MasterEnablesName(), stored);
        ComPtr<IVeltoKORA4API> spApi = Initialized();
        m_log.Clear();
        ULONG mask = 0;
        spApi->GetTechnologyMasterEnables(&mask);
        const Lines lines = LinesOf("GetTechnologyMasterEnables");
        ASSERT_EQ(3u, lines.size());
        EXPECT_THAT(lines[1], testing::EndsWith(text));
        EXPECT_THAT(lines[1], testing::Not(testing::StartsWith("**** Error: ")));
    }
    const std::pair<DWORD, const char*> odd[] = {{0, ""}, {0x7, "0x7"}};
    for (const auto& [stored, text] : odd) {
        RawStore::SetNumber(cStatic, MasterEnablesName(), stored);
        ComPtr<IVeltoKORA4API> spApi = Initialized();
        m_log.Clear();
        ULONG mask = 0;
        EXPECT_EQ(S_OK, spApi->GetTechnologyMasterEnables(&mask));
        const Lines lines = LinesOf("GetTechnologyMasterEnables");
        ASSERT_EQ(3u, lines.size());
        EXPECT_THAT(lines[1], testing::StartsWith("**** Error: "));
        EXPECT_THAT(lines[1], testing::EndsWith(text));
    }
}

}  // namespace
}  // namespace kora4::test
