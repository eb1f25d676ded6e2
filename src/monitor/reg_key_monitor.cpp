// SPDX-License-Identifier: MIT
// The owner's side of the monitor: start, stop, and the callback that arrives through the gate.
// The thread's side is in reg_key_monitor_thread.cpp.
#include "monitor/reg_key_monitor.h"

#include <cstdint>
#include <new>
#include <utility>

#include "contract/messages/trace_messages_store.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

// Handles are printed in 32 bits; they have no more.
std::uint32_t Printable(HANDLE handle) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

}  // namespace

RegKeyMonitor::~RegKeyMonitor() {
    TerminateRegMonitor();
}

void* RegKeyMonitor::FindInterface(REFIID iid) {
    if (iid == __uuidof(IUnknown) || iid == __uuidof(ICOMCallbackGate))
        return static_cast<ICOMCallbackGate*>(this);
    return nullptr;
}

HRESULT RegKeyMonitor::SpawnRegMonitor(HKEY root, const wchar_t* subkey,
                                       RegKeyMonitorClient* client) {
    KALTRACE_RESULT(hr, E_INVALIDARG, msg::cThreadCreated.function);
    if (!root || !subkey || !client)
        return hr;
    hr = E_FAIL;
    if (Session())
        return hr;

    CloseAndReset(nullptr);
    // A call that arrives during the wait may release the object.
    const Microsoft::WRL::ComPtr<ICOMCallbackGate> spSelf(this);
    hr = MakeControls(root, subkey, client);
    const MonitorSessionPtr spSession = Session();
    if (SUCCEEDED(hr))
        hr = m_apartmentEnd.Watch(this);
    if (SUCCEEDED(hr))
        hr = MarshalInterface();
    if (SUCCEEDED(hr)) {
        const bool created = spSession->CreateMonitorThread(&RegMonitorEntry);
        KALTRACE(msg::cThreadCreated, Printable(spSession->Thread()));
        hr = created ? AwaitReady(*spSession.Get()) : E_FAIL;
    }
    if (FAILED(hr))
        CloseAndReset(spSession.Get());
    return hr;
}

HRESULT RegKeyMonitor::MakeControls(HKEY root, const wchar_t* subkey,
                                    RegKeyMonitorClient* client) {
    KALTRACE_RESULT(hr, E_OUTOFMEMORY, "RegKeyMonitor::MakeControls");
    MonitorSessionPtr spSession;
    // Not Attach: the one of mingw-w64 takes a reference.
    *spSession.GetAddressOf() = new (std::nothrow) MonitorSession(root, subkey);
    if (!spSession)
        return hr;
    hr = spSession->MakeControls();
    SlimHold hold(m_guard);
    m_spSession = spSession;
    m_pClient = client;
    return hr;
}

HRESULT RegKeyMonitor::MarshalInterface() {
    KALTRACE_RESULT(hr, E_FAIL, "RegKeyMonitor::MarshalInterface");
    if (const MonitorSessionPtr spSession = Session())
        hr = spSession->Holder().Marshal(__uuidof(ICOMCallbackGate), this, m_gateRegistration);
    return hr;
}

// A start-up that takes longer than the grace period is slow, not failed.
HRESULT RegKeyMonitor::AwaitReady(MonitorSession& session) {
    const HANDLE handles[] = {session.ReadyEvent(), session.Thread()};
    switch (WaitLettingCallsIn(handles, ARRAYSIZE(handles), cGraceMilliseconds)) {
        case WAIT_OBJECT_0:
        case WAIT_TIMEOUT:
            return S_OK;
        case WAIT_OBJECT_0 + 1:
            return E_FAIL;
        default:
            HaltMonitorThread(&session);
            return E_FAIL;
    }
}

void RegKeyMonitor::TerminateRegMonitor() {
    KALTRACE_SCOPE("RegKeyMonitor::TerminateRegMonitor");
    // The client goes first: a call that is on its way finds none and returns at once.
    // A further call while this waits finds no session.
    const MonitorSessionPtr spSession = DetachSession();
    HaltMonitorThread(spSession.Get());
    CloseAndReset(nullptr);
    // Also without a session: a start that failed has left its registration. With one it
    // goes before the session, which holds the apartment that it is in.
    if (spSession)
        spSession->Holder().Revoke(m_gateRegistration);
    m_gateRegistration.Revoke();
}

void RegKeyMonitor::HaltMonitorThread(MonitorSession* pSession) {
    KALTRACE_SCOPE(msg::cZombieThread.function);
    if (!pSession || !pSession->Thread() || !pSession->StopEvent() || !pSession->ExitedEvent())
        return;
    MonitorSession& session = *pSession;
    const HANDLE thread = session.Thread();
    // The thread is waiting for the very call that this runs in.
    if (IsInCallback(&session, false) && session.LetGo()) {
        DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), m_letGoThread.Put(),
                        SYNCHRONIZE, FALSE, 0);
        return;
    }
    SetEvent(session.StopEvent());
    session.Holder().CancelOutstandingCall();
    const HANDLE handles[] = {thread, session.ExitedEvent()};
    if (WaitLettingCallsIn(handles, ARRAYSIZE(handles), cGraceMilliseconds) != WAIT_TIMEOUT) {
        session.AwaitThreadEnd();
        CutReferences();
        return;
    }
    KALTRACE(msg::cZombieThread, GetThreadId(thread), Printable(thread),
             Printable(session.ExitedEvent()));
    if (!CanThreadEndByItself(session) && session.TerminateMonitorThread(WAIT_TIMEOUT))
        CutReferences();
}

// The references that a thread has left behind: Wine 8 asks the host's message filter for the
// release of the gate as well, and forgets a release that is rejected. On Windows only a
// terminated thread can leave something behind.
//
// A run that was started meanwhile shares the connection. In the multithreaded apartment
// there is none: the thread has the object itself.
void RegKeyMonitor::CutReferences() {
    if (CurrentApartment() == GetCurrentThreadId() && !Session())
        CoDisconnectObject(this, 0);
}

// It may still end when its owner's client returns, or when the owner's apartment lets calls
// in, which a wait on a thread outside that apartment does not do.
bool RegKeyMonitor::CanThreadEndByItself(const MonitorSession& session) {
    return IsInCallback(&session, true) || !m_gateRegistration.IsRegistered() ||
           m_gateRegistration.Apartment() != CurrentApartment();
}

void RegKeyMonitor::OnApartmentEnd() {
    KALTRACE_SCOPE("RegKeyMonitor::OnApartmentEnd");
    // The thread may release the last reference while this waits for it.
    const Microsoft::WRL::ComPtr<ICOMCallbackGate> spSelf(this);
    TerminateRegMonitor();
    if (const HANDLE thread = m_letGoThread.Get())
        WaitLettingCallsIn(&thread, 1, cGraceMilliseconds);
    m_apartmentEnd.Unwatch();
}

// `pSession`: the session that failed to start; null if there is no session. Another call may
// have removed or replaced it while the caller was waiting.
void RegKeyMonitor::CloseAndReset(const MonitorSession* pSession) {
    KALTRACE_SCOPE("RegKeyMonitor::CloseAndReset");
    MonitorSessionPtr spClosed;
    SlimHold hold(m_guard);
    if (m_spSession.Get() != pSession)
        return;
    spClosed.Swap(m_spSession);
    m_pClient = nullptr;
}

bool RegKeyMonitor::IsMonitoring() {
    KALTRACE_SCOPE("RegKeyMonitor::IsMonitoring");
    const MonitorSessionPtr spSession = Session();
    return spSession && !spSession->HasWatchEnded() && spSession->IsThreadRunning();
}

STDMETHODIMP RegKeyMonitor::Callback(ULONG) {
    KALTRACE(msg::cCallbackEntry, GetCurrentThreadId());
    // The client may drop the owner's reference in the call.
    const Microsoft::WRL::ComPtr<ICOMCallbackGate> spSelf(this);
    CallbackFrame frame{};
    RegKeyMonitorClient* const pClient = EnterCallback(frame);
    const HRESULT hr = pClient ? pClient->OnKeyChangeNotify() : S_OK;
    LeaveCallback(frame);
    KALTRACE(msg::cCallbackExit, pClient, hr);
    return hr;
}

RegKeyMonitorClient* RegKeyMonitor::EnterCallback(CallbackFrame& frame) {
    frame.threadId = GetCurrentThreadId();
    SlimHold hold(m_guard);
    frame.pSession = m_spSession.Get();
    if (m_spSession)
        m_spSession->CountEntry();
    frame.pNext = m_pCallbacks;
    m_pCallbacks = &frame;
    return m_pClient;
}

void RegKeyMonitor::LeaveCallback(const CallbackFrame& frame) {
    SlimHold hold(m_guard);
    CallbackFrame** ppFrame = &m_pCallbacks;
    while (*ppFrame != &frame)
        ppFrame = &(*ppFrame)->pNext;
    *ppFrame = frame.pNext;
}

bool RegKeyMonitor::IsInCallback(const MonitorSession* pSession, bool onAnyThread) {
    const DWORD threadId = GetCurrentThreadId();
    SlimHold hold(m_guard);
    for (const CallbackFrame* pFrame = m_pCallbacks; pFrame; pFrame = pFrame->pNext) {
        if (pFrame->pSession == pSession && (onAnyThread || pFrame->threadId == threadId))
            return true;
    }
    return false;
}

MonitorSessionPtr RegKeyMonitor::Session() {
    SlimHold hold(m_guard);
    return m_spSession;
}

MonitorSessionPtr RegKeyMonitor::DetachSession() {
    SlimHold hold(m_guard);
    m_pClient = nullptr;
    return std::exchange(m_spSession, nullptr);
}

}  // namespace kora4
