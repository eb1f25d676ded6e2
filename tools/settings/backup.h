// SPDX-License-Identifier: MIT
// The settings as they were before a verb changed many of them: the last ten, each a settings
// document of scope all, beside the journal.
#pragma once

#include <string>
#include <vector>

#include "process/guarded_folder.h"
#include "registry/store_lock.h"
#include "settings/document.h"

namespace kora4::tools {

// One of them.
struct Backup {
    std::string name;  // of the file
    std::string time;  // "2026-11-22T09:17:05.123Z"
    std::string verb;  // that was about to change the settings
};

inline constexpr std::size_t cMostBackups = 10;

// The backups in a folder. Another user's, links and the like are none (guarded_folder.h).
class Backups {
  public:
    explicit Backups(GuardedFolder folder = GuardedFolder(DataFolder()))
        : m_folder(std::move(folder)) {}

    // Writes what is stored now, removes what is older than the last ten, and gives the path.
    // Failure with eFailed when it cannot be written; nothing was changed then.
    std::string Keep(const std::string& verb, StoreAccess& store, const StoreLock& lock) const;

    // The newest first.
    std::vector<Backup> List() const;
    std::string PathOf(const Backup& backup) const { return m_folder.PathOf(backup.name); }

    // What restores it, application keys excepted: they stay as they are. Failure when it
    // cannot be read.
    Plan Read(const Backup& backup) const;

  private:
    std::string NewName(const std::string& verb) const;

    GuardedFolder m_folder;
};

// How many values a change has written and deleted.
struct ChangeCounts {
    explicit ChangeCounts(const std::vector<Difference>& changes);

    std::size_t written = 0;
    std::size_t deleted = 0;

    // "2 written, 1 deleted"
    std::string InWords() const;
};

}  // namespace kora4::tools
