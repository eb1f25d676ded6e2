// SPDX-License-Identifier: MIT
// A client that makes the built library say everything that it can be made to say.
#ifndef KORA4_TESTS_FAULTS_TRACE_SCENARIO_H
#define KORA4_TESTS_FAULTS_TRACE_SCENARIO_H

#include <cstdint>
#include <functional>

#include "faults/debug_output.h"

namespace kora4::test {

// Loads the library, lets it take `word` for its flag word, and clears `output`. Then every
// method in its accepted, refused and failing forms, a notification, registration, and the
// end of the library. The calling thread lives in a single-threaded apartment.
void DriveEveryLine(std::uint32_t word, DebugOutput& output);

// Every method and the registration, on an object whose monitor stays silent: with a `word`
// without the categories of threads, modules and notifications all lines between the two
// calls come from this thread, and nothing interleaves in the log files. `onReady` runs when
// the object is initialised, just before `output` is cleared; `onDone` when all is said, and
// then the object goes.
void DriveFromOneThread(std::uint32_t word, DebugOutput& output,
                        const std::function<void()>& onReady,
                        const std::function<void()>& onDone);

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_TRACE_SCENARIO_H
