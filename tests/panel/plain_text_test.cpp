// SPDX-License-Identifier: MIT
// What is shown of a file that is none of ours.
#include "panel/model/plain_text.h"

#include <gtest/gtest.h>

namespace panel {
namespace {

using namespace std::string_view_literals;

TEST(PlainText, HasNoZeros) {
    EXPECT_TRUE(IsPlainText(""));
    EXPECT_TRUE(IsPlainText("\xEF\xBB\xBFGraphicEQ: 20 1\r\n# \xFC"));
    EXPECT_FALSE(IsPlainText("\xFF\xFEG\0r\0"sv));
    EXPECT_FALSE(IsPlainText("MZ\x90\0\x03"sv));
}

TEST(Excerpt, LeavesAShortTextAsItIs) {
    EXPECT_EQ("", Excerpt(""));
    EXPECT_EQ("'f\u00FCnf' is not a gain", Excerpt("'f\u00FCnf' is not a gain"));
    EXPECT_EQ(std::string(80, 'a'), Excerpt(std::string(80, 'a')));
}

TEST(Excerpt, CutsALongOneBetweenTwoCharacters) {
    EXPECT_EQ(std::string(77, 'a') + "\u2026", Excerpt(std::string(1 << 20, 'a')));
    for (std::size_t before = 74; before < 78; ++before)
        EXPECT_EQ(std::string(before, 'a') + (before + 2 <= 77 ? "\u00FC" : "") +
                      (before + 4 <= 77 ? "\u00FC" : "") + "\u2026",
                  Excerpt(std::string(before, 'a') + "\u00FC\u00FC" + std::string(9, '\t')))
            << before;
}

TEST(Excerpt, HasNoControlCharacters) {
    EXPECT_EQ("'a?b?c?' is not", Excerpt("'a\x01"
                                         "b\x1B"
                                         "c\x7F' is not"));
}

}  // namespace
}  // namespace panel
