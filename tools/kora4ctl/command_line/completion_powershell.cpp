// SPDX-License-Identifier: MIT
// The script for PowerShell: tables, and a block that looks things up in them.
#include "base/text.h"
#include "kora4ctl/command_line/completion.h"

namespace kora4::tools {
namespace {

std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted + "'";
}

std::string Array(const std::vector<std::string>& words) {
    std::vector<std::string> quoted;
    for (const std::string& word : words)
        quoted.push_back(Quoted(word));
    return "@(" + Join(quoted, ", ") + ")";
}

using Entries = std::vector<std::pair<std::string, std::string>>;

// "    $name = @{ 'key' = value ... }", a line an entry.
std::string Table(const std::string& name, const Entries& entries) {
    std::string text = "    $" + name + " = @{\n";
    for (const auto& [key, value] : entries)
        text += "        " + Quoted(key) + " = " + value + "\n";
    return text + "    }\n";
}

// Words with the help that is shown beside them, in their order.
std::string Helped(const Entries& entries) {
    std::string text = "[ordered]@{";
    for (const auto& [word, help] : entries)
        text += " " + Quoted(word) + " = " + Quoted(help) + ";";
    return text + " }";
}

std::string Tables(const Completion& completion) {
    Entries verbs, options, valued, arguments, lists, values;
    for (const CompletedCommand& command : completion.commands) {
        Entries ofVerbs, ofOptions;
        std::vector<std::string> places;
        for (const CompletedVerb& verb : command.verbs)
            ofVerbs.emplace_back(verb.name, verb.help);
        for (const CompletedOption& option : command.options) {
            for (const std::string& name : option.names) {
                ofOptions.emplace_back(name, option.help);
                if (option.takesValue)
                    valued.emplace_back(command.path + " " + name, Quoted(option.words));
            }
        }
        for (const CompletedArgument& argument : command.arguments)
            places.push_back(argument.words + (argument.repeats ? "..." : ""));
        verbs.emplace_back(command.path, Helped(ofVerbs));
        options.emplace_back(command.path, Helped(ofOptions));
        arguments.emplace_back(command.path, Array(places));
    }
    for (const WordList& list : completion.lists)
        lists.emplace_back(list.name, Array(list.words));
    for (const SettingWords& setting : completion.values)
        values.emplace_back(setting.name, Array(setting.words));
    return Table("verbs", verbs) + Table("options", options) + Table("valued", valued) +
           Table("arguments", arguments) + Table("lists", lists) + Table("values", values);
}

constexpr char cBlock[] = R"script(
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

std::string PowerShellScript(const Completion& completion) {
    const std::string& name = completion.program;
    return "# Completion of " + name +
           " for PowerShell. To have it in this shell:\n"
           "#   " +
           name +
           " completion powershell | Out-String | Invoke-Expression\n"
           "# To have it always, put that line into the file that $PROFILE names.\n\n"
           "Register-ArgumentCompleter -Native -CommandName " +
           Quoted(name) + ", " + Quoted(name + ".exe") +
           " -ScriptBlock {\n    param($wordToComplete, $commandAst, $cursorPosition)\n" +
           Tables(completion) + cBlock;
}

}  // namespace kora4::tools
