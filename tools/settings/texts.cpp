// SPDX-License-Identifier: MIT
// Adapts the codec of the contract to strings and vectors.
#include "settings/texts.h"

#include "contract/codec/array_text.h"
#include "contract/codec/float_text.h"

namespace kora4::tools {

std::u16string FormatFloatText(float value) {
    char16_t text[codec::cFloatTextChars];
    const std::size_t length = codec::FormatFloat(value, text);
    return {text, length};
}

std::optional<float> ParseFloatText(const std::u16string& text) {
    float value = 0;
    return codec::ParseFloat(text.c_str(), &value) ? std::optional(value) : std::nullopt;
}

std::optional<std::u16string> FormatNumericArray(std::uint32_t scale,
                                                 const std::vector<float>& elements) {
    char16_t text[codec::cArrayTextChars];
    const HRESULT hr = codec::EncodeNumericArray(
        scale, static_cast<std::uint32_t>(elements.size()), elements.data(), text);
    return hr == result::cOk ? std::optional<std::u16string>(text) : std::nullopt;
}

std::optional<std::vector<float>> ParseNumericArray(const std::u16string& text) {
    std::uint32_t count = 0;
    float elements[codec::cArrayCapacity];
    if (codec::DecodeNumericArray(text.c_str(), &count, elements) != result::cOk)
        return {};
    return std::vector<float>(elements, elements + count);
}

std::optional<std::u16string> FormatFlagArray(const std::vector<bool>& flags) {
    const std::vector<std::uint32_t> numbers(flags.begin(), flags.end());
    char16_t text[codec::cArrayTextChars];
    const HRESULT hr = codec::EncodeFlagArray(static_cast<std::uint32_t>(numbers.size()),
                                              numbers.data(), text);
    return hr == result::cOk ? std::optional<std::u16string>(text) : std::nullopt;
}

std::optional<std::vector<bool>> ParseFlagArray(const std::u16string& text) {
    std::uint32_t count = 0;
    std::uint32_t flags[codec::cArrayCapacity];
    if (codec::DecodeFlagArray(text.c_str(), &count, flags) != result::cOk)
        return {};
    return std::vector<bool>(flags, flags + count);
}

}  // namespace kora4::tools
