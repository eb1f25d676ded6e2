// SPDX-License-Identifier: MIT
// The text form of a single float.
#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "contract/codec/float_text.h"

namespace kora4::codec {
namespace {

using Limits = std::numeric_limits<float>;

std::string Format(float value) {
    char16_t text[cFloatTextChars];
    const std::size_t length = FormatFloat(value, text);
    const std::u16string whole(text);
    EXPECT_EQ(whole.size(), length);
    return {whole.begin(), whole.end()};
}

constexpr float cUntouched = 4321.0f;

struct Parsed {
    bool converted;
    float value;
};

Parsed Parse(const std::string& text) {
    const std::u16string wide(text.begin(), text.end());
    Parsed parsed{false, cUntouched};
    parsed.converted = ParseFloat(wide.c_str(), &parsed.value);
    return parsed;
}

float ValueOf(const std::string& text) {
    const Parsed parsed = Parse(text);
    EXPECT_TRUE(parsed.converted) << text;
    return parsed.value;
}

void ExpectRefused(const std::string& text) {
    const Parsed parsed = Parse(text);
    EXPECT_FALSE(parsed.converted) << text;
    EXPECT_EQ(cUntouched, parsed.value) << text;
}

std::uint32_t Bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

TEST(FloatFormatter, WritesSixDecimals) {
    EXPECT_EQ("0.000000", Format(0.0f));
    EXPECT_EQ("-0.000000", Format(-0.0f));
    EXPECT_EQ("1.000000", Format(1.0f));
    EXPECT_EQ("-12.500000", Format(-12.5f));
    EXPECT_EQ("0.100000", Format(0.1f));
    EXPECT_EQ("16777216.000000", Format(16777216.0f));
    EXPECT_EQ("1000000000.000000", Format(1e9f));
}

TEST(FloatFormatter, RoundsHalvesToEven) {
    EXPECT_EQ("0.000002", Format(0.0000019073486328125f));
    EXPECT_EQ("0.007812", Format(0.0078125f));       // 0.0078125 is a tie
    EXPECT_EQ("0.023438", Format(0.0234375f));       // 0.0234375 is a tie
    EXPECT_EQ("1.000000", Format(1.0f - 0x1p-24f));  // carries into the whole part
    EXPECT_EQ("-1.000000", Format(-(1.0f - 0x1p-24f)));
    EXPECT_EQ("-0.000000", Format(-1e-9f));
}

TEST(FloatFormatter, FitsTheLargestFloat) {
    EXPECT_EQ("340282346638528859811704183484516925440.000000", Format(Limits::max()));
    EXPECT_EQ("-340282346638528859811704183484516925440.000000", Format(-Limits::max()));
}

TEST(FloatFormatter, WritesEveryZeroInsideALongNumber) {
    EXPECT_EQ("4294967296000000000.000000", Format(15625000.0f * 0x1p38f));  // 10^9 * 2^32
    EXPECT_EQ("-4294967296000000000.000000", Format(-15625000.0f * 0x1p38f));
}

TEST(FloatFormatter, GivesNamesToWhatIsNoNumber) {
    EXPECT_EQ("inf", Format(Limits::infinity()));
    EXPECT_EQ("-inf", Format(-Limits::infinity()));
    EXPECT_EQ("nan", Format(Limits::quiet_NaN()));
    EXPECT_EQ("nan", Format(-Limits::quiet_NaN()));
}

TEST(FloatFormatter, NamesOfNoNumbersDoNotConvertBack) {
    ExpectRefused(Format(Limits::infinity()));
    ExpectRefused(Format(-Limits::infinity()));
    ExpectRefused(Format(Limits::quiet_NaN()));
}

TEST(FloatParser, ReadsDecimalNumbers) {
    EXPECT_EQ(0.0f, ValueOf("0"));
    EXPECT_EQ(7.0f, ValueOf("7"));
    EXPECT_EQ(7.25f, ValueOf("+7.25"));
    EXPECT_EQ(-7.25f, ValueOf("-7.25"));
    EXPECT_EQ(5.0f, ValueOf("5."));
    EXPECT_EQ(0.5f, ValueOf(".5"));
    EXPECT_EQ(12.0f, ValueOf("000012.000000"));
    EXPECT_EQ(0.1f, ValueOf("0.1"));
    EXPECT_EQ(0.0f, ValueOf("00x1"));
}

TEST(FloatParser, ReadsExponents) {
    EXPECT_EQ(1000.0f, ValueOf("1e3"));
    EXPECT_EQ(1000.0f, ValueOf("1E+3"));
    EXPECT_EQ(0.25f, ValueOf("25e-2"));
    EXPECT_EQ(5.0f, ValueOf(".5e1"));
    EXPECT_EQ(0.0f, ValueOf("0e999999999999999999999"));
}

TEST(FloatParser, KeepsTheSignOfZero) {
    EXPECT_EQ(0x80000000u, Bits(ValueOf("-0.000000")));
    EXPECT_EQ(0x80000000u, Bits(ValueOf("-1e-60")));
    EXPECT_EQ(0u, Bits(ValueOf("1e-99999999999999999999")));
}

TEST(FloatParser, SkipsLeadingWhiteSpace) {
    EXPECT_EQ(2.5f, ValueOf(" \t\r\n\v\f2.5"));
    ExpectRefused("- 2.5");
}

TEST(FloatParser, IgnoresWhatFollowsTheNumber) {
    EXPECT_EQ(2.5f, ValueOf("2.5dB"));
    EXPECT_EQ(2.5f, ValueOf("2.5 7"));
    EXPECT_EQ(2.0f, ValueOf("2,5"));
    EXPECT_EQ(1.5f, ValueOf("1.5.5"));
    EXPECT_EQ(5.0f, ValueOf("5e"));
    EXPECT_EQ(5.0f, ValueOf("5e+"));
    EXPECT_EQ(5.0f, ValueOf("5ex"));
}

TEST(FloatParser, RefusesWhatIsNoDecimalNumber) {
    for (const char* pText :
         {"",    " ",        "abc",  ".",     "+",        "-",      "+-1", "--1",
          ".e5", "e5",       "nan",  "NaN",   "-nan",     "nan(1)", "inf", "-inf",
          "INF", "infinity", "0x10", "0X1p3", "-0x1.8p1", "0x",     ",5"})
        ExpectRefused(pText);
    float value = cUntouched;
    EXPECT_FALSE(ParseFloat(nullptr, &value));
    EXPECT_FALSE(ParseFloat(u"\u0661", &value));
    EXPECT_EQ(cUntouched, value);
}

TEST(FloatParser, RefusesMagnitudesThatNoFloatHas) {
    EXPECT_EQ(Limits::max(), ValueOf("340282346638528859811704183484516925440"));
    // Half-way between the largest float and the next power of two.
    EXPECT_EQ(Limits::max(), ValueOf("340282356779733661637539395458142568447.999"));
    ExpectRefused("340282356779733661637539395458142568448");
    ExpectRefused("-340282356779733661637539395458142568448");
    ExpectRefused("1e39");
    ExpectRefused("1e99999999999999999999");
    ExpectRefused("1" + std::string(5000, '0'));
}

TEST(FloatParser, UnderflowsToDenormalsAndZero) {
    EXPECT_EQ(1u, Bits(ValueOf("1.401298464324817e-45")));
    EXPECT_EQ(1u, Bits(ValueOf("1e-45")));
    EXPECT_EQ(1u, Bits(ValueOf("7.1e-46")));
    EXPECT_EQ(0u, Bits(ValueOf("7.0e-46")));
    EXPECT_EQ(0x00800000u, Bits(ValueOf("1.17549435e-38")));
    EXPECT_EQ(0x007FFFFFu, Bits(ValueOf("1.1754942e-38")));
    EXPECT_EQ(0.0f, ValueOf("0." + std::string(5000, '0') + "1"));
    EXPECT_EQ(1.0f, ValueOf("0." + std::string(5000, '0') + "1e5001"));
}

TEST(FloatParser, RoundsHalvesToEvenWhateverTheLength) {
    EXPECT_EQ(16777216.0f, ValueOf("16777217"));
    EXPECT_EQ(16777220.0f, ValueOf("16777219"));
    EXPECT_EQ(16777216.0f, ValueOf("16777217." + std::string(3000, '0')));
    EXPECT_EQ(16777218.0f, ValueOf("16777217." + std::string(3000, '0') + "1"));
    EXPECT_EQ(16777218.0f, ValueOf("16777217" + std::string(300, '0') + "1e-301"));
    EXPECT_EQ(1.0f, ValueOf("1" + std::string(400, '0') + "e-400"));
    // Half of the smallest denormal, exactly and a little more.
    const std::string half =
        "7.00649232162408535461864791644958065640130970938257885878534141944"
        "895541342930300743319094181060791015625";
    EXPECT_EQ(0u, Bits(ValueOf(half + "e-46")));
    EXPECT_EQ(1u, Bits(ValueOf(half + "0000000000000000001e-46")));
}

TEST(FloatRoundTrip, WholeNumbersAndMicrosSurvive) {
    for (int i = -100000; i <= 100000; i += 7) {
        const auto value = static_cast<float>(i) / 16.0f;
        ASSERT_EQ(value, ValueOf(Format(value)));
    }
}

#if defined(_WIN32)

// Only there a locale with a decimal comma is certain to be installed.
TEST(FloatText, DoesNotDependOnTheLocale) {
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, "German"));
    EXPECT_STREQ(",", std::localeconv()->decimal_point);
    EXPECT_EQ("2.500000", Format(2.5f));
    EXPECT_EQ(2.5f, ValueOf("2.5"));
    EXPECT_EQ(2.0f, ValueOf("2,5"));
    std::setlocale(LC_ALL, "C");
}

#else

// The native C library formats and scans floats exactly; the one on Windows does not.

void ExpectLikeTheLibrary(float value) {
    char expected[cFloatTextChars];
    std::snprintf(expected, sizeof expected, "%f", static_cast<double>(value));
    ASSERT_EQ(expected, Format(value)) << std::hex << Bits(value);
}

TEST(FloatFormatterAgainstTheLibrary, AgreesOnRandomBits) {
    std::mt19937 random(1);
    for (int i = 0; i < 1000000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value))
            ExpectLikeTheLibrary(value);
    }
}

TEST(FloatFormatterAgainstTheLibrary, AgreesAtEveryExponent) {
    for (std::uint32_t exponent = 0; exponent < 255; ++exponent) {
        for (std::uint32_t mantissa : {0u, 1u, 2u, 0x400000u, 0x2AAAAAu, 0x7FFFFEu, 0x7FFFFFu})
            ExpectLikeTheLibrary(std::bit_cast<float>(exponent << 23 | mantissa));
    }
}

TEST(FloatFormatterAgainstTheLibrary, AgreesOnTies) {
    for (std::uint32_t odd = 1; odd < 200000; odd += 2) {
        for (int places = 7; places <= 10; ++places)
            ExpectLikeTheLibrary(std::ldexp(static_cast<float>(odd), -places));
    }
}

void ExpectScannedLikeTheLibrary(const std::string& text) {
    const float expected = std::strtof(text.c_str(), nullptr);
    const Parsed parsed = Parse(text);
    ASSERT_EQ(parsed.converted, std::isfinite(expected)) << text;
    if (parsed.converted) {
        ASSERT_EQ(Bits(parsed.value), Bits(expected)) << text;
    }
}

TEST(FloatParserAgainstTheLibrary, AgreesOnRandomDecimals) {
    std::mt19937 random(2);
    for (int i = 0; i < 300000; ++i) {
        std::string text = random() % 2 != 0 ? "-" : "";
        const std::size_t digits = 1 + random() % 30;
        const std::size_t point = random() % (digits + 1);
        for (std::size_t k = 0; k < digits; ++k) {
            if (k == point)
                text += '.';
            text += static_cast<char>('0' + random() % 10);
        }
        text += "e" + std::to_string(static_cast<int>(random() % 110) - 60);
        ExpectScannedLikeTheLibrary(text);
    }
}

// Most of these are read in 64 bits; the lengths go beyond that on both sides of the point.
TEST(FloatParserAgainstTheLibrary, AgreesOnNumbersWithoutExponent) {
    std::mt19937_64 random(4);
    for (int i = 0; i < 300000; ++i) {
        std::string text = std::to_string(random() % (std::uint64_t{1} << (random() % 64)));
        const std::size_t places = random() % 14;
        if (text.size() < places)
            text.insert(0, places - text.size(), '0');
        text.insert(text.size() - places, ".");
        ExpectScannedLikeTheLibrary(text);
    }
}

TEST(FloatParserAgainstTheLibrary, AgreesOnShortTies) {
    for (std::uint32_t odd = 1; odd < 100000; odd += 2) {
        // The middle between a float and the next one, and its neighbours.
        const std::uint64_t middle = (std::uint64_t{1} << 25) + odd;
        for (int places = 0; places <= 11; ++places) {
            std::uint64_t scaled = middle;
            for (int k = 0; k < places; ++k)
                scaled *= 5;
            for (const std::uint64_t number : {scaled - 1, scaled, scaled + 1}) {
                std::string text = std::to_string(number);
                text.insert(text.size() - static_cast<std::size_t>(places), ".");
                ExpectScannedLikeTheLibrary(text);
            }
        }
    }
}

TEST(FloatParserAgainstTheLibrary, AgreesBetweenNeighbouringFloats) {
    std::mt19937 random(3);
    for (int i = 0; i < 50000; ++i) {
        const auto bits = static_cast<std::uint32_t>(random() % 0x7F7FFFFF);
        const double middle = (static_cast<double>(std::bit_cast<float>(bits)) +
                               static_cast<double>(std::bit_cast<float>(bits + 1))) /
                              2;
        char text[512];
        std::snprintf(text, sizeof text, "%.160e", middle);
        ExpectScannedLikeTheLibrary(text);
        std::string more(text);
        more.insert(more.find('e'), "1");
        ExpectScannedLikeTheLibrary(more);
        std::snprintf(text, sizeof text, "%.25e", std::nextafter(middle, 0.0));
        ExpectScannedLikeTheLibrary(text);
    }
}

#endif

}  // namespace
}  // namespace kora4::codec
