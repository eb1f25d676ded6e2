// SPDX-License-Identifier: MIT
// kora4ctl lint: each stored value against its type, its range and its encoding.
#include "settings/lint.h"

#include "base/text.h"
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "settings/backup.h"
#include "settings/settings_table.h"

namespace kora4::tools {

namespace {

struct Options {
    bool fix = false;
    std::string backup;
};

constexpr char cFooter[] =
    "Severities:\n"
    "  error    cannot be read: the built-in default is in effect\n"
    "  warning  readable, but outside what the API can set\n"
    "  note     worth knowing; needs no repair\n\n"
    "A value that equals a built-in default passes, whatever the limits of the API.\n"
    "--fix first keeps a backup of all settings (see 'kora4ctl undo'), then deletes invalid "
    "values, so that their\n"
    "defaults are in effect, and terminates texts that lack a terminator. Values that are not\n"
    "settings (counters, levels, the state saved for a demo) are in no dump; --fix names the\n"
    "ones that it repairs. Exit code 7: there are errors or warnings that were not repaired.\n";

struct Fixed {
    std::string backup;  // empty: nothing was wrong, and nothing was written
    std::vector<Difference> changes;
};

Fixed Fix(const Context& context, const HeldStore& store, const std::vector<Finding>& findings,
          const std::string& backup) {
    Fixed fixed;
    const Plan plan = FixPlan(findings);
    if (plan.values.empty())
        return fixed;
    if (!backup.empty())
        WriteWholeFile(backup, ToText(Dump(*store, Scope::eAll)));
    ChangedSettings changed = ApplyPlan(context, plan, store, "lint");
    fixed.backup = backup.empty() ? changed.backup : backup;
    fixed.changes = std::move(changed.changes);
    return fixed;
}

// One line for each repaired value that the dump cannot restore.
std::vector<std::string> OutsideOfDumps(const std::vector<Difference>& changes) {
    std::vector<std::string> lines;
    for (const Difference& change : changes)
        if (SettingOf(change.value) == nullptr)
            lines.push_back(change.Line());
    return lines;
}

Style StyleOf(Severity severity) {
    return severity == Severity::eError     ? Style::eBad
           : severity == Severity::eWarning ? Style::eWarning
                                            : Style::eDim;
}

void Print(Output& output, const std::vector<Finding>& findings) {
    for (const Finding& finding : findings) {
        output.Print(output.Paint(StyleOf(finding.severity), finding.Line()));
        if (!finding.repair.empty())
            output.Print("    --fix: " + finding.repair);
    }
}

Json DocumentOf(const std::vector<Finding>& findings, const Fixed& fixed) {
    Json list = Json::array();
    for (const Finding& finding : findings)
        list.push_back(finding.Document());
    return {{"findings", list},
            {"fixed", DocumentOf(fixed.changes)},
            {"written", ChangeCounts(fixed.changes).written},
            {"deleted", ChangeCounts(fixed.changes).deleted},
            {"backup", OrNull(fixed.backup)}};
}

void Tell(Output& output, const std::vector<Finding>& findings, const Fixed& fixed) {
    if (output.json) {
        output.PrintJson(DocumentOf(findings, fixed));
        return;
    }
    Print(output, findings);
    if (!fixed.backup.empty()) {
        output.Say("The previous settings were saved to '" + fixed.backup + "'.");
        if (const std::vector<std::string> others = OutsideOfDumps(fixed.changes);
            !others.empty())
            output.Say("Also repaired, but not settings and so not saved: " +
                       Join(others, "; ") + ".");
        output.Say(CountOf(fixed.changes.size(), "value") +
                   " repaired: " + ChangeCounts(fixed.changes).InWords() + ".");
    } else if (findings.empty()) {
        output.Say("All stored values are valid.");
    }
}

ExitCode Lint(const Context& context, const Options& options) {
    if (options.backup == "-")
        throw BadInput("--backup requires a file: standard output is for the findings.");
    std::vector<Finding> findings;
    Fixed fixed;
    {
        const HeldStore store(context, options.fix ? OpenMode::eReadWrite : OpenMode::eRead);
        TellIfAbandoned(context, store.lock);
        findings = Lint(*store);
        if (options.fix)
            fixed = Fix(context, store, findings, options.backup);
    }
    Tell(context.output, findings, fixed);
    return HasFindings(findings) && !options.fix ? ExitCode::eFindings : ExitCode::eDone;
}

}  // namespace

void AddLint(Context& context) {
    const auto [verb, options] =
        AddVerb<Options>(context.root, context, "lint",
                         "check each stored value's type, range and encoding", Lint);
    CLI::Option* const fix = verb.add_flag(
        "--fix", options.fix, "repair what is wrong, after a backup of all settings");
    verb.add_option("--backup", options.backup,
                    "also dump all settings to this file first (with --fix)")
        ->needs(fix)
        ->type_name("FILE");
    verb.footer(cFooter);
}

}  // namespace kora4::tools
