// SPDX-License-Identifier: MIT
/* Registers the generated proxy code of the SDK for an apartment, and ends that
 * registration. */
#define COBJMACROS
#include "kora4_proxies.h"

#include "kora4api.h"

/* Generated with the proxy code. */
HRESULT WINAPI Kora4SdkDllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);

/* The class under which an apartment finds the factory of both interfaces. */
#define FACTORY_CLASS (&IID_IVeltoKORA4API)

static HRESULT RegisterFactory(DWORD* pCookie) {
    IUnknown* pFactory = NULL;
    HRESULT hr = Kora4SdkDllGetClassObject(FACTORY_CLASS, &IID_IUnknown, (void**)&pFactory);
    if (SUCCEEDED(hr)) {
        hr = CoRegisterClassObject(FACTORY_CLASS, pFactory, CLSCTX_INPROC_SERVER,
                                   REGCLS_MULTIPLEUSE, pCookie);
        IUnknown_Release(pFactory);
        /* One platform answers like this where another gives S_OK and cookie 0. */
        if (hr == CO_E_OBJISREG) {
            *pCookie = 0;
            hr = S_OK;
        }
    }
    return hr;
}

HRESULT Kora4RegisterProxies(DWORD* pCookie) {
    if (!pCookie)
        return E_POINTER;
    *pCookie = 0;
    HRESULT hr = RegisterFactory(pCookie);
    if (SUCCEEDED(hr))
        hr = CoRegisterPSClsid(&IID_IVeltoKORA4API, FACTORY_CLASS);
    if (SUCCEEDED(hr))
        hr = CoRegisterPSClsid(&IID_IVeltoKORA4APICallback, FACTORY_CLASS);
    if (FAILED(hr)) {
        Kora4RevokeProxies(*pCookie);
        *pCookie = 0;
        return hr;
    }
    return S_OK;
}

HRESULT Kora4RevokeProxies(DWORD cookie) {
    return cookie ? CoRevokeClassObject(cookie) : S_OK;
}
