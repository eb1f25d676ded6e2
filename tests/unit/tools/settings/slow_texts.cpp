// SPDX-License-Identifier: MIT
// Plain parsers and writers that work character by character on standard strings.
#include "unit/tools/settings/slow_texts.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kora4::test {
namespace {

constexpr std::uint32_t cArrayCapacity = 40;
constexpr std::size_t cArrayFieldRoom = 32;
constexpr std::size_t cArrayTextChars = 1024;
constexpr std::uint32_t cScaleLimit = 0x8000;
constexpr std::size_t cTokenLimit = 255;

constexpr bool IsWhiteSpace(char16_t c) {
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Blanks in front taken off, and of the rest what may belong to a number.
std::string NumberCharacters(std::u16string_view text) {
    const auto begin = std::find_if_not(text.begin(), text.end(), IsWhiteSpace);
    std::string characters;
    for (auto at = begin; at != text.end() && *at < 0x80 && !IsWhiteSpace(*at); ++at)
        characters += static_cast<char>(*at);
    return characters;
}

// Of a decimal number that no float can hold: is it too small rather than too large?
bool IsTiny(std::string_view digits) {
    long long place = 0;  // of the first digit that is not zero
    bool afterPoint = false;
    bool found = false;
    std::size_t i = 0;
    for (; i < digits.size() && (IsDigit(digits[i]) || digits[i] == '.'); ++i) {
        if (digits[i] == '.') {
            if (afterPoint)
                break;
            afterPoint = true;
            continue;
        }
        found = found || digits[i] != '0';
        if (afterPoint && !found)
            --place;
        else if (!afterPoint && found)
            ++place;
    }
    if (i >= digits.size() || (digits[i] != 'e' && digits[i] != 'E'))
        return place <= 0;
    ++i;
    const bool negative = i < digits.size() && digits[i] == '-';
    if (i < digits.size() && (digits[i] == '-' || digits[i] == '+'))
        ++i;
    long long exponent = 0;
    for (; i < digits.size() && IsDigit(digits[i]); ++i)
        exponent = std::min(exponent * 10 + (digits[i] - '0'), 1LL << 40);
    return place + (negative ? -exponent : exponent) <= 0;
}

// Reads one hexadecimal number after another.
class TokenReader {
  public:
    explicit TokenReader(std::u16string_view text) : m_rest(text) {}

    // The next number, with the white space around it and one comma after it.
    std::optional<std::uint32_t> Next() {
        SkipWhiteSpace();
        const auto end = std::find_if(m_rest.begin(), m_rest.end(),
                                      [](char16_t c) { return c == u',' || IsWhiteSpace(c); });
        const std::u16string_view token(m_rest.begin(), end);
        m_rest.remove_prefix(token.size());
        SkipWhiteSpace();
        if (!m_rest.empty() && m_rest.front() == u',')
            m_rest.remove_prefix(1);
        return Number(token);
    }

    bool IsAtEnd() {
        SkipWhiteSpace();
        return m_rest.empty();
    }

  private:
    void SkipWhiteSpace() {
        while (!m_rest.empty() && IsWhiteSpace(m_rest.front()))
            m_rest.remove_prefix(1);
    }

    static std::optional<std::uint32_t> Number(std::u16string_view token) {
        if (token.size() >= cTokenLimit)
            return {};
        std::string digits;
        for (const char16_t c : token)
            digits += c < 0x80 ? static_cast<char>(c) : '?';
        if (digits.starts_with("0x") || digits.starts_with("0X"))
            digits.erase(0, 2);
        std::uint32_t number = 0;
        const char* const end = digits.data() + digits.size();
        const auto result = std::from_chars(digits.data(), end, number, 16);
        if (digits.empty() || result.ec != std::errc{} || result.ptr != end)
            return {};
        return number;
    }

    std::u16string_view m_rest;
};

// `convert` gives the element of a number, or none.
template <typename Element, typename Convert>
std::optional<std::vector<Element>> ReadElements(TokenReader& tokens, Convert convert) {
    const std::optional<std::uint32_t> count = tokens.Next();
    if (!count || *count > cArrayCapacity)
        return {};
    std::vector<Element> elements;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const std::optional<std::uint32_t> number = tokens.Next();
        const std::optional<Element> element = number ? convert(*number) : std::nullopt;
        if (!element)
            return {};
        elements.push_back(*element);
    }
    if (!tokens.IsAtEnd())
        return {};
    return elements;
}

// Refuses like the library's writer, which wants room before each piece.
class TextWriter {
  public:
    void Append(std::uint32_t number, std::size_t digits) {
        m_fits = m_fits && cArrayTextChars - 1 - m_text.size() >= cArrayFieldRoom;
        if (!m_fits)
            return;
        if (!m_text.empty())
            m_text += u',';
        char buffer[8];
        const char* const end = std::to_chars(buffer, buffer + sizeof buffer, number, 16).ptr;
        const auto length = static_cast<std::size_t>(end - buffer);
        m_text.append(digits > length ? digits - length : 0, u'0');
        m_text.append(static_cast<const char*>(buffer), end);
    }

    std::optional<std::u16string> Finish() const {
        return m_fits ? std::optional(m_text) : std::nullopt;
    }

  private:
    std::u16string m_text;
    bool m_fits = true;
};

std::uint32_t ScaledElement(float element, std::uint32_t scale) {
    constexpr double cTwoTo63 = 9223372036854775808.0;
    const double product = double{element} * scale;
    if (!(std::fabs(product) < cTwoTo63))
        return 0;
    return static_cast<std::uint16_t>(static_cast<std::int64_t>(product));
}

}  // namespace

std::u16string FormatFloatText(float value) {
    if (std::isnan(value))
        return u"nan";
    if (std::isinf(value))
        return value < 0 ? u"-inf" : u"inf";
    char buffer[64];
    const char* const end =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 6).ptr;
    return {static_cast<const char*>(buffer), end};
}

std::optional<float> ParseFloatText(std::u16string_view text) {
    const std::string number = NumberCharacters(text);
    std::string_view digits = number;
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    const bool begins = !digits.empty() && (IsDigit(digits[0]) || digits[0] == '.');
    if (!begins || digits.starts_with("0x") || digits.starts_with("0X"))
        return {};
    float value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        if (!IsTiny(digits))
            return {};
        value = 0;
    } else if (result.ec != std::errc{} || std::isinf(value)) {
        return {};
    }
    return negative ? -value : value;
}

std::optional<std::u16string> FormatNumericArray(std::uint32_t scale,
                                                 const std::vector<float>& elements) {
    if (scale == 0 || scale >= cScaleLimit)
        return {};
    TextWriter writer;
    writer.Append(scale, 4);
    writer.Append(static_cast<std::uint32_t>(elements.size()), 4);
    for (const float element : elements)
        writer.Append(ScaledElement(element, scale), 4);
    return writer.Finish();
}

std::optional<std::vector<float>> ParseNumericArray(std::u16string_view text) {
    TokenReader tokens(text);
    const std::optional<std::uint32_t> scale = tokens.Next();
    if (!scale || *scale == 0)
        return {};
    const double divisor = *scale;
    return ReadElements<float>(tokens, [divisor](std::uint32_t number) -> std::optional<float> {
        if (number > 0xFFFF)
            return {};
        return static_cast<float>(static_cast<std::int16_t>(number) / divisor);
    });
}

std::optional<std::u16string> FormatFlagArray(const std::vector<bool>& flags) {
    TextWriter writer;
    writer.Append(static_cast<std::uint32_t>(flags.size()), 4);
    for (const bool flag : flags)
        writer.Append(flag ? 1 : 0, 1);
    return writer.Finish();
}

std::optional<std::vector<bool>> ParseFlagArray(std::u16string_view text) {
    TokenReader tokens(text);
    return ReadElements<bool>(tokens,
                              [](std::uint32_t number) { return std::optional(number != 0); });
}

}  // namespace kora4::test
