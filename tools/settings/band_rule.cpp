// SPDX-License-Identifier: MIT
// The rule for bands, in words for whoever breaks it.
#include "settings/band_rule.h"

#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "contract/patch_records.h"
#include "settings/content.h"

namespace kora4::tools {
namespace {

std::string Sentence(std::string clause) {
    clause[0] = static_cast<char>(clause[0] - 'a' + 'A');
    return clause + ".";
}

}  // namespace

std::string GainRange() {
    return Decimal(KORA4_GRAPHIC_EQ_MIN_GAIN) + " to +" + Decimal(KORA4_GRAPHIC_EQ_MAX_GAIN);
}

std::string FrequencyRange() {
    return "1 to " + Decimal(KORA4_GRAPHIC_EQ_MAX_FREQUENCY) + " Hz";
}

std::vector<float> GraphicEqArray(std::uint32_t pid, std::uint32_t profile,
                                  StoreAccess& store) {
    const std::optional<Value> value =
        Effective(FieldValue(Preset(eStandardEQTech), profile, pid), store);
    return value ? std::get<std::vector<float>>(*value) : std::vector<float>();
}

Bands BandsOf(const std::vector<float>& frequencies, const std::vector<float>& gains) {
    Bands bands(frequencies.size());
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i] = {frequencies[i], i < gains.size() ? gains[i] : 0};
    return bands;
}

std::string FrequencyProblem(const Bands& bands, std::size_t index) {
    const float frequency = bands[index].frequency;
    const std::string band =
        "band " + std::to_string(index + 1) + " is at " + Decimal(frequency) + " Hz";
    if (!(frequency >= 1) || frequency > KORA4_GRAPHIC_EQ_MAX_FREQUENCY)
        return band + "; frequencies range from " + FrequencyRange();
    // Whole hertz are stored.
    if (index > 0 && std::trunc(frequency) <= std::trunc(bands[index - 1].frequency))
        return band + ", which is not above the previous band";
    return {};
}

std::vector<std::string> FrequencyProblems(const Bands& bands) {
    std::vector<std::string> problems;
    if (bands.size() > cMaxArrayElements)
        problems.push_back("Expected at most " + std::to_string(cMaxArrayElements) +
                           " bands, got " + std::to_string(bands.size()) + ".");
    for (std::size_t i = 0; i < bands.size(); ++i)
        if (std::string problem = FrequencyProblem(bands, i); !problem.empty())
            problems.push_back(Sentence(std::move(problem)));
    return problems;
}

void CheckFrequencies(const Bands& bands) {
    const std::vector<std::string> problems = FrequencyProblems(bands);
    if (!problems.empty())
        throw BadInput(Join(problems, " ") + " Nothing was changed.", cOtherBands);
}

std::string CountProblem(std::size_t expected, std::size_t count, const char* what) {
    if (count == expected)
        return {};
    return "expected " + std::to_string(expected) + " " + what + ", got " +
           std::to_string(count);
}

void CheckCount(std::size_t expected, std::size_t count, const char* what, const char* next) {
    if (const std::string problem = CountProblem(expected, count, what); !problem.empty())
        throw BadInput(Sentence(problem), next);
}

}  // namespace kora4::tools
