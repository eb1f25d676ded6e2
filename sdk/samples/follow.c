// SPDX-License-Identifier: MIT
/* follow in C: what follow.cpp does. One line builds it here:
 *
 *   x86_64-w64-mingw32-gcc -static -I../include follow.c -o follow_c.exe -lole32 -luuid
 */
#define COBJMACROS
#define INITGUID /* this source defines the GUIDs */
#include <kora4api.h>
#include <stdio.h>

static void Show(LONG profile) {
    printf("profile %ld\n", profile);
    fflush(stdout);
}

static HRESULT STDMETHODCALLTYPE QueryInterface(IVeltoKORA4APICallback* pThis, REFIID iid,
                                                void** ppv) {
    if (!ppv)
        return E_POINTER;
    *ppv = NULL;
    if (!IsEqualIID(iid, &IID_IUnknown) && !IsEqualIID(iid, &IID_IVeltoKORA4APICallback))
        return E_NOINTERFACE;
    *ppv = pThis;
    return S_OK;
}

/* The one callback lives as long as the program: references are not counted. */
static ULONG STDMETHODCALLTYPE AddRef(IVeltoKORA4APICallback* pThis) {
    (void)pThis;
    return 2;
}

static ULONG STDMETHODCALLTYPE Release(IVeltoKORA4APICallback* pThis) {
    (void)pThis;
    return 1;
}

static HRESULT STDMETHODCALLTYPE OnActiveProfileChange(IVeltoKORA4APICallback* pThis,
                                                       LONG profileID) {
    (void)pThis;
    Show(profileID);
    return S_OK;
}

/* What is of no interest succeeds all the same: a failing result, E_NOTIMPL too, ends all
 * notifications. */
static HRESULT STDMETHODCALLTYPE OnEnableStateChange(IVeltoKORA4APICallback* pThis,
                                                     BOOL onElseOff) {
    (void)pThis, (void)onElseOff;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnCustomProfileTableChange(IVeltoKORA4APICallback* pThis) {
    (void)pThis;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnTechnologyOnElseOffChange(IVeltoKORA4APICallback* pThis,
                                                             KORA4APITechnology technology,
                                                             BOOL onElseOff) {
    (void)pThis, (void)technology, (void)onElseOff;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnSimplePatchValueChange(IVeltoKORA4APICallback* pThis,
                                                          KORA4PatchValueUnion* pPatchValue) {
    (void)pThis, (void)pPatchValue;
    return S_OK;
}

static HRESULT STDMETHODCALLTYPE OnGraphicEQChange(IVeltoKORA4APICallback* pThis,
                                                   GraphicEQData* pGraphicData) {
    (void)pThis, (void)pGraphicData;
    return S_OK;
}

static IVeltoKORA4APICallbackVtbl g_methods = {
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
static IVeltoKORA4APICallback g_follower = {&g_methods};

static HRESULT Follow(void) {
    IVeltoKORA4API* pApi = NULL;
    LONG profile = 0;
    HRESULT hr = CoCreateInstance(&CLSID_VeltoKORA4APITestCoclass, NULL, CLSCTX_INPROC_SERVER,
                                  &IID_IVeltoKORA4API, (void**)&pApi);
    if (FAILED(hr))
        return hr;
    hr = IVeltoKORA4API_Initialize(pApi);
    if (SUCCEEDED(hr))
        hr = IVeltoKORA4API_RegisterChangeNotifications(pApi, &g_follower);
    if (SUCCEEDED(hr))
        hr = IVeltoKORA4API_GetActiveProfile(pApi, &profile);
    if (SUCCEEDED(hr)) {
        Show(profile);
        getchar();
        IVeltoKORA4API_UnregisterChangeNotifications(pApi);
    }
    IVeltoKORA4API_Release(pApi);
    return hr;
}

int main(void) {
    HRESULT hr = CoInitializeEx(NULL, COINIT_MULTITHREADED);
    if (SUCCEEDED(hr)) {
        hr = Follow();
        CoUninitialize();
    }
    if (FAILED(hr))
        fprintf(stderr, "follow_c: 0x%08lX\n", (unsigned long)hr);
    return FAILED(hr) ? 1 : 0;
}
