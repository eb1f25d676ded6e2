// SPDX-License-Identifier: MIT
// The forms of a moment.
#include "base/utc_time.h"

#include <gtest/gtest.h>

namespace kora4::tools {
namespace {

UtcTime At(const SYSTEMTIME& time) {
    FILETIME file{};
    EXPECT_TRUE(SystemTimeToFileTime(&time, &file));
    return UtcTime(file);
}

TEST(UtcTime, HasThreeForms) {
    const UtcTime time = At({2031, 5, 0, 1, 14, 3, 22, 7});
    EXPECT_EQ("2031-05-01T14:03:22.007Z", time.Iso());
    EXPECT_EQ("14:03:22.007Z", time.Clock());
    EXPECT_EQ("20310501T140322007Z", time.FileStamp());
}

TEST(UtcTime, NowIsTheClockOfUtc) {
    SYSTEMTIME before{};
    GetSystemTime(&before);
    const std::string now = UtcTime::Now().Iso();
    SYSTEMTIME after{};
    GetSystemTime(&after);
    EXPECT_LE(At(before).Iso(), now);
    EXPECT_GE(At(after).Iso(), now);
}

}  // namespace
}  // namespace kora4::tools
