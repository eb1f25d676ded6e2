// SPDX-License-Identifier: MIT
// The words for a text that has no bands.
#include "kora4ctl/equalizer/bands.h"

#include <utility>

#include "base/failure.h"

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

}  // namespace kora4::tools
