// SPDX-License-Identifier: MIT
// Each operation on the key access that a client's operation makes fails in turn, with each
// code that it can give, once and from then on.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

#include "store/access/task_memory.h"
#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

using Results = std::vector<HRESULT>;

// Another key access, of which one operation fails, or all from one on.
class FailingKeyAccess final : public KORA4KeyAccess {
  public:
    explicit FailingKeyAccess(KORA4KeyAccess& access) : m_access(access) {}

    void Fail(unsigned operation, std::size_t code, bool fromThenOn) {
        m_count = 0;
        m_operation = operation;
        m_code = code;
        m_fromThenOn = fromThenOn;
        m_codesOfFirst = 0;
    }
    void Heal() { Fail(~0u, 0, false); }
    unsigned Count() const { return m_count; }
    // How many codes the operation has that was to fail; 0: there was none of that number.
    std::size_t CodesOfFirst() const { return m_codesOfFirst; }

    HRESULT ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                     std::uint32_t* pValue) override {
        return Run(cReading, [&] { return m_access.ReadUINT(keySet, key, pValue); });
    }
    HRESULT ReadText(KORA4KeySet keySet, const PropertyKey& key, char16_t** ppText) override {
        return Run(cReading, [&] { return m_access.ReadText(keySet, key, ppText); });
    }
    HRESULT ReadBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t* pSize,
                     std::uint8_t** ppData) override {
        return Run(cReading, [&] { return m_access.ReadBlob(keySet, key, pSize, ppData); });
    }
    HRESULT WriteUINT(KORA4KeySet keySet, const PropertyKey& key,
                      std::uint32_t value) override {
        return Run(cWriting, [&] { return m_access.WriteUINT(keySet, key, value); });
    }
    HRESULT WriteText(KORA4KeySet keySet, const PropertyKey& key,
                      const char16_t* pwText) override {
        return Run(cWriting, [&] { return m_access.WriteText(keySet, key, pwText); });
    }
    HRESULT WriteBlob(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t size,
                      const std::uint8_t* pData) override {
        return Run(cWriting, [&] { return m_access.WriteBlob(keySet, key, size, pData); });
    }
    HRESULT Delete(KORA4KeySet keySet, const PropertyKey& key) override {
        return Run(cReading, [&] { return m_access.Delete(keySet, key); });
    }

  private:
    static inline const Results cReading = {result::cFail, result::cFalse,
                                            result::cOutOfMemory};
    static inline const Results cWriting = {result::cFail, result::cOutOfMemory};

    template <typename Call>
    HRESULT Run(const Results& codes, Call&& call) {
        const unsigned operation = m_count++;
        if (operation == m_operation)
            m_codesOfFirst = codes.size();
        const bool fails =
            operation == m_operation || (m_fromThenOn && operation > m_operation);
        return fails ? codes[std::min(m_code, codes.size() - 1)] : call();
    }

    KORA4KeyAccess& m_access;
    unsigned m_count = 0;
    unsigned m_operation = ~0u;
    std::size_t m_code = 0;
    bool m_fromThenOn = false;
    std::size_t m_codesOfFirst = 0;
};

// ---- What is called ------------------------------------------------------------------------

struct Operation {
    const char* name;
    HRESULT (*prepare)(KORA4UIKeysClient& client);
    HRESULT (*call)(KORA4UIKeysClient& client);
    Results allowed = {};  // besides success
};

HRESULT Nothing(KORA4UIKeysClient&) {
    return result::cOk;
}
HRESULT EnterDemo(KORA4UIKeysClient& client) {
    return client.SetDemoProfileAndEnable(cDemoMusicProfile, false);
}

template <ApiTechnology technology>
HRESULT GetValue(KORA4UIKeysClient& client) {
    ApiGraphicEQ value{};
    return client.GetPatchValue(technology, sizeof value, &value);
}
template <ApiTechnology technology>
HRESULT SetValue(KORA4UIKeysClient& client) {
    ApiGraphicEQ value{};
    return client.SetPatchValue(technology, sizeof value, &value);
}

HRESULT GetTable(KORA4UIKeysClient& client) {
    std::array<char16_t*, cSelectableProfileBound> names;
    const HRESULT hr = client.GetProfileTable(names.data());
    for (char16_t* const name : names)
        FreeTaskMemory(name);
    return hr;
}

HRESULT GetBlob(KORA4UIKeysClient& client) {
    std::uint32_t size = 0;
    std::uint8_t* pData = nullptr;
    const HRESULT hr = client.GetVisualizationBlob(&size, &pData);
    FreeTaskMemory(pData);
    return hr;
}

const Results cWriteFailures = {result::cFail, result::cOutOfMemory};

const Operation cOperations[] = {
    {"InitialKeysLoad", Nothing, [](auto& c) { return c.InitialKeysLoad(); }},
    {"AnalyseChanges", Nothing,
     [](auto& c) {
         ChangeSet changes;
         return c.AnalyseChanges(&changes);
     }},
    {"GetActiveProfile", Nothing,
     [](auto& c) {
         std::uint32_t profile = 0;
         return c.GetActiveProfile(&profile);
     }},
    {"GetVeltoEnable", Nothing,
     [](auto& c) {
         bool enable = false;
         return c.GetVeltoEnable(&enable);
     }},
    {"GetTechnologyOnElseOff", Nothing,
     [](auto& c) {
         bool isOn = false;
         return c.GetTechnologyOnElseOff(eVolumeTech, &isOn);
     }},
    {"GetSamplingPeriod", Nothing,
     [](auto& c) {
         std::uint32_t period = 0;
         return c.GetSamplingPeriod(&period);
     }},
    {"GetVolume", Nothing, GetValue<ApiTechnology::eVolumeLeveler>},
    {"GetIntelligentEQ", Nothing, GetValue<ApiTechnology::eIntelligentEQ>},
    {"GetGraphicEQ", Nothing, GetValue<ApiTechnology::eGraphicEQ>},
    {"GetProfileTable", Nothing, GetTable, cWriteFailures},
    {"GetVisualizationBlob",
     Nothing,
     GetBlob,
     {result::cFail, result::cFalse, result::cOutOfMemory}},
    {"SetActiveProfile", Nothing, [](auto& c) { return c.SetActiveProfile(2); },
     cWriteFailures},
    {"SetActiveProfileToACustomOne",
     Nothing,
     [](auto& c) { return c.SetActiveProfile(3); },
     {result::cFail, result::cOutOfMemory, KORA4_S_NO_SUCH_CUSTOM_PROFILE}},
    {"SetDemoProfileAndEnable", Nothing, EnterDemo, cWriteFailures},
    {"RevertFromDemoMode",
     EnterDemo,
     [](auto& c) { return c.RevertFromDemoMode(); },
     {result::cFail, result::cOutOfMemory, KORA4_S_NOT_IN_DEMO_PROFILE}},
    {"ForceRevertFromDemoMode", EnterDemo, [](auto& c) { return c.ForceRevertFromDemoMode(); },
     cWriteFailures},
    {"RevertActiveProfile", Nothing, [](auto& c) { return c.RevertActiveProfile(); },
     cWriteFailures},
    {"CreateCustomProfile", Nothing, [](auto& c) { return c.CreateCustomProfile(4, u"n"); },
     cWriteFailures},
    {"SetCustomProfileName", Nothing, [](auto& c) { return c.SetCustomProfileName(3, u"n"); },
     cWriteFailures},
    {"DeleteCustomProfile",
     Nothing,
     [](auto& c) { return c.DeleteCustomProfile(3); },
     {result::cFail, result::cOutOfMemory, result::cFalse}},
    {"SetVeltoEnable", Nothing, [](auto& c) { return c.SetVeltoEnable(false); },
     cWriteFailures},
    {"ToggleVeltoEnable", Nothing,
     [](auto& c) {
         bool enable = false;
         return c.ToggleVeltoEnable(&enable);
     },
     cWriteFailures},
    {"SetTechnologyOnElseOff", Nothing,
     [](auto& c) { return c.SetTechnologyOnElseOff(eVolumeTech, false); }, cWriteFailures},
    {"SetSamplingPeriod", Nothing, [](auto& c) { return c.SetSamplingPeriod(40); },
     cWriteFailures},
    {"SetVolume", Nothing, SetValue<ApiTechnology::eVolumeLeveler>, cWriteFailures},
    {"SetIntelligentEQ", Nothing, SetValue<ApiTechnology::eIntelligentEQ>, cWriteFailures},
    {"SetGraphicEQ", Nothing, SetValue<ApiTechnology::eGraphicEQ>, cWriteFailures},
};

// ---- The matrix ----------------------------------------------------------------------------

unsigned s_faults = 0;

class FailingOperations : public ::testing::TestWithParam<Operation> {
  protected:
    static void TearDownTestSuite() { std::printf("%u faults\n", s_faults); }

    // False when the operation has no such call of the key access, or that no such code.
    bool Fail(unsigned call, std::size_t code, bool fromThenOn) {
        TestStore store;
        FailingKeyAccess access(store.m_access);
        KORA4UIKeysClient client(&access);
        Fill(store);
        EXPECT_EQ(result::cOk, client.ObjInitialize());
        EXPECT_EQ(result::cOk, client.InitialKeysLoad());
        EXPECT_LE(result::cOk, GetParam().prepare(client));
        // Something to be told of.
        store.PutUINT(eKeySetDynamic, PresetTriggerKey(eStandardEQTech), 77);
        access.Fail(call, code, fromThenOn);
        const HRESULT hr = GetParam().call(client);
        const std::size_t codes = access.CodesOfFirst();
        access.Heal();
        if (code >= codes)
            return false;
        ++s_faults;
        EXPECT_TRUE(hr == result::cOk || std::ranges::count(GetParam().allowed, hr) != 0)
            << std::hex << hr;
        EXPECT_FALSE(test::StoreMutex().IsHeld());
        ExpectUsable(client, store);
        return true;
    }

  private:
    static void Fill(TestStore& store) {
        store.PutText(eKeySetStatic, pkey::ProfileName(3), u"old");
        store.m_access.Put(eKeySetStatic, pkey::Setting(pkey::cVisualizationDataPid),
                           test::Blob(8));
    }

    // What is stored is what is given, whatever the client knew before.
    static void ExpectUsable(KORA4UIKeysClient& client, TestStore& store) {
        EXPECT_EQ(result::cOk, client.ForceRevertFromDemoMode());
        EXPECT_EQ(result::cOk, client.SetActiveProfile(1));
        EXPECT_EQ(1u, store.Profile());
        const std::uint32_t volume = 5;
        EXPECT_EQ(result::cOk,
                  client.SetPatchValue(ApiTechnology::eVolumeLeveler, sizeof volume, &volume));
        ApiGraphicEQ value{};
        EXPECT_EQ(result::cOk,
                  client.GetPatchValue(ApiTechnology::eVolumeLeveler, sizeof value, &value));
        ChangeSet changes;
        EXPECT_EQ(result::cOk, client.AnalyseChanges(&changes));
        store.PutSetting(pkey::cActivePresetPid, 2);
        EXPECT_EQ(result::cOk, client.AnalyseChanges(&changes));
        EXPECT_TRUE(changes.profileChanged);
        EXPECT_EQ(2u, changes.profile);
    }
};

TEST_P(FailingOperations, AreAnsweredAndLeaveTheClientUsable) {
    for (const bool fromThenOn : {false, true})
        for (unsigned call = 0; Fail(call, 0, fromThenOn) && !HasFailure(); ++call) {
            SCOPED_TRACE("call " + std::to_string(call) +
                         (fromThenOn ? " and all later ones" : ""));
            for (std::size_t code = 1; Fail(call, code, fromThenOn); ++code) {
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Operations, FailingOperations, ::testing::ValuesIn(cOperations),
                         [](const auto& testInfo) { return testInfo.param.name; });

}  // namespace
}  // namespace kora4
