// SPDX-License-Identifier: MIT
// "Did you mean": the names that are nearest to a mistyped one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kora4::tools {

// At most three, the nearest first: few letters wrong, swapped, missing or too many, or the
// beginning or the last part of the name. Case does not count. Empty when nothing is near.
std::vector<std::string> Nearest(std::string_view word, const std::vector<std::string>& names);

// "Did you mean 'music' or 'movie'?", or without near ones "Expected one of: a, b, c."
std::string Suggestion(std::string_view word, const std::vector<std::string>& names);

}  // namespace kora4::tools
