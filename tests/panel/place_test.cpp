// SPDX-License-Identifier: MIT
// Where the window was, and where it may be.
#include "panel/model/place.h"

#include <gtest/gtest.h>

namespace panel {
namespace {

constexpr Area cWork{1920, 40, 3840, 1080};
constexpr Point cLeast{600, 400};

TEST(Place, ComesBackAtTheSameAndAtAnotherResolution) {
    const std::string text = PlaceText({2020, 140, 2920, 740}, cWork, 96);
    EXPECT_EQ("100 100 900 600", text);
    EXPECT_EQ((Area{2020, 140, 2920, 740}), PlaceOf(text, cWork, 96, cLeast));
    constexpr Area cLarge{0, 0, 3840, 2160};
    EXPECT_EQ((Area{200, 200, 2000, 1400}), PlaceOf(text, cLarge, 192, {1200, 800}));
}

TEST(Place, StaysOnTheMonitor) {
    EXPECT_EQ((Area{1920, 40, 2820, 640}), PlaceOf("-500 -500 900 600", cWork, 96, cLeast));
    EXPECT_EQ((Area{2940, 480, 3840, 1080}), PlaceOf("5000 5000 900 600", cWork, 96, cLeast));
    EXPECT_EQ((Area{1920, 40, 3840, 1080}), PlaceOf("0 0 9000 9000", cWork, 96, cLeast));
    EXPECT_EQ((Area{1920, 40, 2520, 440}), PlaceOf("0 0 10 10", cWork, 96, cLeast));
}

TEST(Place, IsNoneWhenTheTextIsSomethingElse) {
    for (const char* wrong : {"", "1 2 3", "1 2 3 4 5", "a b c d", "0 0 0 100", "0 0 100 -1",
                              "0 0 999999999999 4", "0 0 900000 4"})
        EXPECT_FALSE(PlaceOf(wrong, cWork, 96, cLeast)) << wrong;
}

}  // namespace
}  // namespace panel
