// SPDX-License-Identifier: MIT
// What must hold of a store whose last writer was killed.
#ifndef KORA4_TESTS_MULTIPROCESS_WORKING_STORE_H
#define KORA4_TESTS_MULTIPROCESS_WORKING_STORE_H

#include <windows.h>

#include <map>
#include <string>

#include "support/com_client.h"

namespace kora4::test {

// The mutex of a dead process is either given at once or never. A machine that does much else
// can still keep a thread from running for seconds.
inline constexpr DWORD cAtOnce = 10000;  // milliseconds

// Calls each method, by turns with other custom profiles; what is set is what is got. Leaves
// Music active and the enable on.
void ExpectEveryMethodToWork(IVeltoKORA4API& api, unsigned round);

// Takes the store's mutex and gives it back; how it was found: WAIT_ABANDONED means that an
// operation was cut off.
DWORD TakeTheStore();

// A client that was there before is told of the next write, which `writer` makes.
void ExpectToldOfTheNextWrite(IVeltoKORA4API& writer, CallbackRecorder& survivor);

// The trigger words and the counter of the profile table.
class StoreCounters {
  public:
    static StoreCounters Now();
    void ExpectNoneFell(const StoreCounters& before) const;

  private:
    std::map<std::wstring, DWORD> m_values;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_WORKING_STORE_H
