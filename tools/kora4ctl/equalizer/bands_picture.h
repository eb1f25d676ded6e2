// SPDX-License-Identifier: MIT
// The bands of a graphic equalizer, drawn with characters.
#pragma once

#include <string>
#include <vector>

#include "kora4ctl/equalizer/bands.h"

namespace kora4::tools {

// One character a band: eight heights from the lowest gain to the highest.
std::string OneLineCurve(const Bands& bands);

// Bars up and down from the line of 0 dB with a scale at the left and the frequencies below,
// at most `width` columns wide. `rows` is the number of lines above and below the 0 dB.
std::vector<std::string> CurveGrid(const Bands& bands, std::size_t width, unsigned rows);

// One character of a bar that grows from 0 dB, for the cell that begins `below` dB away from
// there and is `size` dB high.
const char* BarCell(float gain, bool isAbove, double below, double size);

// The line of frequencies below bars of that many columns: as many as have room.
std::string FrequencyLabels(const std::vector<float>& frequencies, std::size_t margin,
                            std::size_t columns, std::size_t width);

// "32", "1k", "12.5k": about, where there is no room for more
std::string ShortFrequency(float frequency);
// "+3.0", "-1.5", "0.0"
std::string SignedGain(float gain);

}  // namespace kora4::tools
