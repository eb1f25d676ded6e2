// SPDX-License-Identifier: MIT
// The named mutex on the platform's calls, with the trace lines that log readers know of it.
#include "store/access/named_mutex.h"

#include <windows.h>

#include "platform/open_mutex.h"
#include "trace/trace.h"

namespace kora4 {

NamedMutex::~NamedMutex() {
    KALTRACE_SCOPE("NamedMutex::~NamedMutex");
    KALASSERT(cSite, msg::cAssertNotAcquired, !IsAcquired());
    FreeMutex();
}

HRESULT NamedMutex::Create(const char16_t* pwName) {
    KALTRACE_RESULT(hr, E_FAIL, "NamedMutex::Create");
    if (m_hMutex)
        return hr;
    m_hMutex = CreateOrOpenMutex(pwName);
    if (m_hMutex)
        hr = S_OK;
    return hr;
}

void NamedMutex::Acquire() {
    KALTRACE_SCOPE("NamedMutex::Acquire");
    WaitForSingleObject(m_hMutex, INFINITE);
    m_acquired = true;
}

HRESULT NamedMutex::Release() {
    KALTRACE_RESULT(hr, S_OK, "NamedMutex::Release");
    KALASSERT(cSite, msg::cAssertAcquired, IsAcquired());
    // Cleared first: once the mutex is free, another thread may set the flag.
    m_acquired = false;
    if (!ReleaseMutex(m_hMutex))
        hr = E_FAIL;
    return hr;
}

void NamedMutex::FreeMutex() {
    KALTRACE_SCOPE("NamedMutex::FreeMutex");
    KALASSERT(cSite, msg::cAssertNotAcquired, !IsAcquired());
    if (m_hMutex)
        CloseHandle(m_hMutex);
    m_hMutex = nullptr;
}

}  // namespace kora4
