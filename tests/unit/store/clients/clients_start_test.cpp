// SPDX-License-Identifier: MIT
// The start of a client: its mutex, the first load, and what is held from then on.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

TEST(ClientStart, RefusesToLoadBeforeTheMutexExists) {
    TestStore store;
    KORA4UIKeysClient client(&store.m_access);
    EXPECT_EQ(APOERR_NOT_INITIALIZED, client.InitialKeysLoad());
    EXPECT_EQ(0u, store.m_access.Operations());
}

TEST(ClientStart, KeepsAMutexThatItHas) {
    TestStore store;
    KORA4UIKeysClient client(&store.m_access);
    EXPECT_EQ(result::cOk, client.ObjInitialize());
    EXPECT_EQ(result::cOk, client.ObjInitialize());
    EXPECT_EQ(u"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}", test::StoreMutex().name);
}

TEST(ClientStart, AMutexThatCannotBeCreatedIsAFailureAndCanBeTriedAgain) {
    TestStore store;
    KORA4UIKeysClient client(&store.m_access);
    test::StoreMutex().failCreate = true;
    EXPECT_EQ(result::cFail, client.ObjInitialize());
    test::StoreMutex().failCreate = false;
    EXPECT_EQ(result::cOk, client.ObjInitialize());
}

TEST(ClientStart, ReadsEachValueOnce) {
    for (const std::uint32_t profile : {cMovieProfile, cDemoMusicProfile, 100u}) {
        TestStore store;
        store.PutSetting(pkey::cActivePresetPid, profile);
        TestClient client(store);
        ASSERT_EQ(result::cOk, client.Start());
        std::vector<std::string> log = store.m_access.Log();
        std::ranges::sort(log);
        const auto twice = std::ranges::adjacent_find(log);
        EXPECT_TRUE(twice == log.end()) << *twice << " in profile " << profile;
    }
}

TEST(ClientStart, TakesTheStoredSwitchesOfADemoProfile) {
    TestStore store;
    store.PutSetting(pkey::cActivePresetPid, cDemoMovieProfile);
    store.PutUINT(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, cDemoMovieProfile, 0), 0);
    TestClient client(store);
    ASSERT_EQ(result::cOk, client.Start());
    EXPECT_EQ("", client.Pass());
    store.PutUINT(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, cDemoMovieProfile, 0), 1);
    EXPECT_EQ("flag1=1;", client.Pass());
}

class RefreshedClient : public KORA4UIKeysClient {
  public:
    explicit RefreshedClient(KORA4KeyAccess* pKeyAccess) : KORA4UIKeysClient(pKeyAccess) {
        EXPECT_EQ(result::cOk, ObjInitialize());
        EXPECT_EQ(result::cOk, InitialKeysLoad());
    }

    // The switches that the patch set has been handed, one letter each.
    std::string Handed() const {
        const RefreshSwitches& switches = m_patches.m_refreshSwitches;
        return std::string(switches.masterEnable ? "E" : "-") + (switches.first ? "1" : "-") +
               (switches.second ? "2" : "-");
    }
};

TEST(ClientRefresh, HandsThePatchSetTheEnableAndTheRefreshSwitchesOfTheProfile) {
    TestStore store;
    store.PutSetting(pkey::cActivePresetPid, cDemoMovieProfile);
    store.PutUINT(eKeySetStatic, pkey::Setting(pkey::cFirstRefreshSwitchPid), 1);
    store.PutUINT(eKeySetStatic, pkey::Setting(pkey::cSecondRefreshSwitchDemoPid), 1);
    RefreshedClient client(&store.m_access);
    EXPECT_EQ("E-2", client.Handed());
    EXPECT_EQ(result::cOk, client.ForceRevertFromDemoMode());
    EXPECT_EQ("E1-", client.Handed());
    store.PutSetting(pkey::cMasterEnablePid, 0);
    ChangeSet changes;
    EXPECT_EQ(result::cOk, client.AnalyseChanges(&changes));
    EXPECT_EQ("-1-", client.Handed());
}

TEST(ClientMasterEnables, TheMaskIsReadOnce) {
    TestStore store;
    const PropertyKey key{pkey::cMasterEnablesGuid, 0};
    store.PutUINT(eKeySetStatic, key, 0xFFFFFA1F);
    TestClient client(store);
    ASSERT_EQ(result::cOk, client.Start());
    store.PutUINT(eKeySetStatic, key, 0);
    EXPECT_EQ(0xFFFFFA1Fu, client->MasterEnables());
}

TEST(ClientCommands, AreHeldFromTheInitialLoadOn) {
    TestStore store;
    store.PutText(eKeySetApp, pkey::Setting(61), u"editor.exe");
    store.PutText(eKeySetApp, pkey::Setting(62), u"");
    TestClient client(store);
    ASSERT_EQ(result::cOk, client.Start());
    store.PutText(eKeySetApp, pkey::Setting(61), u"other.exe");
    const unsigned acquired = test::StoreMutex().acquired;
    TaskPtr<char16_t> command;
    EXPECT_EQ(result::cOk, client->GetCommand(CompanionCommand::eProfileEditor, command.Put()));
    EXPECT_EQ(u"editor.exe", std::u16string(command.Get()));
    EXPECT_EQ(result::cOk,
              client->GetCommand(CompanionCommand::eProfileSelector, command.Put()));
    ASSERT_TRUE(command) << "stored as an empty text";
    EXPECT_EQ(u'\0', *command.Get());
    EXPECT_EQ(result::cOk, client->GetCommand(CompanionCommand::eDemoApp, command.Put()));
    EXPECT_FALSE(command) << "none is stored";
    EXPECT_EQ(acquired, test::StoreMutex().acquired);
}

}  // namespace
}  // namespace kora4
