#include "registry/store_lock.h"

#include "common/failure.h"
#include "common/results.h"
#include "store/access/named_mutex.h"

namespace kora4::tools {
namespace {

// Another user's mutex cannot be created again, but opened.
HANDLE OpenMutexOfStore() {
    const auto* const name = reinterpret_cast<const wchar_t*>(cStoreMutexName);
    const HANDLE created = CreateMutexW(nullptr, FALSE, name);
    if (created)
        return created;
    const HANDLE opened = OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, name);
    if (opened)
        return opened;
    throw Failure(ExitCode::eFailed,
                  "The store's mutex cannot be opened: " +
                      InWords(HRESULT_FROM_WIN32(GetLastError())) + ".",
                  "A program of another user may have made it. 'kora4ctl doctor' tells more.");
}

}  // namespace

StoreLock::StoreLock(DWORD patience, HANDLE interrupt) : m_mutex(OpenMutexOfStore()) {
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
                          "Another program holds the settings store and does not let go.",
                          "End the program that hangs, or try again.");
        default:
            throw Failure(ExitCode::eFailed, "The wait for the store's mutex failed: " +
                                                 InWords(HRESULT_FROM_WIN32(GetLastError())) +
                                                 ".");
    }
}

StoreLock::~StoreLock() {
    ReleaseMutex(m_mutex.Get());
}

}  // namespace kora4::tools
