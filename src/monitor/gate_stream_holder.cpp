// SPDX-License-Identifier: MIT
// Marshals the gate, unmarshals it on the monitor thread, and cancels the call that is
// outstanding there.
#include "monitor/gate_stream_holder.h"

#include <objbase.h>
#include <wrl/client.h>

#include <utility>

#include "trace/trace.h"

namespace kora4 {
namespace {

std::atomic<GateStreamHolder::CancelObjectSource> s_cancelObjectSource{nullptr};

// Wine 8's ole32 does not export it, so it is looked up instead of imported.
GateStreamHolder::CancelObjectSource FindCancelObjectSource() {
    if (const auto source = s_cancelObjectSource.load())
        return source;
    const HMODULE ole32 = GetModuleHandleW(L"ole32.dll");
    const FARPROC proc = ole32 ? GetProcAddress(ole32, "CoGetCancelObject") : nullptr;
    return reinterpret_cast<GateStreamHolder::CancelObjectSource>(
        reinterpret_cast<void*>(proc));
}

}  // namespace

HRESULT GateStreamHolder::Marshal(REFIID iid, IUnknown* pObject,
                                  GateFactoryRegistration& registration) {
    KALTRACE_RESULT(hr, E_INVALIDARG, "GateStreamHolder::Marshal");
    if (!pObject)
        return hr;
    ReleaseStream();
    hr = registration.Register();
    if (SUCCEEDED(hr))
        hr = CoMarshalInterThreadInterfaceInStream(iid, pObject, &m_pStream);
    return hr;
}

HRESULT GateStreamHolder::Unmarshal(REFIID iid, void** ppv,
                                    GateFactoryRegistration& registration) {
    KALTRACE_RESULT(hr, E_INVALIDARG, "GateStreamHolder::Unmarshal");
    if (!ppv)
        return hr;
    hr = E_FAIL;
    if (!m_pStream)
        return hr;
    hr = CoEnableCallCancellation(nullptr);
    if (FAILED(hr))
        return hr;
    hr = registration.Register();
    // One reference, released completely by the caller: the owner lets calls in while it waits,
    // so that the proxy's release reaches it and leaves nothing behind.
    if (SUCCEEDED(hr))
        hr = CoGetInterfaceAndReleaseStream(std::exchange(m_pStream, nullptr), iid, ppv);
    // Only now: the owner is to cancel notifications, and nothing else that the thread does.
    if (SUCCEEDED(hr))
        m_threadId.store(GetCurrentThreadId());
    else
        CoDisableCallCancellation(nullptr);
    return hr;
}

void GateStreamHolder::EndCancellation() {
    if (m_threadId.exchange(0) != 0)
        CoDisableCallCancellation(nullptr);
}

void GateStreamHolder::Revoke(GateFactoryRegistration& registration) {
    KALTRACE_SCOPE("GateStreamHolder::Revoke");
    if (!registration.IsRegistered())
        return;
    registration.Revoke();
    m_threadId.store(0);
}

void GateStreamHolder::CancelOutstandingCall() {
    KALTRACE_SCOPE("GateStreamHolder::CancelOutstandingCall");
    const CancelObjectSource source = FindCancelObjectSource();
    const DWORD threadId = m_threadId.load();
    if (!source || threadId == 0)
        return;
    Microsoft::WRL::ComPtr<ICancelMethodCalls> spCancel;
    const HRESULT hr = source(threadId, __uuidof(ICancelMethodCalls),
                              reinterpret_cast<void**>(spCancel.ReleaseAndGetAddressOf()));
    if (SUCCEEDED(hr) && spCancel)
        spCancel->Cancel(0);
}

void GateStreamHolder::SetCancelObjectSource(CancelObjectSource source) {
    s_cancelObjectSource.store(source);
}

// A stream that nobody unmarshalled still holds references to the object.
void GateStreamHolder::ReleaseStream() {
    if (IStream* const pStream = std::exchange(m_pStream, nullptr)) {
        CoReleaseMarshalData(pStream);
        pStream->Release();
    }
}

}  // namespace kora4
