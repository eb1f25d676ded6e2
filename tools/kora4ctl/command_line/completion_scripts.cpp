// SPDX-License-Identifier: MIT
// The completion scripts of bash and PowerShell, made from the verbs and their options.
#include "kora4ctl/command_line/completion_scripts.h"

#include <algorithm>

#include "base/text.h"

namespace kora4::tools {
namespace {

// Between single quotation marks, those inside written as the shell wants them.
std::string Quoted(const std::string& text, const char* mark) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string(mark) : std::string(1, c);
    return quoted + "'";
}

template <typename Elements, typename Write>
std::vector<std::string> Each(const Elements& elements, Write write) {
    std::vector<std::string> texts;
    std::transform(elements.begin(), elements.end(), std::back_inserter(texts), write);
    return texts;
}

// ---- bash: a function with a case for each command, and lists of words --------------------

std::string ForBash(const std::string& text) {
    return Quoted(text, "'\\''");
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
    std::string text = "_kora4ctl_words() {\n    case $1 in\n";
    for (const WordList& list : completion.lists)
        text += "    " + list.name + ") echo " + ForBash(list.words) + " ;;\n";
    text += std::string("    ") + cValueWords + ")\n        case $2 in\n";
    for (const WordList& values : completion.values)
        text += "        " + ForBash(values.name) + ") echo " + ForBash(values.words) + " ;;\n";
    return text + "        esac ;;\n    esac\n}\n\n";
}

// What there is to know of a command, set into the variables of the function below.
std::string BashCommands(const Completion& completion) {
    std::string text = "_kora4ctl_command() {\n    case $1 in\n";
    for (const CompletedCommand& command : completion.commands) {
        std::vector<std::string> valued;
        for (const CompletedOption& option : command.options)
            if (option.takesValue)
                valued.push_back(option.name + "=" + OrDash(option.words));
        const auto name = [](const auto& one) { return one.name; };
        text += "    " + ForBash(command.path) +
                ")\n        verbs=" + ForBash(Each(command.verbs, name)) +
                "\n        options=" + ForBash(Each(command.options, name)) +
                "\n        valued=" + ForBash(valued) +
                "\n        arguments=" + ForBash(Each(command.arguments, OrDash)) + " ;;\n";
    }
    return text + "    *) return 1 ;;\n    esac\n}\n\n";
}

constexpr char cBashFunction[] =
    R"script(# Offers the words of a list, or the files of the disk.
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

// ---- PowerShell: tables, and a block that looks things up in them --------------------------

std::string ForPowerShell(const std::string& text) {
    return Quoted(text, "''");
}

std::string ForPowerShell(const std::vector<std::string>& words) {
    return "@(" +
           Join(Each(words, [](const auto& word) { return ForPowerShell(word); }), ", ") + ")";
}

// "    $name = @{ 'key' = value ... }", a line an entry.
std::string Table(const char* name, const std::vector<std::string>& entries) {
    return std::string("    $") + name + " = @{\n" + Join(entries, "") + "    }\n";
}

std::string Entry(const std::string& key, const std::string& value) {
    return "        " + ForPowerShell(key) + " = " + value + "\n";
}

std::string EntryOfList(const WordList& list) {
    return Entry(list.name, ForPowerShell(list.words));
}

// Words with the help that is shown beside them, in their order.
template <typename Words>
std::string EntryWithHelp(const std::string& path, const Words& words) {
    std::string text = "[ordered]@{";
    for (const auto& word : words)
        text += " " + ForPowerShell(word.name) + " = " + ForPowerShell(word.help) + ";";
    return Entry(path, text + " }");
}

std::string PowerShellTables(const Completion& completion) {
    std::vector<std::string> verbs, options, valued, arguments;
    for (const CompletedCommand& command : completion.commands) {
        verbs.push_back(EntryWithHelp(command.path, command.verbs));
        options.push_back(EntryWithHelp(command.path, command.options));
        arguments.push_back(Entry(command.path, ForPowerShell(command.arguments)));
        for (const CompletedOption& option : command.options)
            if (option.takesValue)
                valued.push_back(
                    Entry(command.path + " " + option.name, ForPowerShell(option.words)));
    }
    return Table("verbs", verbs) + Table("options", options) + Table("valued", valued) +
           Table("arguments", arguments) + Table("lists", Each(completion.lists, EntryOfList)) +
           Table("values", Each(completion.values, EntryOfList));
}

constexpr char cPowerShellBlock[] = R"script(
    # What stands before the word that is being completed.
    $before = @($commandAst.CommandElements | Select-Object -Skip 1 |
        Where-Object { $_.Extent.StartOffset -lt $cursorPosition } |
        ForEach-Object { $_.Extent.Text })
    if ($wordToComplete -ne '' -and $before.Count -gt 0) {
        $before = @($before | Select-Object -First ($before.Count - 1))
    }
    $path = ''
    $given = @()
    $awaited = $null
    foreach ($word in $before) {
        if ($null -ne $awaited) {
            $awaited = $null
        } elseif ($word -match '^-[^0-9]') {
            if ($valued.ContainsKey("$path $word")) { $awaited = $valued["$path $word"] }
        } elseif ($verbs[$path].Contains($word)) {
            $path = "$path $word".Trim()
        } else {
            $given += $word
        }
    }

    # --option=value is one word here.
    $prefix = ''
    if ($wordToComplete -match '^(--[^=]+)=(.*)$' -and $valued.ContainsKey("$path $($Matches[1])")) {
        $prefix = $Matches[1] + '='
        $awaited = $valued["$path $($Matches[1])"]
        $wordToComplete = $Matches[2]
    }

    $offered = [ordered]@{}
    $list = ''
    if ($null -ne $awaited) {
        $list = $awaited
    } elseif ($wordToComplete -like '-*') {
        $offered = $options[$path]
    } elseif ($verbs[$path].Count -gt 0) {
        # Behind a verb that there is not, nothing is known.
        if ($given.Count -eq 0) { $offered = $verbs[$path] }
    } else {
        $places = $arguments[$path]
        if ($given.Count -lt $places.Count) {
            $list = $places[$given.Count]
        } elseif ($places.Count -gt 0 -and $places[-1] -like '*...') {
            $list = $places[-1]
        }
        $list = $list -replace '\.\.\.$', ''
    }
    if ($list -eq 'values' -and $given.Count -gt 0 -and $values.ContainsKey($given[0])) {
        $values[$given[0]] | ForEach-Object { $offered[$_] = $_ }
    } elseif ($list -ne '' -and $lists.ContainsKey($list)) {
        $lists[$list] | ForEach-Object { $offered[$_] = $_ }
    }

    # Nothing offered: the shell goes on with its own, the names of files.
    $offered.Keys | Where-Object { $_ -like "$wordToComplete*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new(
            "$prefix$_", $_, 'ParameterValue', $offered[$_])
    }
}
)script";

}  // namespace

std::string BashScript(const Completion& completion) {
    const std::string& name = completion.program;
    return "# Completion of " + name + " for bash. To have it in this shell:\n#   source <(" +
           name + " completion bash)\n# To have it always, put that line into ~/.bashrc.\n\n" +
           BashWords(completion) + BashCommands(completion) + cBashFunction +
           "complete -F _kora4ctl " + name + " " + name + ".exe\n";
}

std::string PowerShellScript(const Completion& completion) {
    const std::string& name = completion.program;
    return "# Completion of " + name +
           " for PowerShell. To have it in this shell:\n"
           "#   " +
           name +
           " completion powershell | Out-String | Invoke-Expression\n"
           "# To have it always, put that line into the file that $PROFILE names.\n\n"
           "Register-ArgumentCompleter -Native -CommandName " +
           ForPowerShell(name) + ", " + ForPowerShell(name + ".exe") +
           " -ScriptBlock {\n    param($wordToComplete, $commandAst, $cursorPosition)\n" +
           PowerShellTables(completion) + cPowerShellBlock;
}

}  // namespace kora4::tools
