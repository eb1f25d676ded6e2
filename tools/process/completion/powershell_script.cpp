// SPDX-License-Identifier: MIT
// The completion script of PowerShell: tables, and a block that looks things up in them.
#include "process/completion/script_texts.h"

namespace kora4::tools {
namespace {

std::string ForPowerShell(const std::string& text) {
    return QuotedFor(text, "''");
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
           Table("arguments", arguments) +
           Table("lists", Each(completion.words.lists, EntryOfList)) +
           Table("values", Each(completion.words.values, EntryOfList));
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

std::string PowerShellScript(const Completion& completion) {
    const std::string& name = completion.program;
    return "# Completion of " + name +
           " for PowerShell. To have it in this shell:\n"
           "#   " +
           completion.request +
           " powershell | Out-String | Invoke-Expression\n"
           "# To have it always, put that line into the file that $PROFILE names.\n\n"
           "Register-ArgumentCompleter -Native -CommandName " +
           ForPowerShell(name) + ", " + ForPowerShell(name + ".exe") +
           " -ScriptBlock {\n    param($wordToComplete, $commandAst, $cursorPosition)\n" +
           PowerShellTables(completion) + cPowerShellBlock;
}

}  // namespace kora4::tools
