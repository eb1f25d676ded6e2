// SPDX-License-Identifier: MIT
// kora4ctl load: the settings of a document into the store, all of them or none.
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string file;
    bool dryRun = false;
    bool merge = false;
};

constexpr char cFooter[] =
    "The whole document is checked before anything is written; one bad value and nothing is.\n"
    "Afterwards the settings that the document's scope covers are those of the document: what\n"
    "it does not have is deleted, and its default is in force. With --merge that stays as it "
    "is.\n"
    "When a write fails, or Ctrl-C comes, what was there before is put back. When the program\n"
    "is killed, 'kora4ctl doctor' finds the journal that it left, and undoes or finishes it.\n";

void Tell(Output& output, const std::vector<Difference>& changes, bool dryRun) {
    if (output.json) {
        output.PrintJson(Json{{"dryRun", dryRun}, {"changes", DocumentOf(changes)}});
        return;
    }
    if (changes.empty()) {
        output.Say("The settings are those of the document already; nothing was written.");
        return;
    }
    PrintDifferences(output, changes);
    output.Say(CountOf(changes.size(), "value") +
               (dryRun ? " would change; nothing was written." : " changed."));
}

ExitCode Load(const Context& context, const Options& options) {
    const Plan plan =
        ReadPlan(options.file, options.merge ? Completeness::eMerge : Completeness::eExact);
    std::vector<Difference> changes;
    {
        const HeldStore store(context, options.dryRun ? OpenMode::eRead : OpenMode::eReadWrite);
        TellIfAbandoned(context, store.lock);
        if (options.dryRun)
            changes = Compare(plan, *store);
        else
            changes = ApplyPlan(context, plan, store);
    }
    Tell(context.output, changes, options.dryRun);
    return ExitCode::eDone;
}

}  // namespace

void AddLoad(Context& context) {
    const auto [verb, options] = AddVerb(context.root, context, "load",
                                         "take the settings of a document, all or none", Load);
    verb.add_option("FILE", options.file, "a document of 'dump'; - is standard input")
        ->required();
    verb.add_flag("--dry-run", options.dryRun, "only tell what would change");
    verb.add_flag("--merge", options.merge, "leave alone what the document does not have");
    verb.footer(cFooter);
}

}  // namespace kora4::tools
