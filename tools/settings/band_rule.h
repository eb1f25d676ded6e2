// SPDX-License-Identifier: MIT
// What bands must be, wherever they come from and go to: at most 40, at frequencies from 1 to
// 32767 Hz that ascend, with one gain each.
#pragma once

#include <kora4/equalizer.hpp>

#include <string>
#include <vector>

#include "registry/store_access.h"

namespace kora4::tools {

inline constexpr char cOtherBands[] = "For other bands, use 'kora4ctl eq import --bands file'.";

// "-12 to +12", in dB; "1 to 32767 Hz".
std::string GainRange();
std::string FrequencyRange();

// Whether the library takes the gain as it is.
inline bool IsAllowedGain(float gain) {
    return gain >= KORA4_GRAPHIC_EQ_MIN_GAIN && gain <= KORA4_GRAPHIC_EQ_MAX_GAIN;
}

// One array of a profile's graphic equalizer, by the property id of its field: as it is in
// force.
std::vector<float> GraphicEqArray(std::uint32_t pid, std::uint32_t profile, StoreAccess& store);

// As many bands as frequencies, as in the library; a missing gain is 0.
Bands BandsOf(const std::vector<float>& frequencies, const std::vector<float>& gains = {});

// What is wrong with the frequency of a band: "band 2 is at 40 Hz, which is ..."; empty when
// nothing is.
std::string FrequencyProblem(const Bands& bands, std::size_t index);
// A sentence for each such band, and one when there are too many bands.
std::vector<std::string> FrequencyProblems(const Bands& bands);
// Failure with eBadInput when there is one.
void CheckFrequencies(const Bands& bands);

// "expected 10 gains, got 3"; empty when there are as many as expected.
std::string CountProblem(std::size_t expected, std::size_t count, const char* what);
// Failure with eBadInput when there is one.
void CheckCount(std::size_t expected, std::size_t count, const char* what,
                const char* next = cOtherBands);

}  // namespace kora4::tools
