// SPDX-License-Identifier: MIT
// Carries the marshalled gate from the owner's apartment to the monitor thread.
#pragma once

#include <objidl.h>
#include <windows.h>

#include <atomic>

#include "monitor/gate_factory.h"
#include "platform/non_copyable.h"

namespace kora4 {

// Holds the stream between Marshal (owner's apartment) and Unmarshal (monitor thread),
// and from then until EndCancellation the id of the monitor thread, so that the owner can
// cancel the notification that the thread has outstanding. No lock: the owner marshals
// before the thread is created, the thread alone unmarshals, and the thread id is atomic.
class GateStreamHolder : NonCopyable {
  public:
    // CoGetCancelObject, or what a test puts in its place.
    using CancelObjectSource = HRESULT(WINAPI*)(DWORD threadId, REFIID iid, void** ppv);

    ~GateStreamHolder() { ReleaseStream(); }

    // Registers the gate's factory in the calling thread's apartment and marshals
    // `pObject`, once, for any other apartment. A null object: E_INVALIDARG.
    HRESULT Marshal(REFIID iid, IUnknown* pObject, GateFactoryRegistration& registration);

    // The other side: takes the gate out of the stream, which is used up by that even if it
    // fails; whatever fails before leaves the stream to the destructor. In the apartment that
    // marshalled, `*ppv` is the object itself. A null `ppv`: E_INVALIDARG; no stream: E_FAIL.
    HRESULT Unmarshal(REFIID iid, void** ppv, GateFactoryRegistration& registration);

    // On the thread that unmarshalled, before it gives the gate up: the owner must never
    // cancel that. Whoever has read the thread's id just before finds cancellation disabled
    // and no call that it could end, and the id is no other thread's as long as the owner
    // holds a handle to the thread. Harmless when there is nothing to end.
    void EndCancellation();

    // Undoes what Unmarshal or Marshal registered; there is no thread to cancel any more.
    void Revoke(GateFactoryRegistration& registration);

    // Asks COM to end the call that the unmarshalling thread has outstanding. Where there is
    // no call cancellation (Wine 8) nothing happens; the caller's wait then has to let the
    // call in.
    void CancelOutstandingCall();

    // True between Marshal and Unmarshal.
    bool HasStream() const { return m_pStream != nullptr; }
    // 0 when no thread can be cancelled.
    DWORD ThreadId() const { return m_threadId.load(); }

    // Where cancel objects come from, for tests; null restores the platform's own.
    static void SetCancelObjectSource(CancelObjectSource source);

  private:
    void ReleaseStream();

    IStream* m_pStream = nullptr;
    std::atomic<DWORD> m_threadId{0};
};

}  // namespace kora4
