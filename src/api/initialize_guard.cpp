#include "api/initialize_guard.h"

#include <objbase.h>

#include "platform/srw_hold.h"

namespace kora4 {

bool InitializeGuard::Enter(HRESULT* phr) {
    Waiter waiter;
    {
        const SrwHold hold(m_lock);
        const DWORD self = GetCurrentThreadId();
        if (m_runningThread == 0) {
            m_runningThread = self;
            return true;
        }
        if (m_runningThread == self) {
            *phr = E_FAIL;
            return false;
        }
        waiter.event.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        if (!waiter.event) {
            *phr = E_OUTOFMEMORY;
            return false;
        }
        waiter.pNext = m_pWaiters;
        m_pWaiters = &waiter;
    }
    HANDLE event = waiter.event.Get();
    DWORD index = 0;
    if (FAILED(CoWaitForMultipleHandles(0, INFINITE, 1, &event, &index)))
        WaitForSingleObject(event, INFINITE);
    *phr = waiter.hr;
    return false;
}

void InitializeGuard::Leave(HRESULT hr) {
    const SrwHold hold(m_lock);
    m_runningThread = 0;
    while (Waiter* pWaiter = m_pWaiters) {
        m_pWaiters = pWaiter->pNext;
        pWaiter->hr = hr;
        SetEvent(pWaiter->event.Get());
    }
}

}  // namespace kora4
