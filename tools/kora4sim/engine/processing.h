// SPDX-License-Identifier: MIT
// What the engine does to the sound: the settings that it holds, made into gains.
#pragma once

#include <vector>

#include "kora4sim/signal/levels.h"
#include "kora4sim/signal/spectra.h"

namespace kora4::tools::sim {

// A gain for each frequency; the line between neighbours is straight over the octaves.
struct Curve {
    std::vector<float> frequencies;  // Hz, ascending
    std::vector<float> gains;        // dB; entries without a frequency are ignored

    // The gain at a frequency in Hz; beyond the ends it is that of the end. An empty curve has
    // 0.
    double At(double frequency) const;

    // The mean of the gains.
    double Mean() const;
};

// The settings that shape levels. A technology that is not effective has its zero here.
struct Processing {
    unsigned leveler = 0;      // 0 to 10
    double enhancement = 0;    // 0 to 1
    double intelligentEQ = 0;  // 0 to 1: how much of its curve
    Curve intelligentCurve;
    Curve graphicEQ;

    // dB; level is that of the sound at this frequency.
    double GainAt(double frequency, double level) const;
};

// A processing object: how many bands it has, and how much louder than the scene it is.
struct RecordShape {
    unsigned bands = 20;
    double offset = 0;  // dB
};

// One of the built-in curves of the intelligent EQ, band by band in dB; empty for an index
// that there is not.
std::vector<float> BuiltInCurve(std::uint32_t index);

// In Hz, of a place among the bands (see PlaceOf): the engine's own band frequencies.
double FrequencyAt(double place);

// The levels of all processing objects at one moment: the signal, shaped by the processing.
Picture MakePicture(const Signal& signal, std::uint64_t milliseconds,
                    const std::vector<RecordShape>& shapes, const Processing& processing);

}  // namespace kora4::tools::sim
