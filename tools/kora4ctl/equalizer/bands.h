// SPDX-License-Identifier: MIT
// The bands of a graphic equalizer in a text.
#pragma once

#include <string>
#include <string_view>

#include "settings/band_rule.h"

#include "kora4ctl/equalizer/equalizer_text.h"

namespace kora4::tools {

// What a file's text says; `name` is the file's. Failure with eBadInput says in which line what
// is wrong.
EqualizerText EqualizerOfFile(std::string_view text, const std::string& name);

}  // namespace kora4::tools
