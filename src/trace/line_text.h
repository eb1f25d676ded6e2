// SPDX-License-Identifier: MIT
// The text of one trace line, formatted without heap and without the host's locale.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "contract/messages/conversion.h"

namespace kora4::trace {

// With the terminator; text that does not fit is cut, and there is always room for the newline
// at the end.
inline constexpr std::size_t cLineChars = 1024;

// What the formats of trace statements may contain: %s, %S and %ls, %d, %u, %x, %X, %p and %f,
// with a width and zeros before a number; an l before a number is ignored: all numbers have 32
// bits. Anything else, and the rest of the format after it, is written literally: its arguments
// are unknown.
//
// Wide texts come from outside (names of profiles and keys, window titles): each of their
// control characters is written as '?', and so is what the code page cannot show, so that one
// text is never two lines. Narrow texts are the library's own. Their tabs are kept; every other
// control character in them is also written as '?'. Numbers have a decimal point whatever
// locale the host has chosen.
class LineText {
  public:
    // `codePage` is that of wide texts in the line; CP_ACP outside tests.
    explicit LineText(unsigned codePage) : m_codePage(codePage) {}
    LineText(const LineText&) = delete;
    LineText& operator=(const LineText&) = delete;

    // Appends the formatted text. The arguments must have the types that the conversions name;
    // this is not checked here.
    void AppendList(std::string_view format, std::va_list* pArguments);
    void Append(const char* pFormat, ...);
    // Ends the line with a newline, unless it has one, and returns the whole line.
    const char* End();

  private:
    using Conversion = contract::Conversion;

    bool AppendArgument(const Conversion& conversion, std::va_list* pArguments);
    void AppendInteger(const Conversion& conversion, std::uint64_t value, bool isNegative);
    void AppendFloat(const Conversion& conversion, double value);
    void AppendNarrow(const Conversion& conversion, const char* pText);
    void AppendWide(const wchar_t* pText);
    void AppendCharacter(const wchar_t* pUnits, int units);
    void Pad(const Conversion& conversion, std::size_t length);
    void Put(char c);
    void PutWhole(const char* pBytes, std::size_t length);

    const unsigned m_codePage;
    bool m_isFull = false;
    std::size_t m_length = 0;
    char m_text[cLineChars];
};

}  // namespace kora4::trace
