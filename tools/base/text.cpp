// SPDX-License-Identifier: MIT
// UTF-8 to UTF-16 and back, numbers as text, and how wide a text is on a terminal.
#include "base/text.h"

#include <windows.h>

#include <charconv>
#include <cmath>

namespace kora4::tools {

std::string Narrow(std::wstring_view text) {
    if (text.empty())
        return {};
    const int length = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), bytes, nullptr,
                        nullptr);
    return narrow;
}

std::wstring Widen(std::string_view text) {
    if (text.empty())
        return {};
    const int length = static_cast<int>(text.size());
    const int chars = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(chars), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), chars);
    return wide;
}

std::string Hex(std::uint32_t number, unsigned digits) {
    char buffer[8];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, number, 16).ptr;
    const auto length = static_cast<std::size_t>(end - buffer);
    return "0x" + std::string(digits > length ? digits - length : 0, '0') +
           std::string(buffer, length);
}

std::string Decimal(float number) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    return std::string(buffer, result.ptr);
}

std::string Range(double least, double most) {
    const auto shown = [](double number) {
        return number == std::floor(number) ? std::to_string(static_cast<long long>(number))
                                            : Decimal(static_cast<float>(number));
    };
    return shown(least) + " to " + shown(most);
}

std::string Counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

std::string Join(const std::vector<std::string>& texts, std::string_view between) {
    std::string joined;
    for (const std::string& text : texts) {
        if (&text != &texts.front())
            joined += between;
        joined += text;
    }
    return joined;
}

namespace {

// Ranges of characters that terminals draw two columns wide, or on top of the previous one.
struct Characters {
    std::uint32_t first;
    std::uint32_t last;
};
constexpr Characters cWide[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},
                                {0xF900, 0xFAFF}, {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                                {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
constexpr Characters cCombining[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0xFE00, 0xFE0F}};

template <std::size_t count>
bool IsIn(const Characters (&ranges)[count], std::uint32_t character) {
    for (const Characters& range : ranges) {
        if (character >= range.first && character <= range.last)
            return true;
    }
    return false;
}

// Returns the character that begins at `at` and moves `at` behind it.
std::uint32_t NextCharacter(std::string_view text, std::size_t& at) {
    const auto byte = static_cast<unsigned char>(text[at++]);
    const unsigned more = byte < 0xC0 ? 0 : byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    std::uint32_t character = more == 0 ? byte : byte & (0x3Fu >> more);
    for (unsigned i = 0; i < more && at < text.size(); ++i)
        character = character << 6 | (static_cast<unsigned char>(text[at++]) & 0x3Fu);
    return character;
}

}  // namespace

std::size_t Columns(std::string_view text) {
    std::size_t columns = 0;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == cStyleMark) {
            at += 2;
            continue;
        }
        const std::uint32_t character = NextCharacter(text, at);
        columns += IsIn(cCombining, character) ? 0u : IsIn(cWide, character) ? 2u : 1u;
    }
    return columns;
}

std::string Padded(std::string_view text, std::size_t columns) {
    const std::size_t taken = Columns(text);
    return std::string(text) + std::string(taken < columns ? columns - taken : 0, ' ');
}

}  // namespace kora4::tools
