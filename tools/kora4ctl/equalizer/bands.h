// SPDX-License-Identifier: MIT
// The bands of a graphic equalizer in a text.
#pragma once

#include <string>
#include <string_view>

#include "settings/band_rule.h"

namespace kora4::tools {

// The bands of a file's text; `name` is the file's. Failure with eBadInput says in which line
// what is wrong.
Bands BandsOfText(std::string_view text, const std::string& name);

}  // namespace kora4::tools
