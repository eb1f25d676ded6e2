// SPDX-License-Identifier: MIT
// Wakes when something below the dynamic keys is written.
#pragma once

#include <windows.h>

#include "platform/handles.h"

namespace kora4::tools {

// Belongs to the thread that made it: a watch ends with the thread that armed it.
class ChangeWatch {
  public:
    // Armed from the start. Failure with eNotReady when there are no dynamic keys.
    ChangeWatch();

    // Auto-reset; for a wait for several things. After a wait that took it, Rearm before
    // anything is read, or a write in between is lost.
    HANDLE Event() const { return m_event.Get(); }

    // Asks for the next write. Failure as from the constructor when the platform refuses.
    void Rearm();

    // How a wait ended.
    enum class Wake { eChanged, eInterrupted, eTimedOut };
    // Waits and, when something changed, arms again. `interrupt` may be null.
    Wake Wait(DWORD milliseconds, HANDLE interrupt);

  private:
    UniqueRegKey m_key;
    UniqueHandle m_event;
};

}  // namespace kora4::tools
