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

// Where a journal lives: %ProgramData%\KORA4\load.journal.
std::string DefaultJournalPath();

// The file of a journal. All paths are UTF-8.
class JournalFile {
  public:
    explicit JournalFile(std::string path) : m_path(std::move(path)) {}

    const std::string& Path() const { return m_path; }

    // Failure with eFailed when it cannot be written whole and flushed.
    void Write(const Journal& journal) const;
    // The file and what a broken-off Write left beside it. Failure with eFailed when the
    // platform refuses.
    void Remove() const;

    // What was found in the place of the journal.
    enum class State {
        eAbsent,
        eCutShort,  // writing it was interrupted: the store was not touched
        eWhole,
        eUnreadable,  // whole and yet no journal, or one of a newer program
    };
    // The state, and the journal when it is whole. Failure with eFailed when the file is
    // there and cannot be opened.
    State Read(Journal& journal) const;

  private:
    std::string m_path;
};

}  // namespace kora4::tools
