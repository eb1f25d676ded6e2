// SPDX-License-Identifier: MIT
// The conversions of trace messages, shared by formatter, compile-time check and reader.
#pragma once

#include <cstddef>
#include <string_view>

namespace kora4::contract {

// "%08x", "%16s", "%ls". A message may hold %s, %S and %ls, %d, %u, %x, %X, %p and %f, with a
// width and zeros before a number; an l before a number is ignored: all numbers have 32 bits.
struct Conversion {
    std::size_t length = 0;  // in the pattern, with the per cent sign
    std::size_t width = 0;
    bool hasZeros = false;
    bool isLong = false;
    char kind = '\0';

    constexpr bool IsPadded() const { return width != 0 && !hasZeros; }  // with blanks
    constexpr bool IsText() const { return kind == 's' || kind == 'S'; }
    constexpr bool IsWide() const { return kind == 'S' || (kind == 's' && isLong); }
};

// The conversion that `pattern` begins with, its per cent sign first.
constexpr Conversion ConversionAt(std::string_view pattern) {
    const auto at = [pattern](std::size_t i) { return i < pattern.size() ? pattern[i] : '\0'; };
    Conversion conversion;
    std::size_t i = 1;
    conversion.hasZeros = at(i) == '0';
    for (; at(i) >= '0' && at(i) <= '9'; ++i)
        conversion.width = conversion.width * 10 + static_cast<std::size_t>(at(i) - '0');
    conversion.isLong = at(i) == 'l';
    i += conversion.isLong ? 1 : 0;
    conversion.kind = at(i);
    conversion.length = conversion.kind != '\0' ? i + 1 : i;
    return conversion;
}

// The number of characters of a pattern outside its conversions, and the number of these.
struct PatternParts {
    std::size_t exact = 0;
    std::size_t conversions = 0;
};

constexpr PatternParts PartsOf(std::string_view pattern) {
    PatternParts parts;
    while (!pattern.empty()) {
        const bool isConversion = pattern.front() == '%';
        pattern.remove_prefix(isConversion ? ConversionAt(pattern).length : 1);
        ++(isConversion ? parts.conversions : parts.exact);
    }
    return parts;
}

}  // namespace kora4::contract
