// SPDX-License-Identifier: MIT
// Writes the parts of each command's help as sections of one page.
#include "process/man_page.h"

#include "base/text.h"
#include "contract/version.h"
#include "process/help_parts.h"

namespace kora4::tools {
namespace {

// Text that the formatter prints as it is.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else
            escaped += c;
    }
    const bool isControl = escaped.starts_with('.') || escaped.starts_with('\'');
    return (isControl ? "\\&" : "") + escaped;
}

std::string Line(const std::string& request, std::string_view text) {
    return request + " \"" + ReplacedAll(Escaped(text), "\"", "\\(dq") + "\"\n";
}

// Indented lines stay lines, others are filled.
std::string Paragraphs(std::string_view text) {
    std::string page;
    bool isTable = false;
    for (const std::string& line : LinesOf(text)) {
        if (line.starts_with(' ') != isTable) {
            isTable = !isTable;
            page += isTable ? ".PP\n.nf\n" : ".fi\n.PP\n";
        }
        page += line.empty() ? ".PP\n" : Escaped(line) + "\n";
    }
    return page + (isTable ? ".fi\n" : "");
}

std::string Rows(const HelpGroup& group) {
    std::string page;
    for (const HelpRow& row : group.rows)
        page += ".TP\n" + Line(".B", row.name) + Escaped(row.explanation) + "\n";
    return page;
}

// The commands below this one, each as a subsection; groups of commands need none. What all of
// them have, the option for help and a footer without their own, stands with the program.
std::string Commands(const CLI::App& app, const std::string& name,
                     const std::string& commonFooter) {
    std::string page;
    for (const CLI::App* const command : app.get_subcommands({})) {
        const std::string itsName = name + " " + command->get_name();
        if (command->get_subcommands({}).empty()) {
            CommandHelp help = HelpOf(*command, itsName);
            page += Line(".SS", help.usage) + Paragraphs(help.description);
            for (HelpGroup& group : help.groups) {
                std::erase_if(group.rows,
                              [](const HelpRow& row) { return row.name.ends_with("--help"); });
                page += Rows(group);
            }
            if (help.footer != commonFooter && !help.footer.empty())
                page += ".PP\n" + Paragraphs(help.footer);
        }
        page += Commands(*command, itsName, commonFooter);
    }
    return page;
}

std::string Upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

}  // namespace

std::string ManPage(const CLI::App& root) {
    const std::string& name = root.get_name();
    const CommandHelp help = HelpOf(root, name);
    std::string page = ".\\\" SPDX-License-Identifier: MIT\n.\\\" Printed by '" + name +
                       " --man'.\n.TH " + Upper(name) +
                       " 1 \"\" \"KORA4 ASL " KORA4_VERSION_TEXT "\"\n.SH NAME\n" + name +
                       " \\- " + Paragraphs(help.description) + Line(".SH", "SYNOPSIS") +
                       Line(".B", help.usage);
    for (const HelpGroup& group : help.groups)
        page += Line(".SH", Upper(group.title)) + Rows(group);
    page += Commands(root, name, help.footer);
    return page + Line(".SH", "NOTES") + Paragraphs(help.footer);
}

}  // namespace kora4::tools
