// SPDX-License-Identifier: MIT
// One run from start to end: its events and thread, who releases what, and how the thread ends,
// by itself or terminated.
#include "monitor/monitor_session.h"

#include <objbase.h>

namespace kora4 {
namespace {

UniqueHandle MakeEvent() {
    return UniqueHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
}

// A reference to the module that holds this code, whichever that is.
HMODULE ReferenceOwnModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(&ReferenceOwnModule), &module);
    return module;
}

}  // namespace

ULONG MonitorSession::Release() {
    const LONG left = m_references.fetch_sub(1) - 1;
    if (left == 0)
        delete this;
    return static_cast<ULONG>(left);
}

HRESULT MonitorSession::MakeControls() {
    m_stopEvent = MakeEvent();
    m_exitedEvent = MakeEvent();
    m_readyEvent = MakeEvent();
    if (!m_stopEvent || !m_exitedEvent || !m_readyEvent)
        return E_FAIL;
    return m_mtaUsage.Acquire();
}

bool MonitorSession::CreateMonitorThread(LPTHREAD_START_ROUTINE procedure) {
    m_threadModule = ReferenceOwnModule();
    if (!m_threadModule)
        return false;
    AddRef();
    m_thread.Reset(CreateThread(nullptr, 0, procedure, this, 0, nullptr));
    if (m_thread)
        return true;
    FreeLibrary(m_threadModule);
    Release();
    return false;
}

bool MonitorSession::LetGo() {
    SetEvent(m_stopEvent.Get());
    return m_parting.load() != eThreadDone;
}

HRESULT MonitorSession::UnmarshalGate() {
    return m_gateHolder.Unmarshal(__uuidof(ICOMCallbackGate),
                                  reinterpret_cast<void**>(m_spGate.ReleaseAndGetAddressOf()),
                                  m_threadRegistration);
}

void MonitorSession::GiveBack() {
    // An owner that is about to end this thread takes over what it holds.
    if (m_parting.exchange(eGivingBack) == eTerminated)
        Sleep(INFINITE);
    m_changeEvent.Reset();
    m_watchedKey.Reset();
    m_gateHolder.EndCancellation();
    // Needs the owner's apartment: it lets the call in while it waits for this thread.
    m_spGate.Reset();
    m_gateHolder.Revoke(m_threadRegistration);
}

void MonitorSession::EndThread(DWORD exitCode, bool isInApartment) {
    const HMODULE module = m_threadModule;
    if (m_parting.exchange(eThreadDone) == eTerminated)
        Sleep(INFINITE);
    if (isInApartment)
        CoUninitialize();
    Release();
    FreeLibraryAndExitThread(module, exitCode);
}

bool MonitorSession::TerminateMonitorThread(DWORD exitCode) {
    int parting = eWatching;
    if (!m_parting.compare_exchange_strong(parting, eTerminated))
        return false;
    TerminateThread(m_thread.Get(), exitCode);
    // If even that does not end it in time, it keeps what it holds.
    if (WaitForSingleObject(m_thread.Get(), cForceMilliseconds) != WAIT_OBJECT_0)
        return true;
    // The references to session and module pass to the thread that releases the rest. An owner
    // in a single-threaded apartment cannot do that itself: gate and factory belong to the
    // other apartment. If no thread can be created, all of it stays, the module included.
    const UniqueHandle heir(CreateThread(nullptr, 0, &GiveBackForTheDead, this, 0, nullptr));
    const HANDLE handle = heir.Get();
    if (handle)
        WaitLettingCallsIn(&handle, 1, cForceMilliseconds);
    return true;
}

DWORD MonitorSession::GiveBackForTheDead(void* pParameter) {
    auto* const pSession = static_cast<MonitorSession*>(pParameter);
    const HRESULT hrApartment = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    pSession->m_parting.store(eGivingBack);
    pSession->GiveBack();
    pSession->EndThread(static_cast<DWORD>(hrApartment), SUCCEEDED(hrApartment));
}

void MonitorSession::AwaitThreadEnd() const {
    WaitForSingleObject(m_thread.Get(), cThreadEndMilliseconds);
}

bool MonitorSession::IsThreadRunning() const {
    return m_thread && WaitForSingleObject(m_thread.Get(), 0) == WAIT_TIMEOUT;
}

}  // namespace kora4
