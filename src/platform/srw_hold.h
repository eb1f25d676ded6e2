// Holds a slim lock exclusively for the length of a scope.
#ifndef KORA4_PLATFORM_SRW_HOLD_H
#define KORA4_PLATFORM_SRW_HOLD_H

#include <windows.h>

namespace kora4 {

class SrwHold {
  public:
    explicit SrwHold(SRWLOCK& lock) : m_lock(lock) { AcquireSRWLockExclusive(&m_lock); }
    ~SrwHold() { ReleaseSRWLockExclusive(&m_lock); }
    SrwHold(const SrwHold&) = delete;
    SrwHold& operator=(const SrwHold&) = delete;

  private:
    SRWLOCK& m_lock;
};

}  // namespace kora4

#endif  // KORA4_PLATFORM_SRW_HOLD_H
