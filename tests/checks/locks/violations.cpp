// SPDX-License-Identifier: MIT
// What clang refuses about locks. As it stands this compiles; with one VIOLATION it must not,
// and the message must have the words below it. violations.sh tries one after the other.
#include "api/callback_guard.h"
#include "platform/slim_lock.h"
#include "store/access/named_mutex.h"

#ifndef VIOLATION
#define VIOLATION 0
#endif

namespace kora4 {

class Account {
  public:
    void Pay(int amount) EXCLUDES(m_lock) {
        const SlimHold hold(m_lock);
        Book(amount);
        *m_pBalance = m_booked;
#if VIOLATION == 1
        // says: acquiring lock 'm_lock' that is already held
        const SlimHold again(m_lock);
#elif VIOLATION == 2
        // says: lock 'm_first' must be acquired before 'm_lock'
        const SlimHold first(m_first);
#endif
    }

    void PayInABody(int amount) {
        const auto body = [&]() REQUIRES(m_lock) { Book(amount); };
        const SlimHold hold(m_lock);
        body();
    }

    void Break(int amount) {
        static_cast<void>(amount);
#if VIOLATION == 3
        // says: cannot call function 'Pay' while lock 'm_lock' is held
        const SlimHold hold(m_lock);
        Pay(amount);
#elif VIOLATION == 4
        // says: reading variable 'm_booked' requires holding lock 'm_lock'
        static_cast<void>(m_booked == amount);
#elif VIOLATION == 5
        // says: writing variable 'm_booked' requires holding lock 'm_lock' exclusively
        m_booked = amount;
#elif VIOLATION == 6
        // says: writing the value pointed to by 'm_pBalance' requires holding lock 'm_lock'
        *m_pBalance = amount;
#elif VIOLATION == 7
        // says: calling function 'Book' requires holding lock 'm_lock' exclusively
        Book(amount);
#elif VIOLATION == 8
        // says: calling function 'operator()' requires holding lock 'm_lock' exclusively
        [&]() REQUIRES(m_lock) { Book(amount); }();
#elif VIOLATION == 9
        // says: calling function 'Book' requires holding lock 'm_lock' exclusively
        [&] { Book(amount); }();
#elif VIOLATION == 10
        // says: lock 'm_lock' is still held at the end of function
        m_lock.Acquire();
#elif VIOLATION == 11
        // says: releasing lock 'm_lock' that was not held
        m_lock.Release();
#elif VIOLATION == 12
        // says: requires holding named mutex 'm_mutex' exclusively
        m_stored = amount;
#elif VIOLATION == 13
        // says: requires holding callback lock 'm_guard' exclusively
        m_told = amount;
#endif
    }

    void Tell(int amount) {
        const CallbackHold told(m_guard);
        m_told = amount;
        const MutexHold stored(m_mutex);
        m_stored = amount;
    }

  private:
    void Book(int amount) REQUIRES(m_lock) {
        m_booked += amount;
    }

    SlimLock m_first;
    SlimLock m_lock ACQUIRED_AFTER(m_first);
    int m_booked GUARDED_BY(m_lock) = 0;
    int m_balance = 0;
    int* const m_pBalance PT_GUARDED_BY(m_lock) = &m_balance;
    NamedMutex m_mutex;
    int m_stored GUARDED_BY(m_mutex) = 0;
    CallbackGuard m_guard;
    int m_told GUARDED_BY(m_guard) = 0;
};

}  // namespace kora4
