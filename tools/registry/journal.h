// SPDX-License-Identifier: MIT
// What a change of many values leaves on disk while it runs, so that it can be undone or
// finished after its process was killed.
//
// The file is written beside its place, flushed and moved there before the first value of
// the store is written, and removed after the last: a journal that is not whole means that
// the store was not touched.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "process/guarded_folder.h"
#include "registry/store_access.h"

namespace kora4::tools {

// A value that changes, before and after. None: absent.
struct JournalEntry {
    KORA4KeySet keySet = eKeySetStatic;
    PropertyKey key{};
    std::optional<StoredValue> before;
    std::optional<StoredValue> after;
};

// Everything that one change of many values will write.
struct Journal {
    // In the order of writing: static and app values, then dynamic ones.
    std::vector<JournalEntry> entries;
    // The counters (dynamic keys) that announce them.
    std::vector<PropertyKey> counters;
};

// Where a journal lives: load.journal in the folder of guarded_folder.h.
std::string DefaultJournalPath();

// The file of a journal. All paths are UTF-8.
class JournalFile {
  public:
    explicit JournalFile(const std::string& path,
                         const FileSecurity& security = PlatformFileSecurity());

    const std::string& Path() const { return m_path; }

    // Failure with eFailed when it cannot be written whole and flushed.
    void Write(const Journal& journal) const;
    // The file and what a broken-off Write left beside it. Failure with eFailed when the
    // platform refuses.
    void Remove() const;
    // Puts an unreadable journal where nobody looks for one, and tells where. Failure with
    // eFailed when the platform refuses.
    std::string MoveAside() const;

    // Whether one is there, whole or not.
    bool IsThere() const;

    // What was found in the place of the journal.
    enum class State {
        eAbsent,
        eCutShort,  // writing it was interrupted: the store was not touched
        eWhole,
        // Whole and yet no journal, or one of a newer program; or nothing that this program
        // has put there.
        eUnreadable,
    };
    // The state, and the journal when it is whole.
    State Read(Journal& journal) const;

  private:
    std::string m_path;
    GuardedFolder m_folder;
    std::string m_name;
};

}  // namespace kora4::tools
