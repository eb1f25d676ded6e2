// SPDX-License-Identifier: MIT
// The levels of the display bands, drawn with characters.
#pragma once

#include <kora4/values.hpp>

#include <cstddef>
#include <string>
#include <vector>

#include "base/output.h"
#include "kora4ctl/terminal/styled_text.h"

namespace kora4::tools {

// No float equals NaN; a picture with one equals itself all the same.
bool AreSame(const Levels& a, const Levels& b);

// Two bars a band, gain and excitation, over a scale in dB and the numbers of the bands, with
// a line of words below. At most that many columns and lines; the bars take what there is.
std::vector<StyledLine> DrawLevels(const Levels& levels, std::size_t width, std::size_t height);

// "-12.5", one decimal; "nan", "inf" and "-inf" as they are.
std::string LevelText(float level);

// "gain -12.5 ...  excitation -3.0 ..."
std::string LevelsLine(const Levels& levels);
// {"gains": [...], "excitations": [...]}; null for NaN and infinities.
Json LevelsDocument(const Levels& levels);

}  // namespace kora4::tools
