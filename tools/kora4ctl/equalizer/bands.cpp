// SPDX-License-Identifier: MIT
// The words for bands that cannot be used, in a text or in the store.
#include "kora4ctl/equalizer/bands.h"

#include <utility>

#include "base/failure.h"
#include "base/text.h"

namespace kora4::tools {

EqualizerText EqualizerOfFile(std::string_view text, const std::string& name) {
    EqualizerText read = ReadEqualizerText(text);
    if (!read.problem.empty())
        throw BadInput(name + ", line " + std::to_string(read.line) + ": " + read.problem + ".",
                       read.hasFilters
                           ? "Expected: Filter 1: ON PK Fc 105 Hz Gain -3.4 dB Q 0.70"
                           : "Expected: GraphicEQ: 20 -1.5; 25 0; 31.5 2 ...");
    return read;
}

std::string FrequencyProblem(const Bands& bands, std::size_t index) {
    const float frequency = bands[index].frequency;
    const std::string band =
        "Band " + std::to_string(index + 1) + " is stored at " + Decimal(frequency) + " Hz";
    if (!(frequency > 0))
        return band + ", which is not a valid frequency.";
    if (index > 0 && frequency <= bands[index - 1].frequency)
        return band + ", which is not above the previous band.";
    return {};
}

std::vector<std::string> FrequencyProblems(const Bands& bands) {
    std::vector<std::string> problems;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        std::string problem = FrequencyProblem(bands, i);
        if (!problem.empty())
            problems.push_back(std::move(problem));
    }
    return problems;
}

std::string GainRange() {
    return Decimal(KORA4_GRAPHIC_EQ_MIN_GAIN) + " to +" + Decimal(KORA4_GRAPHIC_EQ_MAX_GAIN);
}

std::string FrequencyRange() {
    return "1 to " + Decimal(KORA4_GRAPHIC_EQ_MAX_FREQUENCY) + " Hz";
}

}  // namespace kora4::tools
