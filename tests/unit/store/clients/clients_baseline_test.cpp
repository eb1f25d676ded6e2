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
            m_store.PutText(eKeySetStatic, pkey::ProfileName(p), u"custom");
        ASSERT_EQ(result::cOk, m_own.Start());
        ASSERT_EQ(result::cOk, m_foreign.Start());
        ASSERT_EQ("", m_own.Pass());
    }

    static HRESULT SetVolume(TestClient& client, std::uint32_t value) {
        return client->SetPatchValue(ApiTechnology::eVolumeLeveler, sizeof value, &value);
    }

    void ExpectNothingMoreToTell() { EXPECT_EQ("", m_own.Pass()); }

    TestStore m_store;
    TestClient m_own{m_store};
    TestClient m_foreign{m_store};
};

TEST_F(ClientBaseline, OwnCallsAloneTellNothing) {
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(1));
    ASSERT_EQ(result::cOk, m_own->SetVeltoEnable(false));
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, SetVolume(m_own, 7));
    ASSERT_EQ(result::cOk, m_own->SetCustomProfileName(3, u"renamed"));
    ASSERT_EQ(result::cOk, m_own->RevertActiveProfile());
    ASSERT_EQ(result::cOk, m_own->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    ASSERT_EQ(result::cOk, m_own->RevertFromDemoMode());
    ASSERT_EQ(result::cOk, m_own->DeleteCustomProfile(3));
    ASSERT_EQ(result::cOk, m_own->CreateCustomProfile(3, u"again"));
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, ForeignChangesAreToldOnceEach) {
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(false));
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eEnhancementTech, false));
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 7));
    ASSERT_EQ(result::cOk, m_foreign->SetCustomProfileName(3, u"renamed"));
    EXPECT_EQ("enable=0;value1=7;flag2=0;table;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchHidesAForeignFlagOfTheProfileThatWasLeft) {
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(1));
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, OwnSwitchAndForeignTriggerTellTheValueOfTheNewProfile) {
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(1));
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 3));
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(0));
    m_own.Pass();
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 9));
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(1));
    EXPECT_EQ("value1=3;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchToTheSameProfileHidesNothing) {
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 9));
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(0));
    EXPECT_EQ("flag1=0;value1=9;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchOverAForeignProfileTellsTheStoredProfile) {
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(2));
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(1));
    EXPECT_EQ("profile=1;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnSwitchBackOverAForeignProfileTellsNothing) {
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(2));
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(0));
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, OwnValueOverAForeignTriggerTellsTheCurrentValueOnce) {
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 9));
    ASSERT_EQ(result::cOk, SetVolume(m_own, 4));
    EXPECT_EQ("value1=4;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnValueKeepsAForeignFlagAndTellsIt) {
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, SetVolume(m_own, 4));
    EXPECT_EQ(0u,
              m_store.m_access.NumberAt(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, 0, 0)));
    EXPECT_EQ("flag1=0;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnEnableOverAForeignOne) {
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(false));
    ASSERT_EQ(result::cOk, m_own->SetVeltoEnable(false));
    EXPECT_EQ("enable=0;", m_own.Pass());
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(true));
    ASSERT_EQ(result::cOk, m_own->SetVeltoEnable(false));
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, OwnToggleOverAForeignEnableTellsNothing) {
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(false));
    bool now = false;
    ASSERT_EQ(result::cOk, m_own->ToggleVeltoEnable(&now));
    EXPECT_TRUE(now);
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, OwnFlagOverAForeignOne) {
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    EXPECT_EQ("flag1=0;", m_own.Pass());
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, true));
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, OwnFlagDuringAForeignExcursionBelongsToThatProfile) {
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(2));
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(0));
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, AForeignFlagDuringAForeignExcursionIsNotTold) {
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(2));
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(0));
    EXPECT_EQ("", m_own.Pass());
}

struct TableCall {
    const char* name;
    HRESULT (*call)(KORA4UIKeysClient& client);
};

class ClientTableBaseline : public ClientBaseline,
                            public ::testing::WithParamInterface<TableCall> {};

TEST_P(ClientTableBaseline, OverAForeignTableChangeTellsOneTableCall) {
    ASSERT_EQ(result::cOk, m_foreign->DeleteCustomProfile(8));
    ASSERT_EQ(result::cOk, GetParam().call(*m_own.operator->()));
    EXPECT_EQ("table;", m_own.Pass());
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
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(false));
    ASSERT_EQ(result::cOk, m_own->SetDemoProfileAndEnable(cDemoMusicProfile, true));
    EXPECT_EQ(0u, m_store.StaticSetting(pkey::cSavedEnablePid));
    EXPECT_EQ("", m_own.Pass()) << "the new enable is the one that the baseline knows";
    ASSERT_EQ(result::cOk, m_own->RevertFromDemoMode());
    EXPECT_EQ(0u, m_store.Enable());
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, DemoEntryOverAForeignEnableTellsANewValueThatDiffers) {
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(false));
    ASSERT_EQ(result::cOk, m_own->SetDemoProfileAndEnable(cDemoMusicProfile, false));
    EXPECT_EQ("enable=0;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, OwnRevertHidesNoForeignChange) {
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVirtualSurroundTech, false));
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 9));
    ASSERT_EQ(result::cOk, m_own->RevertActiveProfile());
    // The flag is back at the value that the client knows; the volume is told as it is now.
    EXPECT_EQ("value1=262151;", m_own.Pass());
    ExpectNothingMoreToTell();
}

TEST_F(ClientBaseline, WritesThatStoreNothingMoveNothing) {
    ASSERT_EQ(result::cOk, m_own->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, SetVolume(m_own, 4));
    EXPECT_EQ("", m_own.Pass());
    ASSERT_EQ(result::cOk, m_own->RevertFromDemoMode());
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, false));
    EXPECT_EQ("flag1=0;", m_own.Pass());
}

TEST_F(ClientBaseline, FailedWritesMoveNothing) {
    m_store.m_access.FailWrite(1);
    ASSERT_EQ(result::cFail, m_own->SetVeltoEnable(false));
    m_store.m_access.FailWrite(1);
    ASSERT_EQ(result::cFail, m_own->SetActiveProfile(1));
    m_store.m_access.FailWrite(1);
    ASSERT_EQ(result::cFail, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    m_store.m_access.HealAll();
    EXPECT_EQ("", m_own.Pass());
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(false));
    EXPECT_EQ("enable=0;", m_own.Pass());
}

TEST_F(ClientBaseline, AProfileSwitchWhoseEnableFailsIsOwnAllTheSame) {
    ASSERT_EQ(result::cOk, m_foreign->SetTechnologyOnElseOff(eVolumeTech, false));
    m_store.m_access.FailWrite(2);
    ASSERT_EQ(result::cFail, m_own->SetDemoProfileAndEnable(cDemoGamesProfile, false));
    m_store.m_access.HealAll();
    EXPECT_EQ(cDemoGamesProfile, m_store.Profile());
    EXPECT_EQ("", m_own.Pass());
}

TEST_F(ClientBaseline, IsTakenByTheInitialLoadTriggerWordsIncluded) {
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 9));
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(2));
    TestClient late(m_store);
    ASSERT_EQ(result::cOk, late.Start());
    EXPECT_EQ("", late.Pass());
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 8));
    EXPECT_EQ("value1=8;", late.Pass());
}

TEST_F(ClientBaseline, ReadsMoveNothing) {
    ASSERT_EQ(result::cOk, m_foreign->SetActiveProfile(1));
    ASSERT_EQ(result::cOk, m_foreign->SetVeltoEnable(false));
    ASSERT_EQ(result::cOk, SetVolume(m_foreign, 9));
    std::uint32_t number = 0;
    bool flag = false;
    ASSERT_EQ(result::cOk, m_own->GetActiveProfile(&number));
    ASSERT_EQ(result::cOk, m_own->GetVeltoEnable(&flag));
    ASSERT_EQ(result::cOk, m_own->GetTechnologyOnElseOff(eVolumeTech, &flag));
    ASSERT_EQ(result::cOk, m_own->GetPatchValue(ApiTechnology::eVolumeLeveler, 4, &number));
    EXPECT_EQ(9u, number);
    EXPECT_EQ("enable=0;profile=1;", m_own.Pass());
}

}  // namespace
}  // namespace kora4
