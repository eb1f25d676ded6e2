// SPDX-License-Identifier: MIT
// The two hexadecimal digits of every byte, so that a byte of a text costs one load and one
// store.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace kora4::codec {

// In upper case. The bit that makes a letter lower case is already set in a decimal digit.
inline constexpr auto cHexPairs = [] {
    constexpr char16_t cDigits[] = u"0123456789ABCDEF";
    std::array<std::array<char16_t, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte)
        pairs[byte] = {cDigits[byte >> 4], cDigits[byte & 0xF]};
    return pairs;
}();
inline constexpr std::uint32_t cUpperCase = 0;
inline constexpr std::uint32_t cLowerCase = 0x00200020;

// Writes the low byte of the number and returns the position after it.
template <std::uint32_t letterCase>
inline char16_t* PutHexByte(char16_t* p, std::uint32_t number) {
    std::uint32_t pair;
    std::memcpy(&pair, cHexPairs[number & 0xFF].data(), sizeof pair);
    pair |= letterCase;
    std::memcpy(p, &pair, sizeof pair);
    return p + 2;
}

}  // namespace kora4::codec
