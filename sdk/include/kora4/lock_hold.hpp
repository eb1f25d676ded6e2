// SPDX-License-Identifier: MIT
// A lock held for the length of a scope. Include kora4.hpp.
#ifndef KORA4_LOCK_HOLD_HPP
#define KORA4_LOCK_HOLD_HPP

#include <windows.h>

namespace kora4 {
inline namespace v1 {
namespace detail {

class LockHold {
  public:
    explicit LockHold(SRWLOCK& lock) noexcept : m_lock(lock) { AcquireSRWLockExclusive(&lock); }
    ~LockHold() { ReleaseSRWLockExclusive(&m_lock); }
    LockHold(const LockHold&) = delete;
    LockHold& operator=(const LockHold&) = delete;

  private:
    SRWLOCK& m_lock;
};

}  // namespace detail
}  // namespace v1
}  // namespace kora4

#endif  // KORA4_LOCK_HOLD_HPP
