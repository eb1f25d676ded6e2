// SPDX-License-Identifier: MIT
// What a shell offers at each place of a command line.
#pragma once

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

// Behind the name of a list: of an argument that can be given several times.
inline constexpr char cRepeats[] = "...";

// A verb as the command above it offers it.
struct CompletedVerb {
    std::string name;
    std::string help;
};

struct CompletedOption {
    std::string name;  // "--lines"; "-n" is an option of its own
    std::string help;
    bool takesValue = false;
    std::string words;  // the list of its value; empty for none
};

// One command: the program itself (an empty path), a verb, or a verb of a verb.
struct CompletedCommand {
    std::string path;  // "profile use"
    std::vector<CompletedVerb> verbs;
    std::vector<CompletedOption> options;
    std::vector<std::string> arguments;  // their lists of words: "settings", "settings..."
};

// Everything that a script needs.
struct Completion {
    std::string program;
    std::vector<CompletedCommand> commands;
    std::vector<WordList> lists;
    std::vector<WordList> values;  // of each setting that has words
};

// From the command line as it is, the settings table and the names.
Completion CompletionOf(const CLI::App& root);

}  // namespace kora4::tools
