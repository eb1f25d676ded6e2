// SPDX-License-Identifier: MIT
// The texts from which equalizers are imported, and what their filters do to a frequency.
#include "kora4ctl/equalizer/equalizer_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>

namespace kora4::tools {
namespace {

constexpr char cExport[] =
    "Preamp: -6.2 dB\r\n"
    "Filter 1: ON LSC Fc 105 Hz Gain 5.5 dB Q 0.70\r\n"
    "Filter 2: ON PK Fc 2000 Hz Gain -3.4 dB Q 1.41\r\n"
    "Filter 3: OFF PK Fc 50 Hz Gain 9 dB Q 1\r\n"
    "Filter 4: ON None\r\n"
    "# the end\r\n"
    "Filter 5: ON HSC Fc 10000 Hz Gain -2 dB Q 0.70";

std::string Problem(std::string_view text) {
    const EqualizerText read = ReadEqualizerText(text);
    EXPECT_TRUE(read.problem.empty() || read.line > 0) << text;
    return read.problem.empty() ? "" : std::to_string(read.line) + ": " + read.problem;
}

TEST(EqualizerText, HasThePreampAndTheFiltersThatAreOn) {
    const EqualizerText text = ReadEqualizerText(cExport);
    EXPECT_EQ("", text.problem);
    EXPECT_EQ(-6.2f, text.preamp);
    ASSERT_EQ(3u, text.filters.size());
    EXPECT_EQ(Filter::Kind::eLowShelf, text.filters[0].kind);
    EXPECT_EQ(Filter::Kind::ePeak, text.filters[1].kind);
    EXPECT_EQ(2000, text.filters[1].frequency);
    EXPECT_NEAR(-3.4, text.filters[1].gain, 1e-6);
    EXPECT_NEAR(1.41, text.filters[1].q, 1e-6);
    EXPECT_EQ(Filter::Kind::eHighShelf, text.filters[2].kind);
    EXPECT_TRUE(text.curve.empty());
}

TEST(EqualizerText, HasTheCurveBehindThePreamp) {
    const EqualizerText text =
        ReadEqualizerText("\xEF\xBB\xBF# made today\npreamp: -3\nGraphicEQ: 20 1;\n 30 2");
    EXPECT_EQ("", text.problem);
    EXPECT_EQ(-3.0f, text.preamp);
    EXPECT_EQ((Bands{{20, 1}, {30, 2}}), text.curve);
    EXPECT_FALSE(text.hasFilters);
}

TEST(EqualizerText, ShelvesNeedNoQ) {
    const EqualizerText text = ReadEqualizerText("Filter: ON LS Fc 100 Gain 6");
    ASSERT_EQ(1u, text.filters.size());
    EXPECT_NEAR(std::sqrt(0.5), text.filters[0].q, 1e-12);
}

TEST(EqualizerText, AllFiltersMayBeOff) {
    const EqualizerText text = ReadEqualizerText("Filter 1: OFF PK Fc 1 Hz Gain 1 dB Q 1");
    EXPECT_EQ("", text.problem);
    EXPECT_TRUE(text.hasFilters);
    EXPECT_EQ(0, GainAt(text, 1000));
}

TEST(EqualizerText, SaysInWhichLineWhatIsWrong) {
    EXPECT_EQ("1: the file is empty", Problem(""));
    EXPECT_EQ("2: nothing follows the preamp", Problem("Preamp: 1 dB\n# no more"));
    EXPECT_EQ("2: there is a second preamp", Problem("Preamp: 1 dB\nPreamp: 2 dB"));
    for (const char* const preamp : {"Preamp:", "Preamp: x dB", "Preamp: 1 Hz", "Preamp: 1,5"})
        EXPECT_EQ("1: expected a preamp such as 'Preamp: -6.2 dB'", Problem(preamp)) << preamp;
    for (const char* before : {"\n", "\xEF\xBB\xBF", "Preamp: 1\n"})
        EXPECT_NE("", Problem(std::string(before) + "\xEF\xBB\xBFGraphicEQ: 20 1"));
    EXPECT_EQ("1: 'Include:' instead of 'GraphicEQ:'", Problem("Include: other.txt"));
    EXPECT_EQ("3: the frequency 20 is not above 20, the previous one",
              Problem("Preamp: 1\nGraphicEQ: 20 1;\n20 2"));
    const std::string good = "Filter 1: ON PK Fc 100 Hz Gain 1 dB Q 1\n";
    EXPECT_EQ("2: 'GraphicEQ:' instead of 'Filter'", Problem(good + "GraphicEQ: 20 1"));
    EXPECT_EQ("2: expected 'Filter N:'", Problem(good + "Filter 1 ON PK"));
    EXPECT_EQ("1: 'MAYBE' instead of 'ON' or 'OFF'", Problem("Filter 1: MAYBE"));
    EXPECT_EQ("1: '' instead of 'ON' or 'OFF'", Problem("Filter 1:"));
    EXPECT_EQ(
        "1: filters of type 'LP' cannot be applied; only PK, LS, LSC, LSQ, HS, HSC and HSQ can",
        Problem("Filter 1: ON LP Fc 100 Hz"));
    EXPECT_EQ("1: 'BW' instead of 'Fc', 'Gain' or 'Q'",
              Problem("Filter 1: ON PK Fc 100 Hz Gain 1 dB BW 1"));
    EXPECT_EQ("1: 'Gain' needs a number with a decimal point",
              Problem("Filter 1: ON PK Fc 100 Hz Gain 1,5 dB Q 1"));
    EXPECT_EQ("1: 'Q' needs a number with a decimal point",
              Problem("Filter 1: ON PK Fc 100 Hz Gain 1 dB Q"));
    EXPECT_EQ("1: a filter needs a Q above 0", Problem("Filter 1: ON PK Fc 100 Hz Gain 1 dB"));
    for (const char* const frequency : {"0", "-5", "24000"})
        EXPECT_EQ("1: a filter needs a frequency (Fc) above 0 and below 24000 Hz",
                  Problem(std::string("Filter 1: ON PK Gain 1 Q 1 Fc ") + frequency));
}

// Whatever a file says: a problem with its line, or something to apply.
TEST(EqualizerText, AnyTextIsReadOrRefused) {
    std::mt19937 random(1);
    const std::string good = std::string(cExport) + "\nFilter 6: ON PEQ Fc 1 Gain -1 Q 9 # x";
    constexpr char cBytes[] = "0123456789.:;-# \n\tFQkGON\xFF";
    int refused = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text = good.substr(0, random() % (good.size() + 1));
        for (std::size_t edits = random() % 4; edits > 0 && !text.empty(); --edits)
            text[random() % text.size()] = cBytes[random() % (sizeof cBytes - 1)];
        const EqualizerText read = ReadEqualizerText(text);
        refused += read.problem.empty() ? 0 : 1;
        if (!read.problem.empty()) {
            EXPECT_LT(0u, read.line) << text;
            continue;
        }
        EXPECT_TRUE(read.hasFilters || !read.curve.empty()) << text;
        EXPECT_FALSE(std::isnan(GainAt(read, 1000))) << text;
    }
    EXPECT_LT(1000, refused);
    EXPECT_GT(19000, refused);
}

// ---- What filters do ------------------------------------------------------------------------

// The gain of a digital filter with these coefficients at a frequency.
double GainOfCoefficients(const double (&b)[3], const double (&a)[3], double frequency) {
    const std::complex<double> z =
        std::polar(1.0, -2 * 3.14159265358979323846 * frequency / cFilterRate);
    const auto at = [&z](const double(&c)[3]) { return c[0] + c[1] * z + c[2] * z * z; };
    return 20 * std::log10(std::abs(at(b) / at(a)));
}

// The same filter the other way, by the coefficients that players compute from it.
double GainOfPlayer(const Filter& filter, double frequency) {
    const double w = 2 * 3.14159265358979323846 * filter.frequency / cFilterRate;
    const double A = std::pow(10, filter.gain / 40);
    const double alpha = std::sin(w) / (2 * filter.q);
    const double c = std::cos(w);
    if (filter.kind == Filter::Kind::ePeak)
        return GainOfCoefficients({1 + alpha * A, -2 * c, 1 - alpha * A},
                                  {1 + alpha / A, -2 * c, 1 - alpha / A}, frequency);
    const double s = filter.kind == Filter::Kind::eLowShelf ? 1 : -1;
    const double root = 2 * std::sqrt(A) * alpha;
    return GainOfCoefficients(
        {A * ((A + 1) - s * (A - 1) * c + root), s * 2 * A * ((A - 1) - s * (A + 1) * c),
         A * ((A + 1) - s * (A - 1) * c - root)},
        {(A + 1) + s * (A - 1) * c + root, -s * 2 * ((A - 1) + s * (A + 1) * c),
         (A + 1) + s * (A - 1) * c - root},
        frequency);
}

TEST(EqualizerFilters, AreThoseThatPlayersCompute) {
    for (const Filter::Kind kind :
         {Filter::Kind::ePeak, Filter::Kind::eLowShelf, Filter::Kind::eHighShelf})
        for (const double gain : {-12.0, -0.5, 6.0})
            for (const double q : {0.4, 0.7071, 4.0})
                for (const double center : {40.0, 1000.0, 12000.0}) {
                    EqualizerText text;
                    text.filters = {{kind, center, gain, q}};
                    for (const double at : {20.0, 100.0, 990.0, 8000.0, 16000.0, 20000.0})
                        EXPECT_NEAR(GainOfPlayer(text.filters[0], at), GainAt(text, at), 1e-6)
                            << center << " " << q << " " << at;
                }
}

TEST(EqualizerFilters, HaveTheirGainWhereItIsKnown) {
    EqualizerText text = ReadEqualizerText(cExport);
    text.filters = {{Filter::Kind::ePeak, 1000, 6, 2}};
    text.preamp = -2.0f;
    EXPECT_NEAR(4, GainAt(text, 1000), 1e-9);
    text.filters = {{Filter::Kind::eLowShelf, 1000, 6, 0.7071}};
    EXPECT_NEAR(4, GainAt(text, 1), 0.001);
    EXPECT_NEAR(1, GainAt(text, 1000), 1e-9) << "half of it at its frequency";
    EXPECT_NEAR(-2, GainAt(text, 23000), 0.001);
    EXPECT_TRUE(std::isfinite(GainAt(text, 32767)));
}

TEST(EqualizerFit, IsExactAtTheBandsAndSaysHowFarOffItIsBetween) {
    EqualizerText text;
    text.filters = {{Filter::Kind::ePeak, 1000, 6, 1}};
    const Fit fit = FitTo(text, {{500, 9}, {1000, 9}, {2000, 9}});
    ASSERT_EQ(3u, fit.bands.size());
    EXPECT_EQ(6.0f, fit.bands[1].gain);
    EXPECT_NEAR(GainAt(text, 500), static_cast<double>(fit.bands[0].gain), 1.0 / 512);
    EXPECT_LT(0.1, fit.largestError);
    EXPECT_GT(2.0, fit.largestError);
    EXPECT_LT(500, fit.errorAt);
    EXPECT_GT(2000, fit.errorAt);
    // A narrow filter between two bands is lost, which shows.
    text.filters = {{Filter::Kind::ePeak, 1400, 6, 20}};
    const Fit lost = FitTo(text, {{500, 0}, {1000, 0}, {2000, 0}});
    EXPECT_NEAR(6, lost.largestError, 0.2);
    EXPECT_NEAR(1400, lost.errorAt, 10);
}

TEST(EqualizerFit, CountsWhatTheLimitsTakeAway) {
    EqualizerText text;
    text.preamp = -20.0f;
    const Fit fit = FitTo(text, {{500, 0}, {1000, 0}});
    EXPECT_EQ(-20.0f, fit.bands[0].gain);
    EXPECT_NEAR(8, fit.largestError, 1e-6);
    EXPECT_TRUE(FitTo(text, {}).bands.empty());
}

}  // namespace
}  // namespace kora4::tools
