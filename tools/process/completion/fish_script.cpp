// SPDX-License-Identifier: MIT
// The completion script of fish: a condition for each place, and what is offered there.
#include "process/completion/script_texts.h"

namespace kora4::tools {
namespace {

std::string ForFish(const std::string& text) {
    return QuotedFor(text, "\\'", "\\\\");
}

constexpr char cFishFunctions[] =
    R"script(# Prints the command in front of the cursor, how many arguments it has so far, and the first.
function __PROGRAM_state
    set -l command ''
    set -l awaits false
    set -l given
    for word in (commandline -opc)[2..-1]
        if $awaits
            set awaits false
        else if string match -qr '^-[^0-9]' -- $word
            contains -- "$command $word" $__PROGRAM_valued; and set awaits true
        else if contains -- (string trim -- "$command $word") $__PROGRAM_commands
            set command (string trim -- "$command $word")
        else
            set -a given $word
        end
    end
    printf '%s\n' "$command" (count $given) "$given[1]"
end

# Whether the cursor is behind that command; with a number, and so many arguments; with "+"
# behind the number, or more.
function __PROGRAM_at
    set -l state (__PROGRAM_state)
    test "$state[1]" = "$argv[1]"; or return
    set -q argv[2]; or return 0
    if string match -q '*+' -- $argv[2]
        test $state[2] -ge (string trim -r -c + -- $argv[2])
    else
        test $state[2] = $argv[2]
    end
end

)script";

const std::vector<std::string>* ListNamed(const Completion& completion,
                                          const std::string& name) {
    for (const WordList& list : completion.words.lists)
        if (list.name == name)
            return &list.words;
    return nullptr;
}

// What "complete" gets for a list: words, files, or the values of the setting in front.
std::string Offer(const Completion& completion, const std::string& name) {
    if (name == cFileWords)
        return " -F";
    if (name == cValueWords)
        return " -a '(__PROGRAM_values)'";
    const std::vector<std::string>* const words = ListNamed(completion, name);
    return words ? " -a " + ForFish(Join(*words, " ")) : "";
}

// The words that a setting takes, by the first argument of the command.
std::string ValuesFunction(const Completion& completion) {
    std::string text = "function __PROGRAM_values\n    switch (__PROGRAM_state)[3]\n";
    for (const WordList& values : completion.words.values)
        text += "        case " + ForFish(values.name) + "\n            printf '%s\\n' " +
                Join(values.words, " ") + "\n";
    return text + "    end\nend\n\n";
}

std::string Line(const std::string& condition, const std::string& rest) {
    return "complete -c PROGRAM -n " + ForFish("__PROGRAM_at " + condition) + rest + "\n";
}

std::string OptionLine(const Completion& completion, const std::string& path,
                       const CompletedOption& option) {
    const bool isLong = option.name.starts_with("--");
    const std::string words = Offer(completion, option.words);
    return Line("\"" + path + "\"",
                (isLong ? " -l " : " -s ") + option.name.substr(isLong ? 2 : 1) +
                    (option.takesValue ? " -r" : "") + words + " -d " + ForFish(option.help));
}

std::string CommandLines(const Completion& completion, const CompletedCommand& command) {
    const std::string path = "\"" + command.path + "\"";
    std::string text;
    for (const CompletedVerb& verb : command.verbs)
        text += Line(path + " 0", " -a " + ForFish(verb.name) + " -d " + ForFish(verb.help));
    for (const CompletedOption& option : command.options)
        text += OptionLine(completion, command.path, option);
    for (std::size_t i = 0; i < command.arguments.size(); ++i) {
        std::string list = command.arguments[i];
        const bool repeats = list.ends_with(cRepeats);
        if (repeats)
            list.resize(list.size() - std::string_view(cRepeats).size());
        if (const std::string offer = Offer(completion, list); !offer.empty())
            text += Line(path + " " + std::to_string(i) + (repeats ? "+" : ""), offer);
    }
    return text;
}

std::string Variable(const char* name, const std::vector<std::string>& words) {
    return std::string("set -g __PROGRAM_") + name + " " + Join(Each(words, ForFish), " ") +
           "\n";
}

}  // namespace

std::string FishScript(const Completion& completion) {
    std::vector<std::string> paths;
    std::vector<std::string> valued;
    std::string lines;
    for (const CompletedCommand& command : completion.commands) {
        paths.push_back(command.path);
        for (const CompletedOption& option : command.options)
            if (option.takesValue)
                valued.push_back(command.path + " " + option.name);
        lines += CommandLines(completion, command);
    }
    const std::string& request = completion.request;
    return ForProgram("# Completion of PROGRAM for fish. To have it in this shell:\n#   " +
                          request + " fish | source\n# To have it always:\n#   " + request +
                          " fish >~/.config/fish/completions/PROGRAM.fish\n\n" +
                          Variable("commands", paths) + Variable("valued", valued) + "\n" +
                          cFishFunctions + ValuesFunction(completion) +
                          "complete -c PROGRAM -e\ncomplete -c PROGRAM -f\n"
                          "complete -c PROGRAM.exe -w PROGRAM\n" +
                          lines,
                      completion.program);
}

}  // namespace kora4::tools
