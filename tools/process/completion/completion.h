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

// Which list an argument or the value of an option takes.
struct CompletionRule {
    const char* path;  // "profile use"; null: of any command
    const char* name;  // "NAME", "--profile"
    const char* words;
};

// What a program knows beyond its command line.
struct Vocabulary {
    std::vector<CompletionRule> rules;  // the first one that fits counts
    std::vector<WordList> lists;
    std::vector<WordList> values;  // of each setting that has words
};

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
    std::string request;  // the command line that prints the script, up to the shell's name
    std::vector<CompletedCommand> commands;
    Vocabulary words;
};

// From the command line as it is. request: "kora4ctl completion".
Completion CompletionOf(const CLI::App& root, std::string request, Vocabulary words);

}  // namespace kora4::tools
