// SPDX-License-Identifier: MIT
// Starting a process that is really started.
#ifndef KORA4_TESTS_SUPPORT_START_PROCESS_H
#define KORA4_TESTS_SUPPORT_START_PROCESS_H

#include <windows.h>

namespace kora4::test {

// `create` calls CreateProcess and gives its result. Where Wine does not run at fixed addresses
// (scripts/wine64.sh), it answers about one in two thousand of these calls with an internal
// error: then the call is made again. Every other failure is the result at once.
template <typename Create>
bool StartProcess(Create&& create) {
    constexpr int cTries = 5;
    for (int i = 0; i < cTries; ++i) {
        if (create())
            return true;
        if (GetLastError() != ERROR_INTERNAL_ERROR)
            return false;
    }
    return false;
}

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_START_PROCESS_H
