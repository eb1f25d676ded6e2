// SPDX-License-Identifier: MIT
// The levels of the display bands, drawn with characters.
#pragma once

#include <kora4/values.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/output.h"
#include "kora4ctl/terminal/styled_text.h"

namespace kora4::tools {

// No float equals NaN; a picture with one equals itself all the same.
bool AreSame(const Levels& a, const Levels& b);

// Two bars a band over a scale in dB: the gain grows from 0 dB, the excitation from the bottom.
// Below them the numbers of the bands, their frequencies, and a line of words: the warning, or
// what the bars are. At most that many columns and lines; the bars take what there is.
std::vector<StyledLine> DrawLevels(const Levels& levels, const std::string& warning,
                                   std::size_t width, std::size_t height);

// "-12.5", one decimal; "nan", "inf" and "-inf" as they are.
std::string LevelText(float level);

// "gain -12.5 ...  excitation -3.0 ..."
std::string LevelsLine(const Levels& levels);
// {"frequencies": [...], "gains": [...], "excitations": [...]}; null for a level that is NaN or
// infinite, and for both lists when there are no levels.
Json LevelsDocument(const std::optional<Levels>& levels);

}  // namespace kora4::tools
