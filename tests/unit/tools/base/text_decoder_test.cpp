// SPDX-License-Identifier: MIT
// Texts from outside, whole and piece by piece.
#include "base/text_decoder.h"

#include <gtest/gtest.h>

#include "base/text.h"

namespace kora4::tools {
namespace {

const std::string cText = "Gr\xC3\xBC\xC3\x9F\x65 \xF0\x9F\x98\x80\n";

std::string Utf16(bool isBigEndian) {
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const wchar_t unit : Widen(cText)) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

TEST(TextDecoder, TakesEveryFormThatProgramsWrite) {
    for (const std::string& form : {cText, "\xEF\xBB\xBF" + cText, Utf16(false), Utf16(true)}) {
        EXPECT_EQ(cText, DecodedText(form));
        TextDecoder decoder;
        std::string pieces;
        for (const char byte : form)
            pieces += decoder.Take({&byte, 1});
        EXPECT_EQ(cText, pieces + decoder.End());
    }
}

TEST(TextDecoder, KeepsWhatOnlyBeginsLikeAMark) {
    for (const std::string text : {"", "\xEF", "\xEF\xBB", "\xFF", "\xFE", "\xEF\xBBx", "x"})
        EXPECT_EQ(text, DecodedText(text));
}

TEST(TextDecoder, HalfACharacterOfUtf16IsTold) {
    EXPECT_EQ("\xEF\xBF\xBD", DecodedText("\xFF\xFEx"));
    EXPECT_EQ("\xEF\xBF\xBD", DecodedText({"\xFF\xFE\x00\xD8", 4}));
    EXPECT_EQ("", DecodedText("\xFF\xFE"));
}

}  // namespace
}  // namespace kora4::tools
