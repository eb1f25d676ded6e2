// SPDX-License-Identifier: MIT
// A writer that dies between any two writes of an operation leaves a store that every
// operation can work with.
#include <gtest/gtest.h>

#include <string>

#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

struct Operation {
    const char* name;
    HRESULT (*prepare)(KORA4UIKeysClient& client);
    HRESULT (*call)(KORA4UIKeysClient& client);
};

HRESULT Nothing(KORA4UIKeysClient&) {
    return result::cOk;
}
HRESULT EnterDemo(KORA4UIKeysClient& client) {
    return client.SetDemoProfileAndEnable(cDemoMusicProfile, false);
}

const Operation cOperations[] = {
    {"SetActiveProfile", Nothing, [](auto& c) { return c.SetActiveProfile(2); }},
    {"SetDemoProfileAndEnable", Nothing, EnterDemo},
    {"RevertFromDemoMode", EnterDemo, [](auto& c) { return c.RevertFromDemoMode(); }},
    {"ForceRevertFromDemoMode", EnterDemo, [](auto& c) { return c.ForceRevertFromDemoMode(); }},
    {"RevertActiveProfile", Nothing, [](auto& c) { return c.RevertActiveProfile(); }},
    {"CreateCustomProfile", Nothing, [](auto& c) { return c.CreateCustomProfile(4, u"n"); }},
    {"SetCustomProfileName", Nothing, [](auto& c) { return c.SetCustomProfileName(3, u"n"); }},
    {"DeleteCustomProfile", Nothing, [](auto& c) { return c.DeleteCustomProfile(3); }},
    {"SetSimpleValue", Nothing,
     [](auto& c) {
         const std::uint32_t value = 4;
         return c.SetPatchValue(ApiTechnology::eVolumeLeveler, sizeof value, &value);
     }},
    {"SetGraphicEQ", Nothing,
     [](auto& c) {
         ApiGraphicEQ eq{};
         eq.m_bands = 12;
         return c.SetPatchValue(ApiTechnology::eGraphicEQ, sizeof eq, &eq);
     }},
};

// Everything that a client can ask for works, and every way out of the state is open.
void ExpectAWorkingStore(TestStore& store) {
    TestClient client(store);
    ASSERT_EQ(result::cOk, client.Start());
    std::uint32_t profile = cNoProfile;
    ASSERT_EQ(result::cOk, client->GetActiveProfile(&profile));
    EXPECT_TRUE(IsAllowableProfile(profile)) << profile;
    EXPECT_EQ(result::cOk, client->ForceRevertFromDemoMode());
    char16_t* names[9];
    ASSERT_EQ(result::cOk, client->GetProfileTable(names));
    for (char16_t* name : names)
        FreeTaskMemory(name);
    for (std::uint32_t t = 0; t < 6; ++t) {
        ApiGraphicEQ value{};
        EXPECT_EQ(result::cOk,
                  client->GetPatchValue(static_cast<ApiTechnology>(t), sizeof value, &value));
        EXPECT_EQ(result::cOk,
                  client->SetPatchValue(static_cast<ApiTechnology>(t), sizeof value, &value));
    }
    for (std::uint32_t p = cFirstCustomProfile; p < cSelectableProfileBound; ++p) {
        EXPECT_EQ(result::cOk, client->SetActiveProfile(0));
        EXPECT_LE(result::cOk, client->DeleteCustomProfile(p));
        EXPECT_EQ(result::cOk, client->CreateCustomProfile(p, u"new"));
        EXPECT_EQ(result::cOk, client->SetActiveProfile(p));
    }
    EXPECT_EQ(result::cOk, client->SetActiveProfile(1));
    EXPECT_EQ(result::cOk, client->RevertActiveProfile());
    EXPECT_EQ(result::cOk, client->SetDemoProfileAndEnable(cDemoGamesProfile, true));
    EXPECT_EQ(result::cOk, client->RevertFromDemoMode());
    EXPECT_EQ(1u, store.Profile());
    EXPECT_EQ("", client.Pass());
}

class DyingWriter : public ::testing::TestWithParam<Operation> {};

// Runs the operation on a fresh store by a writer whose later writes all fail, and gives
// the number of writes that it tried.
unsigned RunDying(TestStore& store, const Operation& operation, unsigned survived) {
    store.PutText(eKeySetStatic, pkey::ProfileName(3), u"old");
    TestClient dying(store);
    EXPECT_EQ(result::cOk, dying.Start());
    EXPECT_LE(result::cOk, operation.prepare(*dying.operator->()));
    store.m_access.ClearLog();
    store.m_access.StopWritingAfter(survived);
    operation.call(*dying.operator->());
    store.m_access.HealAll();
    return store.m_access.Writes();
}

TEST_P(DyingWriter, LeavesAStoreThatEveryOperationCanWorkWith) {
    TestStore counting;
    const unsigned writes = RunDying(counting, GetParam(), 1000);
    ASSERT_LE(1u, writes);
    for (unsigned survived = 0; survived <= writes; ++survived) {
        SCOPED_TRACE("died after write " + std::to_string(survived));
        TestStore store;
        RunDying(store, GetParam(), survived);
        ExpectAWorkingStore(store);
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, DyingWriter, ::testing::ValuesIn(cOperations),
                         [](const auto& testInfo) { return testInfo.param.name; });

// Readers act on a value once they see its trigger word, so the word is written last.
TEST(WriteOrder, ValuesComeBeforeTheirTriggerWord) {
    TestStore store;
    TestClient client(store);
    ASSERT_EQ(result::cOk, client.Start());
    store.m_access.ClearLog();
    const std::uint32_t value = 4;
    ASSERT_EQ(result::cOk, client->SetPatchValue(ApiTechnology::eVolumeLeveler, 4, &value));
    EXPECT_EQ(test::WriteEntry(eKeySetDynamic, PresetTriggerKey(eVolumeTech), 1),
              store.m_access.WriteLog().back());
}

TEST(WriteOrder, ANameComesAfterTheValuesAndBeforeTheTableCounter) {
    TestStore store;
    TestClient client(store);
    ASSERT_EQ(result::cOk, client.Start());
    store.m_access.ClearLog();
    ASSERT_EQ(result::cOk, client->CreateCustomProfile(3, u"name"));
    const auto log = store.m_access.WriteLog();
    ASSERT_LE(2u, log.size());
    EXPECT_EQ(log[log.size() - 2], test::LogEntry(test::Operation::eWriteText, eKeySetStatic,
                                                  pkey::ProfileName(3), "name"));
    EXPECT_EQ(log.back(), test::WriteEntry(eKeySetDynamic,
                                           pkey::Setting(pkey::cProfileTableCounterPid), 1));
}

}  // namespace
}  // namespace kora4
