// SPDX-License-Identifier: MIT
// kora4ctl load: the settings of a document into the store, all of them or none.
#include <algorithm>

#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "settings/backup.h"
#include "settings/lint.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string file;
    bool dryRun = false;
    bool merge = false;
    std::optional<std::string> into;
    bool isStored = false;
};

constexpr char cFooter[] =
    "The whole document is checked first; if one value is bad, nothing is written. Values\n"
    "that 'lint' would call errors or warnings are bad, and so are changes of what demo\n"
    "profiles hold (factory values), unless --stored is given.\n"
    "Afterwards the settings in the document's scope are those of the document: a setting\n"
    "that it does not have is deleted, so that its default is in effect; with --merge it is\n"
    "kept.\n"
    "A backup is kept before anything changes; see 'kora4ctl undo'.\n"
    "If a write fails, or on Ctrl-C, the previous settings are restored. If the program is\n"
    "killed, 'kora4ctl doctor' finds the journal that it left and undoes or finishes the\n"
    "load.\n"
    "\nWith --into, the profile gets the values of the document. One that does not exist is\n"
    "created, if the document has a name for it; one that does keeps its name.\n";

void Tell(Output& output, const ChangedSettings& changed, bool dryRun) {
    const std::vector<Difference>& changes = changed.changes;
    const ChangeCounts counts(changes);
    if (output.json) {
        Json document = {{"dryRun", dryRun}};
        document.update(DocumentOf(changed));
        output.PrintJson(document);
        return;
    }
    if (changes.empty()) {
        output.Say("The settings already match the document; nothing was written.");
        return;
    }
    PrintDifferences(output, changes);
    output.Say(CountOf(changes.size(), "value") +
               (dryRun ? " would change (" + counts.InWords() + "); nothing was written."
                       : " changed: " + counts.InWords() + ". To undo it: kora4ctl undo 1"));
}

// `lint` only notes them, because they may have been stored on purpose.
void CheckNoFactoryValues(const Plan& plan, StoreAccess& store) {
    const std::vector<Difference> changes = Compare(plan, store);
    const auto found = std::ranges::find_if(changes, [](const Difference& change) {
        return change.value.profile && IsDemoProfile(*change.value.profile);
    });
    if (found != changes.end())
        throw Failure(ExitCode::eRefused,
                      "The document changes factory values, such as " + NameOf(found->value) +
                          " of " + ProfileName(*found->value.profile) +
                          "; nothing was changed.",
                      "Change them with --stored.");
}

// What `lint` would call wrong.
void CheckValid(const Plan& plan, StoreAccess& store) {
    const std::vector<Finding> findings = LintPlan(plan, store);
    if (findings.empty())
        return;
    constexpr std::size_t cMost = 5;
    std::vector<std::string> words;
    for (std::size_t i = 0; i < findings.size() && i < cMost; ++i)
        words.push_back(findings[i].Words());
    if (findings.size() > cMost)
        words.push_back("...");
    throw BadInput(Counted(findings.size(), "value is", "values are") +
                       " not valid; nothing was changed: " + Join(words, "; ") + ".",
                   "Correct the document, or load it as it is with --stored.");
}

ExitCode Load(const Context& context, const Options& options) {
    const auto completeness = options.merge ? Completeness::eMerge : Completeness::eExact;
    std::optional<std::uint32_t> into;
    if (options.into)
        into = ProfileNamed(context, *options.into);
    Plan plan = into ? ReadProfilePlan(context, options.file, *into, completeness)
                     : ReadPlan(context, options.file, completeness);
    ChangedSettings changed;
    {
        const HeldStore store(context, options.dryRun ? OpenMode::eRead : OpenMode::eReadWrite);
        TellIfAbandoned(context, store.lock);
        if (into)
            CheckTakesValues(plan, *into, *store);
        if (!options.isStored) {
            CheckValid(plan, *store);
            CheckNoFactoryValues(plan, *store);
        }
        if (options.dryRun)
            changed.changes = Compare(plan, *store);
        else
            changed = ApplyPlan(context, plan, store, "load");
    }
    Tell(context.output, changed, options.dryRun);
    return ExitCode::eDone;
}

}  // namespace

void AddLoad(Context& context) {
    const auto [verb, options] = AddVerb(context.root, context, "load",
                                         "load the settings of a document, all or none", Load);
    verb.add_option("FILE", options.file, "a document of 'dump', or - for standard input")
        ->required();
    verb.add_flag("--dry-run", options.dryRun, "only print what would change");
    verb.add_flag("--merge", options.merge, "keep settings that the document does not have");
    verb.add_option("--into", options.into,
                    "into this profile, from a document of 'dump --profile'")
        ->type_name("P");
    verb.add_flag("--stored", options.isStored,
                  "also load values that 'lint' calls errors or warnings");
    verb.footer(cFooter);
}

}  // namespace kora4::tools
