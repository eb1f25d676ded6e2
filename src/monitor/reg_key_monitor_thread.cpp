// SPDX-License-Identifier: MIT
// The monitor thread: what runs on it holds a MonitorSession and the gate, nothing else.
#include <objbase.h>

#include <algorithm>
#include <cstdint>

#include "monitor/reg_key_monitor.h"
#include "platform/win32_result.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

constexpr std::uint32_t cThreadExit = trace::eAllEntryExit | trace::eResults;

// What a message filter of the owner's apartment makes of a call that it does not want now.
bool IsTurnedAway(HRESULT hr) {
    return hr == RPC_E_CALL_REJECTED || hr == RPC_E_SERVERCALL_RETRYLATER;
}

}  // namespace

DWORD WINAPI RegKeyMonitor::RegMonitorEntry(void* pParameter) {
    static constexpr trace::Site cSite{"RegKeyMonitor", "RegKeyMonitor::RegMonitorEntry"};
    auto* const pSession = static_cast<MonitorSession*>(pParameter);
    KALTRACE(trace::eMonitorEntry, cSite, ">> CurrentThreadId: 0x%08x\n", GetCurrentThreadId());
    const HRESULT hrApartment = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const HRESULT hr = SUCCEEDED(hrApartment) ? RunRegMonitor(pSession) : hrApartment;
    KALTRACE(cThreadExit, cSite, "<< hr: 0x%08x\n", static_cast<std::uint32_t>(hr));
    const DWORD exitCode = static_cast<DWORD>(hr);
    if (pSession)
        pSession->EndThread(exitCode, SUCCEEDED(hrApartment));
    return exitCode;
}

HRESULT RegKeyMonitor::RunRegMonitor(MonitorSession* pSession) {
    static constexpr trace::Site cSite{"RegKeyMonitor", "RegKeyMonitor::RunRegMonitor"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eMonitorEntry, cThreadExit, &hr);
    if (!pSession)
        return hr;
    hr = pSession->UnmarshalGate();
    if (SUCCEEDED(hr))
        hr = WatchKey(*pSession);
    pSession->GiveBack();
    SetEvent(pSession->ExitedEvent());
    return hr;
}

HRESULT RegKeyMonitor::WatchKey(MonitorSession& session) {
    if (!session.RootKey() || !session.Subkey())
        return E_FAIL;
    UniqueRegKey& key = session.WatchedKey();
    HRESULT hr = ResultOfKeyLookup(
        RegOpenKeyExW(session.RootKey(), session.Subkey(), 0, KEY_NOTIFY, key.Put()));
    if (hr != S_OK)
        return hr;
    UniqueHandle& changeEvent = session.ChangeEvent();
    changeEvent.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!changeEvent)
        return E_FAIL;
    hr = ArmNotification(key.Get(), changeEvent.Get());
    if (FAILED(hr))
        return hr;
    SetEvent(session.ReadyEvent());
    return RegMonitorLoop(session, key.Get(), changeEvent.Get(), session.Gate());
}

// Asks for the next value written anywhere below the key; it signals once.
HRESULT RegKeyMonitor::ArmNotification(HKEY key, HANDLE changeEvent) {
    static constexpr trace::Site cSite{"RegKeyMonitor", "RegKeyMonitor::ArmNotification"};
    const LSTATUS status =
        RegNotifyChangeKeyValue(key, TRUE, REG_NOTIFY_CHANGE_LAST_SET, changeEvent, TRUE);
    if (status != ERROR_SUCCESS)
        KALTRACE(trace::eSecurity, cSite, "RegNotifyChangeKeyValue: %s, error: %d (0x%08x)\n",
                 ReasonOfArmingError(status), static_cast<int>(status),
                 static_cast<std::uint32_t>(status));
    return ResultOfWrite(status);
}

const char* RegKeyMonitor::ReasonOfArmingError(LSTATUS status) {
    switch (status) {
        case ERROR_KEY_DELETED:
            return "key deleted";
        case ERROR_ACCESS_DENIED:
            return "access denied";
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
        case ERROR_NO_SYSTEM_RESOURCES:
            return "no more memory";
        default:
            return "other failure";
    }
}

HRESULT RegKeyMonitor::RegMonitorLoop(const MonitorSession& session, HKEY key,
                                      HANDLE changeEvent, ICOMCallbackGate* pICOMCallbackGate) {
    static constexpr trace::Site cSite{"RegKeyMonitor", "RegKeyMonitor::RegMonitorLoop"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eMonitorEntry, cThreadExit, &hr);
    KALASSERT(cSite, pICOMCallbackGate != NULL);
    if (!pICOMCallbackGate)
        return hr = E_FAIL;
    const HANDLE handles[] = {session.StopEvent(), changeEvent};
    for (;;) {
        const DWORD result =
            WaitForMultipleObjects(ARRAYSIZE(handles), handles, FALSE, INFINITE);
        if (result == WAIT_OBJECT_0)
            return hr;
        if (result == WAIT_FAILED) {
            const DWORD error = GetLastError();
            KALTRACE(trace::eSecurity, cSite,
                     "WAIT_FAILED, TID: 0x%08x lastError: %d (0x%08x)\n", GetCurrentThreadId(),
                     error, error);
            return hr;
        }
        // Armed again before the callback, so that a write made during the call wakes the
        // loop once more.
        hr = ArmNotification(key, changeEvent);
        if (FAILED(hr) || WaitForSingleObject(session.StopEvent(), 0) == WAIT_OBJECT_0)
            return hr;
        hr = CallThroughGate(session, pICOMCallbackGate);
        if (FAILED(hr))
            return hr;
        hr = S_OK;
    }
}

// What the owner's Callback answered. S_OK, and the stop event stays set, when the thread is
// told to stop while the owner is busy.
HRESULT RegKeyMonitor::CallThroughGate(const MonitorSession& session,
                                       ICOMCallbackGate* pICOMCallbackGate) {
    static constexpr trace::Site cSite{"RegKeyMonitor", "RegKeyMonitor::RegMonitorLoop"};
    for (DWORD pause = cFirstBusyMilliseconds;;
         pause = std::min(2 * pause, cLongestBusyMilliseconds)) {
        KALTRACE(trace::eNotificationThreads, cSite,
                 "Calling through Callback gate: pICOMCallbackGate: %p TID: 0x%08x\n",
                 static_cast<void*>(pICOMCallbackGate), GetCurrentThreadId());
        const ULONG entries = session.Entries();
        const HRESULT hr = pICOMCallbackGate->Callback(0);
        KALTRACE(trace::eNotificationThreads, cSite, "Post callback: hr: 0x%08x\n",
                 static_cast<std::uint32_t>(hr));
        // A client of the owner may have answered the same.
        if (!IsTurnedAway(hr) || session.Entries() != entries)
            return hr;
        if (WaitForSingleObject(session.StopEvent(), pause) != WAIT_TIMEOUT) {
            SetEvent(session.StopEvent());
            return S_OK;
        }
    }
}

}  // namespace kora4
