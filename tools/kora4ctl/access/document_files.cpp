// SPDX-License-Identifier: MIT
// Reading, applying and printing that the verbs of the settings document share.
#include "kora4ctl/access/document_files.h"

#include "base/shown_text.h"
#include "registry/journal.h"
#include "settings/backup.h"
#include "settings/transaction.h"

namespace kora4::tools {

void TellIfAbandoned(const Context& context, const StoreLock& lock) {
    if (lock.WasAbandoned())
        context.output.Say(
            "The program that last held the settings store died while holding it; what it was "
            "writing "
            "may be incomplete. Run 'kora4ctl doctor' to check.");
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

ChangedSettings ApplyPlan(const Context& context, const Plan& plan, const HeldStore& store,
                          const std::string& verb) {
    const auto isInterrupted = [&context] { return context.interrupt.IsRequested(); };
    std::string backup;
    const auto keepBackup = [&] { backup = Backups().Keep(verb, *store, store.lock); };
    Applied applied = Apply(plan, *store, store.lock, JournalFile(DefaultJournalPath()),
                            isInterrupted, keepBackup);
    if (!applied.movedJournal.empty())
        context.output.Say(
            "A journal that this program cannot read, or did not make, was in the way. It is "
            "now " +
            applied.movedJournal + ".");
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

}  // namespace kora4::tools
