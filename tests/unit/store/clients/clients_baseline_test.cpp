// SPDX-License-Identifier: MIT
// What a client is told when an own call meets a foreign change that is still pending,
// and what moves its baseline.
#include <gtest/gtest.h>

#include <string>

#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

class ClientBaseline : public ::testing::Test {
  protected:
    void SetUp() override {
        for (std::uint32_t p = cFirstCustomProfile; p < cSelectableProfileBound; ++p)
            m_store.PutText(eKeySetStatic, ProfileNameKey(p), u"custom");
        ASSERT_EQ(m_own.Start(), result::cOk);
        ASSERT_EQ(m_foreign.Start(), result::cOk);
        ASSERT_EQ(m_own.Pass(), "");
    }

    static HRESULT SetVolume(TestClient& client, std::uint32_t value) {
        return client->SetPatchValue(ApiTechnology::eVolumeLeveler, sizeof value, &value);
    }

    void ExpectNothingMoreToTell() { EXPECT_EQ(m_own.Pass(), ""); }

    TestStore m_store;
    TestClient m_own{m_store};
    TestClient m_foreign{m_store};
};

TEST_F(ClientBaseline, OwnCallsAloneTellNothing) {
    ASSERT_EQ(m_own->SetActiveProfile(1), result::cOk);
    ASSERT_EQ(m_own->SetVeltoEnable(false), result::cOk);
    ASSERT_EQ(m_own->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(SetVolume(m_own, 7), result::cOk);
    ASSERT_EQ(m_own->SetCustomProfileName(3, u"renamed"), result::cOk);
    ASSERT_EQ(m_own->RevertActiveProfile(), result::cOk);
    ASSERT_EQ(m_own->SetDemoProfileAndEnable(240, true), result::cOk);
    ASSERT_EQ(m_own->RevertFromDemoMode(), result::cOk);
    ASSERT_EQ(m_own->DeleteCustomProfile(3), result::cOk);
    ASSERT_EQ(m_own->CreateCustomProfile(3, u"again"), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, ForeignChangesAreToldOnceEach) {
    ASSERT_EQ(m_foreign->SetVeltoEnable(false), result::cOk);
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eEnhancementTech, false), result::cOk);
    ASSERT_EQ(SetVolume(m_foreign, 7), result::cOk);
    ASSERT_EQ(m_foreign->SetCustomProfileName(3, u"renamed"), result::cOk);
    EXPECT_EQ(m_own.Pass(), "enable=0;value1=7;flag2=0;table;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchHidesAForeignFlagOfTheProfileThatWasLeft) {
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(m_own->SetActiveProfile(1), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, OwnSwitchAndForeignTriggerTellTheValueOfTheNewProfile) {
    ASSERT_EQ(m_foreign->SetActiveProfile(1), result::cOk);
    ASSERT_EQ(SetVolume(m_foreign, 3), result::cOk);
    ASSERT_EQ(m_foreign->SetActiveProfile(0), result::cOk);
    m_own.Pass();
    ASSERT_EQ(SetVolume(m_foreign, 9), result::cOk);
    ASSERT_EQ(m_own->SetActiveProfile(1), result::cOk);
    EXPECT_EQ(m_own.Pass(), "value1=3;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchToTheSameProfileHidesNothing) {
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(SetVolume(m_foreign, 9), result::cOk);
    ASSERT_EQ(m_own->SetActiveProfile(0), result::cOk);
    EXPECT_EQ(m_own.Pass(), "flag1=0;value1=9;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchOverAForeignProfileTellsTheStoredProfile) {
    ASSERT_EQ(m_foreign->SetActiveProfile(2), result::cOk);
    ASSERT_EQ(m_own->SetActiveProfile(1), result::cOk);
    EXPECT_EQ(m_own.Pass(), "profile=1;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchBackOverAForeignProfileTellsNothing) {
    ASSERT_EQ(m_foreign->SetActiveProfile(2), result::cOk);
    ASSERT_EQ(m_own->SetActiveProfile(0), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, OwnValueOverAForeignTriggerTellsTheCurrentValueOnce) {
    ASSERT_EQ(SetVolume(m_foreign, 9), result::cOk);
    ASSERT_EQ(SetVolume(m_own, 4), result::cOk);
    EXPECT_EQ(m_own.Pass(), "value1=4;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnValueKeepsAForeignFlagAndTellsIt) {
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(SetVolume(m_own, 4), result::cOk);
    EXPECT_EQ(m_store.m_access.NumberAt(eKeySetDynamic, PresetPatchKey(eVolumeTech, 0, 0)), 0u);
    EXPECT_EQ(m_own.Pass(), "flag1=0;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnEnableOverAForeignOne) {
    ASSERT_EQ(m_foreign->SetVeltoEnable(false), result::cOk);
    ASSERT_EQ(m_own->SetVeltoEnable(false), result::cOk);
    EXPECT_EQ(m_own.Pass(), "enable=0;");
    ASSERT_EQ(m_foreign->SetVeltoEnable(true), result::cOk);
    ASSERT_EQ(m_own->SetVeltoEnable(false), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, OwnToggleOverAForeignEnableTellsNothing) {
    ASSERT_EQ(m_foreign->SetVeltoEnable(false), result::cOk);
    bool now = false;
    ASSERT_EQ(m_own->ToggleVeltoEnable(&now), result::cOk);
    EXPECT_TRUE(now);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, OwnFlagOverAForeignOne) {
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(m_own->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    EXPECT_EQ(m_own.Pass(), "flag1=0;");
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, true), result::cOk);
    ASSERT_EQ(m_own->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, OwnFlagDuringAForeignExcursionBelongsToThatProfile) {
    ASSERT_EQ(m_foreign->SetActiveProfile(2), result::cOk);
    ASSERT_EQ(m_own->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(m_foreign->SetActiveProfile(0), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, AForeignFlagDuringAForeignExcursionIsNotTold) {
    ASSERT_EQ(m_foreign->SetActiveProfile(2), result::cOk);
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(m_foreign->SetActiveProfile(0), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
}

struct TableCall {
    const char* name;
    HRESULT (*call)(KORA4UIKeysClient& client);
};

class ClientTableBaseline : public ClientBaseline,
                            public ::testing::WithParamInterface<TableCall> {};

TEST_P(ClientTableBaseline, OverAForeignTableChangeTellsOneTableCall) {
    ASSERT_EQ(m_foreign->DeleteCustomProfile(8), result::cOk);
    ASSERT_EQ(GetParam().call(*m_own.operator->()), result::cOk);
    EXPECT_EQ(m_own.Pass(), "table;");
    ExpectNothingMoreToTell();
}

INSTANTIATE_TEST_SUITE_P(
    Calls, ClientTableBaseline,
    ::testing::Values(
        TableCall{"create", [](auto& client) { return client.CreateCustomProfile(8, u"new"); }},
        TableCall{"rename", [](auto& client) { return client.SetCustomProfileName(4, u"n"); }},
        TableCall{"remove", [](auto& client) { return client.DeleteCustomProfile(5); }}),
    [](const auto& testInfo) { return testInfo.param.name; });

TEST_F(ClientBaseline, DemoEntryOverAForeignEnableSavesTheStoredEnable) {
    ASSERT_EQ(m_foreign->SetVeltoEnable(false), result::cOk);
    ASSERT_EQ(m_own->SetDemoProfileAndEnable(241, true), result::cOk);
    EXPECT_EQ(m_store.StaticSetting(pkey::cSavedEnablePid), 0u);
    EXPECT_EQ(m_own.Pass(), "") << "the new enable is the one that the baseline knows";
    ASSERT_EQ(m_own->RevertFromDemoMode(), result::cOk);
    EXPECT_EQ(m_store.Enable(), 0u);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, DemoEntryOverAForeignEnableTellsANewValueThatDiffers) {
    ASSERT_EQ(m_foreign->SetVeltoEnable(false), result::cOk);
    ASSERT_EQ(m_own->SetDemoProfileAndEnable(241, false), result::cOk);
    EXPECT_EQ(m_own.Pass(), "enable=0;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnRevertHidesNoForeignChange) {
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVirtualSurroundTech, false), result::cOk);
    ASSERT_EQ(SetVolume(m_foreign, 9), result::cOk);
    ASSERT_EQ(m_own->RevertActiveProfile(), result::cOk);
    // The flag is back at the value that the client knows; the volume is told as it is now.
    EXPECT_EQ(m_own.Pass(), "value1=262151;");
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, WritesThatStoreNothingMoveNothing) {
    ASSERT_EQ(m_own->SetDemoProfileAndEnable(240, true), result::cOk);
    ASSERT_EQ(m_own->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    ASSERT_EQ(SetVolume(m_own, 4), result::cOk);
    EXPECT_EQ(m_own.Pass(), "");
    ASSERT_EQ(m_own->RevertFromDemoMode(), result::cOk);
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    EXPECT_EQ(m_own.Pass(), "flag1=0;");
}

TEST_F(ClientBaseline, FailedWritesMoveNothing) {
    m_store.m_access.FailWrite(1);
    ASSERT_EQ(m_own->SetVeltoEnable(false), result::cFail);
    m_store.m_access.FailWrite(1);
    ASSERT_EQ(m_own->SetActiveProfile(1), result::cFail);
    m_store.m_access.FailWrite(1);
    ASSERT_EQ(m_own->SetTechnologyOnElseOff(eVolumeTech, false), result::cFail);
    m_store.m_access.HealAll();
    EXPECT_EQ(m_own.Pass(), "");
    ASSERT_EQ(m_foreign->SetVeltoEnable(false), result::cOk);
    EXPECT_EQ(m_own.Pass(), "enable=0;");
}

TEST_F(ClientBaseline, AProfileSwitchWhoseEnableFailsIsOwnAllTheSame) {
    ASSERT_EQ(m_foreign->SetTechnologyOnElseOff(eVolumeTech, false), result::cOk);
    m_store.m_access.FailWrite(2);
    ASSERT_EQ(m_own->SetDemoProfileAndEnable(242, false), result::cFail);
    m_store.m_access.HealAll();
    EXPECT_EQ(m_store.Profile(), 242u);
    EXPECT_EQ(m_own.Pass(), "");
}

TEST_F(ClientBaseline, IsTakenByTheInitialLoadTriggerWordsIncluded) {
    ASSERT_EQ(SetVolume(m_foreign, 9), result::cOk);
    ASSERT_EQ(m_foreign->SetActiveProfile(2), result::cOk);
    TestClient late(m_store);
    ASSERT_EQ(late.Start(), result::cOk);
    EXPECT_EQ(late.Pass(), "");
    ASSERT_EQ(SetVolume(m_foreign, 8), result::cOk);
    EXPECT_EQ(late.Pass(), "value1=8;");
}

TEST_F(ClientBaseline, ReadsMoveNothing) {
    ASSERT_EQ(m_foreign->SetActiveProfile(1), result::cOk);
    ASSERT_EQ(m_foreign->SetVeltoEnable(false), result::cOk);
    ASSERT_EQ(SetVolume(m_foreign, 9), result::cOk);
    std::uint32_t number = 0;
    bool flag = false;
    ASSERT_EQ(m_own->GetActiveProfile(&number), result::cOk);
    ASSERT_EQ(m_own->GetVeltoEnable(&flag), result::cOk);
    ASSERT_EQ(m_own->GetTechnologyOnElseOff(eVolumeTech, &flag), result::cOk);
    ASSERT_EQ(m_own->GetPatchValue(ApiTechnology::eVolumeLeveler, 4, &number), result::cOk);
    EXPECT_EQ(number, 9u);
    EXPECT_EQ(m_own.Pass(), "enable=0;profile=1;");
}

}  // namespace
}  // namespace kora4
