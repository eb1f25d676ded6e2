// SPDX-License-Identifier: MIT
// The text of one trace line, formatted without heap and without the host's locale.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "contract/messages/conversion.h"

namespace kora4::trace {

// With the terminator; what does not fit is left out, and the newline at the end always fits.
inline constexpr std::size_t cLineChars = 1024;

// What the formats of trace statements may hold: %s, %S and %ls, %d, %u, %x, %X, %p and %f,
// with a width and zeros before a number; an l before a number is ignored: all numbers have 32
// bits. From anything else on, a format is written as it stands: its arguments are unknown.
//
// Wide texts come from outside (names of profiles and keys, window titles): each of their
// control characters is written as '?', and so is what the code page cannot show, so that one
// text is never two lines. Narrow texts are the library's own. Their tabs are part of them;
// every other control character of theirs is written as '?', too. Numbers have a decimal
// point whatever locale the host has chosen.
class LineText {
  public:
    // `codePage` is that of wide texts in the line; CP_ACP outside tests.
    explicit LineText(unsigned codePage) : m_codePage(codePage) {}
    LineText(const LineText&) = delete;
    LineText& operator=(const LineText&) = delete;

    // Appends what the format and its arguments give. Arguments are of the kinds that the
    // conversions name; nothing checks that here.
    void AppendList(std::string_view format, std::va_list* pArguments);
    void Append(const char* pFormat, ...);
    // Ends the line with a newline, unless it has one, and gives the whole of it.
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
