// SPDX-License-Identifier: MIT
// Lets the first caller initialise the object while the others wait for its result.
#include "api/initialize_guard.h"

#include "monitor/apartment.h"

namespace kora4 {

bool InitializeGuard::Enter(HRESULT* phr) {
    Waiter waiter;
    {
        const SlimHold hold(m_lock);
        const DWORD self = GetCurrentThreadId();
        if (m_runningThread == 0) {
            m_runningThread = self;
            return true;
        }
        if (m_runningThread == self) {
            *phr = E_FAIL;
            return false;
        }
        waiter.event.Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        if (!waiter.event) {
            *phr = E_OUTOFMEMORY;
            return false;
        }
        waiter.pNext = m_pWaiters;
        m_pWaiters = &waiter;
    }
    *phr = Await(waiter);
    return false;
}

// E_FAIL when the wait fails, as it does when somebody has closed the handle.
HRESULT InitializeGuard::Await(Waiter& waiter) {
    const HANDLE event = waiter.event.Get();
    WaitLettingCallsIn(&event, 1, INFINITE);
    const SlimHold hold(m_lock);
    for (Waiter** ppWaiter = &m_pWaiters; *ppWaiter; ppWaiter = &(*ppWaiter)->pNext) {
        if (*ppWaiter == &waiter) {
            *ppWaiter = waiter.pNext;
            break;
        }
    }
    return waiter.hr;
}

void InitializeGuard::Leave(HRESULT hr) {
    const SlimHold hold(m_lock);
    m_runningThread = 0;
    while (Waiter* pWaiter = m_pWaiters) {
        m_pWaiters = pWaiter->pNext;
        pWaiter->hr = hr;
        SetEvent(pWaiter->event.Get());
    }
}

}  // namespace kora4
