// SPDX-License-Identifier: MIT
// kora4ctl undo: the settings as they were before a verb changed many of them.
#include "base/failure.h"
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "settings/backup.h"

namespace kora4::tools {

namespace {

struct Options {
    unsigned number = 0;  // 0: list them
};

constexpr char cFooter[] =
    "'load', 'replay', 'lint --fix', 'reset', 'ab', 'profile revert', 'profile copy' and\n"
    "'undo' itself back up all settings before they change anything. The last ten\n"
    "backups are kept. Without N, lists them, the newest first. With N, restores that\n"
    "backup: each value that differs is written, or deleted if it was unset then. The\n"
    "command lines of companion programs (AppKeys) are left alone. Times are UTC.\n";

ExitCode List(Output& output, const Backups& backups) {
    const std::vector<Backup> all = backups.List();
    Json documents = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < all.size(); ++i) {
        documents.push_back({{"number", i + 1},
                             {"time", all[i].time},
                             {"verb", all[i].verb},
                             {"file", backups.PathOf(all[i])}});
        rows.push_back({std::to_string(i + 1), all[i].time, "before " + all[i].verb});
    }
    if (output.json)
        output.PrintJson(documents);
    else if (all.empty())
        output.Say("There are no backups.");
    else
        output.Table({}, rows);
    return ExitCode::eDone;
}

ExitCode Undo(const Context& context, const Options& options) {
    const Backups backups;
    if (options.number == 0)
        return List(context.output, backups);
    ChangedSettings changed;
    {
        const HeldStore store(context, OpenMode::eReadWrite);
        TellIfAbandoned(context, store.lock);
        const std::vector<Backup> all = backups.List();
        if (options.number > all.size())
            throw BadInput("There is no backup " + std::to_string(options.number) + ".",
                           "See which there are: kora4ctl undo");
        changed = ApplyPlan(context, backups.Read(all[options.number - 1]), store, "undo");
    }
    Output& output = context.output;
    if (output.json) {
        output.PrintJson(DocumentOf(changed));
        return ExitCode::eDone;
    }
    PrintDifferences(output, changed.changes);
    output.Say(changed.changes.empty()
                   ? "The settings already match the backup; nothing was written."
                   : CountOf(changed.changes.size(), "value") +
                         " restored: " + ChangeCounts(changed.changes).InWords() + ".");
    return ExitCode::eDone;
}

}  // namespace

void AddUndo(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "undo",
                "list the backups of the settings, or restore one", Undo);
    verb.add_option("N", options.number, "the number of the backup; 1 is the newest")
        ->transform(Within(std::size_t{1}, cMostBackups));
    verb.footer(cFooter);
}

}  // namespace kora4::tools
