// SPDX-License-Identifier: MIT
// What is wrong with a command line, in the tools' own words.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "base/failure.h"

namespace kora4::tools {

// What the parser takes for the end of a command's arguments, as if it were an option.
inline constexpr char cEndOfCommand[] = "++";

// The Failure with eUsage for what the parser refused. arguments: as they were given.
Failure ComplaintOf(const CLI::ParseError& error, const CLI::App& root,
                    const std::vector<std::string>& arguments);

// The command below this one by its name or an alias; null when there is none.
const CLI::App* FindCommand(const CLI::App& app, const std::string& name);

// "Unknown command '<path><name>'", and which may be meant. path: "profile " below profile.
std::string UnknownCommand(const CLI::App& app, const std::string& path,
                           const std::string& name);

}  // namespace kora4::tools
