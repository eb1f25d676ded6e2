// SPDX-License-Identifier: MIT
// The limits of each value, and numbers as texts, independent of the locale.
#include "panel/model/limits.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace panel {

namespace {

// Rounded to so many decimals, with trailing zeros down to `least` of them.
std::string Decimal(double number, int least, int most) {
    char buffer[400];
    const std::to_chars_result result =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, most);
    std::string text(buffer, result.ptr);
    for (int decimals = most; decimals > least && text.back() == '0'; --decimals)
        text.pop_back();
    if (text.back() == '.')
        text.pop_back();
    if (text.find_first_not_of("-0.") == std::string::npos && text.front() == '-')
        text.erase(0, 1);
    return text;
}

std::string_view WithoutBlanks(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

}  // namespace

Limits LimitsOf(Technology technology) {
    constexpr double cFine = 0.01;
    constexpr double cCoarse = 0.1;
    switch (technology) {
        case Technology::eVolumeLeveler:
            return {KORA4_VOLUME_LEVELER_MIN, KORA4_VOLUME_LEVELER_MAX, 1, 0};
        case Technology::eIntelligentEq:
            return {0, KORA4_INTELLIGENT_EQ_CURVES - 1, 1, 0};
        case Technology::eDialogEnhancer:
            return {double{KORA4_DIALOG_ENHANCER_MIN}, double{KORA4_DIALOG_ENHANCER_MAX}, cFine,
                    2};
        case Technology::eGraphicEq:
            return {double{KORA4_GRAPHIC_EQ_MIN_GAIN}, double{KORA4_GRAPHIC_EQ_MAX_GAIN},
                    cCoarse, 1};
        case Technology::eHeadphoneVirtualizer:
        case Technology::eSpeakerVirtualizer:
            break;
    }
    return {double{KORA4_VIRTUALIZER_MIN}, double{KORA4_VIRTUALIZER_MAX}, cCoarse, 1};
}

bool IsInside(Technology technology, double value) {
    const Limits limits = LimitsOf(technology);
    return value >= limits.least && value <= limits.most;
}

int SliderSteps(Technology technology) {
    const Limits limits = LimitsOf(technology);
    return static_cast<int>(std::lround((limits.most - limits.least) / limits.step));
}

int SliderPosition(Technology technology, double value) {
    const Limits limits = LimitsOf(technology);
    if (!(value >= limits.least))
        return 0;
    return static_cast<int>(
        std::lround((std::min(value, limits.most) - limits.least) / limits.step));
}

double SliderValue(Technology technology, int position) {
    const Limits limits = LimitsOf(technology);
    // The nearest decimal number, not a sum of steps with its errors.
    const double steps = std::round(1 / limits.step);
    return std::clamp((std::round(limits.least * steps) + position) / steps, limits.least,
                      limits.most);
}

std::string FormatValue(Technology technology, double value) {
    constexpr int cStoredDecimals = 6;
    if (!std::isfinite(value))
        return std::isnan(value) ? "?" : value > 0 ? "\u221E" : "-\u221E";
    const int least = LimitsOf(technology).decimals;
    for (int most = cStoredDecimals; most >= least; --most)
        if (std::string text = Decimal(value, least, most); text.size() <= cLongestValue)
            return text;
    constexpr int cDigits = 4;
    char buffer[32];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, value,
                                                      std::chars_format::general, cDigits);
    return std::string(buffer, result.ptr);
}

std::string FormatGain(double gain) {
    if (!std::isfinite(gain))
        return FormatValue(Technology::eGraphicEq, gain);
    const std::string text = Decimal(gain, 1, 2);
    return text.front() != '-' && text.find_first_not_of("0.") != std::string::npos ? "+" + text
                                                                                    : text;
}

std::string FormatFrequency(double frequency) {
    constexpr double cThousand = 1000;
    if (!std::isfinite(frequency))
        return "?";
    return frequency >= cThousand ? Decimal(frequency / cThousand, 0, 1) + "k"
                                  : Decimal(frequency, 0, 0);
}

std::optional<double> ParseGain(std::string_view text) {
    text = WithoutBlanks(text);
    if (text.size() >= 2 && (text[text.size() - 2] | ' ') == 'd' && (text.back() | ' ') == 'b')
        text = WithoutBlanks(text.substr(0, text.size() - 2));
    std::string plain(text);
    std::replace(plain.begin(), plain.end(), ',', '.');
    // The typographic minus, as some programs write it.
    if (const std::string minus = "\u2212"; plain.starts_with(minus))
        plain.replace(0, minus.size(), "-");
    float gain = 0;
    if (!kora4::ParseDecimal(plain, gain) ||
        !IsInside(Technology::eGraphicEq, static_cast<double>(gain)))
        return std::nullopt;
    return static_cast<double>(gain);
}

}  // namespace panel
