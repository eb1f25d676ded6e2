// SPDX-License-Identifier: MIT
// Names, writes, counts and reads the backups.
#include "settings/backup.h"

#include <windows.h>

#include <algorithm>

#include "base/failure.h"
#include "base/shown_text.h"
#include "base/utc_time.h"

namespace kora4::tools {
namespace {

// "backup-20261122T091705123Z-load.json": in the order of their times.
constexpr char cBegin[] = "backup-";
constexpr char cEnd[] = ".json";
constexpr std::size_t cStampChars = 19;

std::string StampOf(const std::string& name) {
    return name.substr(sizeof cBegin - 1, cStampChars);
}

}  // namespace

// Later than all that are there, whose clock may have been ahead of this one.
std::string Backups::NewName(const std::string& verb) const {
    UtcTime time = UtcTime::Now();
    const std::vector<Backup> all = List();
    if (!all.empty() && StampOf(all.front().name) >= time.FileStamp())
        time = UtcTime::FromFileStamp(StampOf(all.front().name))->Next();
    return cBegin + time.FileStamp() + "-" + verb + cEnd;
}

std::string Backups::Keep(const std::string& verb, StoreAccess& store, const StoreLock&) const {
    try {
        m_folder.Prepare();
        const std::string name = NewName(verb);
        m_folder.Write(name, ShownLines(Dump(store, Scope::eAll).dump(2)) + "\n");
        const std::vector<Backup> all = List();
        for (std::size_t i = cMostBackups; i < all.size(); ++i)
            m_folder.Remove(all[i].name);
        return m_folder.PathOf(name);
    } catch (const Failure& failure) {
        throw Failure(failure.Code(),
                      "The settings cannot be backed up. " + std::string(failure.what()) +
                          " Nothing was changed.",
                      failure.Next());
    }
}

std::vector<Backup> Backups::List() const {
    constexpr std::size_t cPrefix = sizeof cBegin - 1;
    std::vector<Backup> backups;
    for (const std::string& name : m_folder.Names(cBegin)) {
        const std::size_t verb = cPrefix + cStampChars + 1;
        if (!name.ends_with(cEnd) || name.size() <= verb + sizeof cEnd - 1)
            continue;
        const std::optional<UtcTime> time = UtcTime::FromFileStamp(StampOf(name));
        if (!time)
            continue;
        backups.push_back(
            {name, time->Iso(), name.substr(verb, name.size() - verb - (sizeof cEnd - 1))});
    }
    std::reverse(backups.begin(), backups.end());
    return backups;
}

Plan Backups::Read(const Backup& backup) const {
    Plan plan;
    try {
        plan = ReadDocument(m_folder.Read(backup.name));
    } catch (const Failure& failure) {
        throw Failure(failure.Code(), "'" + PathOf(backup) + "': " + failure.what(),
                      "See which other backups there are: kora4ctl undo");
    }
    std::erase_if(plan.values, [](const PlannedValue& planned) {
        return planned.value.keySet == eKeySetApp;
    });
    return plan;
}

ChangeCounts::ChangeCounts(const std::vector<Difference>& changes) {
    for (const Difference& change : changes)
        ++(change.wanted ? written : deleted);
}

std::string ChangeCounts::InWords() const {
    return std::to_string(written) + " written, " + std::to_string(deleted) + " deleted";
}

}  // namespace kora4::tools
