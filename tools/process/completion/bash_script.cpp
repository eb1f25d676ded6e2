// SPDX-License-Identifier: MIT
// The completion script of bash: tables as functions, and a function that looks things up in
// them.
#include "process/completion/script_texts.h"

namespace kora4::tools {
namespace {

std::string ForBash(const std::string& text) {
    return QuotedFor(text, "'\\''");
}

std::string ForBash(const std::vector<std::string>& words) {
    return ForBash(Join(words, " "));
}

// A list that is empty has a name, too: words of a list have no blanks between them.
std::string OrDash(const std::string& words) {
    return words.empty() || words == cRepeats ? "-" + words : words;
}

// Lists of words by name; the second argument is the setting whose values are asked for.
std::string BashWords(const Completion& completion) {
    std::string text = "_PROGRAM_words() {\n    case $1 in\n";
    for (const WordList& list : completion.words.lists)
        text += "    " + list.name + ") echo " + ForBash(list.words) + " ;;\n";
    text += std::string("    ") + cValueWords + ")\n        case $2 in\n";
    for (const WordList& values : completion.words.values)
        text += "        " + ForBash(values.name) + ") echo " + ForBash(values.words) + " ;;\n";
    return text + "        esac ;;\n    esac\n}\n\n";
}

// What there is to know of a command, set into the variables of the function below.
std::string BashCommands(const Completion& completion) {
    std::string text = "_PROGRAM_command() {\n    case $1 in\n";
    for (const CompletedCommand& command : completion.commands) {
        std::vector<std::string> valued;
        for (const CompletedOption& option : command.options)
            if (option.takesValue)
                valued.push_back(option.name + "=" + OrDash(option.words));
        const auto name = [](const auto& one) { return one.name; };
        text += "    " + ForBash(command.path) +
                ")\n        verbs=" + ForBash(Each(command.verbs, name)) +
                "\n        flags=" + ForBash(Each(command.options, name)) +
                "\n        valued=" + ForBash(valued) +
                "\n        arguments=" + ForBash(Each(command.arguments, OrDash)) + " ;;\n";
    }
    return text + "    *) return 1 ;;\n    esac\n}\n\n";
}

constexpr char cBashFunction[] =
    R"script(# Offers the words of a list, or the files of the disk.
_PROGRAM_offer() {
    local word
    COMPREPLY=()
    if [[ $1 == files ]]; then
        compopt -o filenames 2>/dev/null
        while IFS= read -r word; do COMPREPLY+=("$word"); done < <(compgen -f -- "$3")
    elif [[ -n $1 && $1 != - ]]; then
        while IFS= read -r word; do
            COMPREPLY+=("$word")
        done < <(compgen -W "$(_PROGRAM_words "$1" "$2")" -- "$3")
    fi
}

_PROGRAM() {
    local IFS=$' \t\n'
    COMPREPLY=()
    local current=${COMP_WORDS[COMP_CWORD]} path= awaited= given=() i word entry
    local verbs flags valued arguments
    _PROGRAM_command ''
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
            _PROGRAM_command "$path"
        else
            given+=("$word")
        fi
    done
    [[ $current == '=' ]] && current=
    if [[ -n $awaited ]]; then
        _PROGRAM_offer "$awaited" '' "$current"
    elif [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "$flags" -- "$current"))
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
        _PROGRAM_offer "${list%...}" "${given[0]-}" "$current"
    fi
}

)script";

}  // namespace

std::string TablesForBash(const Completion& completion) {
    return BashWords(completion) + BashCommands(completion);
}

std::string BashScript(const Completion& completion) {
    const std::string& request = completion.request;
    return ForProgram(
        "# Completion of PROGRAM for bash. To have it in this shell:\n#   source <(" + request +
            " bash)\n# To have it always, put that line into ~/.bashrc.\n\n" +
            TablesForBash(completion) + cBashFunction +
            "complete -F _PROGRAM PROGRAM PROGRAM.exe\n",
        completion.program);
}

}  // namespace kora4::tools
