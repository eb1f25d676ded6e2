// SPDX-License-Identifier: MIT
// The words for a text that has no bands.
#include "kora4ctl/equalizer/bands.h"

#include <utility>

#include "base/failure.h"

namespace kora4::tools {

Bands BandsOfText(std::string_view text, const std::string& name) {
    ParsedEqualizer parsed = ParseGraphicEq(text);
    if (!parsed)
        throw BadInput(
            name + ", line " + std::to_string(parsed.line) + ": " + parsed.problem + ".",
            "Expected: GraphicEQ: 20 -1.5; 25 0; 31.5 2 ...");
    return std::move(parsed.bands);
}

}  // namespace kora4::tools
