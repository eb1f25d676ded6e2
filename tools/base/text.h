// SPDX-License-Identifier: MIT
// Text inside the tools is UTF-8; the platform's is UTF-16.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kora4::tools {

// Malformed text becomes U+FFFD.
std::string Narrow(std::wstring_view text);
std::wstring Widen(std::string_view text);
// None for none.
inline std::optional<std::string> NarrowIfAny(const std::optional<std::wstring>& text) {
    return text ? std::optional(Narrow(*text)) : std::nullopt;
}

// "0x00040200", "0x3ff": as many digits as `digits`, or as needed with 0.
std::string Hex(std::uint32_t number, unsigned digits = 8);

// The shortest decimal text that reads back as the same float: "7", "0.33", "-12".
std::string Decimal(float number);

// The number that the whole text is: digits of the base, or a decimal fraction. None for
// anything else, and for what the type cannot hold.
template <typename Number>
std::optional<Number> ReadNumber(std::string_view text, int base = 10) {
    Number number{};
    const char* const end = text.data() + text.size();
    std::from_chars_result read{};
    if constexpr (std::is_floating_point_v<Number>)
        read = std::from_chars(text.data(), end, number);
    else
        read = std::from_chars(text.data(), end, number, base);
    const bool isRead = !text.empty() && read.ec == std::errc{} && read.ptr == end;
    return isRead ? std::optional(number) : std::nullopt;
}

// "0 to 10", "0.001 to 600"; whole numbers in full.
std::string Range(double least, double most);

// "1 value", "2 values".
std::string Counted(std::uint64_t count, const char* one, const char* many);

// ASCII letters in lower case; the rest stays.
std::string Lower(std::string_view text);

// The texts in one, with `between` between any two.
std::string Join(const std::vector<std::string>& texts, std::string_view between);

// Terminal columns that a text takes: one a character, two for wide ones, none for
// combining marks and for colour sequences.
std::size_t Columns(std::string_view text);

// The text with blanks up to that many columns.
std::string Padded(std::string_view text, std::size_t columns);

}  // namespace kora4::tools
