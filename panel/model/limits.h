// SPDX-License-Identifier: MIT
// What may be set of each value, how a slider stands for it, and how numbers are written.
#ifndef KORA4_PANEL_MODEL_LIMITS_H
#define KORA4_PANEL_MODEL_LIMITS_H

#include <optional>
#include <string>
#include <string_view>

#include "panel/model/settings.h"

namespace panel {

struct Limits {
    double least = 0;
    double most = 0;
    double step = 1;   // of the slider
    int decimals = 0;  // that are shown of a value on the scale
};
// Of the values of technologies; the graphic equalizer's are those of a gain, in dB.
Limits LimitsOf(Technology technology);

// A stored value may lie outside: it is in effect, but cannot be set.
bool IsInside(Technology technology, double value);

// A slider's positions go from 0 to SliderSteps; a value outside stands at the nearer end.
int SliderSteps(Technology technology);
int SliderPosition(Technology technology, double value);
double SliderValue(Technology technology, int position);

// "4", "0.50", "10"; with as many decimals as it needs, at least those of the scale, unless
// that is longer than cLongestValue: then rounded, "3.403e+38".
inline constexpr std::size_t cLongestValue = 10;  // that of any 32 bits without a sign
std::string FormatValue(Technology technology, double value);
// "+3.5", "0.0", "-12.0": a gain in dB with at most two decimals.
std::string FormatGain(double gain);
// "32", "1k", "2.5k": a frequency in Hz as it is written under a curve.
std::string FormatFrequency(double frequency);
// A gain as people write it: with a point or a comma, with or without "dB" and signs, blanks
// around; none when it is no number or outside the limits.
std::optional<double> ParseGain(std::string_view text);

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_LIMITS_H
