// SPDX-License-Identifier: MIT
// Text from outside for the eyes of a person.
#include <gtest/gtest.h>

#include "base/output.h"
#include "base/shown_text.h"
#include "base/text.h"

namespace kora4::tools {
namespace {

std::string Utf8(char32_t character) {
    std::wstring wide;
    if (character > 0xFFFF) {
        wide += static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
        wide += static_cast<wchar_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
        wide += static_cast<wchar_t>(character);
    }
    return Narrow(wide);
}

TEST(ShownText, LeavesWhatIsWritten) {
    for (const char* text : {"", "plain", "\xC3\xA4 \xE4\xB8\xAD \xF0\x9F\x8E\xA7 \\u001b"})
        EXPECT_EQ(text, ShownText(text));
}

TEST(ShownText, EscapesEveryCharacterThatActsOnATerminal) {
    const auto isActing = [](char32_t c) {
        return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x61C || c == 0x200E ||
               c == 0x200F || (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    };
    for (char32_t c = 0; c < 0x11000; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        const std::string expected = isActing(c) ? "\\u" + Hex(c, 4).substr(2) : Utf8(c);
        ASSERT_EQ("a" + expected + "b", ShownText("a" + Utf8(c) + "b")) << Hex(c);
    }
}

TEST(ShownText, OfLinesKeepsLineFeedsAndTabs) {
    EXPECT_EQ("a\n\tb\\u000d\\u001b", ShownLines("a\n\tb\r\x1b"));
    EXPECT_EQ("a\\u000a\\u0009b", ShownText("a\n\tb"));
}

TEST(ShownText, ReplacesBytesThatAreNotUtf8) {
    const std::string replaced = "\xEF\xBF\xBD";
    EXPECT_EQ(replaced + "31m", ShownText("\x9B"
                                          "31m"));
    EXPECT_EQ(replaced + replaced, ShownText("\xC0\x9B"));
    EXPECT_EQ(replaced, ShownText("\xFF"));
    EXPECT_EQ("a" + replaced, ShownText("a\xE4"));
    EXPECT_EQ(replaced + replaced + replaced, ShownText("\xED\xA0\x80"));
}

TEST(ShownText, OfJsonHasTheSameContent) {
    const Json document = {{"name", "a\x1b[2J\xC2\x9B\xE2\x80\xAE\nb"}};
    const std::string shown = ShownLines(document.dump(2));
    EXPECT_EQ(std::string::npos, shown.find('\x1b'));
    EXPECT_EQ(std::string::npos, shown.find("\xE2\x80\xAE"));
    EXPECT_EQ(document, Json::parse(shown));
}

}  // namespace
}  // namespace kora4::tools
