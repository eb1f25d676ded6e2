// SPDX-License-Identifier: MIT
// The parts of a command's help, as --help and the manual page show them.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::tools {

std::vector<std::string> LinesOf(std::string_view text);

// "NAME...", "-n, --lines N", or a command, and what it is.
struct HelpRow {
    std::string name;
    std::string explanation;
};
struct HelpGroup {
    const char* title;
    std::vector<HelpRow> rows;
};

struct CommandHelp {
    std::string description;
    std::string usage;              // "kora4ctl get [OPTIONS] NAME..."
    std::vector<HelpGroup> groups;  // those that have rows
    std::string footer;
};

// name: with the commands above it.
CommandHelp HelpOf(const CLI::App& app, const std::string& name);

// The text with every `from` replaced.
std::string ReplacedAll(std::string text, std::string_view from, std::string_view to);

}  // namespace kora4::tools
