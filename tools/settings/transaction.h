// SPDX-License-Identifier: MIT
// Many values at once, or none: what `load` and `lint --fix` do to the store.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "registry/journal.h"
#include "registry/store_access.h"
#include "registry/store_lock.h"
#include "settings/document.h"

namespace kora4::tools {

// Asked before each write; true: stop and put everything back.
using IsInterrupted = std::function<bool()>;

// What Apply has done.
struct Applied {
    std::vector<Difference> changes;  // what was written, in the order of the plan
    std::size_t announcements = 0;    // counters that moved
    std::string movedJournal;         // where an unreadable journal is now; empty: none
};

// Makes the store what the plan says. Writes the journal, the values of the static and app
// keys, those of the dynamic keys, then the counters of the technologies whose fields changed
// and of the table when names changed, and removes the journal. When a step fails or an
// interrupt comes, puts back what was there, moves the counters once more and throws Failure
// with eFailed, which says so; when putting back fails as well, it says that too and the
// journal stays for Recover. A plan that changes nothing writes nothing at all.
//
// `keepBackup` is called when something will change, before the first write; what it throws
// ends the change.
//
// Failure with eFailed, and nothing changed, when a journal is there already; one that cannot
// be read, or that this program did not make, is moved aside.
Applied Apply(const Plan& plan, StoreAccess& store, const StoreLock& lock,
              const JournalFile& journal, const IsInterrupted& isInterrupted = {},
              const std::function<void()>& keepBackup = {});

// What became of a journal that was found.
enum class Recovery {
    eNothing,     // no journal
    eNotBegun,    // the journal was not whole, so the store was not touched; removed
    eUndone,      // some values were not written yet: all are what they were before
    eFinished,    // all values were written: they were announced
    eUnreadable,  // no journal of this program: moved aside
};

// The outcome with the values that it concerns.
struct Recovered {
    Recovery outcome = Recovery::eNothing;
    bool isDone = true;                 // false from Inspect: what Recover would do
    std::string journal;                // its path
    std::vector<std::string> restored;  // "music: volume-leveler", what was put back
    // What somebody else wrote after the break: neither the content before nor the one after
    // the broken load, and so left as it is.
    std::vector<std::string> foreign;
    // Values of the application keys that the load had changed, or was to change. They are
    // command lines, and never written from a file that an administrator need not have made.
    std::vector<std::string> notRestored;
    std::string movedTo;  // where an unreadable journal is now

    // A sentence for each outcome.
    std::string InWords() const;
};

// Looks for the journal of a load whose process is gone (the lock says that it is) and undoes
// it, or finishes it when all values were written. Failure with eFailed when the store refuses
// a write; the journal stays, and Recover can be called again.
Recovered Recover(StoreAccess& store, const StoreLock& lock, const JournalFile& journal);

// What Recover would find, without changing anything.
Recovered Inspect(StoreAccess& store, const JournalFile& journal);

}  // namespace kora4::tools
