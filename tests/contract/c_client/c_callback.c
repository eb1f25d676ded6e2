// SPDX-License-Identifier: MIT
/* The callback object of the plain C client: a vtable of functions that note what they are
 * told. */
#include "c_callback.h"

#include <string.h>

static Callback* This(IVeltoKORA4APICallback* pInterface) {
    return CONTAINING_RECORD(pInterface, Callback, api);
}

static HRESULT STDMETHODCALLTYPE QueryInterface(IVeltoKORA4APICallback* pThis, REFIID iid,
                                                void** ppv) {
    if (!ppv)
        return E_POINTER;
    *ppv = NULL;
    if (!IsEqualIID(iid, &IID_IUnknown) && !IsEqualIID(iid, &IID_IVeltoKORA4APICallback))
        return E_NOINTERFACE;
    *ppv = pThis;
    IVeltoKORA4APICallback_AddRef(pThis);
    return S_OK;
}

static ULONG STDMETHODCALLTYPE AddRef(IVeltoKORA4APICallback* pThis) {
    return (ULONG)InterlockedIncrement(&This(pThis)->references);
}

static ULONG STDMETHODCALLTYPE Release(IVeltoKORA4APICallback* pThis) {
    return (ULONG)InterlockedDecrement(&This(pThis)->references);
}

static HRESULT STDMETHODCALLTYPE OnActiveProfileChange(IVeltoKORA4APICallback* pThis,
                                                       LONG profileID) {
    ++This(pThis)->profileCalls;
    This(pThis)->profile = profileID;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnEnableStateChange(IVeltoKORA4APICallback* pThis,
                                                     BOOL onElseOff) {
    ++This(pThis)->enableCalls;
    This(pThis)->enable = onElseOff;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnCustomProfileTableChange(IVeltoKORA4APICallback* pThis) {
    ++This(pThis)->tableCalls;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnTechnologyOnElseOffChange(IVeltoKORA4APICallback* pThis,
                                                             KORA4APITechnology technology,
                                                             BOOL onElseOff) {
    (void)technology;
    (void)onElseOff;
    ++This(pThis)->switchCalls;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnSimplePatchValueChange(IVeltoKORA4APICallback* pThis,
                                                          KORA4PatchValueUnion* pPatchValue) {
    ++This(pThis)->valueCalls;
    This(pThis)->value = *pPatchValue;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnGraphicEQChange(IVeltoKORA4APICallback* pThis,
                                                   GraphicEQData* pGraphicData) {
    ++This(pThis)->eqCalls;
    This(pThis)->eq = *pGraphicData;
    return S_OK;
}

void Callback_Construct(Callback* pThis) {
    static IVeltoKORA4APICallbackVtbl table = {
        QueryInterface,
        AddRef,
        Release,
        OnActiveProfileChange,
        OnEnableStateChange,
        OnCustomProfileTableChange,
        OnTechnologyOnElseOffChange,
        OnSimplePatchValueChange,
        OnGraphicEQChange,
    };
    memset(pThis, 0, sizeof *pThis);
    pThis->api.lpVtbl = &table;
    pThis->references = 1;
}
