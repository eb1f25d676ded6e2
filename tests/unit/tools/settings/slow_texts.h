// SPDX-License-Identifier: MIT
// The text forms of numbers and arrays in the store, read and written apart from the codec:
// plainly and slowly, to hold the codec against.
#ifndef KORA4_TESTS_UNIT_TOOLS_SETTINGS_SLOW_TEXTS_H
#define KORA4_TESTS_UNIT_TOOLS_SETTINGS_SLOW_TEXTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::test {

// Six decimals, rounded half to even: "0.330000"; "nan", "inf" and "-inf", which no reader
// takes.
std::u16string FormatFloatText(float value);
// The decimal number that the text begins with, white space before it and anything after it
// ignored. None when there is no number, for hexadecimal numbers and above the largest float.
std::optional<float> ParseFloatText(std::u16string_view text);

// "0100,0002,f400,0041": scale, count, elements times scale, truncated, low 16 bits. None
// for a scale that cannot be written (0, 32768 and above) and for more than 197 elements.
std::optional<std::u16string> FormatNumericArray(std::uint32_t scale,
                                                 const std::vector<float>& elements);
// The elements, divided by the scale of the text; at most 40. None when it is malformed.
std::optional<std::vector<float>> ParseNumericArray(std::u16string_view text);

// "0003,1,0,1". None for more than 494 flags.
std::optional<std::u16string> FormatFlagArray(const std::vector<bool>& flags);
std::optional<std::vector<bool>> ParseFlagArray(std::u16string_view text);

}  // namespace kora4::test

#endif  // KORA4_TESTS_UNIT_TOOLS_SETTINGS_SLOW_TEXTS_H
