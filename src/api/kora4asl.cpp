// SPDX-License-Identifier: MIT
// The API object as a COM object: construction, destruction, interfaces, version. Its other
// methods are in one file per area.
#include "api/kora4asl.h"

#include "api/create_api_object.h"
#include "contract/version.h"
#include "platform/com_object.h"

namespace kora4 {

CKORA4ASL::CKORA4ASL() {
    KALTRACE_SCOPE("CKORA4ASL::CKORA4ASL");
}

void CKORA4ASL::FinalRelease() {
    KALTRACE_SCOPE("CKORA4ASL::~CKORA4ASL");
    UnregisterChangeNotifications();
    if (m_pRegKeyMonitor) {
        m_pRegKeyMonitor->TerminateRegMonitor();
        m_pRegKeyMonitor.Reset();
    }
    m_initialized = false;
}

void* CKORA4ASL::FindInterface(REFIID iid) {
    if (iid == __uuidof(IUnknown) || iid == __uuidof(IVeltoKORA4API))
        return static_cast<IVeltoKORA4API*>(this);
    return nullptr;
}

STDMETHODIMP CKORA4ASL::GetVeltoKORA4Version(ULONG* kora4Version_3, ULONG* kora4Version_2,
                                             ULONG* kora4Version_1, ULONG* kora4Version_0) {
    static constexpr Method cMethod{msg::cVersionNull,
                                    {.initialization = InitializationCheck::eNone}};
    const bool good = kora4Version_3 && kora4Version_2 && kora4Version_1 && kora4Version_0;
    return RunMethod(cMethod, m_initialized, good, [&] {
        *kora4Version_3 = KORA4_VERSION_3;
        *kora4Version_2 = KORA4_VERSION_2;
        *kora4Version_1 = KORA4_VERSION_1;
        *kora4Version_0 = KORA4_VERSION_0;
        KALTRACE(msg::cVersion, KORA4_VERSION_3, KORA4_VERSION_2, KORA4_VERSION_1,
                 KORA4_VERSION_0);
        return S_OK;
    });
}

HRESULT CreateApiObject(REFIID iid, void** ppv) {
    Microsoft::WRL::ComPtr<ComObject<CKORA4ASL>> spObject;
    const HRESULT hr = ComObject<CKORA4ASL>::Create(spObject.GetAddressOf());
    if (FAILED(hr))
        return hr;
    return spObject.CopyTo(iid, ppv);
}

}  // namespace kora4
