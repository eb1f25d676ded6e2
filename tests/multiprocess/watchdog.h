// SPDX-License-Identifier: MIT
// Ends a test program whose test hangs; how much longer than usual its tests run.
#ifndef KORA4_TESTS_MULTIPROCESS_WATCHDOG_H
#define KORA4_TESTS_MULTIPROCESS_WATCHDOG_H

#include <windows.h>

namespace kora4::test {

inline constexpr DWORD cTestSeconds = 60;

// What the running test may take from now on, where cTestSeconds would not do, in a run of the
// usual length.
void AllowSeconds(DWORD seconds);

// How many times as much as usual a test of repetitions does: 1, or what the program was told.
unsigned Times();

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_WATCHDOG_H
