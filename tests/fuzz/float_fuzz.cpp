// SPDX-License-Identifier: MIT
// Float texts, read and written; the oracle is the C library in its own locale, which rounds
// correctly in both directions.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "contract/codec/float_text.h"
#include "fuzz/frame.h"

namespace kora4::fuzz {

namespace {

// The C library reads more than the store has: names and hexadecimal numbers.
std::optional<float> FloatOf(std::u16string_view text) {
    std::string narrow;
    for (const char16_t c : text) {
        if (c >= 0x80)
            break;
        narrow += static_cast<char>(c);
    }
    narrow.erase(0, narrow.find_first_not_of(" \t\n\v\f\r"));
    std::string_view magnitude = narrow;
    if (magnitude.starts_with('-') || magnitude.starts_with('+'))
        magnitude.remove_prefix(1);
    if (magnitude.starts_with("0x") || magnitude.starts_with("0X"))
        return {};
    const std::size_t digit = magnitude.starts_with('.') ? 1 : 0;
    if (digit >= magnitude.size() || magnitude[digit] < '0' || magnitude[digit] > '9')
        return {};
    const float value = std::strtof(narrow.c_str(), nullptr);
    return std::isinf(value) ? std::nullopt : std::optional<float>(value);
}

std::u16string TextOf(float value) {
    if (std::isnan(value))
        return u"nan";
    char text[128];
    std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
    return {text, text + std::strlen(text)};
}

void CheckParser(std::string_view input) {
    const std::vector<char16_t> text = Exactly(Utf16Of(input));
    const auto expected = FloatOf({text.data(), text.size() - 1});
    constexpr float cUntouched = -12345;
    float value = cUntouched;
    const bool converted = codec::ParseFloat(text.data(), &value);
    ExpectSame("converted", expected.has_value(), converted);
    ExpectSameFloat("value", expected.value_or(cUntouched), value);
}

void CheckFormatter(std::string_view input) {
    float value = 0;
    if (input.size() < sizeof value)
        return;
    std::memcpy(&value, input.data(), sizeof value);
    char16_t text[codec::cFloatTextChars];
    const std::size_t length = codec::FormatFloat(value, text);
    ExpectSame("text", TextOf(value), std::u16string(text));
    ExpectSame("length", TextOf(value).size(), length);
}

}  // namespace

void Check(std::string_view input) {
    CheckParser(input);
    CheckFormatter(input);
}

}  // namespace kora4::fuzz
