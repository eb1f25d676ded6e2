// SPDX-License-Identifier: MIT
// The store's codec, as the tools use it, held against a reader and writer of its own.
#include "settings/texts.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

#include "checks/documents_markdown.h"
#include "registry/stored_value.h"
#include "unit/tools/settings/slow_texts.h"

namespace kora4::tools {
namespace {

std::optional<std::uint32_t> BitsOf(const std::optional<float>& value) {
    return value ? std::optional(std::bit_cast<std::uint32_t>(*value)) : std::nullopt;
}

void ExpectSameFloat(const std::u16string& text) {
    EXPECT_EQ(BitsOf(test::ParseFloatText(text)), BitsOf(ParseFloatText(text))) << ToUtf8(text);
}

void ExpectSameArray(const std::u16string& text) {
    EXPECT_EQ(test::ParseNumericArray(text), ParseNumericArray(text)) << ToUtf8(text);
}

void ExpectSameFlags(const std::u16string& text) {
    EXPECT_EQ(test::ParseFlagArray(text), ParseFlagArray(text)) << ToUtf8(text);
}

void ExpectSame(const std::string& kind, const std::u16string& text) {
    if (kind == "float")
        ExpectSameFloat(text);
    else if (kind == "array")
        ExpectSameArray(text);
    else
        ExpectSameFlags(text);
}

class Random {
  public:
    explicit Random(std::uint32_t seed) : m_random(seed) {}

    std::uint32_t Pick(std::uint32_t bound) {
        return static_cast<std::uint32_t>(m_random() % bound);
    }
    // Any bits: large and small numbers, infinities and NaNs.
    float Float() {
        if (Pick(2) == 0)
            return std::bit_cast<float>(static_cast<std::uint32_t>(m_random()));
        return static_cast<float>(Pick(2000001)) / 10000.0f - 100.0f;
    }
    std::u16string Pieces(const std::vector<const char16_t*>& pieces, std::uint32_t longest) {
        std::u16string text;
        for (std::uint32_t i = Pick(longest + 1); i > 0; --i)
            text += pieces[Pick(static_cast<std::uint32_t>(pieces.size()))];
        return text;
    }

  private:
    std::mt19937 m_random;
};

std::u16string FromCell(std::string cell) {
    for (std::size_t at; (at = cell.find("\\t")) != std::string::npos;)
        cell.replace(at, 2, "\t");
    return ToUtf16(cell);
}

TEST(StoredTexts, ReadTheDocumentedTextsAsTheSlowReaderDoes) {
    const test::Document document =
        test::ParseDocument(test::ReadProjectFile("docs/store-schema.md"));
    int rows = 0;
    for (const char* const mark : {"written texts", "read texts"}) {
        const test::MarkedTable* const table = document.Find(mark);
        ASSERT_NE(nullptr, table) << mark;
        const auto column =
            std::find(table->columns.begin(), table->columns.end(), "Stored text") -
            table->columns.begin();
        for (const test::Row& row : table->rows) {
            ExpectSame(row[0], FromCell(row[static_cast<std::size_t>(column)]));
            ++rows;
        }
    }
    EXPECT_LT(35, rows);
}

TEST(StoredTexts, WriteTheDocumentedValuesAsDocumented) {
    const test::Document document =
        test::ParseDocument(test::ReadProjectFile("docs/store-schema.md"));
    const test::MarkedTable* const table = document.Find("written texts");
    ASSERT_NE(nullptr, table);
    for (const test::Row& row : table->rows) {
        std::vector<float> values;
        for (std::size_t at = 0; at < row[2].size();) {
            const std::size_t end = std::min(row[2].find(',', at), row[2].size());
            values.push_back(std::stof(row[2].substr(at, end - at)));
            at = end + 1;
        }
        if (row[0] == "float")
            EXPECT_EQ(row[3], ToUtf8(FormatFloatText(values[0])));
        else if (row[0] == "array")
            EXPECT_EQ(row[3], ToUtf8(*FormatNumericArray(
                                  static_cast<std::uint32_t>(std::stoul(row[1])), values)));
        else
            EXPECT_EQ(row[3], ToUtf8(*FormatFlagArray({values.begin(), values.end()})));
    }
}

TEST(StoredTexts, WriteFloatsAsTheSlowWriterDoes) {
    Random random(1);
    for (int i = 0; i < 100000; ++i) {
        const float value = random.Float();
        ASSERT_EQ(ToUtf8(test::FormatFloatText(value)), ToUtf8(FormatFloatText(value)));
    }
}

TEST(StoredTexts, ReadFloatsAsTheSlowReaderDoes) {
    Random random(2);
    const std::vector<const char16_t*> pieces = {
        u"0",  u"1",  u"9",  u"5", u"000000", u"99999999", u".",          u"-",        u"+",
        u"e",  u"E",  u" ",  u"3", u"e-4",    u"e3",       u"x",          u",",        u"\t",
        u"38", u"45", u"nf", u"i", u"n",      u"\u0660",   u"1e99999999", u"0.0000001"};
    for (int i = 0; i < 100000; ++i) {
        const std::u16string text =
            random.Pick(3) == 0 ? FormatFloatText(random.Float()) : random.Pieces(pieces, 8);
        ExpectSameFloat(text);
    }
}

TEST(StoredTexts, ReadFloatsAtTheEndsOfTheirRangeAsTheSlowReaderDoes) {
    for (const char16_t* const text :
         {u"3.4028234663852886e38",
          u"3.4028235677973366e38",
          u"3.4028235677973365e38",
          u"340282346638528859811704183484516925440",
          u"1e38",
          u"1e39",
          u"1e-45",
          u"7.006492321624085e-46",
          u"7.006492321624086e-46",
          u"1e-46",
          u"-1e-60",
          u"0e99999",
          u"0.00000000000000000000000000000000000000000000000000001e8",
          u"1e-99999999999999",
          u"1e99999999999999",
          u"-1e-99999999999999",
          u"5.",
          u".",
          u"1.5.5",
          u"-.5e",
          u"+-1"})
        ExpectSameFloat(text);
    ExpectSameFloat(std::u16string(1000, u'9') + u"e-990");
    ExpectSameFloat(u"0." + std::u16string(1000, u'0') + u"1e1001");
}

TEST(StoredTexts, WriteArraysAsTheSlowWriterDoes) {
    Random random(3);
    for (int i = 0; i < 20000; ++i) {
        const std::uint32_t scales[] = {1, 256, 3, 0, 0x7FFF, 0x8000, 77};
        const std::uint32_t scale = scales[random.Pick(7)];
        std::vector<float> elements(random.Pick(random.Pick(10) == 0 ? 250 : 41));
        for (float& element : elements)
            element = random.Float();
        ASSERT_EQ(test::FormatNumericArray(scale, elements),
                  FormatNumericArray(scale, elements))
            << elements.size();
    }
}

TEST(StoredTexts, WriteFlagArraysAsTheSlowWriterDoes) {
    for (std::uint32_t count = 0; count < 600; ++count) {
        const std::vector<bool> flags(count, count % 3 == 0);
        ASSERT_EQ(test::FormatFlagArray(flags), FormatFlagArray(flags)) << count;
    }
}

TEST(StoredTexts, ReadArraysAsTheSlowReaderDoes) {
    Random random(4);
    const std::vector<const char16_t*> pieces = {
        u"0001,", u"0002,", u"0000,", u"3,",  u"ffff,",   u"FFFF,",     u"0x10,",
        u",",     u" ",     u"\t",    u"1",   u"100000,", u"g",         u"0X2 ",
        u"x",     u"-1,",   u"28,",   u"29,", u"\uff11",  u"000000001,"};
    for (int i = 0; i < 100000; ++i) {
        const std::u16string text = random.Pieces(pieces, 8);
        ExpectSameArray(text);
        ExpectSameFlags(text);
    }
}

TEST(StoredTexts, ReadArraysToTheLimitsOfTokensAsTheSlowReaderDoes) {
    for (const std::size_t zeros : {250u, 252u, 253u, 254u, 255u})
        ExpectSameArray(std::u16string(zeros, u'0') + u"1,0001,0041");
    std::u16string text = u"0001,0028";
    for (int i = 0; i < 40; ++i)
        text += u",0041";
    ExpectSameArray(text);
    ExpectSameArray(text + u",");
    ExpectSameArray(text + u",0041");
}

}  // namespace
}  // namespace kora4::tools
