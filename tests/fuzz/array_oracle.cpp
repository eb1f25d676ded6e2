// SPDX-License-Identifier: MIT
// Reads an array by cutting the text at its commas first; writes one with the C library.
#include "fuzz/array_oracle.h"

#include <cmath>
#include <cstdio>

namespace kora4::fuzz {

namespace {

constexpr std::size_t cMostElements = 40;

bool IsBlank(char16_t c) {
    return std::u16string_view(u" \t\n\v\f\r").find(c) != std::u16string_view::npos;
}

// None for a word that is no number of at most 32 bits.
std::optional<std::uint32_t> NumberOf(std::u16string word) {
    if (word.size() >= 255)
        return {};
    if (word.starts_with(u"0x") || word.starts_with(u"0X"))
        word.erase(0, 2);
    if (word.empty() ||
        word.find_first_not_of(u"0123456789abcdefABCDEF") != std::u16string::npos)
        return {};
    word.erase(0, word.find_first_not_of(u'0'));
    if (word.size() > 8)
        return {};
    const std::string digits(word.begin(), word.end());
    return static_cast<std::uint32_t>(std::stoull("0" + digits, nullptr, 16));
}

// All numbers of the text; none when one is bad, or a comma has nothing before it.
std::optional<std::vector<std::uint32_t>> NumbersOf(std::u16string_view text) {
    std::vector<std::vector<std::u16string>> fields(1);
    bool inWord = false;
    for (const char16_t c : text) {
        if (c == u',' || IsBlank(c)) {
            inWord = false;
            if (c == u',')
                fields.emplace_back();
            continue;
        }
        if (!inWord)
            fields.back().emplace_back();
        inWord = true;
        fields.back().back() += c;
    }
    // One comma may end the text.
    if (fields.size() > 1 && fields.back().empty())
        fields.pop_back();
    std::vector<std::uint32_t> numbers;
    for (const auto& words : fields) {
        if (words.empty())
            return {};
        for (const std::u16string& word : words) {
            const auto number = NumberOf(word);
            if (!number)
                return {};
            numbers.push_back(*number);
        }
    }
    return numbers;
}

// What stands behind `heads` numbers, of which the last is the count.
std::optional<std::vector<std::uint32_t>> Elements(std::u16string_view text,
                                                   std::size_t heads) {
    auto numbers = NumbersOf(text);
    if (!numbers || numbers->size() < heads)
        return {};
    const std::size_t count = (*numbers)[heads - 1];
    if (count > cMostElements || numbers->size() != heads + count)
        return {};
    return numbers;
}

// As one piece after the other is put into 1023 characters, of which 32 must be left.
std::optional<std::u16string> Joined(const std::vector<std::string>& pieces) {
    std::string text;
    for (const std::string& piece : pieces) {
        if (1023 - text.size() < 32)
            return {};
        text += piece;
    }
    return std::u16string(text.begin(), text.end());
}

std::string Printed(const char* format, unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

}  // namespace

std::optional<std::vector<float>> NumericArrayOf(std::u16string_view text) {
    const auto numbers = Elements(text, 2);
    if (!numbers || numbers->front() == 0)
        return {};
    std::vector<float> elements;
    for (std::size_t i = 2; i < numbers->size(); ++i) {
        const long number = static_cast<long>((*numbers)[i]);
        if (number > 0xFFFF)
            return {};
        const long value = number < 0x8000 ? number : number - 0x10000;
        elements.push_back(static_cast<float>(static_cast<double>(value) / numbers->front()));
    }
    return elements;
}

std::optional<std::vector<std::uint32_t>> FlagArrayOf(std::u16string_view text) {
    auto numbers = Elements(text, 1);
    if (!numbers)
        return {};
    numbers->erase(numbers->begin());
    for (std::uint32_t& number : *numbers)
        number = number == 0 ? 0 : 1;
    return numbers;
}

std::optional<std::u16string> TextOfArray(unsigned scale, const std::vector<float>& elements) {
    if (scale == 0 || scale >= 32768)
        return {};
    std::vector<std::string> pieces = {
        Printed("%04x", scale), Printed(",%04x", static_cast<unsigned>(elements.size()))};
    for (const float element : elements) {
        const double product = static_cast<double>(element) * scale;
        double low = 0;
        if (std::isfinite(product) && std::abs(product) < std::ldexp(1.0, 63))
            low = std::fmod(std::trunc(product), 65536.0);
        if (low < 0)
            low += 65536;
        pieces.push_back(Printed(",%04x", static_cast<unsigned>(low)));
    }
    return Joined(pieces);
}

std::optional<std::u16string> TextOfFlags(const std::vector<std::uint32_t>& flags) {
    std::vector<std::string> pieces = {Printed("%04x", static_cast<unsigned>(flags.size()))};
    for (const std::uint32_t flag : flags)
        pieces.push_back(Printed(",%x", flag != 0));
    return Joined(pieces);
}

}  // namespace kora4::fuzz
