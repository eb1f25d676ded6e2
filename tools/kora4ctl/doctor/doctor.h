// SPDX-License-Identifier: MIT
// What `doctor` looks at: a table of checks, each by itself.
#pragma once

#include <windows.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "kora4ctl/doctor/diagnosis.h"
#include "process/program.h"
#include "registry/registry_store.h"
#include "registry/store_lock.h"

namespace kora4::tools {

// What the command line asks for, and what later checks learn from earlier ones.
struct Examination {
    const Context& context;
    bool isDryRun = false;
    bool isDeep = false;
    DWORD patience = 0;  // milliseconds, for whatever may hang

    bool isStoreThere = false;    // keys: the store can be read
    bool isMutexFree = false;     // mutex: somebody who takes it gives it back
    bool isLibraryThere = false;  // registration: an object can be made
    bool isSilent = false;        // library: the levels that it reads are silence
    bool hasEngine = false;       // engine: a mask is stored
    // A call hangs on a thread of this process; only the end of the process ends it.
    bool hasHungThread = false;
};

// What one check found.
struct CheckResult : Diagnosis {
    std::string summary;  // what there is, when nothing is wrong
};

// A check whose needs are not met is not run.
enum Needs : unsigned { eNothing = 0, eStore = 1, eMutex = 2, eLibrary = 4, eDeep = 8 };

using DoctorCheckRun = CheckResult(Examination& examination);

// One row of the table of checks.
struct DoctorCheck {
    const char* name;
    const char* summary;  // for --help
    unsigned needs;
    DoctorCheckRun* run;
};

// In the order in which they run.
std::span<const DoctorCheck> DoctorChecks();

// Runs one check; what it throws is a finding of it. None when it is asked for only.
std::optional<CheckResult> RunCheck(const DoctorCheck& check, Examination& examination);

// Opens the store and holds its mutex, which is given back in reasonable time, for a scope.
struct OpenedStore {
    explicit OpenedStore(const Examination& examination, OpenMode mode = OpenMode::eRead);

    std::unique_ptr<StoreAccess> store;
    std::optional<StoreLock> lock;

    StoreAccess& operator*() const { return *store; }
    StoreAccess* operator->() const { return store.get(); }
};

}  // namespace kora4::tools
