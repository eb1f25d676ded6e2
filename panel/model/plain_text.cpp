// SPDX-License-Identifier: MIT
// Looking at texts from files.
#include "panel/model/plain_text.h"

#include <algorithm>

namespace panel {

namespace {

bool IsControl(char c) {
    constexpr unsigned char cBlank = 0x20;
    constexpr unsigned char cDelete = 0x7F;
    const auto byte = static_cast<unsigned char>(c);
    return byte < cBlank || byte == cDelete;
}

// Of UTF-8: in the middle of a character.
bool IsInside(char c) {
    constexpr unsigned char cMask = 0xC0;
    constexpr unsigned char cMark = 0x80;
    return (static_cast<unsigned char>(c) & cMask) == cMark;
}

}  // namespace

bool IsPlainText(std::string_view bytes) {
    return bytes.find('\0') == std::string_view::npos;
}

std::string Excerpt(std::string_view text) {
    constexpr std::size_t cMost = 80;
    constexpr std::string_view cMore = "\u2026";
    std::string excerpt(text);
    if (text.size() > cMost) {
        std::size_t end = cMost - cMore.size();
        while (end > 0 && IsInside(text[end]))
            --end;
        excerpt = std::string(text.substr(0, end)).append(cMore);
    }
    std::replace_if(excerpt.begin(), excerpt.end(), IsControl, '?');
    return excerpt;
}

}  // namespace panel
