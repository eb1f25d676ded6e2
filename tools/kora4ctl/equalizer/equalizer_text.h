// SPDX-License-Identifier: MIT
// The texts from which an equalizer can be imported: a GraphicEQ curve or ParametricEQ filters,
// either one with a preamp.
//
//   Preamp: -6.2 dB
//   Filter 1: ON PK Fc 105 Hz Gain -3.4 dB Q 0.70
//   Filter 2: ON LSC Fc 105 Hz Gain 5.5 dB Q 0.70
//
// Standard C++ without a platform header.
#pragma once

#include <kora4/equalizer.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::tools {

// One filter of a ParametricEQ text.
struct Filter {
    enum class Kind { ePeak, eLowShelf, eHighShelf };

    Kind kind = Kind::ePeak;
    double frequency = 0;  // Hz, above 0 and below half of the sampling rate
    double gain = 0;       // dB
    double q = 0;          // above 0
};

// The rate of which the filters are thought: they bend towards its half.
inline constexpr double cFilterRate = 48000;

// What such a text says.
struct EqualizerText {
    std::optional<float> preamp;  // dB, for all frequencies
    std::vector<Filter> filters;  // those that are on
    bool hasFilters = false;      // it is a ParametricEQ text, even if all of them are off
    Bands curve;                  // of a GraphicEQ text, without the preamp

    std::string problem;   // why it was refused, without a full stop; empty when it was not
    std::size_t line = 0;  // where the problem is, counted from 1
};

// Reads either text. A line with a preamp comes before the curve, or anywhere between filters;
// '#' begins a comment. A filter is of type PK (or PEQ), LS, LSC, LSQ, HS, HSC or HSQ; a shelf
// without Q has 1/sqrt(2). Lines that are not understood are refused.
EqualizerText ReadEqualizerText(std::string_view text);

// What all filters and the preamp together do to a frequency, in dB.
double GainAt(const EqualizerText& text, double frequency);

// How filters become bands.
struct Fit {
    // With the gains of the filters at their frequencies, which may be beyond the limits.
    Bands bands;
    // Within the limits and joined by lines, as `eq import` joins them: how far they are from
    // the filters at most, between the first and the last band, and where.
    double largestError = 0;  // dB
    double errorAt = 0;       // Hz
};

// Bands have frequencies above 0 that ascend.
Fit FitTo(const EqualizerText& text, Bands bands);

}  // namespace kora4::tools
