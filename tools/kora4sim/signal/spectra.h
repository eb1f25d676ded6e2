// SPDX-License-Identifier: MIT
// The sound that the engine pretends to hear.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "kora4sim/signal/levels.h"
#include "kora4sim/signal/noise.h"

namespace kora4::tools::sim {

// The kinds of sound.
enum class SpectrumKind {
    eMusic,    // band levels that breathe, and a beat in the lower half
    eSpeech,   // band levels that follow syllables, with pauses between groups of them
    eSweep,    // one hill that runs from the lowest band to the highest, again and again
    eSilence,  // nothing at all
};

// The sound of a scene: its kind, and the numbers that shape it.
struct Spectrum {
    SpectrumKind kind = SpectrumKind::eSilence;
    // Music and speech: dB, from the lowest band to the highest; any number of points.
    std::vector<double> levels;
    double swing = 6.0;   // dB up and down: of the breathing, or below a syllable's top
    double rate = 2.0;    // beats or syllables a second
    double noise = 2.0;   // dB up and down, at random
    double pauses = 0.0;  // speech: the share of groups of syllables that are silent
    // Sweep.
    double seconds = 4.0;  // from the lowest band to the highest
    double peak = -20.0;   // dB
    double floor = -90.0;  // dB
    double width = 0.1;    // of the hill, as a share of all bands
};

// Levels of a spectrum: pure, the same for the same seed and moment.
class Signal {
  public:
    Signal(Spectrum spectrum, Noise noise) : m_spectrum(std::move(spectrum)), m_noise(noise) {}

    // dB from cLowestLevel to 0, in steps of 1/16. place: 0 the lowest band, 1 the highest.
    // stream: which processing object; each hears noise of its own.
    float Level(std::uint64_t milliseconds, double place, unsigned stream) const;

  private:
    double Music(double seconds, double place) const;
    double Speech(double seconds, double place) const;
    double Sweep(double seconds, double place) const;
    double PointAt(double place) const;

    Spectrum m_spectrum;
    Noise m_noise;
};

// Where a band stands among all bands of its record: 0 to 1; the only band in the middle.
constexpr double PlaceOf(unsigned band, unsigned bands) {
    return bands < 2 ? 0.5 : static_cast<double>(band) / (bands - 1);
}

}  // namespace kora4::tools::sim
