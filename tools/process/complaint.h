// SPDX-License-Identifier: MIT
// What is wrong with a command line, in the tools' own words.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "base/failure.h"

namespace kora4::tools {

// The Failure with eUsage for what the parser refused. arguments: as they were given.
Failure ComplaintOf(const CLI::ParseError& error, const CLI::App& root,
                    const std::vector<std::string>& arguments);

}  // namespace kora4::tools
