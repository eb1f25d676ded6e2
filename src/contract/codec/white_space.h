// SPDX-License-Identifier: MIT
// White space in stored texts, independent of the locale.
#pragma once

namespace kora4::codec {

// Blank, \t, \n, \v, \f, \r.
constexpr bool IsWhiteSpace(char16_t c) {
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

// The first character at or after `p` that is not white space. A terminator is not.
inline const char16_t* SkipWhiteSpace(const char16_t* p) {
    while (IsWhiteSpace(*p))
        ++p;
    return p;
}

}  // namespace kora4::codec
