// SPDX-License-Identifier: MIT
// The mutex that serialises readers and writers of the store: shared by every process of the
// session.
#pragma once

#include "contract/result.h"
#include "platform/lock_hold.h"

namespace kora4 {

// Owns the handle of the mutex. One object serves all threads of a client; Create and
// FreeMutex are called by one of them, before and after all others.
class CAPABILITY("named mutex") NamedMutex : NonCopyable {
  public:
    ~NamedMutex();

    // E_FAIL when a handle is already held or the mutex can be neither created nor opened.
    HRESULT Create(const char16_t* pwName);
    bool IsCreated() const { return m_hMutex != nullptr; }

    // Waits without time-out. Whatever the wait says, the caller goes on: a mutex that
    // its dead owner left behind counts as owned, and a failed wait must not strand a
    // client that could still read and repair the store.
    void Acquire() ACQUIRE();

    // True while a thread of this process holds the mutex through this object. Only that
    // thread can rely on the answer.
    bool IsAcquired() const { return m_acquired; }

    // E_FAIL when the platform refuses the release.
    HRESULT Release() RELEASE();

    // Closes the handle; the mutex itself lasts as long as any process has one.
    void FreeMutex();

  private:
    void* m_hMutex = nullptr;
    bool m_acquired = false;  // meaningful to the owner of the mutex only
};

// Holds the mutex for the length of a scope.
using MutexHold = LockHold<NamedMutex>;

}  // namespace kora4
