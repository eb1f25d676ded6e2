// SPDX-License-Identifier: MIT
// Reading, applying and printing that the verbs of the settings document share.
#include "kora4ctl/access/document_files.h"

#include <algorithm>

#include "base/shown_text.h"
#include "contract/profiles.h"
#include "registry/journal.h"
#include "settings/backup.h"
#include "settings/content.h"
#include "settings/transaction.h"

namespace kora4::tools {

void TellIfAbandoned(const Context& context, const StoreLock& lock) {
    if (lock.WasAbandoned())
        context.output.Say(
            "The program that last held the settings store ended without releasing it; what it "
            "was writing may be incomplete. Run 'kora4ctl doctor' to check.");
}

void EndIfInterrupted(const Context& context) {
    if (context.interrupt.IsRequested())
        throw Failure(ExitCode::eFailed, "Interrupted; nothing was changed.");
}

Plan ReadPlan(const Context& context, const std::string& path, Completeness completeness) {
    return ParseFile(path, [&](const std::string& text) {
        return ReadDocument(text, completeness, [&context] { EndIfInterrupted(context); });
    });
}

Plan ReadProfilePlan(const Context& context, const std::string& path, std::uint32_t into,
                     Completeness completeness) {
    return ParseFile(path, [&](const std::string& text) {
        return ReadProfileDocument(text, into, completeness,
                                   [&context] { EndIfInterrupted(context); });
    });
}

void CheckTakesValues(Plan& plan, std::uint32_t into, StoreAccess& store) {
    const std::string word = ProfileName(into);
    if (IsDemoProfile(into))
        throw BadInput(word + " is a demo profile; its values are the factory values.",
                       "Choose one of movie, music, games, and " + CustomProfiles() + ".");
    if (!IsCustomProfile(into))
        return;
    const auto isName = [](const PlannedValue& one) { return one.value.role == Role::eName; };
    if (Effective(NameValue(into), store))
        std::erase_if(plan.values, isName);
    else if (std::none_of(plan.values.begin(), plan.values.end(), isName))
        throw Failure(ExitCode::eRefused, word + " does not exist; nothing was changed.",
                      "Create it: kora4ctl profile create " + word + " NAME");
}

namespace {

// The demo that the changes have ended, if any.
std::optional<std::uint32_t> DemoLeftBy(const std::vector<Difference>& changes) {
    for (const Difference& change : changes)
        if (change.value.role == Role::eActiveProfile && change.stored)
            if (const auto profile = change.stored->AsDword();
                profile && IsDemoProfile(*profile))
                return profile;
    return {};
}

}  // namespace

ChangedSettings ApplyPlan(const Context& context, const Plan& plan, const HeldStore& store,
                          const std::string& verb) {
    const auto isInterrupted = [&context] { return context.interrupt.IsRequested(); };
    std::string backup;
    const auto keepBackup = [&] {
        if (!verb.empty())
            backup = Backups().Keep(verb, *store, store.lock);
    };
    Applied applied = Apply(plan, *store, store.lock, JournalFile(DefaultJournalPath()),
                            isInterrupted, keepBackup);
    if (!applied.movedJournal.empty())
        context.output.Say(
            "A journal that this program cannot read, or did not write, was moved aside: '" +
            applied.movedJournal + "'.");
    if (const std::optional<std::uint32_t> demo = DemoLeftBy(applied.changes))
        context.output.Say(ProfileName(*demo) + " was left.");
    if (std::ranges::any_of(applied.changes, [](const Difference& change) {
            return change.value.keySet == eKeySetApp;
        }))
        context.output.Say(
            "Command lines of companion programs were changed, which 'undo' does not restore.");
    return {std::move(applied.changes), std::move(backup)};
}

std::string ToText(const Json& document) {
    return ShownLines(document.dump(2)) + "\n";
}

void PrintDifferences(Output& output, const std::vector<Difference>& differences) {
    for (const Difference& difference : differences)
        output.Print(difference.Line());
}

Json DocumentOf(const std::vector<Difference>& differences) {
    Json list = Json::array();
    for (const Difference& difference : differences)
        list.push_back(difference.Document());
    return list;
}

Json DocumentOf(const ChangedSettings& changed) {
    const ChangeCounts counts(changed.changes);
    return {{"changes", DocumentOf(changed.changes)},
            {"written", counts.written},
            {"deleted", counts.deleted},
            {"backup", OrNull(changed.backup)}};
}

std::string EndOf(const ChangedSettings& changed) {
    return ": " + ChangeCounts(changed.changes).InWords() + "." +
           (changed.backup.empty() ? "" : " To undo it: kora4ctl undo 1");
}

}  // namespace kora4::tools
