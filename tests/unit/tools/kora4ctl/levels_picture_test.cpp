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
    for (const StyledLine& line : DrawLevels(levels, width, height))
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
        const std::string numbers = Draw(AllAt(-20, 0), width, 23)[21];
        EXPECT_NE(std::string::npos, numbers.find("1  "));
        EXPECT_TRUE(numbers.ends_with(" 20")) << numbers;
    }
}

TEST(LevelsPicture, WiderTerminalsHaveWiderBars) {
    EXPECT_EQ(20u, CountOf({Draw(AllAt(0, -108), 79, 23)[20]}, "█"));
    EXPECT_EQ(40u, CountOf({Draw(AllAt(0, -108), 119, 23)[20]}, "█"));
}

TEST(LevelsPicture, BarsEndAtTheirLevel) {
    // 18 lines of 6 dB, from 24 dB down.
    const Lines lines = Draw(AllAt(-24, -108), 79, 20);
    EXPECT_EQ(0u, CountOf({lines.begin(), lines.begin() + 8}, "█"));
    EXPECT_EQ(10u * 20u, CountOf({lines.begin() + 8, lines.begin() + 18}, "█"));
    EXPECT_EQ(" -24 ┤", " " + lines[8].substr(0, std::string("-24 ┤").size()));
    EXPECT_EQ(20u, CountOf({Draw(AllAt(-27, -108), 79, 20)[8]}, "▄"));
}

TEST(LevelsPicture, LoudGainsHaveTheirStyle) {
    Levels levels = AllAt(-30, -108);
    levels.gains[1] = 12;
    levels.gains[2] = 24;
    const StyledLine lowest = DrawLevels(levels, 79, 20)[17];
    // The scale, and three spans a band.
    EXPECT_EQ(Style::eGood, lowest[1].style);
    EXPECT_EQ(Style::eWarning, lowest[4].style);
    EXPECT_EQ(Style::eBad, lowest[7].style);
}

TEST(LevelsPicture, SilenceIsEmpty) {
    const Lines lines = Draw(AllAt(-144, -108), 79, 20);
    EXPECT_EQ(0u, CountOf({lines.begin(), lines.begin() + 18}, "█"));
    EXPECT_EQ(0u, CountOf({lines.begin(), lines.begin() + 18}, "░"));
}

TEST(LevelsPicture, WhatIsOutsideEndsAtTheEdge) {
    const float infinity = std::numeric_limits<float>::infinity();
    const Lines above = Draw(AllAt(infinity, 500), 79, 20);
    EXPECT_EQ(18u * 20u, CountOf({above.begin(), above.begin() + 18}, "█"));
    EXPECT_EQ(18u * 20u, CountOf({above.begin(), above.begin() + 18}, "░"));
    const Lines below = Draw(AllAt(-infinity, -500), 79, 20);
    EXPECT_EQ(0u, CountOf({below.begin(), below.begin() + 18}, "█"));
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
