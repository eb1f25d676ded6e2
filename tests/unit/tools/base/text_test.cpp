// SPDX-License-Identifier: MIT
// Numbers in texts, and ranges in words.
#include "base/text.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace kora4::tools {
namespace {

TEST(ReadNumber, TakesAWholeTextOnly) {
    EXPECT_EQ(42u, ReadNumber<std::uint32_t>("42"));
    EXPECT_EQ(0x3FFu, ReadNumber<std::uint32_t>("3ff", 16));
    EXPECT_EQ(-0.5, ReadNumber<double>("-0.5"));
    for (const char* const text : {"", " 1", "1 ", "1x", "+1", "x", "-1"})
        EXPECT_EQ(std::nullopt, ReadNumber<std::uint32_t>(text)) << text;
    EXPECT_EQ(std::nullopt, ReadNumber<double>("1e"));
}

TEST(ReadNumber, RefusesWhatTheTypeCannotHold) {
    EXPECT_EQ(0xFFFFFFFFu, ReadNumber<std::uint32_t>("4294967295"));
    EXPECT_EQ(std::nullopt, ReadNumber<std::uint32_t>("4294967296"));
    EXPECT_EQ(std::nullopt, ReadNumber<std::uint8_t>("100", 16));
    EXPECT_EQ(std::nullopt, ReadNumber<double>("1e999"));
}

TEST(Range, ShowsWholeNumbersInFull) {
    EXPECT_EQ("0 to 86400", Range(0, 86400));
    EXPECT_EQ("0 to 4294967295", Range(0, 4294967295.0));
    EXPECT_EQ("-144 to 0", Range(-144, 0));
    EXPECT_EQ("0.001 to 600", Range(0.001, 600));
}

}  // namespace
}  // namespace kora4::tools
