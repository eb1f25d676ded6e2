// SPDX-License-Identifier: MIT
// Bringing the object up, and the registration of the client's callback.
#include "api/kora4asl.h"
#include "contract/registry_paths.h"
#include "platform/com_object.h"

namespace kora4 {

using Microsoft::WRL::ComPtr;

STDMETHODIMP CKORA4ASL::Initialize() {
    static constexpr Method cMethod{"CKORA4ASL::Initialize",
                                    {.initialization = InitializationCheck::eNone}};
    // COM calls that are let in while it waits may release the object.
    const ComPtr<CKORA4ASL> spSelf(this);
    return RunMethod(cMethod, m_initialized, cNothingToCheck,
                     [&] { return m_initializeGuard.Run([&] { return BringUp(); }); });
}

// Each step keeps what an earlier, failed call has reached. The monitor comes first: when
// the key to watch is missing, nothing has been created yet.
HRESULT CKORA4ASL::BringUp() {
    if (m_initialized)
        return S_OK;
    HRESULT hr = StartMonitor();
    if (SUCCEEDED(hr))
        hr = m_uiKeysClient.ObjInitialize();
    if (SUCCEEDED(hr))
        hr = m_regPropKeysAccess.Open(true);
    if (SUCCEEDED(hr)) {
        LoadTraceFlags();
        hr = m_uiKeysClient.InitialKeysLoad();
    }
    if (SUCCEEDED(hr))
        hr = BecomeReady();
    return hr;
}

HRESULT CKORA4ASL::StartMonitor() {
    if (!m_pRegKeyMonitor) {
        const HRESULT hr = ComObject<RegKeyMonitor>::Create(m_pRegKeyMonitor.GetAddressOf());
        if (FAILED(hr))
            return hr;
    } else if (m_pRegKeyMonitor->IsMonitoring()) {
        return S_OK;
    } else {
        // A thread that ended by itself since the last try has left its handle behind.
        m_pRegKeyMonitor->TerminateRegMonitor();
    }
    return m_pRegKeyMonitor->SpawnRegMonitor(HKEY_LOCAL_MACHINE, cDynamicKeysPath, this);
}

void CKORA4ASL::LoadTraceFlags() {
    std::uint32_t flags = 0;
    if (m_regPropKeysAccess.ReadUINT(eKeySetStatic, pkey::Setting(pkey::cTraceFlagsPid),
                                     &flags) == S_OK)
        trace::SetFlags(flags);
}

// Notifications that came in since the load are caught up with before the object counts as
// initialised. Nobody can be registered yet, so there is nobody to tell. A notification that
// comes in meanwhile waits and gets its own analysis: a program that writes without pause must
// not keep the object from becoming ready.
HRESULT CKORA4ASL::BecomeReady() {
    const SlimHold hold(m_readinessLock);
    if (m_notificationMissed) {
        ChangeSet changes;
        const HRESULT hr = m_uiKeysClient.AnalyseChanges(&changes);
        if (FAILED(hr))
            return hr;
    }
    m_initialized = true;
    return S_OK;
}

STDMETHODIMP CKORA4ASL::RegisterChangeNotifications(IVeltoKORA4APICallback* pIAPICallback) {
    static constexpr Method cMethod{
        "CKORA4ASL::RegisterChangeNotifications",
        {.badArgument = "NULL == pICallback", .entry = "%s: %4d %s:>> pICallback: %p\n"}};
    // The callback that is released may hold the client's last reference to the object.
    const ComPtr<CKORA4ASL> spSelf(this);
    return RunMethod(
        cMethod, m_initialized, pIAPICallback != nullptr,
        [&] {
            const CallbackHold hold(m_callbackGuard);
            SetCallback(pIAPICallback);
            KALTRACE(trace::eMessages, cMethod.site, "(0x%x)success\n",
                     static_cast<unsigned>(reinterpret_cast<UINT_PTR>(pIAPICallback)));
            return S_OK;
        },
        static_cast<void*>(pIAPICallback));
}

STDMETHODIMP CKORA4ASL::UnregisterChangeNotifications() {
    static constexpr Method cMethod{"CKORA4ASL::UnregisterChangeNotifications"};
    const ComPtr<CKORA4ASL> spSelf(this);  // as above
    return RunMethod(cMethod, m_initialized, cNothingToCheck, [&] {
        const CallbackHold hold(m_callbackGuard);
        if (m_spIASLCallback) {
            SetCallback(nullptr);
            KALTRACE(trace::eMessages, cMethod.site,
                     " Successfully unregistered callback and set m_spIASLCallback = Null\n");
        }
        return S_OK;
    });
}

// The old callback is released last: that may call back in.
void CKORA4ASL::SetCallback(IVeltoKORA4APICallback* pICallback) {
    if (m_spIASLCallback.Get() == pICallback)
        return;
    ++m_registration;
    m_registeredAfter = m_uiKeysClient.Analyses();
    ComPtr<IVeltoKORA4APICallback>(pICallback).Swap(m_spIASLCallback);
}

}  // namespace kora4
