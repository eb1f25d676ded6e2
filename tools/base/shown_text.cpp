// SPDX-License-Identifier: MIT
// Reads UTF-8 character by character and escapes what must not be shown.
#include "base/shown_text.h"

#include "base/text.h"

namespace kora4::tools {
namespace {

constexpr char cReplacement[] = "\xEF\xBF\xBD";  // U+FFFD

// The number of bytes of the character that the text begins with; 0 when they are not UTF-8.
std::size_t ReadCharacter(std::string_view text, std::uint32_t& character) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || length > text.size())
        return 0;
    character = length == 1 ? first : first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0u) != 0x80u)
            return 0;
        character = character << 6 | (byte & 0x3Fu);
    }
    // Longer than needed, half of a pair, or beyond the last one.
    constexpr std::uint32_t cLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isHalf = character >= 0xD800 && character <= 0xDFFF;
    return character < cLeast[length] || isHalf || character > 0x10FFFF ? 0 : length;
}

bool ActsOnTerminals(std::uint32_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

std::string Escaped(std::string_view text, std::string_view kept) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        std::uint32_t character = 0;
        const std::size_t length = ReadCharacter(text, character);
        if (length == 0)
            shown += cReplacement;
        else if (ActsOnTerminals(character) && kept.find(text[0]) == std::string_view::npos)
            shown += "\\u" + Hex(character, 4).substr(2);
        else
            shown += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return shown;
}

}  // namespace

std::string ShownText(std::string_view text) {
    return Escaped(text, {});
}

std::string ShownLines(std::string_view text) {
    return Escaped(text, "\n\t");
}

}  // namespace kora4::tools
