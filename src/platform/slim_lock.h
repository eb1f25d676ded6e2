// SPDX-License-Identifier: MIT
// A lock that is held exclusively, for the length of a scope.
#ifndef KORA4_PLATFORM_SLIM_LOCK_H
#define KORA4_PLATFORM_SLIM_LOCK_H

#include <windows.h>

#include "platform/thread_annotations.h"

namespace kora4 {

// Not recursive. Needs no construction at run time.
class CAPABILITY("lock") SlimLock {
  public:
    constexpr SlimLock() = default;
    SlimLock(const SlimLock&) = delete;
    SlimLock& operator=(const SlimLock&) = delete;

    // For SlimHold; every other caller holds the lock by a scope.
    void Acquire() ACQUIRE() { AcquireSRWLockExclusive(&m_lock); }
    void Release() RELEASE() { ReleaseSRWLockExclusive(&m_lock); }

  private:
    SRWLOCK m_lock = SRWLOCK_INIT;
};

// Holds a SlimLock for the length of a scope.
class SCOPED_CAPABILITY SlimHold {
  public:
    explicit SlimHold(SlimLock& lock) ACQUIRE(lock) : m_lock(lock) { m_lock.Acquire(); }
    ~SlimHold() RELEASE() { m_lock.Release(); }
    SlimHold(const SlimHold&) = delete;
    SlimHold& operator=(const SlimHold&) = delete;

  private:
    SlimLock& m_lock;
};

}  // namespace kora4

#endif  // KORA4_PLATFORM_SLIM_LOCK_H
