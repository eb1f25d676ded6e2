// SPDX-License-Identifier: MIT
// The model behind the pictures: how much each technology adds at a frequency and a level.
#include "kora4sim/engine/processing.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

#include "contract/defaults.h"
#include "contract/patch_limits.h"
#include "settings/display_bands.h"
#include "settings/texts.h"

namespace kora4::tools::sim {

namespace {

constexpr double cStep = 16;  // gains are multiples of 1 / cStep dB, as levels are
constexpr double cHighestGain = 36;
constexpr double cLowestGain = -60;

// The volume leveler at its most adds a quarter of what a band lies below the target.
constexpr unsigned cLevelerMost = cVeltoVolumeLevelerAmountMax;
constexpr double cLevelerTarget = -30;
constexpr double cLevelerShare = 0.25;
constexpr double cLevelerMostGain = 12;
constexpr double cNothingHeard = -120;  // below this it adds nothing

// The dialog enhancer at its most lifts the bands of speech.
constexpr double cSpeechFrom = 300;   // Hz
constexpr double cSpeechUpTo = 4000;  // Hz
constexpr double cEnhancementGain = 9;

constexpr double cIntelligentMostGain = 12;

double LevelerGain(unsigned amount, double level) {
    if (level <= cNothingHeard)
        return 0;
    const double share = std::min(amount, cLevelerMost) / static_cast<double>(cLevelerMost);
    const double missing = (cLevelerTarget - level) * cLevelerShare;
    return share * std::clamp(missing, -cLevelerMostGain, cLevelerMostGain);
}

}  // namespace

double Curve::At(double frequency) const {
    const std::size_t count = std::min(frequencies.size(), gains.size());
    if (count == 0)
        return 0;
    const auto end = frequencies.begin() + static_cast<std::ptrdiff_t>(count);
    const auto above =
        std::upper_bound(frequencies.begin(), end, static_cast<float>(frequency));
    if (above == frequencies.begin())
        return gains.front();
    if (above == end)
        return gains[count - 1];
    const auto i = static_cast<std::size_t>(above - frequencies.begin());
    const double low = std::max(1.0, static_cast<double>(frequencies[i - 1]));
    const double high = std::max(low, static_cast<double>(frequencies[i]));
    const double width = std::log(high / low);
    const double share = width > 0 ? std::log(std::max(frequency, low) / low) / width : 1;
    return gains[i - 1] + (gains[i] - gains[i - 1]) * std::min(share, 1.0);
}

double Curve::Mean() const {
    const std::size_t count = std::min(frequencies.size(), gains.size());
    if (count == 0)
        return 0;
    const auto end = gains.begin() + static_cast<std::ptrdiff_t>(count);
    return std::accumulate(gains.begin(), end, 0.0) / static_cast<double>(count);
}

double Processing::GainAt(double frequency, double level) const {
    double gain = graphicEQ.At(frequency) + LevelerGain(leveler, level);
    if (frequency >= cSpeechFrom && frequency <= cSpeechUpTo)
        gain += std::clamp(enhancement, 0.0, 1.0) * cEnhancementGain;
    const double shape = intelligentCurve.At(frequency) - intelligentCurve.Mean();
    gain += std::clamp(intelligentEQ, 0.0, 1.0) *
            std::clamp(shape, -cIntelligentMostGain, cIntelligentMostGain);
    return std::round(std::clamp(gain, cLowestGain, cHighestGain) * cStep) / cStep;
}

std::vector<float> BuiltInCurve(std::uint32_t index) {
    if (index >= std::size(defaults::cDynamicEQCurves))
        return {};
    return ParseNumericArray(defaults::cDynamicEQCurves[index]).value();
}

double FrequencyAt(double place) {
    const std::vector<float>& bands = DisplayFrequencies();
    const double position = place * static_cast<double>(bands.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, bands.size() - 1);
    return bands[below] *
           std::pow(bands[above] / bands[below], position - static_cast<double>(below));
}

Picture MakePicture(const Signal& signal, std::uint64_t milliseconds,
                    const std::vector<RecordShape>& shapes, const Processing& processing) {
    Picture picture;
    for (unsigned stream = 0; stream < shapes.size(); ++stream) {
        const RecordShape& shape = shapes[stream];
        Record record;
        for (unsigned band = 0; band < shape.bands; ++band) {
            const double place = PlaceOf(band, shape.bands);
            const double heard = signal.Level(milliseconds, place, stream);
            const double level =
                heard <= cLowestLevel
                    ? cLowestLevel
                    : std::clamp(heard + shape.offset, static_cast<double>(cLowestLevel), 0.0);
            record.excitations.push_back(static_cast<float>(level));
            record.gains.push_back(
                static_cast<float>(processing.GainAt(FrequencyAt(place), level)));
        }
        picture.push_back(std::move(record));
    }
    return picture;
}

}  // namespace kora4::tools::sim
