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
    // Not an exchange: that the thread has gone stays true, however often this is asked.
    int parting = eTogether;
    m_parting.compare_exchange_strong(parting, eLetGo);
    SetEvent(m_stopEvent.Get());
    return parting != eThreadDone;
}

void MonitorSession::EndThread(DWORD exitCode, bool isInApartment) {
    const HMODULE module = m_threadModule;
    if (m_parting.exchange(eThreadDone) == eLetGo) {
        // Nobody holds the apartment until this thread has ended. If this is its last
        // thread, the apartment has to go here, where no loader lock is held.
        m_mtaUsage.Release();
        if (isInApartment)
            CoUninitialize();
    }
    Release();
    FreeLibraryAndExitThread(module, exitCode);
}

void MonitorSession::TerminateMonitorThread(DWORD exitCode) {
    TerminateThread(m_thread.Get(), exitCode);
    WaitForSingleObject(m_thread.Get(), INFINITE);
    // It had ended by itself just before: then it has given back everything itself.
    if (m_parting.exchange(eThreadDone) == eThreadDone)
        return;
    FreeLibrary(m_threadModule);
    Release();
}

bool MonitorSession::IsThreadRunning() const {
    return m_thread && WaitForSingleObject(m_thread.Get(), 0) == WAIT_TIMEOUT;
}

}  // namespace kora4
