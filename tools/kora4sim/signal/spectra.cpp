// SPDX-License-Identifier: MIT
// The formulas of music, speech and sweep.
#include "kora4sim/signal/spectra.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kora4::tools::sim {

namespace {

constexpr double cTurn = 2 * std::numbers::pi;
constexpr double cStep = 16;              // levels are multiples of 1 / cStep dB
constexpr double cSyllablesInAGroup = 5;  // and then there may be a pause
constexpr std::uint64_t cPauseDraw = 1;   // what chance is asked for, beside the levels
constexpr std::uint64_t cSyllableDraw = 2;
constexpr std::uint64_t cLevelDraw = 1000;  // plus the moment

}  // namespace

// The line through the points, at a place.
double Signal::PointAt(double place) const {
    const std::vector<double>& points = m_spectrum.levels;
    if (points.empty())
        return cLowestLevel;
    const double position = place * static_cast<double>(points.size() - 1);
    const std::size_t below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, points.size() - 1);
    const double share = position - static_cast<double>(below);
    return points[below] + (points[above] - points[below]) * share;
}

// Bands breathe one after the other, at a fifth of the beat; the beat falls off towards the
// middle.
double Signal::Music(double seconds, double place) const {
    const double breathing = std::sin(cTurn * (seconds * m_spectrum.rate / 5 + place * 1.5));
    const double sinceBeat = seconds * m_spectrum.rate - std::floor(seconds * m_spectrum.rate);
    const double beat = std::max(0.0, 1 - 2 * place) * 2 * std::exp(-4 * sinceBeat);
    return PointAt(place) + m_spectrum.swing * (breathing + beat) / 2;
}

double Signal::Speech(double seconds, double place) const {
    const double syllables = seconds * m_spectrum.rate;
    const double syllable = std::floor(syllables);
    const auto group = static_cast<std::uint64_t>(syllable / cSyllablesInAGroup);
    if (m_noise.Even(cPauseDraw, group) < m_spectrum.pauses)
        return cLowestLevel;
    const double loudness = m_noise.Even(cSyllableDraw, static_cast<std::uint64_t>(syllable)) *
                            m_spectrum.swing / 4;
    const double opening = std::sin(std::numbers::pi * (syllables - syllable));
    return PointAt(place) - loudness - m_spectrum.swing * (1 - opening);
}

double Signal::Sweep(double seconds, double place) const {
    const double way = seconds / m_spectrum.seconds;
    const double distance = (place - (way - std::floor(way))) / m_spectrum.width;
    return m_spectrum.floor +
           (m_spectrum.peak - m_spectrum.floor) * std::exp(-distance * distance);
}

float Signal::Level(std::uint64_t milliseconds, double place, unsigned stream) const {
    const double seconds = static_cast<double>(milliseconds) / 1000;
    double level = cLowestLevel;
    switch (m_spectrum.kind) {
        case SpectrumKind::eMusic:
            level = Music(seconds, place);
            break;
        case SpectrumKind::eSpeech:
            level = Speech(seconds, place);
            break;
        case SpectrumKind::eSweep:
            return static_cast<float>(std::round(Sweep(seconds, place) * cStep) / cStep);
        case SpectrumKind::eSilence:
            return cLowestLevel;
    }
    if (level > cLowestLevel) {
        const auto part =
            static_cast<std::uint64_t>(place * 0x10000) + (std::uint64_t{stream} << 32);
        level += m_spectrum.noise * (2 * m_noise.Even(cLevelDraw + milliseconds, part) - 1);
    }
    level = std::clamp(level, static_cast<double>(cLowestLevel), 0.0);
    return static_cast<float>(std::round(level * cStep) / cStep);
}

}  // namespace kora4::tools::sim
