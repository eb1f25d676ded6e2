// SPDX-License-Identifier: MIT
// How settings become gains.
#include "kora4sim/engine/processing.h"

#include <gtest/gtest.h>

#include "contract/defaults.h"
#include "contract/profiles.h"

namespace kora4::tools::sim {
namespace {

const Curve cCurve = {{100, 200, 400}, {0, 6, -6}};

TEST(Curve, IsStraightOverTheOctavesBetweenItsPoints) {
    EXPECT_EQ(0, cCurve.At(50));
    EXPECT_EQ(0, cCurve.At(100));
    EXPECT_NEAR(3, cCurve.At(141.42), 0.01);
    EXPECT_NEAR(6, cCurve.At(200), 0.001);
    EXPECT_NEAR(0, cCurve.At(282.84), 0.01);
    EXPECT_EQ(-6, cCurve.At(400));
    EXPECT_EQ(-6, cCurve.At(20000));
    EXPECT_EQ(0, cCurve.Mean());
}

TEST(Curve, IgnoresWhatHasNoPartner) {
    EXPECT_EQ(0, Curve().At(1000));
    EXPECT_EQ(0, (Curve{{100, 200}, {}}).At(100));
    EXPECT_EQ(3, (Curve{{100, 200, 300}, {1, 3}}).At(300));
}

TEST(Curve, TakesFrequenciesThatAreNoneWithoutTrouble) {
    const Curve curve = {{0, 0, -5, 100}, {1, 2, 3, 4}};
    EXPECT_EQ(4, curve.At(1000));
    EXPECT_LE(1, curve.At(10));
    EXPECT_GE(4, curve.At(10));
}

TEST(Processing, WithoutEffectiveTechnologiesChangesNothing) {
    EXPECT_EQ(0, Processing().GainAt(1000, -50));
}

TEST(Processing, PublishesTheGraphicEqAsItIs) {
    Processing processing;
    processing.graphicEQ = cCurve;
    EXPECT_EQ(6, processing.GainAt(200, -50));
    EXPECT_EQ(-6, processing.GainAt(400, -50));
}

TEST(Processing, LevelerLiftsWhatIsQuietByItsAmount) {
    Processing processing;
    processing.leveler = 10;
    EXPECT_EQ(5, processing.GainAt(1000, -50));
    EXPECT_EQ(12, processing.GainAt(1000, -100));
    EXPECT_EQ(-5, processing.GainAt(1000, -10));
    processing.leveler = 5;
    EXPECT_EQ(2.5, processing.GainAt(1000, -50));
    // As in the defaults of Movie.
    processing.leveler = defaults::cVolumeAmount[cMovieProfile];
    EXPECT_EQ(5, processing.GainAt(1000, -50));
}

TEST(Processing, LevelerAddsNothingToSilence) {
    Processing processing;
    processing.leveler = 10;
    EXPECT_EQ(0, processing.GainAt(1000, cLowestLevel));
}

TEST(Processing, EnhancerLiftsTheBandsOfSpeechOnly) {
    Processing processing;
    processing.enhancement = 0.5;
    EXPECT_EQ(4.5, processing.GainAt(1000, -50));
    EXPECT_EQ(0, processing.GainAt(100, -50));
    EXPECT_EQ(0, processing.GainAt(8000, -50));
    processing.enhancement = 7;
    EXPECT_EQ(9, processing.GainAt(1000, -50));
}

TEST(Processing, IntelligentEqAddsItsShareOfTheCurveAroundItsMean) {
    Processing processing;
    processing.intelligentCurve = {{100, 200}, {10, 20}};
    processing.intelligentEQ = 0.5;
    EXPECT_EQ(-2.5, processing.GainAt(100, -50));
    EXPECT_EQ(2.5, processing.GainAt(200, -50));
}

TEST(BuiltInCurve, ExistsForTheSixIndexes) {
    for (std::uint32_t i = 0; i < 6; ++i)
        EXPECT_EQ(20u, BuiltInCurve(i).size()) << i;
    EXPECT_TRUE(BuiltInCurve(6).empty());
    EXPECT_FLOAT_EQ(9.3671875f, BuiltInCurve(0)[0]);
}

TEST(FrequencyAt, IsThatOfTheEnginesBands) {
    EXPECT_EQ(65, FrequencyAt(0));
    EXPECT_NEAR(136, FrequencyAt(1.0 / 19), 0.01);
    EXPECT_NEAR(17326, FrequencyAt(1), 0.01);
}

TEST(MakePicture, HasTheShapeOfTheRecords) {
    Spectrum spectrum;
    spectrum.kind = SpectrumKind::eSweep;
    Processing processing;
    processing.graphicEQ = {{65, 17326}, {3, 3}};
    const Picture picture =
        MakePicture(Signal(spectrum, Noise(1)), 0, {{20, 0}, {3, -6}, {0, 0}}, processing);
    ASSERT_EQ(3u, picture.size());
    ASSERT_EQ(20u, picture[0].gains.size());
    ASSERT_EQ(20u, picture[0].excitations.size());
    ASSERT_EQ(3u, picture[1].gains.size());
    EXPECT_TRUE(picture[2].gains.empty());
    EXPECT_EQ(3, picture[0].gains[7]);
    EXPECT_EQ(-20, picture[0].excitations[0]);
    EXPECT_EQ(-26, picture[1].excitations[0]);
}

TEST(MakePicture, AnOffsetDoesNotMakeSilenceAudible) {
    const Picture picture =
        MakePicture(Signal(Spectrum(), Noise(1)), 0, {{4, 12}}, Processing());
    EXPECT_EQ(cLowestLevel, picture.at(0).excitations.at(0));
}

}  // namespace
}  // namespace kora4::tools::sim
