// SPDX-License-Identifier: MIT
// Where the bands of the curve are, and what a point of it means.
#include "panel/model/curve.h"

#include <gtest/gtest.h>

#include <limits>

namespace panel {
namespace {

constexpr Area cArea{10, 20, 1010, 261};

kora4::Bands Octaves() {
    return {{125, 0}, {250, 6}, {500, -6}, {1000, 12}, {2000, -12}};
}

TEST(Curve, PutsOctavesAtEqualDistancesAndGainsOnTheirHeight) {
    const kora4::Bands bands = Octaves();
    const CurvePicture picture(bands, cArea);
    EXPECT_EQ(110, picture.At(0).x);
    EXPECT_EQ(310, picture.At(1).x);
    EXPECT_EQ(910, picture.At(4).x);
    EXPECT_EQ(140, picture.At(0).y);
    EXPECT_EQ(20, picture.At(3).y);
    EXPECT_EQ(260, picture.At(4).y);
}

TEST(Curve, GivesTheGainOfEachHeightInTenthsWithinTheLimits) {
    const kora4::Bands bands = Octaves();
    const CurvePicture picture(bands, cArea);
    EXPECT_DOUBLE_EQ(12, picture.GainAt(-500));
    EXPECT_DOUBLE_EQ(0, picture.GainAt(140));
    EXPECT_DOUBLE_EQ(-12, picture.GainAt(5000));
    for (double gain = -12; gain <= 12; gain += 0.5)
        EXPECT_NEAR(gain, picture.GainAt(picture.HeightOf(gain)), 0.06);
}

TEST(Curve, FindsTheNearestBand) {
    const kora4::Bands bands = Octaves();
    const CurvePicture picture(bands, cArea);
    EXPECT_EQ(0u, picture.Nearest({0, 0}));
    EXPECT_EQ(1u, picture.Nearest({300, 250}));
    EXPECT_EQ(4u, picture.Nearest({5000, 0}));
    const kora4::Bands none;
    EXPECT_FALSE(CurvePicture(none, cArea).Nearest({5, 5}));
}

TEST(Curve, KeepsWhateverIsStoredInsideThePicture) {
    constexpr float cNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float cInfinity = std::numeric_limits<float>::infinity();
    const kora4::Bands odd[] = {
        {{0, 0}},
        {{0, 1e30f}, {0, -1e30f}},
        {{500, cNan}, {100, cInfinity}, {-3, -cInfinity}},
        {{cNan, 0}, {cInfinity, 0}},
        {{100, 0}, {cInfinity, 0}},
        kora4::Bands(40, {1000, 20}),
    };
    for (const kora4::Bands& bands : odd) {
        const CurvePicture picture(bands, cArea);
        for (std::size_t i = 0; i < bands.size(); ++i) {
            EXPECT_GE(picture.At(i).x, cArea.left);
            EXPECT_LT(picture.At(i).x, cArea.right);
            EXPECT_GE(picture.At(i).y, cArea.top);
            EXPECT_LT(picture.At(i).y, cArea.bottom);
        }
    }
}

TEST(Curve, MarksGainsThatCannotBeSet) {
    EXPECT_FALSE(IsOutside({100, 12}));
    EXPECT_TRUE(IsOutside({100, 12.1f}));
    EXPECT_TRUE(IsOutside({100, std::numeric_limits<float>::quiet_NaN()}));
}

TEST(Curve, ChangesOneBandToWhatCanBeStored) {
    EXPECT_EQ((kora4::Bands{{100, 1}, {200, 0.1015625f}}),
              WithGain({{100, 1}, {200, 2}}, 1, 0.1));
    EXPECT_EQ((kora4::Bands{{100, 1}}), WithGain({{100, 1}}, 7, 3));
    EXPECT_EQ((kora4::Bands{{100, 0}, {200, 0}}), Flat({{100, 1}, {200, 2}}));
}

}  // namespace
}  // namespace panel
