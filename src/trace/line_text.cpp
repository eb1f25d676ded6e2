// SPDX-License-Identifier: MIT
// Formats a trace line into a fixed buffer, conversion by conversion, without the heap and
// without the locale of the host.
#include "trace/line_text.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

namespace kora4::trace {

namespace {

constexpr std::size_t cMostBytes = cLineChars - 2;  // before the newline and the terminator

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// As Unicode has them; a byte above 0x7F is part of a character of the code page.
constexpr bool IsControl(wchar_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}
constexpr bool IsControlByte(char c) {
    return (c >= 0 && c < 0x20) || c == 0x7F;
}

}  // namespace

void LineText::Append(const char* pFormat, ...) {
    std::va_list arguments;
    va_start(arguments, pFormat);
    AppendList(pFormat, &arguments);
    va_end(arguments);
}

void LineText::AppendList(std::string_view format, std::va_list* pArguments) {
    while (!format.empty()) {
        if (format[0] != '%') {
            Put(format[0]);
            format.remove_prefix(1);
            continue;
        }
        const Conversion conversion = contract::ConversionAt(format);
        if (!AppendArgument(conversion, pArguments)) {
            for (const char c : format)
                Put(c);
            return;
        }
        format.remove_prefix(conversion.length);
    }
}

const char* LineText::End() {
    if (m_length == 0 || m_text[m_length - 1] != '\n')
        m_text[m_length++] = '\n';
    m_text[m_length] = '\0';
    return m_text;
}

bool LineText::AppendArgument(const Conversion& conversion, std::va_list* pArguments) {
    switch (conversion.kind) {
        case 's':
        case 'S':
            if (conversion.IsWide())
                AppendWide(va_arg(*pArguments, const wchar_t*));
            else
                AppendNarrow(conversion, va_arg(*pArguments, const char*));
            return true;
        case 'd': {
            const std::int64_t value = va_arg(*pArguments, std::int32_t);
            AppendInteger(conversion, static_cast<std::uint64_t>(value < 0 ? -value : value),
                          value < 0);
            return true;
        }
        case 'u':
        case 'x':
        case 'X':
            AppendInteger(conversion, va_arg(*pArguments, std::uint32_t), false);
            return true;
        case 'p':
            AppendInteger(conversion, va_arg(*pArguments, std::uintptr_t), false);
            return true;
        case 'f':
            AppendFloat(conversion, va_arg(*pArguments, double));
            return true;
        default:
            return false;
    }
}

void LineText::AppendInteger(const Conversion& conversion, std::uint64_t value,
                             bool isNegative) {
    const unsigned base = conversion.kind == 'd' || conversion.kind == 'u' ? 10 : 16;
    const char* const pDigits =
        conversion.kind == 'x' ? "0123456789abcdef" : "0123456789ABCDEF";
    std::size_t zeros = conversion.hasZeros ? conversion.width : 1;
    if (conversion.kind == 'p')
        zeros = 2 * sizeof(void*);
    char text[24];
    std::size_t begin = sizeof text;
    // A number of 64 bits has at most 20 digits.
    for (; value != 0 || begin == sizeof text || (zeros > sizeof text - begin && begin > 4);
         value /= base)
        text[--begin] = pDigits[value % base];
    if (isNegative)
        text[--begin] = '-';
    Pad(conversion, sizeof text - begin);
    PutWhole(text + begin, sizeof text - begin);
}

// The C runtime's own digits, also for NaN and infinities. It writes the decimal point of the
// locale that the host has set, which may take several bytes.
void LineText::AppendFloat(const Conversion& conversion, double value) {
    char text[330];  // 309 digits before the point, 6 behind it
    text[sizeof text - 1] = '\0';
    _snprintf(text, sizeof text - 1, "%f", value);
    std::size_t whole = text[0] == '-' ? 1 : 0;
    while (IsDigit(text[whole]))
        ++whole;
    const char* pFraction = text + whole;
    const bool hasPoint = whole > 0 && IsDigit(text[whole - 1]) && *pFraction != '\0';
    // "1.#QNAN0" is how some C runtimes write NaN.
    while (hasPoint && *pFraction != '\0' && !IsDigit(*pFraction) && *pFraction != '#')
        ++pFraction;
    const std::size_t fraction = std::strlen(pFraction);
    Pad(conversion, whole + (hasPoint ? 1 : 0) + fraction);
    PutWhole(text, whole);
    if (hasPoint)
        Put('.');
    PutWhole(pFraction, fraction);
}

void LineText::AppendNarrow(const Conversion& conversion, const char* pText) {
    if (pText == nullptr)
        pText = "(null)";
    if (conversion.width != 0)
        Pad(conversion, std::strlen(pText));
    for (; *pText != '\0' && !m_isFull; ++pText)
        Put(IsControlByte(*pText) && *pText != '\t' ? '?' : *pText);
}

void LineText::AppendWide(const wchar_t* pText) {
    if (pText == nullptr)
        pText = L"(null)";
    while (*pText != L'\0' && !m_isFull) {
        const int units = IS_SURROGATE_PAIR(pText[0], pText[1]) ? 2 : 1;
        AppendCharacter(pText, units);
        pText += units;
    }
}

void LineText::AppendCharacter(const wchar_t* pUnits, int units) {
    char bytes[8];
    bytes[0] = static_cast<char>(*pUnits);
    int count = 1;
    bool isShown = !IsControl(*pUnits) && (units == 2 || !IS_HIGH_SURROGATE(*pUnits)) &&
                   !IS_LOW_SURROGATE(*pUnits);
    if (isShown && *pUnits > 0x7E) {
        // Without a best fit, which can be a control character. UTF-8 has every character and
        // accepts neither flag nor substitute.
        BOOL isSubstitute = FALSE;
        count = WideCharToMultiByte(m_codePage, WC_NO_BEST_FIT_CHARS, pUnits, units, bytes,
                                    sizeof bytes, "?", &isSubstitute);
        if (count == 0)
            count = WideCharToMultiByte(m_codePage, 0, pUnits, units, bytes, sizeof bytes,
                                        nullptr, nullptr);
        isShown = count > 0 && !isSubstitute && !IsControlByte(bytes[0]);
    }
    if (isShown)
        PutWhole(bytes, static_cast<std::size_t>(count));
    else
        Put('?');
}

void LineText::Pad(const Conversion& conversion, std::size_t length) {
    for (; length < conversion.width && !m_isFull; ++length)
        Put(' ');
}

void LineText::Put(char c) {
    m_isFull = m_isFull || m_length == cMostBytes;
    if (!m_isFull)
        m_text[m_length++] = c;
}

// A character is written completely or not at all: half of one would swallow the newline.
void LineText::PutWhole(const char* pBytes, std::size_t length) {
    m_isFull = m_isFull || length > cMostBytes - m_length;
    if (m_isFull)
        return;
    std::memcpy(m_text + m_length, pBytes, length);
    m_length += length;
}

}  // namespace kora4::trace
