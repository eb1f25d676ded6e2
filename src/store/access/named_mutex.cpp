// SPDX-License-Identifier: MIT
// The named mutex on the platform's calls, with the trace lines that log readers know of it.
#include "store/access/named_mutex.h"

#include <windows.h>

#include "platform/open_mutex.h"
#include "trace/trace.h"

namespace kora4 {

NamedMutex::~NamedMutex() {
    static constexpr trace::Site cSite{"KORA4KeysClient", "NamedMutex::~NamedMutex"};
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eEntry);
    KALASSERT(cSite, !IsAcquired());
    FreeMutex();
}

HRESULT NamedMutex::Create(const char16_t* pwName) {
    static constexpr trace::Site cSite{"KORA4KeysClient", "NamedMutex::Create"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    if (m_hMutex)
        return hr;
    m_hMutex = CreateOrOpenMutex(pwName);
    if (m_hMutex)
        hr = S_OK;
    return hr;
}

void NamedMutex::Acquire() {
    static constexpr trace::Site cSite{"KORA4KeysClient", "NamedMutex::Acquire"};
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eEntry);
    WaitForSingleObject(m_hMutex, INFINITE);
    m_acquired = true;
}

HRESULT NamedMutex::Release() {
    static constexpr trace::Site cSite{"KORA4UIKeysClient", "NamedMutex::Release"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    KALASSERT(cSite, IsAcquired());
    // Cleared first: once the mutex is free, another thread may set the flag.
    m_acquired = false;
    if (!ReleaseMutex(m_hMutex))
        hr = E_FAIL;
    return hr;
}

void NamedMutex::FreeMutex() {
    static constexpr trace::Site cSite{"KORA4KeysClient", "NamedMutex::FreeMutex"};
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eEntry);
    KALASSERT(cSite, !IsAcquired());
    if (m_hMutex)
        CloseHandle(m_hMutex);
    m_hMutex = nullptr;
}

}  // namespace kora4
