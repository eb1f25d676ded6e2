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
    // CoGetCancelObject, or its replacement in a test.
    using CancelObjectSource = HRESULT(WINAPI*)(DWORD threadId, REFIID iid, void** ppv);

    ~GateStreamHolder() { ReleaseStream(); }

    // Registers the gate's factory in the calling thread's apartment and marshals
    // `pObject`, once, for any other apartment. A null object: E_INVALIDARG.
    HRESULT Marshal(REFIID iid, IUnknown* pObject, GateFactoryRegistration& registration);

    // The other side: takes the gate out of the stream, which consumes it even on failure; an
    // earlier failure leaves the stream to the destructor. In the apartment that marshalled,
    // `*ppv` is the object itself. A null `ppv`: E_INVALIDARG; no stream: E_FAIL.
    HRESULT Unmarshal(REFIID iid, void** ppv, GateFactoryRegistration& registration);

    // On the thread that unmarshalled, before it releases the gate: the owner must never cancel
    // that release. An owner that has read the thread's id just before finds cancellation
    // disabled and no call to end; the id belongs to no other thread as long as the owner holds
    // a handle to this one. Harmless if there is nothing to end.
    void EndCancellation();

    // Undoes what Unmarshal or Marshal registered; from then on there is no thread to cancel.
    void Revoke(GateFactoryRegistration& registration);

    // Asks COM to end the call that the unmarshalling thread has outstanding. Without call
    // cancellation (Wine 8) nothing happens; the caller's wait must then let the call in.
    void CancelOutstandingCall();

    // Where cancel objects come from, for tests; null restores the platform's own.
    static void SetCancelObjectSource(CancelObjectSource source);

  private:
    void ReleaseStream();

    IStream* m_pStream = nullptr;
    std::atomic<DWORD> m_threadId{0};
};

}  // namespace kora4
