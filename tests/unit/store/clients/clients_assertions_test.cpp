// SPDX-License-Identifier: MIT
// What the clients of the store do when their own code breaks a rule: the broken rule is
// traced under its category, and the call goes on in the described way.
#include <gtest/gtest.h>

#include <cstring>

#include "store/clients/ui_keys_client.h"
#include "support/memory_key_access.h"
#include "support/store_traced.h"

namespace kora4 {
namespace {

using test::Texts;

constexpr char cUITag[] = "KORA4UIKeysClient";
constexpr auto cNoApiTechnology = static_cast<ApiTechnology>(99);

// The steps of a notification pass, without the frame that takes the mutex.
class BareClient : public KORA4KeysClient {
  public:
    using KORA4KeysClient::DynamicKeyUpdate;
    using KORA4KeysClient::KORA4KeysClient;
    using KORA4KeysClient::UpdateActivePreset;
};

// The parameter: whether assertions are traced. What the calls do does not depend on it.
class ClientAssertions : public testing::TestWithParam<bool> {
  protected:
    void ExpectAsserted(const char* tag, const Texts& texts) const {
        EXPECT_EQ(GetParam() ? texts : Texts{}, m_trace.FailedAssertions(tag));
    }

    test::StoreTrace m_trace{GetParam() ? trace::eAssertions : trace::eMessages};
    test::MemoryKeyAccess m_access;
};

TEST_P(ClientAssertions, ATechnologyThatIsNoneIsCopiedInNeitherDirection) {
    PatchRecords records{};
    const PatchRecords untouched{};
    std::uint32_t value = 7;
    EXPECT_EQ(result::cOk, ToASLPatch(records, cNoApiTechnology, sizeof value, &value));
    EXPECT_EQ(7u, value);
    EXPECT_EQ(result::cOk, FromASLPatch(records, cNoApiTechnology, sizeof value, &value));
    EXPECT_EQ(0, std::memcmp(&records, &untouched, sizeof records));
    ExpectAsserted(cUITag, {"!\"Invalid ASL technology\"", "!\"Invalid ASL patch field.\""});
}

TEST_P(ClientAssertions, APresetTechnologyThatIsNoneHasNoApiTechnology) {
    EXPECT_EQ(ApiTechnology::eNumberKORA4APITechnologies, APITechOf(ePresetNoTech));
    EXPECT_EQ(ApiTechnology::eNumberKORA4APITechnologies,
              APITechOf(eNumberKORA4PresetTechnologies));
    ExpectAsserted(cUITag, Texts(2, "!\"Unexpected technology for API tech conversion\""));
}

TEST_P(ClientAssertions, TheTechnologyWithoutAnApiNumberIsNotAsserted) {
    EXPECT_EQ(ApiTechnology::eNumberKORA4APITechnologies, APITechOf(eNGSurroundTech));
    EXPECT_EQ(0u, m_trace.NumberOfAssertions());
}

TEST_P(ClientAssertions, AProfileThatIsNoneIsWrittenAllTheSame) {
    BareClient client(&m_access);
    EXPECT_EQ(result::cOk, client.UpdateActivePreset({0, 9}));
    EXPECT_EQ(9u, m_access.NumberAt(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid)));
    ExpectAsserted(cUITag, {"IsAllowableProfile( newActivePreset )"});
}

TEST_P(ClientAssertions, AStartInAProfileThatIsNoneFailsOneForEachTechnology) {
    m_access.Put(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), 100u);
    KORA4UIKeysClient client(&m_access);
    ASSERT_EQ(result::cOk, client.ObjInitialize());
    EXPECT_EQ(result::cOk, client.InitialKeysLoad());
    ExpectAsserted("KORA4PropKey", Texts(7, "KORA4KeysClient::IsAllowableProfile( profile )"));
}

TEST_P(ClientAssertions, APassWithoutTheMutexFindsTheChangesAllTheSame) {
    m_access.Put(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), 1u);
    BareClient client(&m_access);
    StoreChanges changes;
    EXPECT_EQ(result::cOk, client.DynamicKeyUpdate(&changes));
    EXPECT_TRUE(changes.profileChanged);
    EXPECT_EQ(1u, changes.profile);
    ExpectAsserted("KORA4KeysClient", Texts(2, "m_regKeysMutex.IsAcquired()"));
}

INSTANTIATE_TEST_SUITE_P(Traced, ClientAssertions, testing::Values(true));
INSTANTIATE_TEST_SUITE_P(Suppressed, ClientAssertions, testing::Values(false));

// Whatever they are called with, as every other function of the client does.
TEST(ApiConversion, EachWritesItsEntryAndItsExit) {
    const test::StoreTrace trace(trace::eApiEntryExit);
    PatchRecords records{};
    ApiPatchValue value{};
    std::uint32_t size = 0;
    void* pField = nullptr;
    PresetTechOf(ApiTechnology::eVolumeLeveler);
    APITechOf(eVolumeTech);
    EXPECT_EQ(0u, ASLPatchSizeOf(cNoApiTechnology));
    GetASLPatchUnionField(ApiTechnology::eGraphicEQ, &value, &size, &pField);
    ToASLPatch(records, ApiTechnology::eVolumeLeveler, 0, &value);
    FromASLPatch(records, ApiTechnology::eVolumeLeveler, 4, &value.m_values);
    const auto messages = [lines = trace.Read(cUITag)](const std::string& function) {
        return test::MessagesOf(lines, "KORA4UIKeysClient::" + function);
    };
    for (const char* function : {"PresetTechOf", "APITechOf"})
        EXPECT_EQ((Texts{">>", "<<"}), messages(function)) << function;
    EXPECT_EQ((Texts{">>", "<<", ">>", "<<", ">>", "<<"}), messages("ASLPatchSizeOf"));
    EXPECT_EQ((Texts{">>", "<< hr: 0x80070057"}), messages("GetASLPatchUnionField"));
    EXPECT_EQ((Texts{">>", "<< hr: 0x80070057"}), messages("ToASLPatch"));
    EXPECT_EQ((Texts{">>", "<< hr: 0x00000000"}), messages("FromASLPatch"));
}

TEST(ApiConversion, RefusesABufferThatIsTooSmallInBothDirections) {
    PatchRecords records{};
    std::uint32_t value = 7;
    EXPECT_EQ(result::cInvalidArg,
              ToASLPatch(records, ApiTechnology::eVolumeLeveler, sizeof value - 1, &value));
    EXPECT_EQ(result::cInvalidArg,
              FromASLPatch(records, ApiTechnology::eVolumeLeveler, sizeof value - 1, &value));
    EXPECT_EQ(7u, value);
    EXPECT_EQ(0u, records.volume.amount);
}

}  // namespace
}  // namespace kora4
