// SPDX-License-Identifier: MIT
// kora4ctl lint: each stored value against its type, its range and its encoding.
#include "settings/lint.h"

#include <windows.h>

#include <memory>

#include "base/text.h"
#include "kora4ctl/access/settings_document.h"
#include "kora4ctl/verbs.h"
#include "process/files.h"
#include "registry/registry_store.h"
#include "settings/settings_table.h"

namespace kora4::tools {

namespace {

struct Options {
    bool fix = false;
    std::string backup;
};

constexpr char cFooter[] =
    "error    cannot be read: the built-in default is in force\n"
    "warning  read as it is, but nothing that the API would have set\n"
    "note     worth knowing; nothing to mend\n"
    "A value that equals a built-in default passes, whatever the limits of the API.\n"
    "--fix writes a dump of all settings first, then deletes what is wrong, so that the\n"
    "defaults are in force, and stores texts without a terminator properly. What is no\n"
    "setting (counters, levels, what a demo has saved) is in no dump; it is named when it is\n"
    "mended. Exit code 7: there were errors or warnings, and they are still there.\n";

// Beside the journal, with the time in its name: an earlier dump is never written over.
std::string DefaultBackup(const JournalFile& journal) {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    const auto digits = [](unsigned number, std::size_t count) {
        const std::string text = std::to_string(number);
        return std::string(count > text.size() ? count - text.size() : 0, '0') + text;
    };
    const std::string folder = journal.Path().substr(0, journal.Path().find_last_of('\\'));
    CreateDirectoryW(Widen(folder).c_str(), nullptr);
    return folder + "\\before-fix-" + digits(now.wYear, 4) + digits(now.wMonth, 2) +
           digits(now.wDay, 2) + "-" + digits(now.wHour, 2) + digits(now.wMinute, 2) +
           digits(now.wSecond, 2) + "-" + digits(now.wMilliseconds, 3) + ".json";
}

struct Fixed {
    std::string backup;  // empty: nothing was wrong, and nothing was written
    std::vector<Difference> changes;
};

Fixed Fix(const Context& context, StoreAccess& store, const StoreLock& lock,
          const std::vector<Finding>& findings, const std::string& backup) {
    Fixed fixed;
    const Plan plan = FixPlan(findings);
    if (plan.values.empty())
        return fixed;
    const JournalFile journal(DefaultJournalPath());
    fixed.backup = backup.empty() ? DefaultBackup(journal) : backup;
    WriteWholeFile(fixed.backup, ToText(Dump(store, Scope::eAll)));
    fixed.changes = Apply(plan, store, lock, journal, [&context] {
                        return context.interrupt.IsRequested();
                    }).changes;
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
            {"backup", fixed.backup.empty() ? Json(nullptr) : Json(fixed.backup)}};
}

void Tell(Output& output, const std::vector<Finding>& findings, const Fixed& fixed) {
    if (output.json) {
        output.PrintJson(DocumentOf(findings, fixed));
        return;
    }
    Print(output, findings);
    if (!fixed.backup.empty()) {
        output.Say("All settings as they were before are in " + fixed.backup + ".");
        if (const std::vector<std::string> others = OutsideOfDumps(fixed.changes);
            !others.empty())
            output.Say("Mended too, but no settings, so not in there: " + Join(others, "; ") +
                       ".");
        output.Say(CountOfValues(fixed.changes.size()) + " mended.");
    } else if (findings.empty()) {
        output.Say("All stored values are right.");
    }
}

ExitCode Lint(const Context& context, const Options& options) {
    std::vector<Finding> findings;
    Fixed fixed;
    {
        const std::unique_ptr<StoreAccess> store =
            OpenStore(options.fix ? OpenMode::eReadWrite : OpenMode::eRead);
        const StoreLock lock = HoldStore(context);
        TellIfAbandoned(context, lock);
        findings = Lint(*store);
        if (options.fix)
            fixed = Fix(context, *store, lock, findings, options.backup);
    }
    Tell(context.output, findings, fixed);
    return HasFindings(findings) && !options.fix ? ExitCode::eFindings : ExitCode::eDone;
}

}  // namespace

void AddLint(Context& context) {
    CLI::App* verb = context.root.add_subcommand(
        "lint", "hold each stored value against its type, range and encoding");
    const auto options = std::make_shared<Options>();
    CLI::Option* const fix = verb->add_flag("--fix", options->fix,
                                            "mend what is wrong, after a dump of all settings");
    verb->add_option("--backup", options->backup, "the file of that dump")->needs(fix);
    verb->footer(cFooter);
    OnRun(*verb, context, [&context, options] { return Lint(context, *options); });
}

}  // namespace kora4::tools
