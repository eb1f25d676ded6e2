// SPDX-License-Identifier: MIT
// Watches a registry key on a thread of its own and notifies its owner of every write.
#pragma once

#include <windows.h>

#include "comcallbackgate.h"
#include "monitor/apartment_end.h"
#include "monitor/gate_factory.h"
#include "monitor/monitor_session.h"
#include "monitor/reg_key_monitor_client.h"
#include "platform/non_copyable.h"
#include "platform/slim_lock.h"

namespace kora4 {

// Reports every value written under a registry key to its owner, in the owner's
// apartment. Create it as ComObject<RegKeyMonitor>; the owner keeps one reference, and
// calls TerminateRegMonitor before it drops that: a running monitor thread holds
// references of its own.
//
// Threads. SpawnRegMonitor and TerminateRegMonitor are called in the owner's apartment
// (any thread of it in the multithreaded apartment, one at a time); both let COM calls
// into a single-threaded apartment while they wait. Callback is called on the owner's thread,
// or on the monitor thread itself if the owner is in the multithreaded apartment. The monitor
// thread uses this object only through the gate; it works on the MonitorSession, which it
// shares with the owner and which lives until both have released it.
//
// A busy owner, whose message filter rejects the call, is called again after a pause; any other
// failure of the call ends the monitoring. No change is lost meanwhile: the watch stays armed,
// and the call conveys no state.
//
// If a single-threaded apartment ends while its monitor is running, or while a thread that was
// let go has not ended yet, the monitor thread is ended first. If it ends without notice,
// together with its thread, the gate is disconnected: the monitor thread ends at its next
// callback.
//
// Lock. m_guard guards the client, the session and the list of callbacks in progress. Nothing
// is called and nothing is waited for while it is held.
class RegKeyMonitor : public ICOMCallbackGate, private ApartmentEndListener, NonCopyable {
  public:
    virtual ~RegKeyMonitor();

    // Starts watching `subkey` and everything below it. Returns when the watch is armed.
    // E_INVALIDARG: a null argument. E_FAIL: a thread is already set, running or not (see
    // IsMonitoring), or the key cannot be watched. `subkey` is not copied: it must live
    // until TerminateRegMonitor; so must `client`, which is not reference-counted.
    HRESULT SpawnRegMonitor(HKEY root, const wchar_t* subkey, RegKeyMonitorClient* client);

    // Ends the monitoring: after the return the client is no longer called, and the thread has
    // ended. Harmless if nothing runs.
    //
    // Called from within the client's OnKeyChangeNotify, it does not wait: the thread ends, and
    // releases all that it holds, after that call has returned (and the owner's single-threaded
    // apartment has let one more COM call in).
    //
    // A thread that does not end within cGraceMilliseconds is terminated, unless it can still
    // end by itself: then it is left to do so.
    void TerminateRegMonitor();

    // True while the thread is set and watches. A thread that ended by itself (a failing
    // callback, a deleted key) leaves its handle behind until TerminateRegMonitor; call
    // that before the next SpawnRegMonitor.
    bool IsMonitoring();

    // ICOMCallbackGate. The argument has no meaning. S_OK without a client, else what the
    // client's OnKeyChangeNotify returned; the client may drop its last reference to the
    // monitor in that call.
    STDMETHODIMP Callback(ULONG value) override;

    // For the start-up and, separately, for the end of the thread.
    static constexpr DWORD cGraceMilliseconds = 5000;

  protected:
    // Called by the wrapper's QueryInterface; takes no reference.
    void* FindInterface(REFIID iid);

    // The run in progress, or the last one until TerminateRegMonitor; null when idle.
    MonitorSessionPtr Session() EXCLUDES(m_guard);

    // The steps of a start, on the owner's thread: events and apartment of a new session; the
    // gate marshalled into it; the wait until the watch is armed or the thread has given up.
    HRESULT MakeControls(HKEY root, const wchar_t* subkey, RegKeyMonitorClient* client)
        EXCLUDES(m_guard);
    HRESULT MarshalInterface();
    HRESULT AwaitReady(MonitorSession& session);
    // Ends the thread of a session: asks it to end, cancels its call, waits, and terminates it
    // if necessary. Null: there is nothing to end.
    void HaltMonitorThread(MonitorSession* pSession);

    // Drops the session `pSession` from the object if it is still the current one.
    void CloseAndReset(const MonitorSession* pSession) EXCLUDES(m_guard);

    // The thread from its first to its last call. These functions are static: the thread does
    // not use this object, only the session and the gate.
    static DWORD WINAPI RegMonitorEntry(void* pParameter);
    static HRESULT RunRegMonitor(MonitorSession* pSession);
    static HRESULT WatchKey(MonitorSession& session);

    // Waits for changes and for the stop event, and calls the gate for each change. Returns
    // S_OK when told to stop or when the wait itself fails, otherwise the failure that ended
    // it.
    static HRESULT RegMonitorLoop(const MonitorSession& session, HKEY key, HANDLE changeEvent,
                                  ICOMCallbackGate* pICOMCallbackGate);

    // Calls again while the owner's message filter rejects the call.
    static HRESULT CallThroughGate(const MonitorSession& session,
                                   ICOMCallbackGate* pICOMCallbackGate);

    // Asks for one signal at the next write below the key.
    static HRESULT ArmNotification(HKEY key, HANDLE changeEvent);
    // Why a watch cannot be armed, in words for the trace.
    static const char* ReasonOfArmingError(LSTATUS status);

    // Milliseconds between two calls of an owner that is busy: the first pause, each twice as
    // long as the one before, and the longest.
    static constexpr DWORD cFirstBusyMilliseconds = 10;
    static constexpr DWORD cLongestBusyMilliseconds = 500;

  private:
    // A Callback in progress; lives on the stack of the thread that runs it.
    struct CallbackFrame {
        DWORD threadId;
        const MonitorSession* pSession;
        CallbackFrame* pNext;
    };

    void OnApartmentEnd() override;

    // Enter and leave a Callback: keep the list of calls in progress. EnterCallback returns
    // the client, or null when there is none.
    RegKeyMonitorClient* EnterCallback(CallbackFrame& frame) EXCLUDES(m_guard);
    void LeaveCallback(const CallbackFrame& frame) EXCLUDES(m_guard);
    // Whether a Callback of the session is in progress, on the calling thread or on any.
    bool IsInCallback(const MonitorSession* pSession, bool onAnyThread) EXCLUDES(m_guard);

    // Whether a thread that has not ended in time may still end by itself.
    bool CanThreadEndByItself(const MonitorSession& session);

    // Disconnects the gate, so that nothing left on its connection keeps this object alive.
    void CutReferences();
    // Takes the session away from the object and the client from the gate.
    MonitorSessionPtr DetachSession() EXCLUDES(m_guard);

    SlimLock m_guard;
    RegKeyMonitorClient* m_pClient GUARDED_BY(m_guard) = nullptr;
    MonitorSessionPtr m_spSession GUARDED_BY(m_guard);
    CallbackFrame* m_pCallbacks GUARDED_BY(m_guard) PT_GUARDED_BY(m_guard) = nullptr;
    GateFactoryRegistration m_gateRegistration;
    ApartmentEnd m_apartmentEnd;
    // The last thread that was let go; only the owner's thread uses it.
    UniqueHandle m_letGoThread;
};

}  // namespace kora4
