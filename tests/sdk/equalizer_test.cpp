// SPDX-License-Identifier: MIT
// The text of an equalizer: what is read, what is refused and where, and that what is written
// reads back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kora4/equalizer.hpp>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace kora4::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(GraphicEqText, PairsAreBands) {
    const ParsedEqualizer parsed = ParseGraphicEq("GraphicEQ: 20 -1.5; 25 0; 31.5 +2");
    ASSERT_TRUE(parsed) << parsed.problem;
    EXPECT_THAT(parsed.bands, ElementsAre(Band{20, -1.5f}, Band{25, 0}, Band{31.5f, 2}));
}

TEST(GraphicEqText, WhatMayStandBetweenWords) {
    const Bands expected = {{20, 1}, {30, 2}};
    for (const char* text :
         {"GraphicEQ:20 1;30 2", "graphiceq: 20 1; 30 2;", "GRAPHICEQ:\t20\t1 ;\t30\t2 ; ",
          "\xEF\xBB\xBFGraphicEQ: 20 1; 30 2\r\n",
          "\n\n# a comment; 7 7\n GraphicEQ: 20 1;30 2#",
          "GraphicEQ:\r\n20\r\n1\r\n;\r\n30\r\n2\r\n", "GraphicEQ: 20 1 # one\n; 30 2 # two",
          "GraphicEQ: 20 1#;\n;30 2"})
        EXPECT_EQ(expected, ParseGraphicEq(text).bands) << text;
}

struct Refused {
    const char* text;
    std::size_t line;
    const char* problem;
};

class GraphicEqRefusal : public testing::TestWithParam<Refused> {};

TEST_P(GraphicEqRefusal, SaysWhatAndWhere) {
    const ParsedEqualizer parsed = ParseGraphicEq(GetParam().text);
    EXPECT_FALSE(parsed);
    EXPECT_EQ(GetParam().problem, parsed.problem);
    EXPECT_EQ(GetParam().line, parsed.line);
    EXPECT_THAT(parsed.bands, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, GraphicEqRefusal,
    testing::Values(Refused{"", 1, "the file is empty"},
                    Refused{"# nothing\n\n", 3, "the file is empty"},
                    Refused{"EQ: 20 1", 1, "'EQ:' instead of 'GraphicEQ:'"},
                    Refused{"\nGraphicEQ 20 1", 2, "'GraphicEQ' instead of 'GraphicEQ:'"},
                    Refused{"GraphicEQ:", 1, "no bands after 'GraphicEQ:'"},
                    Refused{"GraphicEQ: ; 20 1", 1, "expected a frequency"},
                    Refused{"GraphicEQ: 20 1;; 30 1", 1, "expected a frequency"},
                    Refused{"GraphicEQ: 20; 30 1", 1, "expected a gain"},
                    Refused{"GraphicEQ: 20 1;\n30", 2, "expected a gain"},
                    Refused{"GraphicEQ: 20 1 30 1", 1, "'30' instead of ';'"},
                    Refused{"GraphicEQ: 20 1,5", 1, "'1,5' is not a gain; use a decimal point"},
                    Refused{"GraphicEQ: 20Hz 1", 1, "'20Hz' is not a frequency"},
                    Refused{"GraphicEQ: 2e1 1", 1, "'2e1' is not a frequency"},
                    Refused{"GraphicEQ: 0x20 1", 1, "'0x20' is not a frequency"},
                    Refused{"GraphicEQ: 20 nan", 1, "'nan' is not a gain"},
                    Refused{"GraphicEQ: 20 inf", 1, "'inf' is not a gain"},
                    Refused{"GraphicEQ: 20 +-1", 1, "'+-1' is not a gain"},
                    Refused{"GraphicEQ: 20 +", 1, "'+' is not a gain"},
                    Refused{"GraphicEQ: 0 1", 1, "the frequency 0 is not above 0 Hz"},
                    Refused{"GraphicEQ: -20 1", 1, "the frequency -20 is not above 0 Hz"},
                    Refused{"GraphicEQ: 20 1;\n\n20 2", 3,
                            "the frequency 20 is not above 20, the previous one"},
                    Refused{"GraphicEQ: 30 1; 20 2", 1,
                            "the frequency 20 is not above 30, the previous one"}));

TEST(GraphicEqText, IsOneLineOfShortestNumbers) {
    EXPECT_EQ("GraphicEQ: 20 -1.5; 31.5 0.1; 16000 12",
              FormatGraphicEq({{20, -1.5f}, {31.5f, 0.1f}, {16000, 12}}));
    EXPECT_EQ("GraphicEQ:", FormatGraphicEq({}));
}

TEST(GraphicEqText, ReadsBackAsItWasWritten) {
    std::mt19937 random(4);
    for (int round = 0; round < 500; ++round) {
        Bands bands(1 + random() % 60);
        float frequency = 0;
        for (Band& band : bands) {
            frequency += 0.001f + static_cast<float>(random() % 100000) / 97.0f;
            band = {frequency, static_cast<float>(static_cast<std::int32_t>(random())) / 3e7f};
        }
        const std::string text = FormatGraphicEq(bands);
        const ParsedEqualizer parsed = ParseGraphicEq(text);
        ASSERT_TRUE(parsed) << text << ": " << parsed.problem;
        ASSERT_EQ(bands, parsed.bands) << text;
    }
}

// What is no text of an equalizer is refused, or has bands that can be used; nothing else.
TEST(GraphicEqText, AnythingIsEitherRefusedOrUsable) {
    constexpr char cAlphabet[] = "GraphicEQ: 0123456789.;#+-\n\r\tgn\xEF\xBB\xBF,e";
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        std::string text = round % 2 ? "GraphicEQ:" : "";
        for (std::size_t left = random() % 40; left > 0; --left)
            text += cAlphabet[random() % (sizeof cAlphabet - 1)];
        const ParsedEqualizer parsed = ParseGraphicEq(text);
        ASSERT_EQ(parsed.bands.empty(), !parsed) << text;
        if (parsed) {
            EXPECT_EQ(parsed.bands, ParseGraphicEq(FormatGraphicEq(parsed.bands)).bands);
        } else {
            EXPECT_LE(1u, parsed.line) << text;
            EXPECT_GE(1u + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')),
                      parsed.line)
                << text;
        }
    }
}

// ---- Curves ---------------------------------------------------------------------------------

TEST(Curve, IsTakenAtTheFrequenciesOfOtherBands) {
    const Bands curve = {{100, 0}, {1000, 6}, {2000, -2}};
    const Bands bands = Resample(curve, {{20, 1}, {100, 1}, {1000, 1}, {2000, 1}, {9000, 1}});
    EXPECT_THAT(bands, ElementsAre(Band{20, 0}, Band{100, 0}, Band{1000, 6}, Band{2000, -2},
                                   Band{9000, -2}));
    // Half of the way on a logarithmic scale.
    EXPECT_THAT(Resample({{100, 0}, {400, 5}}, {{200, 0}}), ElementsAre(Band{200, 2.5f}));
    EXPECT_THAT(Resample({{100, 3}}, {{50, 0}, {100, 0}, {200, 0}}),
                ElementsAre(Band{50, 3}, Band{100, 3}, Band{200, 3}));
    EXPECT_THAT(Resample(curve, {}), IsEmpty());
}

TEST(Curve, HasGainsThatCanBeStored) {
    EXPECT_EQ(1.0f / 256, StorableGain(1.4 / 256));
    EXPECT_EQ(-2.0f / 256, StorableGain(-1.6 / 256));
    EXPECT_EQ(3.0f, StorableGain(3));
    const Bands bands = Resample({{100, 0}, {1000, 1}}, {{300, 0}});
    EXPECT_EQ(122.0f / 256, bands[0].gain);  // log10(3) of 1 dB
}

// ---- Numbers --------------------------------------------------------------------------------

TEST(DecimalText, IsTheShortestThatReadsBack) {
    EXPECT_EQ("0.33", FormatDecimal(0.33f));
    EXPECT_EQ("-12", FormatDecimal(-12));
    EXPECT_EQ("1000000", FormatDecimal(1e6f));
    EXPECT_EQ("0.00001", FormatDecimal(1e-5f));
    using Limits = std::numeric_limits<float>;
    for (const float number :
         {Limits::max(), Limits::lowest(), Limits::min(), Limits::denorm_min(), 1e5f, 1e20f}) {
        float read = 0;
        EXPECT_TRUE(ParseDecimal(FormatDecimal(number), read)) << number;
        EXPECT_EQ(number, read);
    }
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        const auto number = static_cast<float>(static_cast<std::int32_t>(random())) / 1e6f;
        float read = 0;
        EXPECT_TRUE(ParseDecimal(FormatDecimal(number), read)) << number;
        EXPECT_EQ(number, read);
    }
}

TEST(DecimalText, TakesNothingButOneNumber) {
    float number = 0;
    for (const char* text :
         {"", " 1", "1 ", "1e3", "0x1", "--1", "+-1", "+", "-", ".", "1.5.", "nan", "inf",
          "-inf", "infinity", "999999999999999999999999999999999999999999"})
        EXPECT_FALSE(ParseDecimal(text, number)) << text;
    EXPECT_TRUE(ParseDecimal("+.5", number));
    EXPECT_EQ(0.5f, number);
}

}  // namespace
}  // namespace kora4::test
