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
    EXPECT_EQ(parsed.value, cUntouched) << text;
}

std::uint32_t Bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

TEST(FloatFormatter, WritesSixDecimals) {
    EXPECT_EQ(Format(0.0f), "0.000000");
    EXPECT_EQ(Format(-0.0f), "-0.000000");
    EXPECT_EQ(Format(1.0f), "1.000000");
    EXPECT_EQ(Format(-12.5f), "-12.500000");
    EXPECT_EQ(Format(0.1f), "0.100000");
    EXPECT_EQ(Format(16777216.0f), "16777216.000000");
    EXPECT_EQ(Format(1e9f), "1000000000.000000");
}

TEST(FloatFormatter, RoundsHalvesToEven) {
    EXPECT_EQ(Format(0.0000019073486328125f), "0.000002");
    EXPECT_EQ(Format(0.0078125f), "0.007812");       // 0.0078125 is a tie
    EXPECT_EQ(Format(0.0234375f), "0.023438");       // 0.0234375 is a tie
    EXPECT_EQ(Format(1.0f - 0x1p-24f), "1.000000");  // carries into the whole part
    EXPECT_EQ(Format(-(1.0f - 0x1p-24f)), "-1.000000");
    EXPECT_EQ(Format(-1e-9f), "-0.000000");
}

TEST(FloatFormatter, FitsTheLargestFloat) {
    EXPECT_EQ(Format(Limits::max()), "340282346638528859811704183484516925440.000000");
    EXPECT_EQ(Format(-Limits::max()), "-340282346638528859811704183484516925440.000000");
}

TEST(FloatFormatter, WritesEveryZeroInsideALongNumber) {
    EXPECT_EQ(Format(15625000.0f * 0x1p38f), "4294967296000000000.000000");  // 10^9 * 2^32
    EXPECT_EQ(Format(-15625000.0f * 0x1p38f), "-4294967296000000000.000000");
}

TEST(FloatFormatter, GivesNamesToWhatIsNoNumber) {
    EXPECT_EQ(Format(Limits::infinity()), "inf");
    EXPECT_EQ(Format(-Limits::infinity()), "-inf");
    EXPECT_EQ(Format(Limits::quiet_NaN()), "nan");
    EXPECT_EQ(Format(-Limits::quiet_NaN()), "nan");
}

TEST(FloatFormatter, NamesOfNoNumbersDoNotConvertBack) {
    ExpectRefused(Format(Limits::infinity()));
    ExpectRefused(Format(-Limits::infinity()));
    ExpectRefused(Format(Limits::quiet_NaN()));
}

TEST(FloatParser, ReadsDecimalNumbers) {
    EXPECT_EQ(ValueOf("0"), 0.0f);
    EXPECT_EQ(ValueOf("7"), 7.0f);
    EXPECT_EQ(ValueOf("+7.25"), 7.25f);
    EXPECT_EQ(ValueOf("-7.25"), -7.25f);
    EXPECT_EQ(ValueOf("5."), 5.0f);
    EXPECT_EQ(ValueOf(".5"), 0.5f);
    EXPECT_EQ(ValueOf("000012.000000"), 12.0f);
    EXPECT_EQ(ValueOf("0.1"), 0.1f);
    EXPECT_EQ(ValueOf("00x1"), 0.0f);
}

TEST(FloatParser, ReadsExponents) {
    EXPECT_EQ(ValueOf("1e3"), 1000.0f);
    EXPECT_EQ(ValueOf("1E+3"), 1000.0f);
    EXPECT_EQ(ValueOf("25e-2"), 0.25f);
    EXPECT_EQ(ValueOf(".5e1"), 5.0f);
    EXPECT_EQ(ValueOf("0e999999999999999999999"), 0.0f);
}

TEST(FloatParser, KeepsTheSignOfZero) {
    EXPECT_EQ(Bits(ValueOf("-0.000000")), 0x80000000u);
    EXPECT_EQ(Bits(ValueOf("-1e-60")), 0x80000000u);
    EXPECT_EQ(Bits(ValueOf("1e-99999999999999999999")), 0u);
}

TEST(FloatParser, SkipsLeadingWhiteSpace) {
    EXPECT_EQ(ValueOf(" \t\r\n\v\f2.5"), 2.5f);
    ExpectRefused("- 2.5");
}

TEST(FloatParser, IgnoresWhatFollowsTheNumber) {
    EXPECT_EQ(ValueOf("2.5dB"), 2.5f);
    EXPECT_EQ(ValueOf("2.5 7"), 2.5f);
    EXPECT_EQ(ValueOf("2,5"), 2.0f);
    EXPECT_EQ(ValueOf("1.5.5"), 1.5f);
    EXPECT_EQ(ValueOf("5e"), 5.0f);
    EXPECT_EQ(ValueOf("5e+"), 5.0f);
    EXPECT_EQ(ValueOf("5ex"), 5.0f);
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
    EXPECT_EQ(value, cUntouched);
}

TEST(FloatParser, RefusesMagnitudesThatNoFloatHas) {
    EXPECT_EQ(ValueOf("340282346638528859811704183484516925440"), Limits::max());
    // Half-way between the largest float and the next power of two.
    EXPECT_EQ(ValueOf("340282356779733661637539395458142568447.999"), Limits::max());
    ExpectRefused("340282356779733661637539395458142568448");
    ExpectRefused("-340282356779733661637539395458142568448");
    ExpectRefused("1e39");
    ExpectRefused("1e99999999999999999999");
    ExpectRefused("1" + std::string(5000, '0'));
}

TEST(FloatParser, UnderflowsToDenormalsAndZero) {
    EXPECT_EQ(Bits(ValueOf("1.401298464324817e-45")), 1u);
    EXPECT_EQ(Bits(ValueOf("1e-45")), 1u);
    EXPECT_EQ(Bits(ValueOf("7.1e-46")), 1u);
    EXPECT_EQ(Bits(ValueOf("7.0e-46")), 0u);
    EXPECT_EQ(Bits(ValueOf("1.17549435e-38")), 0x00800000u);
    EXPECT_EQ(Bits(ValueOf("1.1754942e-38")), 0x007FFFFFu);
    EXPECT_EQ(ValueOf("0." + std::string(5000, '0') + "1"), 0.0f);
    EXPECT_EQ(ValueOf("0." + std::string(5000, '0') + "1e5001"), 1.0f);
}

TEST(FloatParser, RoundsHalvesToEvenWhateverTheLength) {
    EXPECT_EQ(ValueOf("16777217"), 16777216.0f);
    EXPECT_EQ(ValueOf("16777219"), 16777220.0f);
    EXPECT_EQ(ValueOf("16777217." + std::string(3000, '0')), 16777216.0f);
    EXPECT_EQ(ValueOf("16777217." + std::string(3000, '0') + "1"), 16777218.0f);
    EXPECT_EQ(ValueOf("16777217" + std::string(300, '0') + "1e-301"), 16777218.0f);
    EXPECT_EQ(ValueOf("1" + std::string(400, '0') + "e-400"), 1.0f);
    // Half of the smallest denormal, exactly and a little more.
    const std::string half =
        "7.00649232162408535461864791644958065640130970938257885878534141944"
        "895541342930300743319094181060791015625";
    EXPECT_EQ(Bits(ValueOf(half + "e-46")), 0u);
    EXPECT_EQ(Bits(ValueOf(half + "0000000000000000001e-46")), 1u);
}

TEST(FloatRoundTrip, WholeNumbersAndMicrosSurvive) {
    for (int i = -100000; i <= 100000; i += 7) {
        const auto value = static_cast<float>(i) / 16.0f;
        ASSERT_EQ(ValueOf(Format(value)), value);
    }
}

#if defined(_WIN32)

// Only there a locale with a decimal comma is certain to be installed.
TEST(FloatText, DoesNotDependOnTheLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "German"), nullptr);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(Format(2.5f), "2.500000");
    EXPECT_EQ(ValueOf("2.5"), 2.5f);
    EXPECT_EQ(ValueOf("2,5"), 2.0f);
    std::setlocale(LC_ALL, "C");
}

#else

// The native C library formats and scans floats exactly; the one on Windows does not.

void ExpectLikeTheLibrary(float value) {
    char expected[cFloatTextChars];
    std::snprintf(expected, sizeof expected, "%f", static_cast<double>(value));
    ASSERT_EQ(Format(value), expected) << std::hex << Bits(value);
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
