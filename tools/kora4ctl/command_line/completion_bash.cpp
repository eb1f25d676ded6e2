// SPDX-License-Identifier: MIT
// The script for bash: a function with a case for each command, and tables of words.
#include "base/text.h"
#include "kora4ctl/command_line/completion.h"

namespace kora4::tools {
namespace {

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string Words(const std::vector<std::string>& words) {
    return Quoted(Join(words, " "));
}

// Lists of words by name; the second argument is the setting whose values are asked for.
std::string Lists(const Completion& completion) {
    std::string text = "_kora4ctl_words() {\n    case $1 in\n";
    for (const WordList& list : completion.lists)
        text += "    " + list.name + ") echo " + Words(list.words) + " ;;\n";
    text += std::string("    ") + cValueWords + ")\n        case $2 in\n";
    for (const SettingWords& values : completion.values)
        text += "        " + Quoted(values.name) + ") echo " + Words(values.words) + " ;;\n";
    return text + "        esac ;;\n    esac\n}\n\n";
}

// "words" once, "words..." for the last one when it repeats, "-" for nothing to offer.
std::string ArgumentsOf(const CompletedCommand& command) {
    std::vector<std::string> texts;
    for (const CompletedArgument& argument : command.arguments)
        texts.push_back((argument.words.empty() ? "-" : argument.words) +
                        (argument.repeats ? "..." : ""));
    return Join(texts, " ");
}

// What there is to know of a command, set into the variables of the function below.
std::string Commands(const Completion& completion) {
    std::string text = "_kora4ctl_command() {\n    case $1 in\n";
    for (const CompletedCommand& command : completion.commands) {
        std::vector<std::string> verbs;
        for (const CompletedVerb& verb : command.verbs)
            verbs.push_back(verb.name);
        std::vector<std::string> options;
        std::vector<std::string> valued;
        for (const CompletedOption& option : command.options) {
            for (const std::string& name : option.names) {
                options.push_back(name);
                if (option.takesValue)
                    valued.push_back(name + "=" + (option.words.empty() ? "-" : option.words));
            }
        }
        text += "    " + Quoted(command.path) + ")\n        verbs=" + Words(verbs) +
                "\n        options=" + Words(options) + "\n        valued=" + Words(valued) +
                "\n        arguments=" + Quoted(ArgumentsOf(command)) + " ;;\n";
    }
    return text + "    *) return 1 ;;\n    esac\n}\n\n";
}

constexpr char cFunction[] = R"script(# Offers the words of a list, or the files of the disk.
_kora4ctl_offer() {
    local word
    COMPREPLY=()
    if [[ $1 == files ]]; then
        compopt -o filenames 2>/dev/null
        while IFS= read -r word; do COMPREPLY+=("$word"); done < <(compgen -f -- "$3")
    elif [[ -n $1 && $1 != - ]]; then
        while IFS= read -r word; do
            COMPREPLY+=("$word")
        done < <(compgen -W "$(_kora4ctl_words "$1" "$2")" -- "$3")
    fi
}

_kora4ctl() {
    local IFS=$' \t\n'
    COMPREPLY=()
    local current=${COMP_WORDS[COMP_CWORD]} path= awaited= given=() i word entry
    local verbs options valued arguments
    _kora4ctl_command ''
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ $word == '=' ]]; then
            continue
        elif [[ -n $awaited ]]; then
            awaited=
        elif [[ $word == -?* && $word != -[0-9]* ]]; then
            for entry in $valued; do
                [[ ${entry%%=*} == "$word" ]] && awaited=${entry#*=}
            done
        elif [[ -n $verbs && " $verbs " == *" $word "* ]]; then
            path="$path${path:+ }$word"
            _kora4ctl_command "$path"
        else
            given+=("$word")
        fi
    done
    [[ $current == '=' ]] && current=
    if [[ -n $awaited ]]; then
        _kora4ctl_offer "$awaited" '' "$current"
    elif [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$current"))
    elif [[ -n $verbs ]]; then
        # Behind a verb that there is not, nothing is known.
        ((${#given[@]} > 0)) || COMPREPLY=($(compgen -W "$verbs" -- "$current"))
    else
        local places=($arguments) place=${#given[@]} list=
        if ((place < ${#places[@]})); then
            list=${places[place]}
        elif ((${#places[@]} > 0)); then
            list=${places[${#places[@]} - 1]}
            [[ $list == *... ]] || list=
        fi
        _kora4ctl_offer "${list%...}" "${given[0]-}" "$current"
    fi
}

)script";

}  // namespace

std::string BashScript(const Completion& completion) {
    const std::string& name = completion.program;
    return "# Completion of " + name + " for bash. To have it in this shell:\n#   source <(" +
           name + " completion bash)\n# To have it always, put that line into ~/.bashrc.\n\n" +
           Lists(completion) + Commands(completion) + cFunction + "complete -F _kora4ctl " +
           name + " " + name + ".exe\n";
}

}  // namespace kora4::tools
