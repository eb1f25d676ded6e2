// SPDX-License-Identifier: MIT
// The store's codec for code with strings and vectors. Texts end at their first terminator.
#ifndef KORA4_SETTINGS_TEXTS_H
#define KORA4_SETTINGS_TEXTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kora4::tools {

// Six decimals, as the library writes it.
std::u16string FormatFloatText(float value);
// None when the text does not begin with a decimal number that a float can hold.
std::optional<float> ParseFloatText(const std::u16string& text);

// None for a scale that cannot be written and for more elements than a text has room for.
std::optional<std::u16string> FormatNumericArray(std::uint32_t scale,
                                                 const std::vector<float>& elements);
// None when the text is malformed.
std::optional<std::vector<float>> ParseNumericArray(const std::u16string& text);

// None for more flags than a text has room for.
std::optional<std::u16string> FormatFlagArray(const std::vector<bool>& flags);

// None when the text is malformed.
std::optional<std::vector<bool>> ParseFlagArray(const std::u16string& text);

}  // namespace kora4::tools

#endif  // KORA4_SETTINGS_TEXTS_H
