// SPDX-License-Identifier: MIT
// One bring-up of an object at a time.
#pragma once

#include <windows.h>

#include "platform/handles.h"
#include "platform/non_copyable.h"
#include "platform/slim_lock.h"

namespace kora4 {

// A call that finds another thread initialising waits, lets COM calls in meanwhile, and
// returns that thread's result. A call that re-enters on the initialising thread (COM let it
// in) can neither wait nor go on: E_FAIL. No lock is held while `bringUp` runs.
class InitializeGuard : NonCopyable {
  public:
    // Calls `bringUp`, which returns an HRESULT, unless another call is running; then waits
    // for that one's result.
    template <typename BringUp>
    HRESULT Run(BringUp&& bringUp) {
        HRESULT hr = E_FAIL;
        if (!Enter(&hr))
            return hr;
        hr = bringUp();
        Leave(hr);
        return hr;
    }

  private:
    // Lives on the waiting thread's stack, in the list until Leave has set its event or the
    // wait has ended.
    struct Waiter {
        UniqueHandle event;
        HRESULT hr = E_FAIL;
        Waiter* pNext = nullptr;
    };

    // False when there is nothing left to do but to return `*phr`.
    bool Enter(HRESULT* phr) EXCLUDES(m_lock);
    void Leave(HRESULT hr) EXCLUDES(m_lock);
    HRESULT Await(Waiter& waiter) EXCLUDES(m_lock);

    SlimLock m_lock;
    DWORD m_runningThread GUARDED_BY(m_lock) = 0;  // 0: none
    Waiter* m_pWaiters GUARDED_BY(m_lock) PT_GUARDED_BY(m_lock) = nullptr;
};

}  // namespace kora4
