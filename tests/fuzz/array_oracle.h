// SPDX-License-Identifier: MIT
// What the texts of arrays mean and how they are written, word by word and field by field.
#ifndef KORA4_TESTS_FUZZ_ARRAY_ORACLE_H
#define KORA4_TESTS_FUZZ_ARRAY_ORACLE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::fuzz {

// None: the text is refused.
std::optional<std::vector<float>> NumericArrayOf(std::u16string_view text);
std::optional<std::vector<std::uint32_t>> FlagArrayOf(std::u16string_view text);

// None: the scale is refused, or the text does not fit.
std::optional<std::u16string> TextOfArray(unsigned scale, const std::vector<float>& elements);
std::optional<std::u16string> TextOfFlags(const std::vector<std::uint32_t>& flags);

}  // namespace kora4::fuzz

#endif  // KORA4_TESTS_FUZZ_ARRAY_ORACLE_H
