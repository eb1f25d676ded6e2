// SPDX-License-Identifier: MIT
// One field on its way between the store and a record, by type.
#include "store/patches/field_access.h"

#include <gtest/gtest.h>

#include <cstring>

#include "contract/defaults.h"
#include "contract/field_tables.h"
#include "contract/patch_records.h"
#include "support/memory_key_access.h"
#include "support/store_traced.h"

namespace kora4 {
namespace {

using test::Texts;

constexpr KeyGuid cGuid = pkey::cPresetPatchGuid;
constexpr PropertyKey cKey{cGuid, 0};

// A record with one place for each kind of field, and what surrounds it.
struct Record {
    std::uint32_t version = 0xAAAAAAAA;
    std::uint32_t number = 0xBBBBBBBB;
    float level = -1.0f;
    std::uint32_t count[2] = {99, 99};
    float elements[2][cMaxArrayElements] = {};
    std::uint32_t flags[cMaxArrayElements] = {};
    std::uint32_t selection = 99;
    std::uint32_t behind = 0xCCCCCCCC;
};

constexpr std::uint32_t cNumbers[] = {10, 11, 12};
constexpr std::uint32_t cSwitches[] = {1, 0, 1};
constexpr float cLevels[] = {0.5f, 1.5f, 2.5f};
constexpr const char16_t* cTexts[][2] = {{u"0001,0001,0001", u"0001,0002,0002,0003"},
                                         {u"0001,0001,0011", u"0001,0001,0012"},
                                         {u"0001,0001,0021", u"0001,0001,0022"}};
constexpr defaults::TextList cRows[] = {cTexts[0], cTexts[1], cTexts[2]};
constexpr const char16_t* cFlagTexts[] = {u"2,1,0"};
constexpr defaults::TextList cFlagRows[] = {cFlagTexts, cFlagTexts, cFlagTexts};
constexpr const char16_t* cCurves[] = {u"0001,0001,0005", u"0001,0001,0006", u"0001,0001,0007"};
constexpr std::uint16_t cCurveRows[] = {2, 1, 0};
constexpr EnumFieldDef cEnum{cCurveRows, cCurves, 3};

constexpr KORA4FieldDef cUnsigned = fields::Unsigned(3, offsetof(Record, number), cNumbers);
constexpr KORA4FieldDef cBoolean = fields::Boolean(4, offsetof(Record, number), cSwitches);
constexpr KORA4FieldDef cFloat = fields::Float(5, offsetof(Record, level), cLevels);
constexpr KORA4FieldDef cArrays = fields::FloatArrays(
    6, offsetof(Record, count), offsetof(Record, elements), 2, fields::cQ8, cRows);
constexpr KORA4FieldDef cSelected = fields::SelectedArray(
    8, offsetof(Record, count), offsetof(Record, elements), offsetof(Record, selection), cEnum);
constexpr KORA4FieldDef cFlags =
    fields::FlagArray(9, offsetof(Record, count), offsetof(Record, flags), cFlagRows);

class FieldDef : public testing::Test {
  protected:
    ~FieldDef() override {
        EXPECT_EQ(0xAAAAAAAAu, m_record.version);
        EXPECT_EQ(0xCCCCCCCCu, m_record.behind);
    }

    void Store(std::uint32_t pid, test::StoredValue value) {
        m_store.Put(eKeySetStatic, {cGuid, pid}, std::move(value));
    }
    HRESULT Load(const KORA4FieldDef& field, std::uint32_t row = 0, bool defaultsOnly = false) {
        return LoadField(field, m_store, cKey, row, defaultsOnly, &m_record);
    }
    HRESULT Write(const KORA4FieldDef& field) {
        return WriteField(field, m_store, cKey, &m_record);
    }
    std::string Entry(test::Operation operation, std::uint32_t pid,
                      const std::string& value = {}) {
        return test::LogEntry(operation, eKeySetStatic, {cGuid, pid}, value);
    }

    test::MemoryKeyAccess m_store;
    Record m_record;
};

TEST_F(FieldDef, LoadsAStoredNumber) {
    Store(3, 0xFFFFFFFFu);
    EXPECT_EQ(result::cOk, Load(cUnsigned));
    EXPECT_EQ(0xFFFFFFFFu, m_record.number);
    EXPECT_EQ(Texts{Entry(test::Operation::eReadUINT, 3)}, m_store.Log());
}

TEST_F(FieldDef, TakesTheRowsDefaultForAnAbsentOrUnreadableNumber) {
    for (std::uint32_t row = 0; row < 3; ++row) {
        m_store.Erase(eKeySetStatic, {cGuid, 3});
        EXPECT_EQ(result::cOk, Load(cUnsigned, row));
        EXPECT_EQ(10 + row, m_record.number);
        m_record.number = 0;
        Store(3, u"5");
        EXPECT_EQ(result::cOk, Load(cUnsigned, row));
        EXPECT_EQ(10 + row, m_record.number);
    }
}

TEST_F(FieldDef, AsksTheStoreForNothingWhenOnlyDefaultsAreWanted) {
    Store(3, 7u);
    Store(5, u"7.0");
    Store(6, u"0001,0001,0007");
    Store(8, 0u);
    Store(9, u"1,1");
    for (const KORA4FieldDef& field : {cUnsigned, cBoolean, cFloat, cArrays, cSelected, cFlags})
        EXPECT_EQ(result::cOk, Load(field, 1, true));
    EXPECT_EQ(0u, m_store.Operations());
    EXPECT_EQ(1.5f, m_record.level);
    EXPECT_EQ(1u, m_record.selection);
    EXPECT_EQ(2u, m_record.count[0]);
}

TEST_F(FieldDef, LoadsAnyNonZeroSwitchAsOne) {
    for (const std::uint32_t number : {1u, 2u, 0xFFFFFFFFu}) {
        Store(4, number);
        EXPECT_EQ(result::cOk, Load(cBoolean, 1));
        EXPECT_EQ(1u, m_record.number);
    }
    Store(4, 0u);
    EXPECT_EQ(result::cOk, Load(cBoolean));
    EXPECT_EQ(0u, m_record.number);
}

TEST_F(FieldDef, TakesTheDefaultForAnUnreadableSwitch) {
    Store(4, test::Unreadable{});
    EXPECT_EQ(result::cOk, Load(cBoolean, 1));
    EXPECT_EQ(0u, m_record.number);
    EXPECT_EQ(result::cOk, Load(cBoolean, 2));
    EXPECT_EQ(1u, m_record.number);
}

TEST_F(FieldDef, LoadsAFloatFromItsText) {
    Store(5, u"-3.250000");
    EXPECT_EQ(result::cOk, Load(cFloat));
    EXPECT_EQ(-3.25f, m_record.level);
}

TEST_F(FieldDef, TakesTheDefaultForAFloatTextThatDoesNotConvert) {
    const test::StoredValue values[] = {u"abc", u"", u"nan", u"inf", u"0x10", 5u};
    for (const test::StoredValue& value : values) {
        m_record.level = -1.0f;
        Store(5, value);
        EXPECT_EQ(result::cOk, Load(cFloat, 2));
        EXPECT_EQ(2.5f, m_record.level);
    }
}

TEST_F(FieldDef, LoadsEachArrayFromAPropertyIdOfItsOwn) {
    Store(6, u"0100,0002,FFFF,8000");
    Store(7, u"0002,0001,0003");
    EXPECT_EQ(result::cOk, Load(cArrays));
    EXPECT_EQ(2u, m_record.count[0]);
    EXPECT_EQ(-0.00390625f, m_record.elements[0][0]);
    EXPECT_EQ(-128.0f, m_record.elements[0][1]);
    EXPECT_EQ(1u, m_record.count[1]);
    EXPECT_EQ(1.5f, m_record.elements[1][0]);
    EXPECT_EQ(
        (Texts{Entry(test::Operation::eReadText, 6), Entry(test::Operation::eReadText, 7)}),
        m_store.Log());
}

TEST_F(FieldDef, TakesTheDefaultForTheOneArrayThatIsBroken) {
    Store(6, u"0001,0002,0001");  // an element is missing
    Store(7, u"0001,0001,0009");
    EXPECT_EQ(result::cOk, Load(cArrays));
    EXPECT_EQ(1u, m_record.count[0]);
    EXPECT_EQ(1.0f, m_record.elements[0][0]);
    EXPECT_EQ(1u, m_record.count[1]);
    EXPECT_EQ(9.0f, m_record.elements[1][0]);
}

TEST_F(FieldDef, TakesEachArraysOwnDefaultText) {
    EXPECT_EQ(result::cOk, Load(cArrays));
    EXPECT_EQ(1.0f, m_record.elements[0][0]);
    EXPECT_EQ(2u, m_record.count[1]);
    EXPECT_EQ(3.0f, m_record.elements[1][1]);
    EXPECT_EQ(result::cOk, Load(cArrays, 2));
    EXPECT_EQ(33.0f, m_record.elements[0][0]);
    EXPECT_EQ(34.0f, m_record.elements[1][0]);
}

TEST_F(FieldDef, LeavesAnArrayWithoutADefaultTextEmptyAndAssertsIt) {
    const char16_t* const texts[] = {nullptr, u"0001,0001,0004"};
    const defaults::TextList rows[] = {texts};
    const KORA4FieldDef field = fields::FloatArrays(
        6, offsetof(Record, count), offsetof(Record, elements), 2, fields::cQ8, rows);
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_EQ(result::cOk, Load(field));
    EXPECT_EQ(0u, m_record.count[0]);
    EXPECT_EQ(1u, m_record.count[1]);
    EXPECT_EQ(Texts{"pwDefaultString != NULL"}, trace.FailedAssertions("KORA4PropKeyFields"));
}

TEST_F(FieldDef, FailsOnABrokenDefaultText) {
    const char16_t* const texts[] = {u"0001,0001,0004", u"broken"};
    const defaults::TextList rows[] = {texts};
    const KORA4FieldDef field = fields::FloatArrays(
        6, offsetof(Record, count), offsetof(Record, elements), 2, fields::cQ8, rows);
    EXPECT_EQ(result::cFail, Load(field));
    EXPECT_EQ(1u, m_record.count[0]);
    EXPECT_EQ(0u, m_record.count[1]);
}

TEST_F(FieldDef, LoadsTheSelectedCurveFromTheBuiltInTable) {
    for (std::uint32_t index = 0; index < 3; ++index) {
        Store(8, index);
        EXPECT_EQ(result::cOk, Load(cSelected));
        EXPECT_EQ(index, m_record.selection);
        EXPECT_EQ(1u, m_record.count[0]);
        EXPECT_EQ(5.0f + static_cast<float>(index), m_record.elements[0][0]);
    }
    EXPECT_EQ(Texts(3, Entry(test::Operation::eReadUINT, 8)), m_store.Log())
        << "the curve itself is never read";
}

TEST_F(FieldDef, TakesTheRowsCurveForAnIndexThatIsOutOfRangeOrUnreadable) {
    const test::StoredValue values[] = {3u, 0xFFFFFFFFu, u"1", test::Unreadable{}};
    for (const test::StoredValue& value : values) {
        Store(8, value);
        EXPECT_EQ(result::cOk, Load(cSelected, 0));
        EXPECT_EQ(2u, m_record.selection);
        EXPECT_EQ(7.0f, m_record.elements[0][0]);
    }
    m_store.Erase(eKeySetStatic, {cGuid, 8});
    EXPECT_EQ(result::cOk, Load(cSelected, 1));
    EXPECT_EQ(1u, m_record.selection);
}

TEST_F(FieldDef, AssertsTheDescriptionOfASelectedArray) {
    const test::StoreTrace trace(trace::eAssertions);
    KORA4FieldDef field = cSelected;
    field.m_numArrays = 2;
    EXPECT_EQ(result::cOk, Load(field));
    field = cSelected;
    field.pDefaults = nullptr;
    EXPECT_EQ(result::cFail, Load(field));
    const EnumFieldDef empty{cCurveRows, cCurves, 0};
    field.pDefaults = &empty;
    EXPECT_EQ(result::cFail, Load(field));
    EXPECT_EQ((Texts{"1 == m_numArrays", "pEnumFieldDef != NULL",
                     "(pEnumDefaults != NULL) && (pEnumValues != NULL) && (enumLimit > 0)"}),
              trace.FailedAssertions("KORA4PropKeyFields"));
}

TEST_F(FieldDef, LoadsFlagsFromTheirText) {
    Store(9, u"0003,0,1,2");
    EXPECT_EQ(result::cOk, Load(cFlags));
    EXPECT_EQ(3u, m_record.count[0]);
    EXPECT_EQ(0u, m_record.flags[0]);
    EXPECT_EQ(1u, m_record.flags[1]);
    EXPECT_EQ(1u, m_record.flags[2]);
}

TEST_F(FieldDef, TakesTheDefaultForBrokenFlags) {
    for (const char16_t* text : {u"", u"3,0,1", u"1,1 1", u"29", u"1,x"}) {
        Store(9, text);
        EXPECT_EQ(result::cOk, Load(cFlags));
        EXPECT_EQ(2u, m_record.count[0]);
        EXPECT_EQ(1u, m_record.flags[0]);
    }
}

TEST_F(FieldDef, FailsInTheSameWayWhileAssertionsAreNotTraced) {
    const test::StoreTrace trace(trace::eMessages);
    KORA4FieldDef field = cUnsigned;
    field.typeCode = u'x';
    EXPECT_EQ(result::cFail, Load(field));
    EXPECT_EQ(result::cFail, Write(field));
    field = cSelected;
    field.m_numArrays = 2;
    EXPECT_EQ(result::cOk, Load(field));
    field = cSelected;
    const EnumFieldDef noRows{nullptr, cCurves, 3}, noCurves{cCurveRows, nullptr, 3};
    for (const EnumFieldDef* pDefaults :
         {static_cast<const EnumFieldDef*>(nullptr), &noRows, &noCurves}) {
        field.pDefaults = pDefaults;
        EXPECT_EQ(result::cFail, Load(field));
    }
    const defaults::TextList noTexts[] = {nullptr};
    EXPECT_EQ(result::cOk,
              Load(fields::FloatArrays(6, offsetof(Record, count), offsetof(Record, elements),
                                       1, fields::cQ8, noTexts)));
    EXPECT_EQ(0u, m_record.count[0]);
    EXPECT_EQ(0u, trace.NumberOfAssertions());
}

TEST_F(FieldDef, FailsOnAnUnknownTypeAndAssertsIt) {
    KORA4FieldDef field = cUnsigned;
    field.typeCode = u'x';
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_EQ(result::cFail, Load(field));
    EXPECT_EQ(result::cFail, Write(field));
    EXPECT_EQ((Texts{"!\"Invalid field type\"", "!\"Invalid field type\""}),
              trace.FailedAssertions("KORA4PropKeyFields"));
    EXPECT_EQ(0u, m_store.Operations());
    EXPECT_EQ(0xBBBBBBBBu, m_record.number);
}

TEST_F(FieldDef, WritesEachTypeToTheStaticKeys) {
    m_record.number = 1;
    m_record.level = -0.25f;
    m_record.count[0] = 2;
    m_record.count[1] = 1;
    m_record.elements[0][0] = 1.999f;
    m_record.elements[0][1] = -12.0f;
    m_record.selection = 4;
    m_record.flags[1] = 5;
    for (const KORA4FieldDef& field : {cUnsigned, cBoolean, cFloat, cArrays, cSelected, cFlags})
        EXPECT_EQ(result::cOk, Write(field));
    using test::Operation;
    EXPECT_EQ((Texts{Entry(Operation::eWriteUINT, 3, "1"), Entry(Operation::eWriteUINT, 4, "1"),
                     Entry(Operation::eWriteText, 5, "-0.250000"),
                     Entry(Operation::eWriteText, 6, "0100,0002,01ff,f400"),
                     Entry(Operation::eWriteText, 7, "0100,0001,0000"),
                     Entry(Operation::eWriteUINT, 8, "4"),
                     Entry(Operation::eWriteText, 9, "0002,0,1")}),
              m_store.Log());
}

TEST_F(FieldDef, WritesNoArrayAfterOneThatFailed) {
    m_record.count[0] = m_record.count[1] = 1;
    m_store.FailWrite(1, result::cOutOfMemory);
    EXPECT_EQ(result::cOutOfMemory, Write(cArrays));
    EXPECT_EQ(1u, m_store.Operations());
}

TEST_F(FieldDef, WritesNoMoreThanFortyElements) {
    m_record.count[0] = 41;
    m_record.count[1] = 0xFFFFFFFF;
    EXPECT_EQ(result::cOk, Write(cArrays));
    const std::u16string forty = m_store.TextAt(eKeySetStatic, {cGuid, 6}).value_or(u"");
    EXPECT_EQ(u"0100,0028,0000", forty.substr(0, 14));
    EXPECT_EQ(4 + 41 * 5u, forty.size());
    EXPECT_EQ(forty, m_store.TextAt(eKeySetStatic, {cGuid, 7}));
}

TEST_F(FieldDef, TracesEntryAndResult) {
    const test::StoreTrace trace(trace::eStoreExitResult);
    m_store.SetOpen(false);
    Load(cUnsigned);
    Write(cUnsigned);
    const auto lines = trace.Read("KORA4PropKeyFields");
    EXPECT_EQ((Texts{">>", "<< hr: 0x00000000"}), MessagesOf(lines, "KORA4FieldDef::Load"));
    EXPECT_EQ((Texts{">>", "<< hr: 0x887d0002"}), MessagesOf(lines, "KORA4FieldDef::Write"));
}

}  // namespace
}  // namespace kora4
