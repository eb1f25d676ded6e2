// SPDX-License-Identifier: MIT
// Ends a test program whose test hangs.
#ifndef KORA4_TESTS_MULTIPROCESS_WATCHDOG_H
#define KORA4_TESTS_MULTIPROCESS_WATCHDOG_H

#include <windows.h>

namespace kora4::test {

inline constexpr DWORD cTestSeconds = 60;

// What the running test may take from now on, where cTestSeconds would not do.
void AllowSeconds(DWORD seconds);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_WATCHDOG_H
