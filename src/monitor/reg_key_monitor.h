// Watches a registry key on a thread of its own and tells its owner of every write.
#ifndef KORA4_MONITOR_REG_KEY_MONITOR_H
#define KORA4_MONITOR_REG_KEY_MONITOR_H

#include <windows.h>

#include "comcallbackgate.h"
#include "monitor/gate_stream_holder.h"
#include "monitor/monitor_session.h"
#include "monitor/reg_key_monitor_client.h"

namespace kora4 {

// Reports every value written under a registry key to its owner, in the owner's
// apartment. Create it as ComObject<RegKeyMonitor>; the owner keeps one reference, and
// calls TerminateRegMonitor before it drops that: a running monitor thread holds
// references of its own.
//
// Threads. SpawnRegMonitor and TerminateRegMonitor are called in the owner's apartment
// (any thread of it in the multithreaded apartment, one at a time); both let COM calls
// into a single-threaded apartment while they wait. Callback comes in on the owner's
// thread, or on the monitor thread itself when the owner lives in the multithreaded
// apartment. The monitor thread never touches this object but through the gate; what it
// works on is the MonitorSession, which it shares with the owner and which outlives
// whichever of the two goes first.
//
// Lock. m_guard guards the client, the session and the list of callbacks in progress. It
// is a leaf: nothing is called and nothing is waited for while it is held.
class RegKeyMonitor : public ICOMCallbackGate {
  public:
    RegKeyMonitor() = default;
    virtual ~RegKeyMonitor();
    RegKeyMonitor(const RegKeyMonitor&) = delete;
    RegKeyMonitor& operator=(const RegKeyMonitor&) = delete;

    // Starts watching `subkey` and everything below it. Returns when the watch is armed.
    // E_INVALIDARG: a null argument. E_FAIL: a thread is already set (see IsMonitoring),
    // or the key cannot be watched. `subkey` is not copied: it must live until
    // TerminateRegMonitor; so must `client`, which is not reference-counted.
    HRESULT SpawnRegMonitor(HKEY root, const wchar_t* subkey, RegKeyMonitorClient* client);

    // Ends the monitoring: after the return the client is not called any more and the
    // thread has ended. Called from within the client's OnKeyChangeNotify it does not
    // wait: the thread ends, and gives back all it holds, after that call has returned.
    void TerminateRegMonitor();

    // True while the thread is set and runs. A thread that ended by itself (a failing
    // callback, a deleted key) leaves its handle behind until TerminateRegMonitor.
    bool IsMonitoring();

    // ICOMCallbackGate
    STDMETHODIMP Callback(ULONG argument) override;

  protected:
    void* FindInterface(REFIID iid);
};

}  // namespace kora4

#endif  // KORA4_MONITOR_REG_KEY_MONITOR_H
