// SPDX-License-Identifier: MIT
// The mutex that all readers and writers of the store share, held for a scope.
#pragma once

#include <windows.h>

#include <functional>

#include "platform/handles.h"

namespace kora4::tools {

// A handle to it, made or opened as the library does. Failure: eFailed.
UniqueHandle OpenStoreMutex();

// Hold it for one step only, and ask no user meanwhile: every client of the machine's session
// waits. The library may be called from the same thread, unless it waits for another one (to
// start, to unregister). Belongs to the thread that made it.
class StoreLock {
  public:
    // Waits as long as `patience` says, or until `interrupt` is signalled; `tellWaiting` is
    // called after two seconds. Failure: eTimedOut when another program holds the mutex too
    // long, eFailed when interrupted or refused.
    explicit StoreLock(DWORD patience = INFINITE, HANDLE interrupt = nullptr,
                       const std::function<void()>& tellWaiting = {});
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

    // The program that held it before died with it: what it was writing may be half done.
    bool WasAbandoned() const { return m_wasAbandoned; }

  private:
    UniqueHandle m_mutex;
    bool m_wasAbandoned = false;
};

}  // namespace kora4::tools
