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
    EXPECT_EQ(numbers.hr, result::cOk);
    return {numbers.elements, numbers.elements + numbers.count};
}

// A refused text gives E_FAIL, count 0 and cleared places.
void ExpectRefused(const std::u16string& text) {
    SCOPED_TRACE(std::string(text.begin(), text.end()).substr(0, 80));
    const Numbers numbers = Decode(text);
    EXPECT_EQ(numbers.hr, result::cFail);
    EXPECT_EQ(numbers.count, 0u);
    EXPECT_EQ(std::count(numbers.elements, numbers.elements + cArrayCapacity, 0.0f), 40);
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
    EXPECT_EQ(flags.hr, result::cOk);
    return {flags.flags, flags.flags + flags.count};
}

void ExpectFlagsRefused(const std::u16string& text) {
    SCOPED_TRACE(std::string(text.begin(), text.end()).substr(0, 80));
    const Flags flags = DecodeFlags(text);
    EXPECT_EQ(flags.hr, result::cFail);
    EXPECT_EQ(flags.count, 0u);
    EXPECT_EQ(std::count(flags.flags, flags.flags + cArrayCapacity, 0u), 40);
}

std::u16string Encode(std::uint32_t scale, const std::vector<float>& elements) {
    char16_t text[cArrayTextChars];
    EXPECT_EQ(EncodeNumericArray(scale, static_cast<std::uint32_t>(elements.size()),
                                 elements.data(), text),
              result::cOk);
    return text;
}

std::u16string EncodeFlags(const std::vector<std::uint32_t>& flags) {
    char16_t text[cArrayTextChars];
    EXPECT_EQ(EncodeFlagArray(static_cast<std::uint32_t>(flags.size()), flags.data(), text),
              result::cOk);
    return text;
}

std::u16string Repeat(std::size_t times, const std::u16string& piece) {
    std::u16string text;
    for (std::size_t i = 0; i < times; ++i)
        text += piece;
    return text;
}

TEST(NumericArrayReader, TakesElementsAsSigned16BitNumbersOverTheScale) {
    EXPECT_EQ(Values(u"0100,0002,FFFF,8000"), (std::vector<float>{-0.00390625f, -128.0f}));
    EXPECT_EQ(Values(u"0001,0002,0041,7fff"), (std::vector<float>{65.0f, 32767.0f}));
}

TEST(NumericArrayReader, ClearsThePlacesBehindTheElements) {
    const Numbers numbers = Decode(u"1,1,5");
    EXPECT_EQ(numbers.hr, result::cOk);
    EXPECT_EQ(numbers.elements[0], 5.0f);
    EXPECT_EQ(std::count(numbers.elements + 1, numbers.elements + cArrayCapacity, 0.0f), 39);
}

TEST(NumericArrayReader, DividesInDoublePrecisionAndRoundsOnce) {
    EXPECT_EQ(Values(u"0003,0001,0001"), std::vector<float>{static_cast<float>(1.0 / 3.0)});
    EXPECT_EQ(Values(u"7fff,0001,0005"), std::vector<float>{static_cast<float>(5.0 / 32767)});
}

TEST(NumericArrayReader, AcceptsCommasBlanksTabsAndLineEndsAsSeparators) {
    const std::vector<float> expected{20.0f, 47.0f};
    EXPECT_EQ(Values(u"0001, 0002, 0014, 002F"), expected);
    EXPECT_EQ(Values(u"0001 0002 0014 002F"), expected);
    EXPECT_EQ(Values(u"0001\t0002\t0014\t002F"), expected);
    EXPECT_EQ(Values(u"0001\r\n0002 ,\v0014\f,002F\r\n"), expected);
    EXPECT_EQ(Values(u" \t0001 , 0002 ,0014 , 002F  "), expected);
}

TEST(NumericArrayReader, ReadsDigitsOfEitherCaseAndAnOptionalPrefix) {
    EXPECT_EQ(Values(u"0x0001,0X2,0xAbC,0Xf"), (std::vector<float>{2748.0f, 15.0f}));
    EXPECT_EQ(Values(u"1,2,ab,EF"), (std::vector<float>{171.0f, 239.0f}));
}

TEST(NumericArrayReader, AcceptsAnEmptyArray) {
    EXPECT_TRUE(Values(u"0100,0000").empty());
    EXPECT_TRUE(Values(u"0100,0000,").empty());
}

TEST(NumericArrayReader, AcceptsATrailingComma) {
    EXPECT_EQ(Values(u"1,2,3,4,"), (std::vector<float>{3.0f, 4.0f}));
    EXPECT_EQ(Values(u"1,2,3,4 , \t"), (std::vector<float>{3.0f, 4.0f}));
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
    EXPECT_EQ(Values(text + u",0005").size(), 20u);
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
    EXPECT_EQ(Values(u"1,1,FFFF"), std::vector<float>{-1.0f});
    EXPECT_EQ(Values(u"1,1,0000000FFFF"), std::vector<float>{-1.0f});
    ExpectRefused(u"1,1,10000");
    ExpectRefused(u"1,1,1FFFF");
    ExpectRefused(u"1,1,100000001");
    ExpectRefused(u"1,1,10000000000000001");
}

TEST(NumericArrayReader, RefusesNumbersThatDoNotFit32Bits) {
    EXPECT_EQ(Values(u"ffffffff,0").size(), 0u);
    ExpectRefused(u"100000000,0");
    ExpectRefused(u"100000001,1,1");
    ExpectRefused(u"1,100000001,1");
    ExpectRefused(u"1,10000000000000001,1");
}

TEST(NumericArrayReader, RefusesCountsAbove40) {
    EXPECT_EQ(Values(u"1,28" + Repeat(40, u",1")).size(), 40u);
    ExpectRefused(u"1,29" + Repeat(41, u",1"));
    ExpectRefused(u"1,FFFFFFFF,1");
}

TEST(NumericArrayReader, RefusesAScaleOfZero) {
    ExpectRefused(u"0000,0001,0005");
    ExpectRefused(u"0,0");
}

TEST(NumericArrayReader, RefusesTokensOf255CharactersAndMore) {
    const std::u16string longest = std::u16string(253, u'0') + u"5";
    EXPECT_EQ(Values(u"1,1," + longest), std::vector<float>{5.0f});
    ExpectRefused(u"1,1,0" + longest);
    EXPECT_EQ(Values(u"1,1,0x" + longest.substr(2)), std::vector<float>{5.0f});
    ExpectRefused(u"1,1,0x" + longest.substr(1));
    ExpectRefused(u"1,1," + std::u16string(100000, u'0') + u"5");
}

TEST(NumericArrayReader, RefusesAnEmptyOrMissingText) {
    ExpectRefused(u"");
    ExpectRefused(u" \t\r\n");
    std::uint32_t count = 99;
    float elements[cArrayCapacity] = {cJunk};
    EXPECT_EQ(DecodeNumericArray(nullptr, &count, elements), result::cFail);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(elements[0], 0.0f);
}

TEST(NumericArrayReader, ReportsNullOutPointersAsInvalidArguments) {
    std::uint32_t count = 99;
    float elements[cArrayCapacity];
    EXPECT_EQ(DecodeNumericArray(u"1,0", nullptr, elements), result::cInvalidArg);
    EXPECT_EQ(DecodeNumericArray(u"1,0", &count, nullptr), result::cInvalidArg);
}

TEST(NumericArrayReader, SurvivesEveryTextOfOneBrokenCharacter) {
    const std::u16string good = u"0100,0003,f400,0041,8000";
    ASSERT_EQ(Values(good).size(), 3u);
    for (std::size_t place = 0; place < good.size(); ++place) {
        for (char16_t c : {u'g', u'/', u':', u'@', u'G', u'`', u'\u0130', u'\uFFFF'}) {
            std::u16string text = good;
            text[place] = c;
            ExpectRefused(text);
        }
    }
}

TEST(FlagArrayReader, StoresOneForEveryNumberThatIsNotZero) {
    EXPECT_EQ(FlagValues(u"0005,0,1,2,ffffffff,00"),
              (std::vector<std::uint32_t>{0, 1, 1, 1, 0}));
}

TEST(FlagArrayReader, SharesTheRulesOfTheTokens) {
    EXPECT_EQ(FlagValues(u" 0x2 1\t0 , "), (std::vector<std::uint32_t>{1, 0}));
    EXPECT_TRUE(FlagValues(u"0000").empty());
    EXPECT_EQ(FlagValues(u"28" + Repeat(40, u",1")).size(), 40u);
    for (const char16_t* pText : {u"", u",1,1", u"2,1", u"1,1,1", u"1,,1", u"1,1,,", u"1,y",
                                  u"1,1 z", u"1,100000000", u"1,0x"})
        ExpectFlagsRefused(pText);
    ExpectFlagsRefused(u"29" + Repeat(41, u",1"));
    ExpectFlagsRefused(u"1," + std::u16string(255, u'0'));
}

TEST(FlagArrayReader, ReportsNullOutPointersAndMissingTexts) {
    std::uint32_t count = 99;
    std::uint32_t flags[cArrayCapacity] = {7};
    EXPECT_EQ(DecodeFlagArray(u"0", nullptr, flags), result::cInvalidArg);
    EXPECT_EQ(DecodeFlagArray(u"0", &count, nullptr), result::cInvalidArg);
    EXPECT_EQ(DecodeFlagArray(nullptr, &count, flags), result::cFail);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(flags[0], 0u);
}

TEST(NumericArrayWriter, WritesScaleCountAndElementsInLowerCase) {
    EXPECT_EQ(Encode(256, {-12.0f, 0.0f, 12.5f}), u"0100,0003,f400,0000,0c80");
    EXPECT_EQ(Encode(1, {65.0f}), u"0001,0001,0041");
    EXPECT_EQ(Encode(32767, {}), u"7fff,0000");
}

TEST(NumericArrayWriter, TruncatesTowardZero) {
    EXPECT_EQ(Encode(256, {1.999f, -1.999f}), u"0100,0002,01ff,fe01");
    EXPECT_EQ(Values(u"0100,0001,01ff"), std::vector<float>{1.99609375f});
    EXPECT_EQ(Encode(1, {0.99f, -0.99f, -1.5f}), u"0001,0003,0000,0000,ffff");
}

TEST(NumericArrayWriter, KeepsTheLow16BitsOfWhatFits64) {
    EXPECT_EQ(Encode(1, {65536.0f + 66, -65537.0f, 2147483648.0f + 256}),
              u"0001,0003,0042,ffff,0100");
    const float big = 9223371487098961920.0f;  // the last float below 2^63
    EXPECT_EQ(Encode(1, {big, -big}), u"0001,0002,0000,0000");
    EXPECT_EQ(Encode(3, {std::ldexp(1.0f, 14)}), u"0003,0001,c000");
}

TEST(NumericArrayWriter, StoresZeroForWhatDoesNotFit64Bits) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float max = std::numeric_limits<float>::max();
    const float edge = std::ldexp(1.0f, 63);
    EXPECT_EQ(Encode(256, {nan, inf, -inf, max, -max, edge, -edge}),
              u"0100,0007" + Repeat(7, u",0000"));
    EXPECT_EQ(Encode(32767, {edge / 4, -edge / 4}), u"7fff,0002,0000,0000");
    // Converted all the same they would give zero too, but only a sanitizer sees that.
    EXPECT_EQ(Encode(1, {edge, -edge}), u"0001,0002,0000,0000");
}

TEST(NumericArrayWriter, RefusesAScaleThatIsZeroOrDoesNotFit15Bits) {
    char16_t text[cArrayTextChars] = u"junk";
    const float element = 1.0f;
    for (std::uint32_t scale : {0u, 32768u, 65537u, 0xFFFFFFFFu}) {
        text[0] = u'j';
        EXPECT_EQ(EncodeNumericArray(scale, 1, &element, text), result::cInvalidArg) << scale;
        EXPECT_EQ(text[0], u'\0');
    }
}

TEST(NumericArrayWriter, EndsWhenFewerThan32CharactersAreLeft) {
    const std::vector<float> elements(300, 1.0f);
    char16_t text[cArrayTextChars];
    EXPECT_EQ(EncodeNumericArray(1, 197, elements.data(), text), result::cOk);
    EXPECT_EQ(std::u16string(text).size(), 9u + 5 * 197);
    EXPECT_EQ(EncodeNumericArray(1, 198, elements.data(), text), result::cOutOfMemory);
    EXPECT_EQ(text[0], u'\0');
    EXPECT_EQ(EncodeNumericArray(1, 0xFFFFFFFF, elements.data(), text), result::cOutOfMemory);
}

TEST(FlagArrayWriter, WritesTheCountAndZeroOrOne) {
    EXPECT_EQ(EncodeFlags({1, 0, 5}), u"0003,1,0,1");
    EXPECT_EQ(EncodeFlags({}), u"0000");
    EXPECT_EQ(EncodeFlags(std::vector<std::uint32_t>(40, 1)), u"0028" + Repeat(40, u",1"));
}

TEST(FlagArrayWriter, EndsWhenFewerThan32CharactersAreLeft) {
    const std::vector<std::uint32_t> flags(600, 1);
    char16_t text[cArrayTextChars];
    EXPECT_EQ(EncodeFlagArray(494, flags.data(), text), result::cOk);
    EXPECT_EQ(std::u16string(text).size(), 4u + 2 * 494);
    EXPECT_EQ(EncodeFlagArray(495, flags.data(), text), result::cOutOfMemory);
    EXPECT_EQ(text[0], u'\0');
}

TEST(ArrayFieldWriter, MovesTheCursorAndLowersTheRoom) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 63;
    EXPECT_EQ(PutArrayField(&pCursor, &charsAvail, ArrayField::eFirst, 0x1b), result::cOk);
    EXPECT_EQ(PutArrayField(&pCursor, &charsAvail, ArrayField::eWord, 0xFFFF), result::cOk);
    EXPECT_EQ(PutArrayField(&pCursor, &charsAvail, ArrayField::eFlag, 1), result::cOk);
    EXPECT_EQ(std::u16string(buffer), u"001b,ffff,1");
    EXPECT_EQ(pCursor, buffer + 11);
    EXPECT_EQ(charsAvail, 52u);
}

TEST(ArrayFieldWriter, WritesNumbersOfMoreThanFourDigitsWhole) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 63;
    PutArrayField(&pCursor, &charsAvail, ArrayField::eWord, 0x10000);
    PutArrayField(&pCursor, &charsAvail, ArrayField::eFlag, 0xFEDCBA98);
    PutArrayField(&pCursor, &charsAvail, ArrayField::eFlag, 0);
    EXPECT_EQ(std::u16string(buffer), u",10000,fedcba98,0");
}

TEST(ArrayFieldWriter, NeedsRoomFor32Characters) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 31;
    EXPECT_EQ(PutArrayField(&pCursor, &charsAvail, ArrayField::eFirst, 1),
              result::cOutOfMemory);
    EXPECT_EQ(pCursor, buffer);
    EXPECT_EQ(charsAvail, 31u);
    EXPECT_EQ(buffer[0], u'\0');
    charsAvail = 32;
    EXPECT_EQ(PutArrayField(&pCursor, &charsAvail, ArrayField::eFirst, 1), result::cOk);
    EXPECT_EQ(charsAvail, 28u);
}

TEST(ArrayFieldWriter, RefusesAnUnknownFormat) {
    char16_t buffer[64] = {};
    char16_t* pCursor = buffer;
    std::size_t charsAvail = 63;
    EXPECT_EQ(PutArrayField(&pCursor, &charsAvail, static_cast<ArrayField>(9), 1),
              result::cFail);
    EXPECT_EQ(pCursor, buffer);
    EXPECT_EQ(charsAvail, 63u);
}

class ArrayRoundTrip : public testing::TestWithParam<std::uint32_t> {};

TEST_P(ArrayRoundTrip, KeepsEveryElementValue) {
    const std::uint32_t scale = GetParam();
    std::vector<float> elements;
    for (std::int32_t word = -32768; word < 32768; ++word) {
        elements.push_back(static_cast<float>(word / static_cast<double>(scale)));
        if (elements.size() == cArrayCapacity || word == 32767) {
            ASSERT_EQ(Values(Encode(scale, elements)), elements) << "up to " << word;
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
        ASSERT_EQ(FlagValues(EncodeFlags(flags)), flags);
    }
}

}  // namespace
}  // namespace kora4::codec
