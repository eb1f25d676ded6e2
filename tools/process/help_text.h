// SPDX-License-Identifier: MIT
// How --help looks: paragraphs and tables of at most 80 columns.
#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/text.h"

namespace kora4::tools {

// What a narrow terminal shows of a line.
inline constexpr std::size_t cHelpColumns = 80;

// The text in lines that fit. Lines that begin at the margin are one paragraph up to an empty
// line, an indented one, or a colon at the end. An indented line stays a line of its own; what
// does not fit continues below its last column, which two blanks or more set off.
std::string Filled(std::string_view text);

// The help of a command: description, usage, arguments, options, commands, footer.
class HelpFormatter : public CLI::Formatter {
  public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
};

// For CLI::Option::transform: checks a number that an option takes, and hands it on in the one
// form that the parser reads as it is meant; "010" would be octal. The help and the complaint
// name the range.
template <typename Number>
CLI::Validator Within(Number least, Number most) {
    const std::string range = Range(static_cast<double>(least), static_cast<double>(most));
    const std::string kind =
        std::is_floating_point_v<Number> ? "a number from " : "a whole number from ";
    return CLI::Validator(
        [=](std::string& text) {
            const std::optional<Number> number = ReadNumber<Number>(text);
            if (!number || !(*number >= least && *number <= most))
                return "expected " + kind + range;
            text = nlohmann::json(*number).dump();
            return std::string();
        },
        range);
}

}  // namespace kora4::tools
