// SPDX-License-Identifier: MIT
// The length of a scope for which a lock is held. Platform-free files use it, too.
#pragma once

#include "platform/non_copyable.h"
#include "platform/thread_annotations.h"

namespace kora4 {

// `Lock` has Acquire and Release.
template <typename Lock>
class SCOPED_CAPABILITY LockHold : NonCopyable {
  public:
    explicit LockHold(Lock& lock) ACQUIRE(lock) : m_lock(lock) { m_lock.Acquire(); }
    ~LockHold() RELEASE() { m_lock.Release(); }

  private:
    Lock& m_lock;
};

}  // namespace kora4
