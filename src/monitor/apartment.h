// SPDX-License-Identifier: MIT
// The apartment of a thread, a wait that suits it, and a hold on the multithreaded one.
#pragma once

#include <objbase.h>
#include <windows.h>

#include <utility>

#include "platform/non_copyable.h"

namespace kora4 {

// Identifies an apartment within the process: a single-threaded one by its thread's id, the
// others by numbers that no thread has.
using ApartmentId = DWORD;

inline constexpr ApartmentId cMultithreadedApartment = 0;
inline constexpr ApartmentId cNeutralApartment = 1;

// The apartment of the calling thread. A thread without one counts as part of the
// multithreaded apartment, as COM itself sees it while that apartment exists.
ApartmentId CurrentApartment();

// Waits until one of the handles is signalled, and meanwhile lets COM calls into a
// single-threaded apartment, including that of a packaged application. A COM wait that fails
// there is repeated. WAIT_OBJECT_0 plus the index, WAIT_TIMEOUT or WAIT_FAILED: a bad handle.
DWORD WaitLettingCallsIn(const HANDLE* handles, DWORD count, DWORD milliseconds);

// The two platform calls that handle packaged applications, whose single-threaded apartments
// only Windows has. Tests replace them.
struct ApartmentCalls {
    using GetType = HRESULT(WINAPI*)(APTTYPE* pType, APTTYPEQUALIFIER* pQualifier);
    using Wait = HRESULT(WINAPI*)(DWORD flags, DWORD milliseconds, ULONG count, HANDLE* handles,
                                  DWORD* pIndex);

    GetType getType;
    Wait wait;
};
// `pCalls` must outlive its use; null restores the platform's own.
void SetApartmentCalls(const ApartmentCalls* pCalls);

// Keeps the multithreaded apartment alive, whatever threads come and go. Holds nothing
// until Acquire. Any thread; the hold may end on another one.
class MtaUsage : NonCopyable {
  public:
    ~MtaUsage() { Release(); }

    // Begins the hold, once. S_OK if it has already begun; otherwise the result of COM.
    HRESULT Acquire() { return m_cookie ? S_OK : CoIncrementMTAUsage(&m_cookie); }
    // Ends the hold. Harmless if there is none.
    void Release() {
        if (const CO_MTA_USAGE_COOKIE cookie = std::exchange(m_cookie, nullptr))
            CoDecrementMTAUsage(cookie);
    }

  private:
    CO_MTA_USAGE_COOKIE m_cookie = nullptr;
};

}  // namespace kora4
