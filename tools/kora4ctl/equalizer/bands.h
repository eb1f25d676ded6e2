// SPDX-License-Identifier: MIT
// The bands of a graphic equalizer in messages: what is wrong with a text or with stored bands,
// and their limits.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kora4ctl/equalizer/equalizer_text.h"

namespace kora4::tools {

// What a file's text says; `name` is the file's. Failure with eBadInput says in which line what
// is wrong.
EqualizerText EqualizerOfFile(std::string_view text, const std::string& name);

// What is wrong with the frequencies as they are stored, a sentence for each band that cannot
// be used: not positive, or not above the one before.
std::vector<std::string> FrequencyProblems(const Bands& bands);
// The same about one band; empty when nothing is wrong.
std::string FrequencyProblem(const Bands& bands, std::size_t index);

// Whether the library takes the gain as it is.
inline bool IsAllowedGain(float gain) {
    return gain >= KORA4_GRAPHIC_EQ_MIN_GAIN && gain <= KORA4_GRAPHIC_EQ_MAX_GAIN;
}

// "-12 to +12", in dB; "1 to 32767 Hz".
std::string GainRange();
std::string FrequencyRange();

}  // namespace kora4::tools
