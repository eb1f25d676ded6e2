// SPDX-License-Identifier: MIT
// The table of checks and how one is run: what it needs first, and what becomes of a check
// that throws.
#include "kora4ctl/doctor/doctor.h"

#include <new>

#include "base/failure.h"
#include "kora4ctl/doctor/checks.h"

namespace kora4::tools {
namespace {

constexpr DoctorCheck cChecks[] = {
    {"registration", "the class, its file, versions, threading model", eNothing,
     CheckRegistration},
    {"keys", "the store's keys: present, readable, writable", eNothing, CheckKeys},
    {"access", "their access lists grant every user access", eNothing, CheckAccess},
    {"mutex", "the store's mutex can be acquired", eNothing, CheckMutex},
    {"load", "no load was interrupted; repairs one that was", eStore | eMutex, CheckLoad},
    {"values", "every stored value can be read and is in range", eStore, CheckValues},
    {"profile", "the active profile exists; no demo was left on", eStore, CheckProfile},
    {"custom-profiles", "their names can be read", eStore, CheckCustomProfiles},
    {"trace", "what is traced, and what it costs", eStore, CheckTrace},
    {"library", "an object can be created, initialised and called", eLibrary | eStore | eMutex,
     CheckLibrary},
    {"engine", "a known engine is installed", eStore, CheckEngine},
    {"levels", "the engine publishes levels", eStore, CheckLevels},
    {"notifications", "a client is notified of a change (with --deep)",
     eLibrary | eStore | eMutex | eDeep, CheckNotifications},
};

// Why a check cannot run; empty when it can.
std::string Obstacle(unsigned needs, const Examination& examination) {
    if (needs & eLibrary && !examination.isLibraryThere)
        return "the library cannot be loaded";
    if (needs & eStore && !examination.isStoreThere)
        return "the store cannot be read";
    if (needs & eMutex && !examination.isMutexFree)
        return "the store's mutex cannot be acquired";
    return {};
}

CheckResult BrokenOff(const std::string& what, const std::string& next) {
    CheckResult result;
    result.Error("This check failed: " + what, next);
    return result;
}

}  // namespace

std::span<const DoctorCheck> DoctorChecks() {
    return cChecks;
}

std::optional<CheckResult> RunCheck(const DoctorCheck& check, Examination& examination) {
    if (check.needs & eDeep && !examination.isDeep)
        return {};
    if (const std::string obstacle = Obstacle(check.needs, examination); !obstacle.empty()) {
        CheckResult result;
        result.Note("Skipped: " + obstacle + ".");
        return result;
    }
    try {
        return check.run(examination);
    } catch (const Failure& failure) {
        return BrokenOff(failure.what(), failure.Next());
    } catch (const std::bad_alloc&) {
        return BrokenOff("Out of memory.", "Close other programs.");
    } catch (const std::exception& error) {
        return BrokenOff(std::string("unexpected error: ") + error.what(), "");
    }
}

OpenedStore::OpenedStore(const Examination& examination, OpenMode mode)
    : store(OpenStore(mode)) {
    // Without the mutex the values may not fit together, which beats reading nothing.
    if (examination.isMutexFree)
        lock.emplace(examination.patience, examination.context.interrupt.Event());
}

}  // namespace kora4::tools
