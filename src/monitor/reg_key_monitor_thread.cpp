// The monitor thread: what runs on it holds a MonitorSession and the gate, nothing else.
#include <objbase.h>

#include <cstdint>

#include "monitor/reg_key_monitor.h"
#include "platform/win32_result.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

constexpr std::uint32_t cThreadExit = trace::eAllEntryExit | trace::eResults;

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
    Microsoft::WRL::ComPtr<ICOMCallbackGate> spGate;
    hr = pSession->Holder().Unmarshal(__uuidof(ICOMCallbackGate),
                                      reinterpret_cast<void**>(spGate.ReleaseAndGetAddressOf()),
                                      pSession->ThreadRegistration());
    if (SUCCEEDED(hr))
        hr = WatchKey(*pSession, spGate.Get());
    pSession->SetWatchEnded();
    // Needs the owner's apartment: it lets the call in while it waits for this thread.
    spGate.Reset();
    pSession->Holder().Revoke(pSession->ThreadRegistration());
    SetEvent(pSession->ExitedEvent());
    return hr;
}

HRESULT RegKeyMonitor::WatchKey(MonitorSession& session, ICOMCallbackGate* pICOMCallbackGate) {
    if (!session.RootKey() || !session.Subkey())
        return E_FAIL;
    UniqueRegKey key;
    HRESULT hr = ResultOfKeyLookup(
        RegOpenKeyExW(session.RootKey(), session.Subkey(), 0, KEY_NOTIFY, key.Put()));
    if (hr != S_OK)
        return hr;
    const UniqueHandle changeEvent(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!changeEvent)
        return E_FAIL;
    hr = ArmNotification(key.Get(), changeEvent.Get());
    if (FAILED(hr))
        return hr;
    SetEvent(session.ReadyEvent());
    return RegMonitorLoop(session, key.Get(), changeEvent.Get(), pICOMCallbackGate);
}

// Asks for the next value written anywhere below the key; it signals once.
HRESULT RegKeyMonitor::ArmNotification(HKEY key, HANDLE changeEvent) {
    return ResultOfWrite(
        RegNotifyChangeKeyValue(key, TRUE, REG_NOTIFY_CHANGE_LAST_SET, changeEvent, TRUE));
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
        KALTRACE(trace::eNotificationThreads, cSite,
                 "Calling through Callback gate: pICOMCallbackGate: %p TID: 0x%08x\n",
                 static_cast<void*>(pICOMCallbackGate), GetCurrentThreadId());
        hr = pICOMCallbackGate->Callback(0);
        KALTRACE(trace::eNotificationThreads, cSite, "Post callback: hr: 0x%08x\n",
                 static_cast<std::uint32_t>(hr));
        if (FAILED(hr))
            return hr;
        hr = S_OK;
    }
}

}  // namespace kora4
