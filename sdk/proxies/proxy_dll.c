// SPDX-License-Identifier: MIT
/* KORA4Proxies.dll: the proxies for clients that cannot link a static library. A client loads
 * it and calls Kora4RegisterProxies (kora4_proxies.h), names it in a manifest, or registers it
 * with regsvr32, after which every apartment of the machine has the proxies. */
#include <windows.h>

#include <objbase.h>
#include <rpcproxy.h>

#include "kora4api.h"

/* Generated with the proxy code. */
HRESULT WINAPI Kora4SdkDllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
HRESULT WINAPI Kora4SdkDllCanUnloadNow(void);
extern const ProxyFileInfo* Kora4Sdk_aProxyFileList[];

/* The class of the factory, as in kora4_proxies.c. */
#define FACTORY_CLASS (&IID_IVeltoKORA4API)

static HINSTANCE g_instance;

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* pReserved) {
    (void)pReserved;
    if (reason == DLL_PROCESS_ATTACH) {
        g_instance = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
    return Kora4SdkDllGetClassObject(rclsid, riid, ppv);
}

STDAPI DllCanUnloadNow(void) {
    return Kora4SdkDllCanUnloadNow();
}

STDAPI DllRegisterServer(void) {
    return NdrDllRegisterProxy(g_instance, Kora4Sdk_aProxyFileList, FACTORY_CLASS);
}

STDAPI DllUnregisterServer(void) {
    return NdrDllUnregisterProxy(g_instance, Kora4Sdk_aProxyFileList, FACTORY_CLASS);
}
