// SPDX-License-Identifier: MIT
// The text form of numeric arrays and flag arrays.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "contract/codec/array_text.h"

namespace kora4::codec {
namespace {

constexpr float cJunk = 77.0f;

struct Numbers {
    HRESULT hr = result::cOk;
    std::uint32_t count = 99;
    float elements[cArrayCapacity];
};

Numbers Decode(const std::u16string& text) {
    Numbers numbers;
    std::fill_n(numbers.elements, cArrayCapacity, cJunk);
    numbers.hr = DecodeNumericArray(text.c_str(), &numbers.count, numbers.elements);
    return numbers;
}

std::vector<float> Values(const std::u16string& text) {
    const Numbers numbers = Decode(text);
    EXPECT_EQ(result::cOk, numbers.hr);
    return {numbers.elements, numbers.elements + numbers.count};
}

// A refused text gives E_FAIL, count 0 and cleared places.
void ExpectRefused(const std::u16string& text) {
    SCOPED_TRACE(std::string(text.begin(), text.end()).substr(0, 80));
    const Numbers numbers = Decode(text);
    EXPECT_EQ(result::cFail, numbers.hr);
    EXPECT_EQ(0u, numbers.count);
    EXPECT_EQ(std::ptrdiff_t{cArrayCapacity},
              std::count(numbers.elements, numbers.elements + cArrayCapacity, 0.0f));
}

struct Flags {
    HRESULT hr = result::cOk;
    std::uint32_t count = 99;
    std::uint32_t flags[cArrayCapacity];
};

Flags DecodeFlags(const std::u16string& text) {
    Flags flags;
    std::fill_n(flags.flags, cArrayCapacity, 7u);
    flags.hr = DecodeFlagArray(text.c_str(), &flags.count, flags.flags);
    return flags;
}

std::vector<std::uint32_t> FlagValues(const std::u16string& text) {
    const Flags flags = DecodeFlags(text);
    EXPECT_EQ(result::cOk, flags.hr);
    return {flags.flags, flags.flags + flags.count};
}

void ExpectFlagsRefused(const std::u16string& text) {
    SCOPED_TRACE(std::string(text.begin(), text.end()).substr(0, 80));
    const Flags flags = DecodeFlags(text);
    EXPECT_EQ(result::cFail, flags.hr);
    EXPECT_EQ(0u, flags.count);
    EXPECT_EQ(std::ptrdiff_t{cArrayCapacity},
              std::count(flags.flags, flags.flags + cArrayCapacity, 0u));
}

std::u16string Encode(std::uint32_t scale, const std::vector<float>& elements) {
    char16_t text[cArrayTextChars];
    EXPECT_EQ(result::cOk,
              EncodeNumericArray(scale, static_cast<std::uint32_t>(elements.size()),
                                 elements.data(), text));
    return text;
}

std::u16string EncodeFlags(const std::vector<std::uint32_t>& flags) {
    char16_t text[cArrayTextChars];
    EXPECT_EQ(result::cOk,
              EncodeFlagArray(static_cast<std::uint32_t>(flags.size()), flags.data(), text));
    return text;
}

std::u16string Repeat(std::size_t times, const std::u16string& piece) {
    std::u16string text;
    for (std::size_t i = 0; i < times; ++i)
        text += piece;
    return text;
}

TEST(NumericArrayReader, TakesElementsAsSigned16BitNumbersOverTheScale) {
    EXPECT_EQ((std::vector<float>{-0.00390625f, -128.0f}), Values(u"0100,0002,FFFF,8000"));
    EXPECT_EQ((std::vector<float>{65.0f, 32767.0f}), Values(u"0001,0002,0041,7fff"));
}

TEST(NumericArrayReader, ClearsThePlacesBehindTheElements) {
    const Numbers numbers = Decode(u"1,1,5");
    EXPECT_EQ(result::cOk, numbers.hr);
    EXPECT_EQ(5.0f, numbers.elements[0]);
    EXPECT_EQ(39, std::count(numbers.elements + 1, numbers.elements + cArrayCapacity, 0.0f));
}

TEST(NumericArrayReader, DividesInDoublePrecisionAndRoundsOnce) {
    EXPECT_EQ(std::vector<float>{static_cast<float>(1.0 / 3.0)}, Values(u"0003,0001,0001"));
    EXPECT_EQ(std::vector<float>{static_cast<float>(5.0 / 32767)}, Values(u"7fff,0001,0005"));
}

TEST(NumericArrayReader, AcceptsCommasBlanksTabsAndLineEndsAsSeparators) {
    const std::vector<float> expected{20.0f, 47.0f};
    EXPECT_EQ(expected, Values(u"0001, 0002, 0014, 002F"));
    EXPECT_EQ(expected, Values(u"0001 0002 0014 002F"));
    EXPECT_EQ(expected, Values(u"0001\t0002\t0014\t002F"));
    EXPECT_EQ(expected, Values(u"0001\r\n0002 ,\v0014\f,002F\r\n"));
    EXPECT_EQ(expected, Values(u" \t0001 , 0002 ,0014 , 002F  "));
}

TEST(NumericArrayReader, ReadsDigitsOfEitherCaseAndAnOptionalPrefix) {
    EXPECT_EQ((std::vector<float>{2748.0f, 15.0f}), Values(u"0x0001,0X2,0xAbC,0Xf"));
    EXPECT_EQ((std::vector<float>{171.0f, 239.0f}), Values(u"1,2,ab,EF"));
}

TEST(NumericArrayReader, AcceptsAnEmptyArray) {
    EXPECT_TRUE(Values(u"0100,0000").empty());
    EXPECT_TRUE(Values(u"0100,0000,").empty());
}

TEST(NumericArrayReader, AcceptsATrailingComma) {
    EXPECT_EQ((std::vector<float>{3.0f, 4.0f}), Values(u"1,2,3,4,"));
    EXPECT_EQ((std::vector<float>{3.0f, 4.0f}), Values(u"1,2,3,4 , \t"));
}

TEST(NumericArrayReader, RefusesLeadingAndDoubledCommas) {
    ExpectRefused(u",1,2,3,4");
    ExpectRefused(u" ,1,2,3,4");
    ExpectRefused(u"1,,2,3,4");
    ExpectRefused(u"1,2,3,,4");
    ExpectRefused(u"1,2,3, ,4");
    ExpectRefused(u"1,2,3,4,,");
}

TEST(NumericArrayReader, RefusesTokensThatAreNotWhollyHexadecimal) {
    for (const char16_t* pToken : {u"g", u"12g4", u"1.0", u"-1", u"+1", u"0x", u"0X", u"x1",
                                   u"0x0x1", u"1;", u"\u0661", u"\uFF11", u"00\u04410"})
        ExpectRefused(std::u16string(u"1,1,") + pToken);
    ExpectRefused(u"0x,1,1");
    ExpectRefused(u"1,zz,1");
}

TEST(NumericArrayReader, RefusesOtherWhiteSpace) {
    ExpectRefused(u"1,1,\u00A05");
    ExpectRefused(u"1,1,5\u2003");
}

TEST(NumericArrayReader, RefusesFewerElementsThanTheCount) {
    std::u16string text = u"0001,0014";
    text += Repeat(19, u",0005");
    ExpectRefused(text);
    EXPECT_EQ(20u, Values(text + u",0005").size());
    ExpectRefused(u"1");
    ExpectRefused(u"1,1");
    ExpectRefused(u"1,1,");
}

TEST(NumericArrayReader, RefusesTrailingText) {
    ExpectRefused(u"1,1,5,6");
    ExpectRefused(u"1,1,5 6");
    ExpectRefused(u"1,1,5,x");
    ExpectRefused(u"1,0,5");
}

TEST(NumericArrayReader, RefusesElementsOf0x10000AndAbove) {
    EXPECT_EQ(std::vector<float>{-1.0f}, Values(u"1,1,FFFF"));
    EXPECT_EQ(std::vector<float>{-1.0f}, Values(u"1,1,0000000FFFF"));
    ExpectRefused(u"1,1,10000");
    ExpectRefused(u"1,1,1FFFF");
    ExpectRefused(u"1,1,100000001");
    ExpectRefused(u"1,1,10000000000000001");
}

TEST(NumericArrayReader, RefusesNumbersThatDoNotFit32Bits) {
    EXPECT_EQ(0u, Values(u"ffffffff,0").size());
    ExpectRefused(u"100000000,0");
    ExpectRefused(u"100000001,1,1");
    ExpectRefused(u"1,100000001,1");
    ExpectRefused(u"1,10000000000000001,1");
}

TEST(NumericArrayReader, RefusesCountsAbove40) {
    EXPECT_EQ(cArrayCapacity, Values(u"1,28" + Repeat(cArrayCapacity, u",1")).size());
    ExpectRefused(u"1,29" + Repeat(41, u",1"));
    ExpectRefused(u"1,FFFFFFFF,1");
}

TEST(NumericArrayReader, RefusesAScaleOfZero) {
    ExpectRefused(u"0000,0001,0005");
    ExpectRefused(u"0,0");
}

TEST(NumericArrayReader, RefusesTokensOf255CharactersAndMore) {
    const std::u16string longest = std::u16string(253, u'0') + u"5";
    EXPECT_EQ(std::vector<float>{5.0f}, Values(u"1,1," + longest));
    ExpectRefused(u"1,1,0" + longest);
    EXPECT_EQ(std::vector<float>{5.0f}, Values(u"1,1,0x" + longest.substr(2)));
    ExpectRefused(u"1,1,0x" + longest.substr(1));
    ExpectRefused(u"1,1," + std::u16string(100000, u'0') + u"5");
}

TEST(NumericArrayReader, RefusesAnEmptyOrMissingText) {
    ExpectRefused(u"");
    ExpectRefused(u" \t\r\n");
    std::uint32_t count = 99;
    float elements[cArrayCapacity] = {cJunk};
    EXPECT_EQ(result::cFail, DecodeNumericArray(nullptr, &count, elements));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(0.0f, elements[0]);
}

TEST(NumericArrayReader, ReportsNullOutPointersAsInvalidArguments) {
    std::uint32_t count = 99;
    float elements[cArrayCapacity];
    EXPECT_EQ(result::cInvalidArg, DecodeNumericArray(u"1,0", nullptr, elements));
    EXPECT_EQ(result::cInvalidArg, DecodeNumericArray(u"1,0", &count, nullptr));
}

TEST(NumericArrayReader, SurvivesEveryTextOfOneBrokenCharacter) {
    const std::u16string good = u"0100,0003,f400,0041,8000";
    ASSERT_EQ(3u, Values(good).size());
    for (std::size_t place = 0; place < good.size(); ++place) {
        for (char16_t c : {u'g', u'/', u':', u'@', u'G', u'`', u'\u0130', u'\uFFFF'}) {
            std::u16string text = good;
            text[place] = c;
            ExpectRefused(text);
        }
    }
}

TEST(FlagArrayReader, StoresOneForEveryNumberThatIsNotZero) {
    EXPECT_EQ((std::vector<std::uint32_t>{0, 1, 1, 1, 0}),
              FlagValues(u"0005,0,1,2,ffffffff,00"));
}

TEST(FlagArrayReader, SharesTheRulesOfTheTokens) {
    EXPECT_EQ((std::vector<std::uint32_t>{1, 0}), FlagValues(u" 0x2 1\t0 , "));
    EXPECT_TRUE(FlagValues(u"0000").empty());
    EXPECT_EQ(cArrayCapacity, FlagValues(u"28" + Repeat(cArrayCapacity, u",1")).size());
    for (const char16_t* pText : {u"", u",1,1", u"2,1", u"1,1,1", u"1,,1", u"1,1,,", u"1,y",
                                  u"1,1 z", u"1,100000000", u"1,0x"})
        ExpectFlagsRefused(pText);
    ExpectFlagsRefused(u"29" + Repeat(41, u",1"));
    ExpectFlagsRefused(u"1," + std::u16string(255, u'0'));
}

TEST(FlagArrayReader, ReportsNullOutPointersAndMissingTexts) {
    std::uint32_t count = 99;
    std::uint32_t flags[cArrayCapacity] = {7};
    EXPECT_EQ(result::cInvalidArg, DecodeFlagArray(u"0", nullptr, flags));
    EXPECT_EQ(result::cInvalidArg, DecodeFlagArray(u"0", &count, nullptr));
    EXPECT_EQ(result::cFail, DecodeFlagArray(nullptr, &count, flags));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(0u, flags[0]);
}

TEST(NumericArrayWriter, WritesScaleCountAndElementsInLowerCase) {
    EXPECT_EQ(u"0100,0003,f400,0000,0c80", Encode(256, {-12.0f, 0.0f, 12.5f}));
    EXPECT_EQ(u"0001,0001,0041", Encode(1, {65.0f}));
    EXPECT_EQ(u"7fff,0000", Encode(32767, {}));
}

TEST(NumericArrayWriter, TruncatesTowardZero) {
    EXPECT_EQ(u"0100,0002,01ff,fe01", Encode(256, {1.999f, -1.999f}));
    EXPECT_EQ(std::vector<float>{1.99609375f}, Values(u"0100,0001,01ff"));
    EXPECT_EQ(u"0001,0003,0000,0000,ffff", Encode(1, {0.99f, -0.99f, -1.5f}));
}

TEST(NumericArrayWriter, KeepsTheLow16BitsOfWhatFits64) {
    EXPECT_EQ(u"0001,0003,0042,ffff,0100",
              Encode(1, {65536.0f + 66, -65537.0f, 2147483648.0f + 256}));
    const float big = 9223371487098961920.0f;  // the last float below 2^63
    EXPECT_EQ(u"0001,0002,0000,0000", Encode(1, {big, -big}));
    EXPECT_EQ(u"0003,0001,c000", Encode(3, {std::ldexp(1.0f, 14)}));
}

TEST(NumericArrayWriter, StoresZeroForWhatDoesNotFit64Bits) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float max = std::numeric_limits<float>::max();
    const float edge = std::ldexp(1.0f, 63);
    EXPECT_EQ(Encode(256, {nan, inf, -inf, max, -max, edge, -edge}),
              u"0100,0007" + Repeat(7, u",0000"));
    EXPECT_EQ(u"7fff,0002,0000,0000", Encode(32767, {edge / 4, -edge / 4}));
    // Converted all the same they would give zero too, but only a sanitizer sees that.
    EXPECT_EQ(u"0001,0002,0000,0000", Encode(1, {edge, -edge}));
}

TEST(NumericArrayWriter, RefusesAScaleThatIsZeroOrDoesNotFit15Bits) {
    char16_t text[cArrayTextChars] = u"junk";
    const float element = 1.0f;
    for (std::uint32_t scale : {0u, 32768u, 65537u, 0xFFFFFFFFu}) {
        text[0] = u'j';
        EXPECT_EQ(result::cInvalidArg, EncodeNumericArray(scale, 1, &element, text)) << scale;
        EXPECT_EQ(u'\0', text[0]);
    }
}

TEST(NumericArrayWriter, EndsWhenFewerThan32CharactersAreLeft) {
    const std::vector<float> elements(300, 1.0f);
    char16_t text[cArrayTextChars];
    EXPECT_EQ(result::cOk, EncodeNumericArray(1, 197, elements.data(), text));
    EXPECT_EQ(9u + 5 * 197, std::u16string(text).size());
    EXPECT_EQ(result::cOutOfMemory, EncodeNumericArray(1, 198, elements.data(), text));
    EXPECT_EQ(u'\0', text[0]);
    EXPECT_EQ(result::cOutOfMemory, EncodeNumericArray(1, 0xFFFFFFFF, elements.data(), text));
}

TEST(FlagArrayWriter, WritesTheCountAndZeroOrOne) {
    EXPECT_EQ(u"0003,1,0,1", EncodeFlags({1, 0, 5}));
    EXPECT_EQ(u"0000", EncodeFlags({}));
    EXPECT_EQ(u"0028" + Repeat(cArrayCapacity, u",1"),
              EncodeFlags(std::vector<std::uint32_t>(cArrayCapacity, 1)));
}

TEST(FlagArrayWriter, EndsWhenFewerThan32CharactersAreLeft) {
    const std::vector<std::uint32_t> flags(600, 1);
    char16_t text[cArrayTextChars];
    EXPECT_EQ(result::cOk, EncodeFlagArray(494, flags.data(), text));
    EXPECT_EQ(4u + 2 * 494, std::u16string(text).size());
    EXPECT_EQ(result::cOutOfMemory, EncodeFlagArray(495, flags.data(), text));
    EXPECT_EQ(u'\0', text[0]);
}

TEST(ArrayFieldWriter, MovesTheCursorAndLowersTheRoom) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 63;
    EXPECT_EQ(result::cOk, PutArrayField(&pCursor, &charsAvail, ArrayField::eFirst, 0x1b));
    EXPECT_EQ(result::cOk, PutArrayField(&pCursor, &charsAvail, ArrayField::eWord, 0xFFFF));
    EXPECT_EQ(result::cOk, PutArrayField(&pCursor, &charsAvail, ArrayField::eFlag, 1));
    EXPECT_EQ(u"001b,ffff,1", std::u16string(buffer));
    EXPECT_EQ(pCursor, buffer + 11);
    EXPECT_EQ(52u, charsAvail);
}

TEST(ArrayFieldWriter, WritesNumbersOfMoreThanFourDigitsWhole) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 63;
    PutArrayField(&pCursor, &charsAvail, ArrayField::eWord, 0x10000);
    PutArrayField(&pCursor, &charsAvail, ArrayField::eFlag, 0xFEDCBA98);
    PutArrayField(&pCursor, &charsAvail, ArrayField::eFlag, 0);
    EXPECT_EQ(u",10000,fedcba98,0", std::u16string(buffer));
}

TEST(ArrayFieldWriter, NeedsRoomFor32Characters) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 31;
    EXPECT_EQ(result::cOutOfMemory,
              PutArrayField(&pCursor, &charsAvail, ArrayField::eFirst, 1));
    EXPECT_EQ(pCursor, buffer);
    EXPECT_EQ(31u, charsAvail);
    EXPECT_EQ(u'\0', buffer[0]);
    charsAvail = 32;
    EXPECT_EQ(result::cOk, PutArrayField(&pCursor, &charsAvail, ArrayField::eFirst, 1));
    EXPECT_EQ(28u, charsAvail);
}

TEST(ArrayFieldWriter, RefusesAnUnknownFormat) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 63;
    EXPECT_EQ(result::cFail,
              PutArrayField(&pCursor, &charsAvail, static_cast<ArrayField>(9), 1));
    EXPECT_EQ(pCursor, buffer);
    EXPECT_EQ(63u, charsAvail);
}

// Refuses the piece that is reached when this is 0.
int g_piecesUntilRefusal;

HRESULT RefuseLater(char16_t** ppCursor, std::size_t* pCharsAvail, ArrayField field,
                    std::uint32_t value) {
    return g_piecesUntilRefusal-- == 0 ? result::cFalse
                                       : PutArrayField(ppCursor, pCharsAvail, field, value);
}

TEST(ArrayFieldWriter, IsAskedNoMoreOnceItHasRefused) {
    const float elements[] = {1, 2};
    const std::uint32_t flags[] = {1, 0};
    char16_t text[cArrayTextChars];
    for (int pieces = 0; pieces < 4; ++pieces) {
        g_piecesUntilRefusal = pieces;
        EXPECT_EQ(result::cFalse, EncodeNumericArray(1, 2, elements, text, RefuseLater));
        EXPECT_EQ(-1, g_piecesUntilRefusal);
        EXPECT_EQ(u'\0', text[0]);
    }
    for (int pieces = 0; pieces < 3; ++pieces) {
        g_piecesUntilRefusal = pieces;
        EXPECT_EQ(result::cFalse, EncodeFlagArray(2, flags, text, RefuseLater));
        EXPECT_EQ(-1, g_piecesUntilRefusal);
        EXPECT_EQ(u'\0', text[0]);
    }
}

class ArrayRoundTrip : public testing::TestWithParam<std::uint32_t> {};

TEST_P(ArrayRoundTrip, KeepsEveryElementValue) {
    const std::uint32_t scale = GetParam();
    std::vector<float> elements;
    for (std::int32_t word = -32768; word < 32768; ++word) {
        elements.push_back(static_cast<float>(word / static_cast<double>(scale)));
        if (elements.size() == cArrayCapacity || word == 32767) {
            ASSERT_EQ(elements, Values(Encode(scale, elements))) << "up to " << word;
            elements.clear();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(ScalesInUse, ArrayRoundTrip, testing::Values(1u, 256u));

TEST(ArrayRoundTripOfRandomFlags, KeepsEveryFlag) {
    std::mt19937 random(4711);
    for (int i = 0; i < 2000; ++i) {
        std::vector<std::uint32_t> flags(random() % (cArrayCapacity + 1));
        for (std::uint32_t& flag : flags)
            flag = random() & 1;
        ASSERT_EQ(flags, FlagValues(EncodeFlags(flags)));
    }
}

}  // namespace
}  // namespace kora4::codec
