// SPDX-License-Identifier: MIT
// Fills paragraphs, and puts the parts of a command's help together.
#include "process/help_text.h"

#include <algorithm>
#include <vector>

#include "base/text.h"

namespace kora4::tools {
namespace {

// Where the explanations of arguments, options and commands begin.
constexpr std::size_t cExplanation = 26;

// Breaks a line at blanks; what follows the first break is indented.
std::string Broken(std::string_view line, std::size_t indent) {
    std::string text;
    std::size_t room = cHelpColumns;
    while (Columns(line) > room) {
        // Every help is ASCII but for what stands in a word.
        std::size_t end = line.rfind(' ', room);
        if (end == std::string_view::npos || line.find_first_not_of(' ') > end)
            end = std::min(line.find(' ', room), line.size());
        text += std::string(line.substr(0, end)) + "\n" + std::string(indent, ' ');
        line.remove_prefix(std::min(line.find_first_not_of(' ', end), line.size()));
        room = cHelpColumns - indent;
    }
    return text + std::string(line) + "\n";
}

// Where the last column of an indented line begins, and so its continuation.
std::size_t IndentOf(std::string_view line) {
    const std::size_t begin = line.find_first_not_of(' ');
    const std::size_t gap = line.rfind("  ");
    return gap == std::string_view::npos || gap < begin || gap > cHelpColumns / 2 ? begin + 2
                                                                                  : gap + 2;
}

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string Row(const std::string& name, const std::string& explanation) {
    std::string head = "  " + name;
    if (explanation.empty())
        return head + "\n";
    if (head.size() + 2 > cExplanation)
        head += "\n" + Broken(std::string(cExplanation, ' ') + explanation, cExplanation);
    else
        return Broken(Padded(head, cExplanation) + explanation, cExplanation);
    return head;
}

// The words of the parser for types that nobody named.
std::string ValueName(const std::string& type) {
    if (type == "UINT" || type == "INT" || type == "FLOAT")
        return "N";
    return type;
}

// "NAME...", "-n, --lines N"
std::string NameOf(const CLI::Option& option, const std::string& type) {
    const bool repeats = option.get_items_expected_max() > 1;
    if (option.get_positional())
        return option.get_single_name() + (repeats ? "..." : "");
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return Join(names, ", ") +
           (option.get_items_expected_max() == 0 ? "" : " " + ValueName(type));
}

std::string OptionRow(const CLI::Option& option) {
    // "N:0 to 10": the name of the value, and what checks it.
    const std::string type = option.get_type_name();
    const std::size_t colon = std::min(type.find(':'), type.size());
    std::vector<std::string> limits;
    if (colon != type.size())
        limits.push_back(type.substr(colon + 1));
    if (!option.get_default_str().empty())
        limits.push_back("default " + option.get_default_str());
    return Row(
        NameOf(option, type.substr(0, colon)),
        option.get_description() + (limits.empty() ? "" : " (" + Join(limits, "; ") + ")"));
}

std::string Group(const char* title, const std::string& rows) {
    return rows.empty() ? "" : std::string("\n") + title + ":\n" + rows;
}

}  // namespace

std::string Filled(std::string_view text) {
    std::string filled;
    std::string paragraph;
    const auto end = [&] {
        if (!paragraph.empty())
            filled += Broken(paragraph, 0);
        paragraph.clear();
    };
    for (const std::string& line : LinesOf(text)) {
        const bool isIndented = line.starts_with(' ');
        if (line.empty() || isIndented)
            end();
        if (isIndented)
            filled += Broken(line, IndentOf(line));
        else if (line.empty())
            filled += "\n";
        else
            paragraph += (paragraph.empty() ? "" : " ") + line;
        if (line.ends_with(':'))
            end();
    }
    end();
    return filled;
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode) const {
    std::string usage = "Usage: " + name + " [OPTIONS]";
    std::string arguments;
    std::string options;
    for (const CLI::Option* const option : app->get_options()) {
        (option->get_positional() ? arguments : options) += OptionRow(*option);
        if (option->get_positional()) {
            const std::string argument = NameOf(*option, "");
            usage += option->get_required() ? " " + argument : " [" + argument + "]";
        }
    }
    std::string commands;
    for (const CLI::App* const command : app->get_subcommands({}))
        commands += Row(command->get_name(), command->get_description());
    if (!commands.empty())
        usage += app->get_require_subcommand_min() == 0 ? " [COMMAND]" : " COMMAND";
    const std::string footer = Filled(app->get_footer());
    return Filled(app->get_description()) + Broken(usage, 4) + Group("Arguments", arguments) +
           Group("Options", options) + Group("Commands", commands) +
           (footer.empty() ? "" : "\n") + footer;
}

}  // namespace kora4::tools
