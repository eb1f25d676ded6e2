// SPDX-License-Identifier: MIT
// Every check of the doctor; the table of checks says what each is for.
#pragma once

#include "kora4ctl/doctor/doctor.h"

namespace kora4::tools {

// What registration leaves on the machine, and the mutex.
DoctorCheckRun CheckRegistration, CheckKeys, CheckAccess, CheckMutex;
// What is stored.
DoctorCheckRun CheckLoad, CheckValues, CheckProfile, CheckCustomProfiles, CheckTrace;
// The engine's side of the store.
DoctorCheckRun CheckEngine, CheckLevels;
// The library as a client uses it.
DoctorCheckRun CheckLibrary, CheckNotifications;

}  // namespace kora4::tools
