// SPDX-License-Identifier: MIT
// Takes the store's mutex with patience, and gives it back.
#include "registry/store_lock.h"

#include "contract/store_mutex.h"
#include "platform/open_mutex.h"
#include "process/win32_failure.h"

namespace kora4::tools {

UniqueHandle OpenStoreMutex() {
    UniqueHandle mutex(CreateOrOpenMutex(cStoreMutexName));
    if (mutex)
        return mutex;
    throw Win32Failure(
        GetLastError(), "The store's mutex cannot be opened",
        "Another program has an object of that name, or keeps the mutex to itself: end it.");
}

StoreLock::StoreLock(DWORD patience, HANDLE interrupt) : m_mutex(OpenStoreMutex()) {
    const HANDLE handles[] = {m_mutex.Get(), interrupt};
    const DWORD count = interrupt ? 2 : 1;
    switch (WaitForMultipleObjects(count, handles, FALSE, patience)) {
        case WAIT_OBJECT_0:
            return;
        case WAIT_ABANDONED_0:
            m_wasAbandoned = true;
            return;
        case WAIT_OBJECT_0 + 1:
            throw Failure(ExitCode::eFailed,
                          "Interrupted while waiting for the store: nothing was done.");
        case WAIT_TIMEOUT:
            throw Failure(ExitCode::eTimedOut,
                          "Another program holds the settings store and does not release it.",
                          "End the program that hangs, or try again later.");
        default:
            throw Win32Failure(GetLastError(), "Waiting for the store's mutex failed");
    }
}

StoreLock::~StoreLock() {
    ReleaseMutex(m_mutex.Get());
}

}  // namespace kora4::tools
