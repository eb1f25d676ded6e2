// SPDX-License-Identifier: MIT
// Writes and reads numbers and arrays as the store keeps them, with the limits of the API.
#include "model/encodings.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <cwchar>

namespace kora4::test {

namespace {

constexpr double cMillion = 1000000.0;

}  // namespace

std::wstring FloatText(float value) {
    // A float times a million needs 38 bits at most: the product is exact.
    const double millionths = std::nearbyint(std::fabs(static_cast<double>(value)) * cMillion);
    const auto count = static_cast<unsigned long>(millionths);
    wchar_t text[32];
    std::swprintf(text, 32, L"%ls%lu.%06lu", std::signbit(value) ? L"-" : L"", count / 1000000,
                  count % 1000000);
    return text;
}

float FloatOf(const std::wstring& text) {
    const bool negative = text.starts_with(L'-');
    unsigned long count = 0;
    for (const wchar_t c : text) {
        if (c >= L'0' && c <= L'9')
            count = count * 10 + static_cast<unsigned long>(c - L'0');
    }
    // Both numbers are floats, so the quotient is the float nearest to the text.
    const float magnitude = static_cast<float>(count) / static_cast<float>(cMillion);
    return negative ? -magnitude : magnitude;
}

std::uint16_t ArrayElement(float value, unsigned scale) {
    constexpr double cLimit = 9223372036854775808.0;  // 2^63
    const double scaled = static_cast<double>(value) * scale;
    if (!(scaled > -cLimit && scaled < cLimit))
        return 0;
    return static_cast<std::uint16_t>(static_cast<std::int64_t>(scaled));
}

float ArrayValue(std::uint16_t element, unsigned scale) {
    return static_cast<float>(static_cast<double>(std::bit_cast<std::int16_t>(element)) /
                              scale);
}

std::wstring ArrayText(const float* values, ULONG count, unsigned scale) {
    wchar_t part[16];
    std::swprintf(part, 16, L"%04x,%04lx", scale, count);
    std::wstring text = part;
    for (ULONG i = 0; i < count; ++i) {
        std::swprintf(part, 16, L",%04x", ArrayElement(values[i], scale));
        text += part;
    }
    return text;
}

GraphicEQData Limited(const GraphicEQData& eq) {
    GraphicEQData limited = eq;
    limited.m_bands = std::min(eq.m_bands, cMaxBands);
    for (ULONG i = 0; i < limited.m_bands; ++i) {
        float& gain = limited.m_gain[i];
        if (gain > 12.0f)
            gain = 12.0f;
        else if (!(gain >= -12.0f))
            gain = -12.0f;
    }
    return limited;
}

GraphicEQData Stored(const GraphicEQData& eq) {
    const GraphicEQData limited = Limited(eq);
    GraphicEQData stored{};
    stored.m_bands = limited.m_bands;
    for (ULONG i = 0; i < limited.m_bands; ++i) {
        stored.m_freq[i] =
            ArrayValue(ArrayElement(limited.m_freq[i], cHertzScale), cHertzScale);
        stored.m_gain[i] = ArrayValue(ArrayElement(limited.m_gain[i], cGainScale), cGainScale);
    }
    return stored;
}

namespace {

// Texts as ArrayText makes them.
ULONG ReadArray(const std::wstring& text, unsigned scale, float* values) {
    ULONG count = 0;
    for (std::size_t i = 0, at = 0; at < text.size(); ++i, at += 5) {
        const auto number =
            static_cast<std::uint16_t>(std::wcstoul(text.c_str() + at, nullptr, 16));
        if (i == 1)
            count = number;
        else if (i >= 2)
            values[i - 2] = ArrayValue(number, scale);
    }
    return count;
}

}  // namespace

GraphicEQData EQOf(const std::wstring& frequencies, const std::wstring& gains) {
    GraphicEQData eq{};
    eq.m_bands = ReadArray(frequencies, cHertzScale, eq.m_freq);
    ReadArray(gains, cGainScale, eq.m_gain);
    return eq;
}

bool Same(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

bool Same(const GraphicEQData& a, const GraphicEQData& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace kora4::test
