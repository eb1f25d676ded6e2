// SPDX-License-Identifier: MIT
// The in-memory store answers as the registry does; what the other tests rest on.
#include "support/memory_key_access.h"

#include <gtest/gtest.h>

#include "contract/value_kind.h"
#include "store/access/task_memory.h"

namespace kora4 {
namespace {

constexpr PropertyKey cKey = pkey::Setting(9);
constexpr auto cBadKeySet = static_cast<KORA4KeySet>(5);

class MemoryStore : public testing::Test {
  protected:
    HRESULT ReadNumber(KORA4KeySet keySet) {
        std::uint32_t value;
        return m_store.ReadUINT(keySet, cKey, &value);
    }
    HRESULT ReadText(KORA4KeySet keySet) {
        TaskPtr<char16_t> text;
        return m_store.ReadText(keySet, cKey, text.Put());
    }
    HRESULT ReadBlob(KORA4KeySet keySet) {
        TaskPtr<std::uint8_t> data;
        std::uint32_t size;
        return m_store.ReadBlob(keySet, cKey, &size, data.Put());
    }

    test::MemoryKeyAccess m_store;
};

TEST_F(MemoryStore, GivesSFalseForWhatIsAbsentAndEFailForAnotherType) {
    EXPECT_EQ(result::cFalse, ReadNumber(eKeySetStatic));
    m_store.Put(eKeySetStatic, cKey, std::u16string(u"text"));
    EXPECT_EQ(result::cFail, ReadNumber(eKeySetStatic));
    EXPECT_EQ(result::cFail, ReadBlob(eKeySetStatic));
    EXPECT_EQ(result::cOk, ReadText(eKeySetStatic));
    EXPECT_EQ(result::cFalse, ReadText(eKeySetDynamic));
}

TEST_F(MemoryStore, FailsOnOtherKeySets) {
    EXPECT_EQ(result::cFail, ReadNumber(cBadKeySet));
    EXPECT_EQ(result::cFail, m_store.WriteUINT(cBadKeySet, cKey, 1));
    EXPECT_EQ(result::cInvalidArg, m_store.Delete(cBadKeySet, cKey));
    EXPECT_EQ(result::cInvalidArg, m_store.Delete(eKeySetPropertyStore, cKey));
}

TEST_F(MemoryStore, TakesWritesToTheAppKeysAndKeepsNone) {
    EXPECT_EQ(result::cOk, m_store.WriteText(eKeySetApp, cKey, u"command"));
    EXPECT_FALSE(m_store.Has(eKeySetApp, cKey));
}

TEST_F(MemoryStore, CannotReadATextOfMoreThan4096Bytes) {
    EXPECT_EQ(result::cOk, m_store.WriteText(eKeySetStatic, cKey,
                                             std::u16string(cMaxTextChars, u'x').c_str()));
    EXPECT_EQ(result::cOk, ReadText(eKeySetStatic));
    EXPECT_EQ(result::cOk, m_store.WriteText(eKeySetStatic, cKey,
                                             std::u16string(cMaxTextChars + 1, u'x').c_str()));
    EXPECT_EQ(result::cFail, ReadText(eKeySetStatic));
}

TEST_F(MemoryStore, FailsTheChosenWriteOnly) {
    m_store.FailWrite(2);
    EXPECT_EQ(result::cOk, m_store.WriteUINT(eKeySetStatic, cKey, 1));
    EXPECT_EQ(result::cFail, m_store.WriteUINT(eKeySetStatic, cKey, 2));
    EXPECT_EQ(1u, m_store.NumberAt(eKeySetStatic, cKey));
    EXPECT_EQ(result::cOk, m_store.WriteUINT(eKeySetStatic, cKey, 3));
}

TEST_F(MemoryStore, StopsWritingForGood) {
    m_store.StopWritingAfter(1);
    EXPECT_EQ(result::cOk, m_store.WriteUINT(eKeySetStatic, cKey, 1));
    EXPECT_EQ(result::cFail, m_store.WriteUINT(eKeySetStatic, cKey, 2));
    EXPECT_EQ(result::cFail, m_store.Delete(eKeySetStatic, cKey));
    EXPECT_EQ(1u, m_store.NumberAt(eKeySetStatic, cKey));
    m_store.HealAll();
    EXPECT_EQ(result::cOk, m_store.Delete(eKeySetStatic, cKey));
}

TEST_F(MemoryStore, CountsAndRecordsOperationsAndNotWhatOthersDo) {
    m_store.Put(eKeySetStatic, cKey, 1u);
    ReadNumber(eKeySetStatic);
    m_store.WriteUINT(eKeySetDynamic, cKey, 7);
    m_store.Delete(eKeySetStatic, cKey);
    EXPECT_EQ(1u, m_store.Reads());
    EXPECT_EQ(2u, m_store.Writes());
    EXPECT_EQ((std::vector<std::string>{"R2 {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},9",
                                        "W3 {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},9=7",
                                        "D2 {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},9"}),
              m_store.Log());
}

}  // namespace
}  // namespace kora4
