// SPDX-License-Identifier: MIT
// What the owner of a monitor and its thread share from one start to the end of the thread.
#pragma once

#include <windows.h>
#include <wrl/client.h>

#include <atomic>

#include "comcallbackgate.h"
#include "monitor/apartment.h"
#include "monitor/gate_stream_holder.h"
#include "platform/handles.h"
#include "platform/module.h"
#include "platform/non_copyable.h"

namespace kora4 {

// One run of the monitor. Reference-counted: the owner and the thread each hold it, and
// either may be the last. Everything but the counters and what the thread holds is set
// before the thread is created and not changed after; no lock.
//
// It locks the module while it exists, and holds the thread's own reference to the module,
// without which the code could be unmapped while the thread is ending.
//
// It also holds the multithreaded apartment. If the thread were the last one in it when it
// ends, the platform would destroy the apartment inside the loader's lock. So the thread leaves
// the apartment before it releases its reference to the session, and the last release gives up
// the apartment, outside the loader's lock.
//
// Finally it keeps what the thread holds: its gate, its share of the gate's factory, the
// watched key and the change event. Only the thread uses them. If the thread is terminated,
// another thread releases them. Two things are lost for good: the terminated thread's entry
// into the multithreaded apartment, which then lasts as long as the process, and what the
// platform held for a call that the thread was making.
class MonitorSession : NonCopyable {
  public:
    // `root` and `subkey` name the watched key. Neither is copied or closed: both must live
    // until the thread has ended.
    MonitorSession(HKEY root, const wchar_t* subkey) : m_rootKey(root), m_pwSubkey(subkey) {}

    // Reference counting, for ComPtr; any thread.
    void AddRef() { m_references.fetch_add(1); }
    ULONG Release();

    // The three events, the module reference and the apartment. E_FAIL without an event.
    HRESULT MakeControls();

    // Creates the thread on `procedure`; it gets this session with a reference of its own.
    // False, and nothing is held, when the thread cannot be created.
    bool CreateMonitorThread(LPTHREAD_START_ROUTINE procedure);

    // The owner's side: the thread is to end, and nobody will wait for it. False if the thread
    // has only its own end left to do: see AwaitThreadEnd.
    bool LetGo();

    // The thread's side, its very last act: releases what is left and ends the thread.
    // `isInApartment`: the thread has entered the multithreaded apartment itself.
    [[noreturn]] void EndThread(DWORD exitCode, bool isInApartment);

    // Terminates the thread and has what it held released on a thread of the same apartment;
    // lets COM calls in meanwhile. Returns false and does nothing while the thread is releasing
    // it itself: then it can still end, and may hold locks of the platform.
    bool TerminateMonitorThread(DWORD exitCode);

    // Waits a little for a thread that has only its own end left to do, so that the module can
    // be unloaded at once. An owner inside some module's DllMain keeps the thread from ending;
    // then it ends later, by itself.
    void AwaitThreadEnd() const;

    // Whether the thread was created and has not ended yet.
    bool IsThreadRunning() const;

    // What the constructor, MakeControls and CreateMonitorThread have set. The session owns all
    // of it: callers close nothing.
    HKEY RootKey() const { return m_rootKey; }
    const wchar_t* Subkey() const { return m_pwSubkey; }
    HANDLE StopEvent() const { return m_stopEvent.Get(); }
    HANDLE ExitedEvent() const { return m_exitedEvent.Get(); }
    HANDLE ReadyEvent() const { return m_readyEvent.Get(); }
    HANDLE Thread() const { return m_thread.Get(); }
    GateStreamHolder& Holder() { return m_gateHolder; }

    // The thread's side. UnmarshalGate obtains the gate; WatchedKey and ChangeEvent own what
    // the thread watches with. Only the thread uses these three.
    HRESULT UnmarshalGate();
    ICOMCallbackGate* Gate() const { return m_spGate.Get(); }
    UniqueRegKey& WatchedKey() { return m_watchedKey; }
    UniqueHandle& ChangeEvent() { return m_changeEvent; }
    // The thread has stopped watching for good: releases all of these.
    void GiveBack();

    // Whether the thread has stopped watching, or was made to. Any thread.
    bool HasWatchEnded() const { return m_parting.load() != eWatching; }

    // Entries into the owner's Callback. A call through the gate that failed without one has
    // not reached the owner.
    void CountEntry() { m_entries.fetch_add(1); }
    ULONG Entries() const { return m_entries.load(); }

  private:
    // How far the thread is, or that the owner has ended it by force.
    enum Parting : int { eWatching, eGivingBack, eThreadDone, eTerminated };

    static constexpr DWORD cThreadEndMilliseconds = 500;
    static constexpr DWORD cForceMilliseconds = 5000;

    ~MonitorSession() = default;

    static DWORD WINAPI GiveBackForTheDead(void* pParameter);

    // Destroyed from the last to the first: the apartment is given up after the stream
    // in the holder, the module is unlocked last.
    ModuleLock m_moduleLock;
    MtaUsage m_mtaUsage;
    const HKEY m_rootKey;
    const wchar_t* const m_pwSubkey;
    UniqueHandle m_stopEvent;
    UniqueHandle m_exitedEvent;
    UniqueHandle m_readyEvent;
    UniqueHandle m_thread;
    GateStreamHolder m_gateHolder;
    GateFactoryRegistration m_threadRegistration;
    Microsoft::WRL::ComPtr<ICOMCallbackGate> m_spGate;
    UniqueRegKey m_watchedKey;
    UniqueHandle m_changeEvent;
    HMODULE m_threadModule = nullptr;
    std::atomic<int> m_parting{eWatching};
    std::atomic<ULONG> m_entries{0};
    std::atomic<LONG> m_references{1};
};

using MonitorSessionPtr = Microsoft::WRL::ComPtr<MonitorSession>;

}  // namespace kora4
