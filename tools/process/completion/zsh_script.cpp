// SPDX-License-Identifier: MIT
// The completion script of zsh: the tables of bash, and a function that looks things up in
// them.
#include "process/completion/script_texts.h"

namespace kora4::tools {
namespace {

constexpr char cZshFunction[] =
    R"script(# Offers the words of a list, or the files of the disk.
_PROGRAM_offer() {
    if [[ $1 == files ]]; then
        _files
    elif [[ -n $1 && $1 != - ]]; then
        compadd -- $(_PROGRAM_words "$1" "$2")
    fi
}

_PROGRAM() {
    local command= awaited= word entry list= verbs flags valued arguments
    local -a given places
    local -i i
    _PROGRAM_command ''
    for ((i = 2; i < CURRENT; i++)); do
        word=${words[i]}
        if [[ -n $awaited ]]; then
            awaited=
        elif [[ $word == -?* && $word != -[0-9]* ]]; then
            for entry in ${=valued}; do
                [[ ${entry%%=*} == "$word" ]] && awaited=${entry#*=}
            done
        elif [[ -n $verbs && " $verbs " == *" $word "* ]]; then
            command="$command${command:+ }$word"
            _PROGRAM_command "$command"
        else
            given+=("$word")
        fi
    done
    # --option=value is one word here.
    if [[ $PREFIX == --*=* ]]; then
        for entry in ${=valued}; do
            [[ ${entry%%=*} == "${PREFIX%%=*}" ]] && awaited=${entry#*=}
        done
        compset -P '*='
    fi
    if [[ -n $awaited ]]; then
        _PROGRAM_offer "$awaited" ''
    elif [[ $PREFIX == -* ]]; then
        compadd -- ${=flags}
    elif [[ -n $verbs ]]; then
        # Behind a verb that there is not, nothing is known.
        (($#given > 0)) || compadd -- ${=verbs}
    else
        places=(${=arguments})
        if (($#given < $#places)); then
            list=${places[$#given + 1]}
        elif (($#places > 0)) && [[ ${places[-1]} == *... ]]; then
            list=${places[-1]}
        fi
        _PROGRAM_offer "${list%...}" "${given[1]-}"
    fi
}

)script";

}  // namespace

std::string ZshScript(const Completion& completion) {
    return ForProgram(
        "# Completion of PROGRAM for zsh. To have it in this shell:\n"
        "#   autoload -U compinit && compinit\n#   source <(" +
            completion.request +
            " zsh)\n# To have it always, put these lines into ~/.zshrc.\n\n" +
            TablesForBash(completion) + cZshFunction + "compdef _PROGRAM PROGRAM PROGRAM.exe\n",
        completion.program);
}

}  // namespace kora4::tools
