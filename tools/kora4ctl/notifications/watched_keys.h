// SPDX-License-Identifier: MIT
// The keys of the store, held open to see whether somebody deletes them.
#pragma once

#include "platform/handles.h"

namespace kora4::tools {

// The library's monitor ends without a word when its key is deleted, and on Wine not even the
// deletion wakes it: who waits for notifications has to look.
class WatchedKeys {
  public:
    WatchedKeys();

    // Failure with eNotReady when one of them was deleted, also if it is there again.
    void CheckAreThere() const;

  private:
    UniqueRegKey m_static;
    UniqueRegKey m_dynamic;
};

}  // namespace kora4::tools
