// SPDX-License-Identifier: MIT
// What a shell offers at each place of a command line, and the scripts that make it so.
#ifndef KORA4_KORA4CTL_COMMAND_LINE_COMPLETION_H
#define KORA4_KORA4CTL_COMMAND_LINE_COMPLETION_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace kora4::tools {

// A list of words that several places share: "settings", "profiles". Two lists are no lists:
// "files" are those of the disk, "values" depend on the setting before them.
struct WordList {
    std::string name;
    std::vector<std::string> words;
};
inline constexpr char cFileWords[] = "files";
inline constexpr char cValueWords[] = "values";

// An option: its spellings, and the words that its value takes.
struct CompletedOption {
    std::vector<std::string> names;  // "--lines", "-n"
    std::string help;
    bool takesValue = false;
    std::string words;  // the list of its value; empty for none
};

// A positional argument.
struct CompletedArgument {
    std::string words;  // as above
    bool repeats = false;
};

// A verb as the command above it offers it.
struct CompletedVerb {
    std::string name;
    std::string help;
};

// One command: the program itself (an empty path), a verb, or a verb of a verb.
struct CompletedCommand {
    std::string path;  // "profile use"
    std::vector<CompletedVerb> verbs;
    std::vector<CompletedOption> options;
    std::vector<CompletedArgument> arguments;
};

// The words that a setting's value may be.
struct SettingWords {
    std::string name;
    std::vector<std::string> words;
};

// Everything that a script needs.
struct Completion {
    std::string program;
    std::vector<CompletedCommand> commands;
    std::vector<WordList> lists;
    std::vector<SettingWords> values;
};

// From the command line as it is, the settings table and the names.
Completion CompletionOf(const CLI::App& root);

// The scripts, with a comment on how to load them.
std::string BashScript(const Completion& completion);
std::string PowerShellScript(const Completion& completion);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_COMMAND_LINE_COMPLETION_H
