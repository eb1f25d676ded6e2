// SPDX-License-Identifier: MIT
// How the library and the tools create or open the store's mutex: one way for both.
#pragma once

#include <windows.h>

namespace kora4 {

// The two calls that CreateOrOpenMutex makes, replaceable by tests.
struct MutexCalls {
    decltype(&CreateMutexW) create = &CreateMutexW;
    decltype(&OpenMutexW) open = &OpenMutexW;
};

// The caller closes the handle; null, with GetLastError set, when there is none. The caller
// does not own the mutex yet.
//
// Creating asks for every right to a mutex that exists. One that a program with another token
// made, an elevated one for instance, grants less: SYNCHRONIZE is all that waiting and
// releasing need. (Wine grants that much whatever the access list says, Windows does not.)
inline HANDLE CreateOrOpenMutex(const char16_t* pwName, const MutexCalls& calls = {}) {
    const auto* const pwWide = reinterpret_cast<const wchar_t*>(pwName);
    const HANDLE created = calls.create(nullptr, FALSE, pwWide);
    if (created || GetLastError() != ERROR_ACCESS_DENIED)
        return created;
    return calls.open(SYNCHRONIZE, FALSE, pwWide);
}

}  // namespace kora4
