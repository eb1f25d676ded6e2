// SPDX-License-Identifier: MIT
// The callback lock of an API object.
#pragma once

#include <windows.h>

#include "api/process_track.h"
#include "platform/lock_hold.h"

namespace kora4 {

// Serialises every use of the registered client callback: registration, unregistration
// and the whole of a notification pass, the client's methods included. It is recursive
// and must stay so: a callback may register or unregister on the thread that calls it.
class CAPABILITY("callback lock") CallbackGuard : NonCopyable {
  public:
    CallbackGuard() {
        InitializeCriticalSectionEx(&m_section, 0, CRITICAL_SECTION_NO_DEBUG_INFO);
    }
    ~CallbackGuard() { DeleteCriticalSection(&m_section); }

    // Takes the lock, or counts once more on the thread that holds it.
    void Acquire() ACQUIRE() {
        EnterCriticalSection(&m_section);
        m_track.Enter();
    }
    void Release() RELEASE() {
        m_track.Leave();
        LeaveCriticalSection(&m_section);
    }

  private:
    // Before the tracker: its construction belongs to that of the lock.
    CRITICAL_SECTION m_section;
    ProcessTrack m_track;
};

// Holds the callback lock for the length of a scope.
using CallbackHold = LockHold<CallbackGuard>;

}  // namespace kora4
