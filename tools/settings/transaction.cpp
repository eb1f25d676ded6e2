// SPDX-License-Identifier: MIT
// Applies a plan under a journal, undoes it, and recovers from a journal that was left.
#include "settings/transaction.h"

#include <algorithm>

#include "base/failure.h"
#include "base/text.h"

namespace kora4::tools {
namespace {

// Values before what announces them: those of the dynamic keys announce themselves. Those of
// the application keys last: nothing but this process puts them back.
std::vector<Difference> InOrderOfWriting(std::vector<Difference> differences) {
    std::stable_sort(differences.begin(), differences.end(),
                     [](const Difference& one, const Difference& other) {
                         return one.value.keySet < other.value.keySet;
                     });
    return differences;
}

Journal JournalOf(const std::vector<Difference>& differences) {
    Journal journal;
    for (const Difference& difference : differences) {
        journal.entries.push_back({difference.value.keySet, difference.value.key,
                                   difference.stored, difference.wanted});
        AddAnnouncement(journal.counters, difference.value);
    }
    return journal;
}

// Only values of the store are ever written from a journal, whoever wrote the file.
bool IsOfStore(const Journal& journal) {
    return std::all_of(journal.entries.begin(), journal.entries.end(),
                       [](const JournalEntry& entry) {
                           return FindInSchema(entry.keySet, entry.key) != nullptr;
                       }) &&
           std::all_of(journal.counters.begin(), journal.counters.end(),
                       [](const PropertyKey& counter) {
                           return FindInSchema(eKeySetDynamic, counter) != nullptr;
                       });
}

// Where an unreadable journal is from now on; empty when there was none.
std::string RefuseOverJournal(const JournalFile& file) {
    Journal journal;
    const JournalFile::State state = file.Read(journal);
    // A journal that was cut short never touched the store; this one replaces it.
    if (state == JournalFile::State::eAbsent || state == JournalFile::State::eCutShort)
        return {};
    if (state == JournalFile::State::eUnreadable || !IsOfStore(journal))
        return file.MoveAside();
    throw Failure(ExitCode::eFailed,
                  "An earlier change of the settings was interrupted; its journal is " +
                      file.Path() + ". Nothing was changed.",
                  "Run 'kora4ctl doctor' first; it undoes or finishes that change.");
}

// Restores every value that has changed and announces it again. Continues after a refusal and
// throws the first one at the end.
void Restore(StoreAccess& store, const Journal& journal) {
    std::exception_ptr refusal;
    const auto attempt = [&refusal](auto step) {
        try {
            step();
        } catch (const std::exception&) {
            if (!refusal)
                refusal = std::current_exception();
        }
    };
    for (const JournalEntry& entry : journal.entries) {
        attempt([&] {
            if (store.Read(entry.keySet, entry.key) != entry.before)
                store.Put(entry.keySet, entry.key, entry.before);
        });
    }
    for (const PropertyKey& counter : journal.counters)
        attempt([&] { store.Bump(counter); });
    if (refusal)
        std::rethrow_exception(refusal);
}

[[noreturn]] void GiveUp(StoreAccess& store, const Journal& journal, const JournalFile& file,
                         const std::string& reason) {
    try {
        Restore(store, journal);
    } catch (const std::exception& failure) {
        throw Failure(ExitCode::eFailed,
                      reason + " Restoring the previous values failed, too: " + failure.what() +
                          " The journal is still " + file.Path() + ".",
                      "Run 'kora4ctl doctor' to restore the rest.");
    }
    file.Remove();
    throw Failure(ExitCode::eFailed, reason + " The previous values were restored.");
}

void WriteAll(StoreAccess& store, const Journal& journal, const IsInterrupted& isInterrupted) {
    const auto check = [&isInterrupted] {
        if (isInterrupted && isInterrupted())
            throw Failure(ExitCode::eFailed, "Interrupted.");
    };
    for (const JournalEntry& entry : journal.entries) {
        check();
        store.Put(entry.keySet, entry.key, entry.after);
    }
    for (const PropertyKey& counter : journal.counters) {
        check();
        store.Bump(counter);
    }
}

// A step with the journal, and in which sentences its failure stands.
template <typename Step>
void Explained(const std::string& before, const std::string& after, Step step) {
    try {
        step();
    } catch (const Failure& failure) {
        throw Failure(failure.Code(), before + failure.what() + after, failure.Next());
    }
}

// ---- Recovery -----------------------------------------------------------------------------

std::string PlaceOf(const JournalEntry& entry) {
    const SchemaValue* const value = FindInSchema(entry.keySet, entry.key);
    return value ? PlaceOf(*value) : ValueName(entry.key);
}

// What a journal says about the values that the store holds now.
struct Examination {
    Recovered found;
    Journal journal;
    std::vector<JournalEntry> toRestore;
};

void ExamineValues(Examination& examination, StoreAccess& store) {
    bool isAnyOld = false;
    for (const JournalEntry& entry : examination.journal.entries) {
        const std::optional<StoredValue> present = store.Read(entry.keySet, entry.key);
        if (present == entry.before)
            isAnyOld = true;
        else if (entry.keySet == eKeySetApp)
            examination.found.notRestored.push_back(PlaceOf(entry));
        else if (present == entry.after)
            examination.toRestore.push_back(entry);
        else
            examination.found.foreign.push_back(PlaceOf(entry));
    }
    const bool isComplete = !isAnyOld && !examination.toRestore.empty();
    examination.found.outcome = isComplete ? Recovery::eFinished : Recovery::eUndone;
    if (isComplete) {
        examination.toRestore.clear();
        examination.found.notRestored.clear();
    }
    for (const JournalEntry& entry : examination.toRestore)
        examination.found.restored.push_back(PlaceOf(entry));
}

Examination Examine(StoreAccess& store, const JournalFile& file) {
    Examination examination;
    examination.found.journal = file.Path();
    switch (file.Read(examination.journal)) {
        case JournalFile::State::eAbsent:
            break;
        case JournalFile::State::eCutShort:
            examination.found.outcome = Recovery::eNotBegun;
            break;
        case JournalFile::State::eWhole:
            if (IsOfStore(examination.journal)) {
                ExamineValues(examination, store);
                break;
            }
            [[fallthrough]];
        case JournalFile::State::eUnreadable:
            examination.found.outcome = Recovery::eUnreadable;
            break;
    }
    return examination;
}

}  // namespace

Applied Apply(const Plan& plan, StoreAccess& store, const StoreLock&, const JournalFile& file,
              const IsInterrupted& isInterrupted, const std::function<void()>& keepBackup) {
    Applied applied;
    applied.movedJournal = RefuseOverJournal(file);
    applied.changes = Compare(plan, store);
    if (applied.changes.empty())
        return applied;
    if (keepBackup)
        keepBackup();
    const Journal journal = JournalOf(InOrderOfWriting(applied.changes));
    applied.announcements = journal.counters.size();
    Explained("The journal cannot be written. ", " Nothing was changed.",
              [&] { file.Write(journal); });
    try {
        WriteAll(store, journal, isInterrupted);
    } catch (const std::exception& failure) {
        GiveUp(store, journal, file, failure.what());
    }
    Explained("All values were written, but the journal cannot be removed. ", "",
              [&] { file.Remove(); });
    return applied;
}

Recovered Recover(StoreAccess& store, const StoreLock&, const JournalFile& file) {
    Examination examination = Examine(store, file);
    const Recovery outcome = examination.found.outcome;
    if (outcome == Recovery::eUnreadable)
        examination.found.movedTo = file.MoveAside();
    if (outcome == Recovery::eNothing || outcome == Recovery::eUnreadable)
        return examination.found;
    for (const JournalEntry& entry : examination.toRestore)
        store.Put(entry.keySet, entry.key, entry.before);
    for (const PropertyKey& counter : examination.journal.counters)
        store.Bump(counter);
    file.Remove();
    return examination.found;
}

Recovered Inspect(StoreAccess& store, const JournalFile& file) {
    Recovered found = Examine(store, file).found;
    found.isDone = false;
    return found;
}

std::string Recovered::InWords() const {
    std::string words;
    switch (outcome) {
        case Recovery::eNothing:
            return "No change of the settings was interrupted.";
        case Recovery::eUnreadable:
            return "There is a journal that this program cannot read, or did not write: " +
                   journal + ". Nothing was restored from it." +
                   (isDone ? " It is now " + movedTo + "." : "");
        case Recovery::eNotBegun:
            return std::string(
                       "A change of the settings was interrupted before it changed "
                       "anything; its journal ") +
                   (isDone ? "was removed." : "can be removed.");
        case Recovery::eFinished:
            words = std::string(
                        "A change of the settings was interrupted after its last "
                        "value; it ") +
                    (isDone ? "was announced to the clients." : "has yet to be announced.");
            break;
        case Recovery::eUndone:
            words = "A change of the settings was interrupted partway; " +
                    Counted(restored.size(), "value", "values") +
                    (!isDone                ? " will be"
                     : restored.size() == 1 ? " was"
                                            : " were") +
                    " restored.";
            break;
    }
    if (!foreign.empty())
        words += " " + Counted(foreign.size(), "value", "values") +
                 " changed by another program since then " +
                 (foreign.size() == 1 ? "is kept." : "are kept.");
    if (!notRestored.empty())
        words += " Application keys are never restored: check " + Join(notRestored, ", ") + ".";
    return words;
}

}  // namespace kora4::tools
