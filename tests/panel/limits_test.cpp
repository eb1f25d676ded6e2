// SPDX-License-Identifier: MIT
// Numbers as texts, and sliders.
#include "panel/model/limits.h"

#include <gtest/gtest.h>

#include <limits>

namespace panel {
namespace {

TEST(Limits, KnowWhatMayBeSet) {
    EXPECT_TRUE(IsInside(Technology::eVolumeLeveler, 10));
    EXPECT_FALSE(IsInside(Technology::eVolumeLeveler, KORA4_VOLUME_LEVELER_MOVIE_DEFAULT));
    EXPECT_FALSE(IsInside(Technology::eSpeakerVirtualizer, 10));
    EXPECT_FALSE(
        IsInside(Technology::eDialogEnhancer, std::numeric_limits<double>::quiet_NaN()));
}

TEST(Limits, TakeEverySliderPositionToItsValueAndBack) {
    for (const Technology technology : cTechnologies)
        for (int position = 0; position <= SliderSteps(technology); ++position) {
            const double value = SliderValue(technology, position);
            EXPECT_TRUE(IsInside(technology, value));
            EXPECT_EQ(position, SliderPosition(technology, value));
        }
    EXPECT_DOUBLE_EQ(0.33, SliderValue(Technology::eDialogEnhancer, 33));
    EXPECT_DOUBLE_EQ(2.5, SliderValue(Technology::eHeadphoneVirtualizer, 25));
}

TEST(Limits, PutTheSliderToTheEndForWhatIsOutside) {
    EXPECT_EQ(10, SliderPosition(Technology::eVolumeLeveler, 262151));
    EXPECT_EQ(0, SliderPosition(Technology::eHeadphoneVirtualizer, -1));
    EXPECT_EQ(0, SliderPosition(Technology::eHeadphoneVirtualizer,
                                std::numeric_limits<double>::quiet_NaN()));
}

TEST(Limits, WriteValuesAsTheyAre) {
    EXPECT_EQ("262151", FormatValue(Technology::eVolumeLeveler, 262151));
    EXPECT_EQ("0.50", FormatValue(Technology::eDialogEnhancer, 0.5));
    EXPECT_EQ("0.123456", FormatValue(Technology::eDialogEnhancer, 0.123456));
    EXPECT_EQ("10.0", FormatValue(Technology::eSpeakerVirtualizer, 10));
    EXPECT_EQ("0.0", FormatValue(Technology::eSpeakerVirtualizer, -0.0));
    EXPECT_EQ("?", FormatValue(Technology::eSpeakerVirtualizer,
                               std::numeric_limits<double>::quiet_NaN()));
}

TEST(Limits, RoundValuesThatAreTooLong) {
    EXPECT_EQ("4294967295", FormatValue(Technology::eVolumeLeveler, 4294967295));
    EXPECT_EQ("12345.6787", FormatValue(Technology::eSpeakerVirtualizer, 12345.678711));
    constexpr float cMost = std::numeric_limits<float>::max();
    EXPECT_EQ("3.403e+38", FormatValue(Technology::eSpeakerVirtualizer, double{cMost}));
    EXPECT_EQ("-3.403e+38", FormatValue(Technology::eDialogEnhancer, double{-cMost}));
    EXPECT_EQ(cLongestValue, FormatValue(Technology::eDialogEnhancer, double{-cMost}).size());
}

TEST(Limits, WriteGainsAndFrequencies) {
    EXPECT_EQ("+3.0", FormatGain(3));
    EXPECT_EQ("-12.0", FormatGain(-12));
    EXPECT_EQ("0.0", FormatGain(0));
    EXPECT_EQ("0.0", FormatGain(-0.001));
    EXPECT_EQ("+0.25", FormatGain(0.25));
    EXPECT_EQ("32", FormatFrequency(32));
    EXPECT_EQ("1k", FormatFrequency(1000));
    EXPECT_EQ("2.5k", FormatFrequency(2500));
    EXPECT_EQ("16k", FormatFrequency(16000));
}

TEST(Limits, ReadGainsAsPeopleWriteThem) {
    EXPECT_EQ(3.5, ParseGain("3.5"));
    EXPECT_EQ(-3.5, ParseGain(" -3,5 dB "));
    EXPECT_EQ(2, ParseGain("+2db"));
    EXPECT_EQ(-4, ParseGain("\u22124"));
    for (const char* wrong : {"", "dB", "12.5", "-13", "1e1", "three", "1 2", "nan", "1,2,3"})
        EXPECT_FALSE(ParseGain(wrong)) << wrong;
}

}  // namespace
}  // namespace panel
