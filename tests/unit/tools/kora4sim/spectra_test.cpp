// SPDX-License-Identifier: MIT
// The sound that the engine pretends to hear.
#include "kora4sim/signal/spectra.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace kora4::tools::sim {
namespace {

constexpr unsigned cBands = 20;
constexpr std::uint64_t cStep = 50;       // ms
constexpr std::uint64_t cSeconds = 1000;  // ms

Spectrum Music() {
    Spectrum spectrum;
    spectrum.kind = SpectrumKind::eMusic;
    spectrum.levels = {-30, -40, -60};
    spectrum.swing = 6;
    spectrum.rate = 2;
    spectrum.noise = 0;
    return spectrum;
}

Spectrum Speech() {
    Spectrum spectrum = Music();
    spectrum.kind = SpectrumKind::eSpeech;
    spectrum.swing = 20;
    spectrum.rate = 4;
    spectrum.pauses = 0.4;
    return spectrum;
}

Spectrum Sweep() {
    Spectrum spectrum;
    spectrum.kind = SpectrumKind::eSweep;
    spectrum.seconds = 4;
    return spectrum;
}

// The levels of one band over time.
std::vector<float> Course(const Spectrum& spectrum, double place, std::uint64_t until,
                          std::uint64_t seed = 1, unsigned stream = 0) {
    const Signal signal(spectrum, Noise(seed));
    std::vector<float> levels;
    for (std::uint64_t t = 0; t < until; t += cStep)
        levels.push_back(signal.Level(t, place, stream));
    return levels;
}

unsigned LoudestBand(const Spectrum& spectrum, std::uint64_t milliseconds) {
    const Signal signal(spectrum, Noise(1));
    unsigned loudest = 0;
    for (unsigned band = 1; band < cBands; ++band) {
        if (signal.Level(milliseconds, PlaceOf(band, cBands), 0) >
            signal.Level(milliseconds, PlaceOf(loudest, cBands), 0))
            loudest = band;
    }
    return loudest;
}

TEST(PlaceOf, RunsFromNoneToOne) {
    EXPECT_EQ(0, PlaceOf(0, cBands));
    EXPECT_EQ(1, PlaceOf(cBands - 1, cBands));
    EXPECT_EQ(0.5, PlaceOf(0, 1));
}

TEST(Music, StaysWithinItsSwingAndMoves) {
    const std::vector<float> levels = Course(Music(), 0.5, 20 * cSeconds);
    const auto [least, most] = std::minmax_element(levels.begin(), levels.end());
    EXPECT_LE(-40 - 3.1f, *least);
    EXPECT_GE(-40 + 3.1f, *most);
    EXPECT_LT(3, *most - *least);
}

TEST(Music, HasItsBeatInTheLowestBand) {
    const Signal signal(Music(), Noise(1));
    // On the beat and shortly before the next one.
    EXPECT_GT(signal.Level(1000, 0, 0), signal.Level(1450, 0, 0) + 2);
}

TEST(Music, FollowsTheLineThroughItsPoints) {
    Spectrum spectrum = Music();
    spectrum.swing = 0;
    const Signal signal(spectrum, Noise(1));
    EXPECT_EQ(-30, signal.Level(0, 0, 0));
    EXPECT_EQ(-35, signal.Level(0, 0.25, 0));
    EXPECT_EQ(-40, signal.Level(0, 0.5, 0));
    EXPECT_EQ(-60, signal.Level(0, 1, 0));
}

TEST(Music, NoiseDependsOnSeedAndStream) {
    Spectrum spectrum = Music();
    spectrum.noise = 3;
    EXPECT_EQ(Course(spectrum, 0.5, cSeconds), Course(spectrum, 0.5, cSeconds));
    EXPECT_NE(Course(spectrum, 0.5, cSeconds, 1), Course(spectrum, 0.5, cSeconds, 2));
    EXPECT_NE(Course(spectrum, 0.5, cSeconds, 1, 0), Course(spectrum, 0.5, cSeconds, 1, 1));
}

TEST(Music, IsNeverAboveFullScaleNorBelowTheLowestLevel) {
    Spectrum spectrum = Music();
    spectrum.levels = {0, cLowestLevel};
    spectrum.noise = 60;
    for (const double place : {0.0, 1.0}) {
        for (const float level : Course(spectrum, place, 10 * cSeconds)) {
            EXPECT_GE(0, level);
            EXPECT_LE(cLowestLevel, level);
        }
    }
}

TEST(Speech, HasSyllablesAndPauses) {
    const std::vector<float> levels = Course(Speech(), 0.5, 30 * cSeconds);
    const auto pauses = std::count(levels.begin(), levels.end(), cLowestLevel);
    EXPECT_LT(60, pauses) << "of 600";
    EXPECT_GT(450, pauses) << "of 600";
    std::vector<float> heard;
    std::copy_if(levels.begin(), levels.end(), std::back_inserter(heard),
                 [](float level) { return level > cLowestLevel; });
    const auto [least, most] = std::minmax_element(heard.begin(), heard.end());
    EXPECT_LT(-46, *most);
    EXPECT_GT(-55, *least);
}

TEST(Speech, WithoutPausesNeverStops) {
    Spectrum spectrum = Speech();
    spectrum.pauses = 0;
    for (const float level : Course(spectrum, 0.5, 10 * cSeconds))
        EXPECT_LT(cLowestLevel, level);
}

TEST(Sweep, RunsFromTheLowestBandToTheHighestAndBeginsAnew) {
    EXPECT_EQ(0u, LoudestBand(Sweep(), 0));
    EXPECT_EQ(5u, LoudestBand(Sweep(), 1050));
    EXPECT_EQ(14u, LoudestBand(Sweep(), 2950));
    EXPECT_EQ(19u, LoudestBand(Sweep(), 3990));
    EXPECT_EQ(5u, LoudestBand(Sweep(), 5050));
}

TEST(Sweep, IsAHillAboveItsFloor) {
    const Signal signal(Sweep(), Noise(1));
    EXPECT_EQ(-20, signal.Level(2000, 0.5, 0));
    EXPECT_EQ(-90, signal.Level(2000, 0, 0));
}

TEST(Silence, IsTheLowestLevelAlways) {
    for (const float level : Course(Spectrum(), 0.3, 2 * cSeconds))
        EXPECT_EQ(cLowestLevel, level);
}

TEST(Noise, GivesTheSameForTheSameAndSpreadsEvenly) {
    double sum = 0;
    for (std::uint64_t i = 0; i < 1000; ++i) {
        const double number = Noise(5).Even(i);
        EXPECT_EQ(number, Noise(5).Even(i));
        EXPECT_LE(0, number);
        EXPECT_GT(1, number);
        sum += number;
    }
    EXPECT_NEAR(0.5, sum / 1000, 0.05);
}

}  // namespace
}  // namespace kora4::tools::sim
