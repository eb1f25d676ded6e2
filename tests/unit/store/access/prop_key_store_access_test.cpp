// SPDX-License-Identifier: MIT
// Typed values over the key access.
#include "store/access/prop_key_store_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "contract/patch_records.h"
#include "support/memory_key_access.h"
#include "support/store_traced.h"

namespace kora4 {
namespace {

using test::Operation;
using test::Texts;

constexpr PropertyKey cKey = pkey::Setting(77);

class PropKeyStoreAccess : public testing::Test {
  protected:
    PropKeyStoreAccess() {
        std::fill(std::begin(m_floats), std::end(m_floats), -1.0f);
        std::fill(std::begin(m_flags), std::end(m_flags), 9u);
    }

    void Store(test::StoredValue value) { m_store.Put(eKeySetStatic, cKey, std::move(value)); }
    HRESULT ReadArray() {
        return m_values.ReadNumericArray(eKeySetStatic, cKey, &m_count, m_floats);
    }
    HRESULT ReadFlags() {
        return m_values.ReadFlagArray(eKeySetStatic, cKey, &m_count, m_flags);
    }
    bool FloatsAreClear() const {
        return std::count(std::begin(m_floats), std::end(m_floats), 0.0f) == cMaxArrayElements;
    }

    test::MemoryKeyAccess m_store;
    KORA4PropKeyStoreAccess m_values{m_store};
    std::uint32_t m_count = 77;
    float m_floats[cMaxArrayElements];
    std::uint32_t m_flags[cMaxArrayElements];
};

TEST_F(PropKeyStoreAccess, ReadsANumberAsStored) {
    Store(0xFFFFFFFFu);
    std::uint32_t value = 0;
    EXPECT_EQ(result::cOk, m_values.ReadUINT(eKeySetStatic, cKey, &value));
    EXPECT_EQ(0xFFFFFFFFu, value);
}

TEST_F(PropKeyStoreAccess, SaysWhenANumberIsAbsentOrUnreadable) {
    std::uint32_t value = 5;
    EXPECT_EQ(result::cFalse, m_values.ReadUINT(eKeySetStatic, cKey, &value));
    Store(u"1");
    EXPECT_EQ(result::cFail, m_values.ReadUINT(eKeySetStatic, cKey, &value));
    EXPECT_EQ(5u, value);
}

TEST_F(PropKeyStoreAccess, TakesTheFallbackForEverythingButAGoodNumber) {
    EXPECT_EQ(200u, m_values.UINTOr(eKeySetStatic, cKey, 200));
    Store(test::Unreadable{});
    EXPECT_EQ(200u, m_values.UINTOr(eKeySetStatic, cKey, 200));
    Store(0u);
    EXPECT_EQ(0u, m_values.UINTOr(eKeySetStatic, cKey, 200));
}

TEST_F(PropKeyStoreAccess, ReadsAnyNonZeroNumberAsTrue) {
    bool value = true;
    Store(0u);
    EXPECT_EQ(result::cOk, m_values.ReadBool(eKeySetStatic, cKey, &value));
    EXPECT_FALSE(value);
    for (const std::uint32_t number : {1u, 2u, 0x80000000u}) {
        Store(number);
        EXPECT_TRUE(m_values.BoolOr(eKeySetStatic, cKey, false)) << number;
    }
}

TEST_F(PropKeyStoreAccess, TakesTheFallbackForAnUnreadableSwitch) {
    EXPECT_TRUE(m_values.BoolOr(eKeySetStatic, cKey, true));
    Store(u"0");
    EXPECT_TRUE(m_values.BoolOr(eKeySetStatic, cKey, true));
    EXPECT_FALSE(m_values.BoolOr(eKeySetStatic, cKey, false));
}

TEST_F(PropKeyStoreAccess, ReadsAFloatAndRefusesATextThatIsNone) {
    float value = 3.0f;
    Store(u"-20.500000");
    EXPECT_EQ(result::cOk, m_values.ReadFloat(eKeySetStatic, cKey, &value));
    EXPECT_EQ(-20.5f, value);
    Store(u"abc");
    EXPECT_EQ(result::cFail, m_values.ReadFloat(eKeySetStatic, cKey, &value));
    m_store.Erase(eKeySetStatic, cKey);
    EXPECT_EQ(result::cFalse, m_values.ReadFloat(eKeySetStatic, cKey, &value));
    EXPECT_EQ(-20.5f, value);
}

TEST_F(PropKeyStoreAccess, ReadsANumericArray) {
    Store(u"0100,0002,FFFF,8000");
    EXPECT_EQ(result::cOk, ReadArray());
    EXPECT_EQ(2u, m_count);
    EXPECT_EQ(-0.00390625f, m_floats[0]);
    EXPECT_EQ(-128.0f, m_floats[1]);
    EXPECT_EQ(0.0f, m_floats[2]);
}

TEST_F(PropKeyStoreAccess, LeavesNothingOfAnOldArrayWhenTheNewOneIsAbsentOrBroken) {
    EXPECT_EQ(result::cFalse, ReadArray());
    EXPECT_EQ(0u, m_count);
    EXPECT_TRUE(FloatsAreClear());

    m_count = 7;
    m_floats[3] = 5.0f;
    Store(u"0100,0003,FFFF,8000");
    EXPECT_EQ(result::cFail, ReadArray());
    EXPECT_EQ(0u, m_count);
    EXPECT_TRUE(FloatsAreClear());
}

TEST_F(PropKeyStoreAccess, RefusesACountAboveForty) {
    std::u16string text = u"0001,0029";
    for (int i = 0; i < 41; ++i)
        text += u",0001";
    Store(text);
    EXPECT_EQ(result::cFail, ReadArray());
    EXPECT_EQ(0u, m_count);
    std::u16string flags = u"29";
    for (int i = 0; i < 41; ++i)
        flags += u",1";
    Store(flags);
    EXPECT_EQ(result::cFail, ReadFlags());
    EXPECT_EQ(0u, m_count);
}

TEST_F(PropKeyStoreAccess, ReadsFlagsAsZeroOrOne) {
    Store(u"0003,0,1,ff");
    EXPECT_EQ(result::cOk, ReadFlags());
    EXPECT_EQ(3u, m_count);
    EXPECT_EQ(0u, m_flags[0]);
    EXPECT_EQ(1u, m_flags[1]);
    EXPECT_EQ(1u, m_flags[2]);
    EXPECT_EQ(0u, m_flags[3]);
}

TEST_F(PropKeyStoreAccess, RefusesANullCountWithoutAskingTheStore) {
    EXPECT_EQ(result::cInvalidArg,
              m_values.ReadNumericArray(eKeySetStatic, cKey, nullptr, m_floats));
    EXPECT_EQ(result::cInvalidArg,
              m_values.ReadFlagArray(eKeySetStatic, cKey, nullptr, m_flags));
    EXPECT_EQ(0u, m_store.Operations());
}

TEST_F(PropKeyStoreAccess, WritesNumberSwitchAndFloat) {
    EXPECT_EQ(result::cOk, m_values.WriteUINT(eKeySetDynamic, pkey::Setting(1), 0xFFFFFFFF));
    EXPECT_EQ(result::cOk, m_values.WriteBool(eKeySetDynamic, pkey::Setting(2), true));
    EXPECT_EQ(result::cOk, m_values.WriteBool(eKeySetDynamic, pkey::Setting(3), false));
    EXPECT_EQ(result::cOk, m_values.WriteFloat(eKeySetStatic, pkey::Setting(4), -0.33f));
    EXPECT_EQ((Texts{"W3 {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},1=4294967295",
                     "W3 {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},2=1",
                     "W3 {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},3=0",
                     "WT2 {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},4=-0.330000"}),
              m_store.Log());
}

TEST_F(PropKeyStoreAccess, AssertsWhenANumberIsTooWideAndWritesItsLowHalf) {
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_EQ(result::cOk, m_values.WriteUINT(eKeySetStatic, cKey, 0x1'0000'0007u));
    EXPECT_EQ(Texts{"dwValue == value"}, trace.FailedAssertions("KORA4UIKeysClient"));
    EXPECT_EQ(7u, m_store.NumberAt(eKeySetStatic, cKey));
}

TEST_F(PropKeyStoreAccess, WritesAnArrayAsScaleCountAndElements) {
    const float elements[] = {1.999f, -12.0f};
    EXPECT_EQ(result::cOk, m_values.WriteNumericArray(eKeySetStatic, cKey, 256, 2, elements));
    EXPECT_EQ(u"0100,0002,01ff,f400", m_store.TextAt(eKeySetStatic, cKey));
    EXPECT_EQ(result::cOk, ReadArray());
    EXPECT_EQ(1.99609375f, m_floats[0]);
}

TEST_F(PropKeyStoreAccess, WritesNoArrayWithAScaleOfZeroOrOf32768AndAbove) {
    const float elements[] = {1.0f};
    for (const std::uint32_t scale : {0u, 32768u, 0xFFFFFFFFu})
        EXPECT_EQ(result::cInvalidArg,
                  m_values.WriteNumericArray(eKeySetStatic, cKey, scale, 1, elements));
    EXPECT_EQ(0u, m_store.Operations());
    EXPECT_EQ(result::cOk, m_values.WriteNumericArray(eKeySetStatic, cKey, 32767, 1, elements));
}

TEST_F(PropKeyStoreAccess, WritesNoArrayThatDoesNotFitTheBuffer) {
    const std::vector<float> elements(300, 1.0f);
    EXPECT_EQ(result::cOutOfMemory,
              m_values.WriteNumericArray(eKeySetStatic, cKey, 1, 300, elements.data()));
    const std::vector<std::uint32_t> flags(600, 1);
    EXPECT_EQ(result::cOutOfMemory,
              m_values.WriteFlagArray(eKeySetStatic, cKey, 600, flags.data()));
    EXPECT_EQ(0u, m_store.Operations());
}

TEST_F(PropKeyStoreAccess, WritesFlagsAsCountAndZerosAndOnes) {
    const std::uint32_t flags[] = {0, 1, 7};
    EXPECT_EQ(result::cOk, m_values.WriteFlagArray(eKeySetStatic, cKey, 3, flags));
    EXPECT_EQ(u"0003,0,1,1", m_store.TextAt(eKeySetStatic, cKey));
}

TEST_F(PropKeyStoreAccess, PassesResultsOfTheStoreThrough) {
    m_store.SetOpen(false);
    std::uint32_t number = 0;
    bool flag = false;
    const float element = 1.0f;
    EXPECT_EQ(APOERR_NOT_INITIALIZED, m_values.ReadUINT(eKeySetStatic, cKey, &number));
    EXPECT_EQ(APOERR_NOT_INITIALIZED, m_values.ReadBool(eKeySetStatic, cKey, &flag));
    EXPECT_EQ(APOERR_NOT_INITIALIZED, ReadArray());
    EXPECT_EQ(APOERR_NOT_INITIALIZED, ReadFlags());
    EXPECT_EQ(APOERR_NOT_INITIALIZED, m_values.WriteUINT(eKeySetStatic, cKey, 1));
    EXPECT_EQ(APOERR_NOT_INITIALIZED, m_values.WriteFloat(eKeySetStatic, cKey, 1.0f));
    EXPECT_EQ(APOERR_NOT_INITIALIZED,
              m_values.WriteNumericArray(eKeySetStatic, cKey, 1, 1, &element));
}

TEST_F(PropKeyStoreAccess, TracesUnderTheTagOfTheClientAndTheArrayWriterUnderItsOwn) {
    const test::StoreTrace trace(trace::eStoreExitResult);
    const float elements[] = {1.0f};
    m_values.WriteUINT(eKeySetStatic, cKey, 1);
    m_values.WriteNumericArray(eKeySetStatic, cKey, 0, 1, elements);
    EXPECT_EQ(
        (Texts{">>", "<< hr: 0x00000000"}),
        MessagesOf(trace.Read("KORA4UIKeysClient"), "KORA4PropKeyStoreAccess::WriteUINT"));
    EXPECT_EQ(
        (Texts{">>", "<< hr: 0x80070057"}),
        MessagesOf(trace.Read("KORA4PropKey"), "KORA4PropKeyStoreAccess::WriteNumericArray"));
}

TEST_F(PropKeyStoreAccess, LeavesEntryAndExitLinesOfEveryPieceOfAnArray) {
    const std::vector<std::uint32_t> flags(495, 1);
    constexpr char cWriter[] = "KORA4PropKeyStoreAccess::WriteArrayNumericField";
    {
        const test::StoreTrace trace(trace::eAllEntryExit);
        m_values.WriteFlagArray(eKeySetStatic, cKey, 1, flags.data());
        EXPECT_EQ((Texts{">>", "<< hr: 0x00000000", ">>", "<< hr: 0x00000000"}),
                  MessagesOf(trace.Read("KORA4PropKey"), cWriter));
    }
    const test::StoreTrace trace(trace::eResults);
    m_values.WriteFlagArray(eKeySetStatic, cKey, 495, flags.data());
    EXPECT_EQ("<< hr: 0x8007000e", MessagesOf(trace.Read("KORA4PropKey"), cWriter).back());
}

TEST_F(PropKeyStoreAccess, LeavesNoLineOfAPieceWhenNothingIsTraced) {
    const test::StoreTrace trace(trace::eMessages);
    const std::uint32_t flags[] = {1};
    m_values.WriteFlagArray(eKeySetStatic, cKey, 1, flags);
    EXPECT_EQ(Texts{}, test::Messages(trace.Read("KORA4PropKey")));
}

}  // namespace
}  // namespace kora4
