// SPDX-License-Identifier: MIT
// A lock that is held exclusively, for the length of a scope.
#pragma once

#include <windows.h>

#include "platform/lock_hold.h"

namespace kora4 {

// Not recursive. Needs no construction at run time.
class CAPABILITY("lock") SlimLock : NonCopyable {
  public:
    // For SlimHold; every other caller holds the lock by a scope.
    void Acquire() ACQUIRE() { AcquireSRWLockExclusive(&m_lock); }
    void Release() RELEASE() { ReleaseSRWLockExclusive(&m_lock); }

  private:
    SRWLOCK m_lock = SRWLOCK_INIT;
};

// Holds a SlimLock for the length of a scope.
using SlimHold = LockHold<SlimLock>;

}  // namespace kora4
