// SPDX-License-Identifier: MIT
// Fills paragraphs, and puts the parts of a command's help together.
#include "process/help_text.h"

#include <algorithm>
#include <vector>

#include "base/text.h"
#include "process/help_parts.h"

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

HelpRow RowOf(const CLI::Option& option) {
    // "N:0 to 10": the name of the value, and what checks it.
    const std::string type = option.get_type_name();
    const std::size_t colon = std::min(type.find(':'), type.size());
    std::vector<std::string> limits;
    if (colon != type.size())
        limits.push_back(type.substr(colon + 1));
    if (!option.get_default_str().empty())
        limits.push_back("default " + option.get_default_str());
    return {NameOf(option, type.substr(0, colon)),
            option.get_description() + (limits.empty() ? "" : " (" + Join(limits, "; ") + ")")};
}

}  // namespace

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

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

std::string ReplacedAll(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

CommandHelp HelpOf(const CLI::App& app, const std::string& name) {
    CommandHelp help{app.get_description(), name + " [OPTIONS]", {}, app.get_footer()};
    HelpGroup arguments{"Arguments", {}};
    HelpGroup options{"Options", {}};
    HelpGroup commands{"Commands", {}};
    for (const CLI::Option* const option : app.get_options()) {
        (option->get_positional() ? arguments : options).rows.push_back(RowOf(*option));
        if (option->get_positional()) {
            const std::string argument = arguments.rows.back().name;
            help.usage += option->get_required() ? " " + argument : " [" + argument + "]";
        }
    }
    for (const CLI::App* const command : app.get_subcommands({}))
        commands.rows.push_back({command->get_name(), command->get_description()});
    if (!commands.rows.empty())
        help.usage += app.get_require_subcommand_min() == 0 ? " [COMMAND]" : " COMMAND";
    for (HelpGroup* const group : {&arguments, &options, &commands})
        if (!group->rows.empty())
            help.groups.push_back(std::move(*group));
    return help;
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode) const {
    const CommandHelp help = HelpOf(*app, name);
    std::string text = Filled(help.description) + Broken("Usage: " + help.usage, 4);
    for (const HelpGroup& group : help.groups) {
        text += std::string("\n") + group.title + ":\n";
        for (const HelpRow& row : group.rows)
            text += Row(row.name, row.explanation);
    }
    return text + (help.footer.empty() ? "" : "\n" + Filled(help.footer));
}

}  // namespace kora4::tools
