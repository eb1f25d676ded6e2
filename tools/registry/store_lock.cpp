// SPDX-License-Identifier: MIT
// Takes the store's mutex with patience, and gives it back.
#include "registry/store_lock.h"

#include <algorithm>

#include "contract/store_mutex.h"
#include "platform/open_mutex.h"
#include "process/win32_failure.h"

namespace kora4::tools {
namespace {

// Milliseconds. Nobody notices a shorter wait.
constexpr DWORD cSilentWait = 2000;

}  // namespace

UniqueHandle OpenStoreMutex() {
    UniqueHandle mutex(CreateOrOpenMutex(cStoreMutexName));
    if (mutex)
        return mutex;
    throw Win32Failure(
        GetLastError(), "The store's mutex cannot be opened",
        "Another program has an object of that name, or keeps the mutex to itself: end it.");
}

StoreLock::StoreLock(DWORD patience, HANDLE interrupt, const std::function<void()>& tellWaiting)
    : m_mutex(OpenStoreMutex()) {
    const auto wait = [&](DWORD milliseconds) {
        const HANDLE handles[] = {m_mutex.Get(), interrupt};
        return WaitForMultipleObjects(interrupt ? 2 : 1, handles, FALSE, milliseconds);
    };
    const DWORD silent = tellWaiting ? std::min(patience, cSilentWait) : patience;
    DWORD result = wait(silent);
    if (result == WAIT_TIMEOUT && silent < patience) {
        tellWaiting();
        result = wait(patience == INFINITE ? INFINITE : patience - silent);
    }
    switch (result) {
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
                          "End the program that hangs, or try again later; 'kora4ctl doctor' "
                          "checks what there is.");
        default:
            throw Win32Failure(GetLastError(), "Waiting for the store's mutex failed");
    }
}

StoreLock::~StoreLock() {
    ReleaseMutex(m_mutex.Get());
}

}  // namespace kora4::tools
