// SPDX-License-Identifier: MIT
// The monitor thread: what runs on it holds a MonitorSession and the gate, nothing else.
#include <objbase.h>

#include <algorithm>
#include <cstdint>

#include "contract/messages/trace_messages_store.h"
#include "monitor/reg_key_monitor.h"
#include "platform/win32_result.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

// The results of a call that a message filter of the owner's apartment rejects for now.
bool IsTurnedAway(HRESULT hr) {
    return hr == RPC_E_CALL_REJECTED || hr == RPC_E_SERVERCALL_RETRYLATER;
}

}  // namespace

DWORD WINAPI RegKeyMonitor::RegMonitorEntry(void* pParameter) {
    auto* const pSession = static_cast<MonitorSession*>(pParameter);
    KALTRACE(msg::cThreadEntry, GetCurrentThreadId());
    const HRESULT hrApartment = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const HRESULT hr = SUCCEEDED(hrApartment) ? RunRegMonitor(pSession) : hrApartment;
    // Here, because the library may be unloaded once the session has been released.
    constexpr const trace::Site& cSite = trace::cSiteOf<msg::cThreadEntry>;
    KALTRACE_LINE(cSite.resultMask, cSite, __LINE__, msg::cExitResult.text, hr);
    const DWORD exitCode = static_cast<DWORD>(hr);
    if (pSession)
        pSession->EndThread(exitCode, SUCCEEDED(hrApartment));
    return exitCode;
}

HRESULT RegKeyMonitor::RunRegMonitor(MonitorSession* pSession) {
    KALTRACE_RESULT(hr, E_FAIL, "RegKeyMonitor::RunRegMonitor");
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
    const LSTATUS status =
        RegNotifyChangeKeyValue(key, TRUE, REG_NOTIFY_CHANGE_LAST_SET, changeEvent, TRUE);
    if (status != ERROR_SUCCESS)
        KALTRACE(msg::cArmingFailed, ReasonOfArmingError(status), status, status);
    return ResultOfWrite(status);
}

const char* RegKeyMonitor::ReasonOfArmingError(LSTATUS status) {
    const bool isMemoryShort = status == ERROR_NOT_ENOUGH_MEMORY ||
                               status == ERROR_OUTOFMEMORY ||
                               status == ERROR_NO_SYSTEM_RESOURCES;
    return status == ERROR_KEY_DELETED     ? msg::cKeyDeleted
           : status == ERROR_ACCESS_DENIED ? msg::cAccessDenied
           : isMemoryShort                 ? "no more memory"
                                           : "other failure";
}

HRESULT RegKeyMonitor::RegMonitorLoop(const MonitorSession& session, HKEY key,
                                      HANDLE changeEvent, ICOMCallbackGate* pICOMCallbackGate) {
    KALTRACE_RESULT(hr, S_OK, msg::cCallingThroughGate.function);
    KALASSERT(cSite, msg::cAssertGate, pICOMCallbackGate != NULL);
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
            KALTRACE(msg::cWaitFailed, GetCurrentThreadId(), error, error);
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

// The result of the owner's Callback. S_OK, with the stop event still set, if the thread is to
// stop while the owner is busy.
HRESULT RegKeyMonitor::CallThroughGate(const MonitorSession& session,
                                       ICOMCallbackGate* pICOMCallbackGate) {
    for (DWORD pause = cFirstBusyMilliseconds;;
         pause = std::min(2 * pause, cLongestBusyMilliseconds)) {
        KALTRACE(msg::cCallingThroughGate, pICOMCallbackGate, GetCurrentThreadId());
        const ULONG entries = session.Entries();
        const HRESULT hr = pICOMCallbackGate->Callback(0);
        KALTRACE(msg::cCalledThroughGate, hr);
        // A client of the owner may have returned the same.
        if (!IsTurnedAway(hr) || session.Entries() != entries)
            return hr;
        if (WaitForSingleObject(session.StopEvent(), pause) != WAIT_TIMEOUT) {
            SetEvent(session.StopEvent());
            return S_OK;
        }
    }
}

}  // namespace kora4
