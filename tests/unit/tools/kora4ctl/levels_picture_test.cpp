// SPDX-License-Identifier: MIT
// The picture of the levels in every size, and the levels as text and JSON.
#include "kora4ctl/terminal/levels_picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/text.h"

namespace kora4::tools {
namespace {

using Lines = std::vector<std::string>;

Levels AllAt(float gain, float excitation) {
    Levels levels;
    levels.gains.fill(gain);
    levels.excitations.fill(excitation);
    return levels;
}

Lines Draw(const Levels& levels, std::size_t width, std::size_t height) {
    Lines lines;
    for (const StyledLine& line : DrawLevels(levels, {}, width, height))
        lines.push_back(PlainText(line));
    return lines;
}

std::size_t CountOf(const Lines& lines, const std::string& text) {
    std::size_t count = 0;
    for (const std::string& line : lines) {
        for (std::size_t at = line.find(text); at != std::string::npos;
             at = line.find(text, at + 1))
            ++count;
    }
    return count;
}

TEST(LevelsPicture, FitsIntoEachSize) {
    Levels levels = AllAt(-6, 12);
    levels.gains[3] = std::numeric_limits<float>::quiet_NaN();
    for (std::size_t width = 1; width <= 250; ++width) {
        for (const std::size_t height : {1u, 2u, 3u, 5u, 10u, 23u, 39u, 100u}) {
            const Lines lines = Draw(levels, width, height);
            EXPECT_LE(lines.size(), height);
            ASSERT_FALSE(lines.empty());
            for (const std::string& line : lines)
                EXPECT_LE(Columns(line), width) << width << " x " << height << "\n" << line;
        }
    }
}

TEST(LevelsPicture, EachBandHasItsNumberOnUsualTerminals) {
    for (const std::size_t width : {79u, 119u}) {
        const std::string numbers = Draw(AllAt(-20, 0), width, 23)[20];
        EXPECT_NE(std::string::npos, numbers.find("1  "));
        EXPECT_TRUE(numbers.ends_with(" 20")) << numbers;
    }
}

TEST(LevelsPicture, BandsHaveFrequenciesAsFarAsThereIsRoom) {
    EXPECT_EQ(
        " Hz  65   136  223  332  467  634  841  1.1k 1.4k 1.8k 2.3k 2.9k 3.7k 4.6k 5.8k 7.2k "
        "9k   11.2k     17.3k",
        Draw(AllAt(-20, 0), 119, 23)[21]);
    EXPECT_EQ(" Hz  65 136   332   634   1.1k  1.8k  2.9k  4.6k  7.2k  11.2k 17.3k",
              Draw(AllAt(-20, 0), 79, 23)[21]);
}

TEST(LevelsPicture, WarningTakesThePlaceOfTheWords) {
    const StyledLine last = DrawLevels(AllAt(-20, 0), "Look here", 79, 23).back();
    EXPECT_EQ("Look here", PlainText(last));
    EXPECT_EQ(Style::eWarning, last.front().style);
}

TEST(LevelsPicture, WiderTerminalsHaveWiderBars) {
    EXPECT_EQ(20u, CountOf({Draw(AllAt(24, -108), 79, 23)[0]}, "█"));
    EXPECT_EQ(40u, CountOf({Draw(AllAt(24, -108), 119, 23)[0]}, "█"));
}

// 18 lines of 6 dB, from 24 dB down: 0 dB is above the fifth.
constexpr std::size_t cHeight = 21;

TEST(LevelsPicture, GainGrowsFromZeroInBothDirections) {
    const Lines above = Draw(AllAt(12, -108), 79, cHeight);
    EXPECT_EQ(2u * 20u, CountOf({above.begin(), above.begin() + 18}, "█"));
    EXPECT_EQ(2u * 20u, CountOf({above.begin() + 2, above.begin() + 4}, "█"));
    const Lines below = Draw(AllAt(-24, -108), 79, cHeight);
    EXPECT_EQ(4u * 20u, CountOf({below.begin(), below.begin() + 18}, "█"));
    EXPECT_EQ(4u * 20u, CountOf({below.begin() + 4, below.begin() + 8}, "█"));
    const Lines none = Draw(AllAt(0, -108), 79, cHeight);
    EXPECT_EQ(0u, CountOf({none.begin(), none.begin() + 18}, "█"));
}

TEST(LevelsPicture, BarsEndAtTheirLevel) {
    EXPECT_EQ(20u, CountOf({Draw(AllAt(3, -108), 79, cHeight)[3]}, "▄"));
    EXPECT_EQ(20u, CountOf({Draw(AllAt(-3, -108), 79, cHeight)[4]}, "▀"));
    const Lines excitation = Draw(AllAt(0, -24), 79, cHeight);
    EXPECT_EQ(0u, CountOf({excitation.begin(), excitation.begin() + 8}, "░"));
    EXPECT_EQ(10u * 20u, CountOf({excitation.begin() + 8, excitation.begin() + 18}, "░"));
}

TEST(LevelsPicture, ZeroIsBetweenTwoLinesInEachSize) {
    for (std::size_t height = 5; height <= 60; ++height) {
        const Lines lines = Draw(AllAt(500, -108), 79, height);
        std::size_t above = 0;
        while (above < lines.size() && CountOf({lines[above]}, "█") == 20)
            ++above;
        ASSERT_LT(above, lines.size());
        EXPECT_EQ("  0 ┤", lines[above].substr(0, std::string("  0 ┤").size())) << height;
    }
}

TEST(LevelsPicture, LoudGainsHaveTheirStyle) {
    Levels levels = AllAt(-30, -108);
    levels.gains[1] = 12;
    levels.gains[2] = 24;
    const StyledLine lowest = DrawLevels(levels, {}, 79, cHeight)[17];
    // The scale, and three spans a band.
    EXPECT_EQ(Style::eGood, lowest[1].style);
    EXPECT_EQ(Style::eWarning, lowest[4].style);
    EXPECT_EQ(Style::eBad, lowest[7].style);
}

TEST(LevelsPicture, SilenceIsEmpty) {
    const Lines lines = Draw(AllAt(-144, -108), 79, cHeight);
    EXPECT_EQ(0u, CountOf({lines.begin(), lines.begin() + 18}, "█"));
    EXPECT_EQ(0u, CountOf({lines.begin(), lines.begin() + 18}, "░"));
}

TEST(LevelsPicture, WhatIsOutsideEndsAtTheEdge) {
    const float infinity = std::numeric_limits<float>::infinity();
    const Lines above = Draw(AllAt(infinity, 500), 79, cHeight);
    EXPECT_EQ(4u * 20u, CountOf({above.begin(), above.begin() + 18}, "█"));
    EXPECT_EQ(18u * 20u, CountOf({above.begin(), above.begin() + 18}, "░"));
    const Lines below = Draw(AllAt(-143, -500), 79, cHeight);
    EXPECT_EQ(14u * 20u, CountOf({below.begin(), below.begin() + 18}, "█"));
    EXPECT_EQ(0u, CountOf({below.begin(), below.begin() + 18}, "░"));
}

TEST(LevelsPicture, LoudestBandIsNamed) {
    Levels levels = AllAt(std::numeric_limits<float>::quiet_NaN(), 0);
    levels.gains[6] = -12.5f;
    levels.gains[7] = -40;
    EXPECT_EQ(1u, CountOf(Draw(levels, 79, 20), "loudest -12.5 in band 7"));
}

TEST(LevelsPicture, TextOfALevelHasOneDecimal) {
    EXPECT_EQ("-12.5", LevelText(-12.5f));
    EXPECT_EQ("0.0", LevelText(-0.01f));
    EXPECT_EQ("24.0", LevelText(24));
    EXPECT_EQ("nan", LevelText(std::numeric_limits<float>::quiet_NaN()));
}

TEST(LevelsPicture, NoNumberIsNullInADocument) {
    Levels levels = AllAt(-1.5f, 2);
    levels.gains[0] = std::numeric_limits<float>::quiet_NaN();
    levels.excitations[19] = -std::numeric_limits<float>::infinity();
    const Json document = LevelsDocument(levels);
    EXPECT_TRUE(document["gains"][0].is_null());
    EXPECT_EQ(-1.5, document["gains"][1]);
    EXPECT_EQ(2, document["excitations"][0]);
    EXPECT_TRUE(document["excitations"][19].is_null());
}

TEST(LevelsPicture, SameLevelsAreSameAlsoWithoutNumbers) {
    const Levels levels = AllAt(std::numeric_limits<float>::quiet_NaN(), 0);
    EXPECT_TRUE(AreSame(levels, levels));
    EXPECT_FALSE(AreSame(levels, AllAt(0, 0)));
}

}  // namespace
}  // namespace kora4::tools
