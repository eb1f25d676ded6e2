// SPDX-License-Identifier: MIT
// The monitor's signal becomes the client's notifications.
#include "api/kora4asl.h"
#include "api/notification_pass.h"

namespace kora4 {

using Microsoft::WRL::ComPtr;

HRESULT CKORA4ASL::OnKeyChangeNotify() {
    ComPtr<CKORA4ASL> spSelf;
    const ULONG references = AddRef();
    *spSelf.GetAddressOf() = this;
    // Released on another thread just before: nobody is left to tell, and this reference
    // would keep nothing alive.
    if (IsGoing(references))
        return S_OK;
    KALTRACE_RESULT(hr, S_OK, msg::cAnalysisBegins.function);
    if (!IsReadyForNotification())
        return hr;
    ChangeSet changes;
    KALTRACE(msg::cAnalysisBegins, GetCurrentThreadId());
    hr = m_uiKeysClient.AnalyseChanges(&changes);
    KALTRACE(msg::cAnalysisDone, GetCurrentThreadId());
    if (SUCCEEDED(hr))
        hr = Notify(changes);
    return hr;
}

// Before the object is initialised a notification must not fail, which would end the
// monitoring: it is remembered for Initialize.
bool CKORA4ASL::IsReadyForNotification() {
    const SlimHold hold(m_readinessLock);
    if (!m_initialized)
        m_notificationMissed = true;
    return m_initialized;
}

// S_OK when nobody is registered.
HRESULT CKORA4ASL::Notify(ChangeSet& changes) {
    const CallbackHold hold(m_callbackGuard);
    // A callback may unregister itself; the pass keeps it alive. One that was registered after
    // the analysis began hears later passes only: it may have read a newer state already.
    ComPtr<IVeltoKORA4APICallback> spCallback;
    if (changes.analysis != m_registeredAfter)
        spCallback = m_spIASLCallback;
    KALTRACE(msg::cCallbackToTell, spCallback.Get(), GetCurrentThreadId());
    if (!spCallback)
        return S_OK;
    KALTRACE(msg::cTelling, GetCurrentThreadId());
    const HRESULT hr = CallbackNotifications(spCallback.Get(), changes, m_registration,
                                             m_uiKeysClient.Overtaken());
    KALTRACE(msg::cTold, hr, GetCurrentThreadId());
    return hr;
}

}  // namespace kora4
