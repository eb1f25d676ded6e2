// SPDX-License-Identifier: MIT
// The store's codec for code with strings and vectors. Texts end at their first terminator.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "contract/codec/array_text.h"
#include "contract/codec/float_text.h"

namespace kora4::tools {

// Six decimals, as the library writes it.
inline std::u16string FormatFloatText(float value) {
    char16_t text[codec::cFloatTextChars];
    return {text, codec::FormatFloat(value, text)};
}

// None when the text does not begin with a decimal number that a float can hold.
inline std::optional<float> ParseFloatText(const std::u16string& text) {
    float value = 0;
    return codec::ParseFloat(text.c_str(), &value) ? std::optional(value) : std::nullopt;
}

// None for a scale that cannot be written and for more elements than a text has room for.
inline std::optional<std::u16string> FormatNumericArray(std::uint32_t scale,
                                                        const std::vector<float>& elements) {
    char16_t text[codec::cArrayTextChars];
    const HRESULT hr = codec::EncodeNumericArray(
        scale, static_cast<std::uint32_t>(elements.size()), elements.data(), text);
    return hr == result::cOk ? std::optional<std::u16string>(text) : std::nullopt;
}

// None for more flags than a text has room for.
inline std::optional<std::u16string> FormatFlagArray(const std::vector<bool>& flags) {
    const std::vector<std::uint32_t> numbers(flags.begin(), flags.end());
    char16_t text[codec::cArrayTextChars];
    const HRESULT hr = codec::EncodeFlagArray(static_cast<std::uint32_t>(numbers.size()),
                                              numbers.data(), text);
    return hr == result::cOk ? std::optional<std::u16string>(text) : std::nullopt;
}

// None when the text is malformed.
template <typename Element, typename Stored>
std::optional<std::vector<Element>> ParseArray(const std::u16string& text,
                                               HRESULT (*decode)(const char16_t*,
                                                                 std::uint32_t*, Stored*)) {
    std::uint32_t count = 0;
    Stored elements[codec::cArrayCapacity];
    if (decode(text.c_str(), &count, elements) != result::cOk)
        return {};
    return std::vector<Element>(elements, elements + count);
}
inline std::optional<std::vector<float>> ParseNumericArray(const std::u16string& text) {
    return ParseArray<float>(text, &codec::DecodeNumericArray);
}
inline std::optional<std::vector<bool>> ParseFlagArray(const std::u16string& text) {
    return ParseArray<bool>(text, &codec::DecodeFlagArray);
}

}  // namespace kora4::tools
