// SPDX-License-Identifier: MIT
// Matches a written line with a format by its literal parts and by the look of its values.
#include <algorithm>
#include <cctype>
#include <string_view>

#include "faults/trace_line_table.h"

namespace kora4::test {
namespace {

bool IsUpperHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0 && !(c >= 'a' && c <= 'f');
}
bool IsLowerHex(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0 && !(c >= 'A' && c <= 'F');
}
bool IsDecimal(char c) {
    return c >= '0' && c <= '9';
}

// Takes between `least` and `most` characters of a kind from the front.
bool Take(std::string_view& text, bool (*isOne)(char), std::size_t least, std::size_t most) {
    std::size_t length = 0;
    while (length < text.size() && length < most && isOne(text[length]))
        ++length;
    text.remove_prefix(length);
    return length >= least;
}

bool Take(std::string_view& text, std::string_view exact) {
    if (!text.starts_with(exact))
        return false;
    text.remove_prefix(exact.size());
    return true;
}

bool TakeValueName(std::string_view& text) {
    bool found = Take(text, "{");
    constexpr std::size_t cGroups[] = {8, 4, 4, 4, 12};
    for (const std::size_t digits : cGroups) {
        if (digits != cGroups[0])
            found = found && Take(text, "-");
        found = found && Take(text, IsUpperHex, digits, digits);
    }
    return found && Take(text, "},") && Take(text, IsDecimal, 1, 10);
}

bool TakePlaceholder(std::string_view& text, char kind) {
    switch (kind) {
        case 'p':
            return Take(text, IsUpperHex, 16, 16);
        case 'x':
            return Take(text, "0x") && Take(text, IsLowerHex, 8, 8);
        case 'h':
            return Take(text, IsLowerHex, 1, 8);
        case 'k':
            return TakeValueName(text);
        case 'd':
            return Take(text, IsDecimal, 1, 10);
        case 's':
            text.remove_prefix(std::min(text.find('\n'), text.size()));
            return true;
        default:
            return false;
    }
}

}  // namespace

bool MatchesText(const std::string& pattern, const std::string& message) {
    std::string_view left = message;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool found = pattern[i] == '%' ? TakePlaceholder(left, pattern[++i])
                                             : Take(left, std::string_view(&pattern[i], 1));
        if (!found)
            return false;
    }
    return left.empty();
}

}  // namespace kora4::test
