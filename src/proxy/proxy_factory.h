// SPDX-License-Identifier: MIT
/* The library's own proxy code: one class object that makes the proxies and stubs of all
 * its interfaces (IVeltoKORA4API, IVeltoKORA4APICallback, ICOMCallbackGate and the three of
 * the processing objects). Plain C. */
#ifndef KORA4_PROXY_PROXY_FACTORY_H
#define KORA4_PROXY_PROXY_FACTORY_H

#include <objbase.h>
#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the proxy and stub factory, with one reference; any thread.
 *
 * rclsid: the IID of ICOMCallbackGate, which is the class of the factory, or the IID of any
 * other interface that it serves; anything else gives CLASS_E_CLASSNOTAVAILABLE.
 * riid: IID_IUnknown or IID_IPSFactoryBuffer.
 *
 * The factory is a static object: its references keep nothing alive. Code that holds it,
 * registers it, or has a proxy of it must itself keep the module loaded. */
HRESULT WINAPI PrxDllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);

#ifdef __cplusplus
}
#endif

#endif /* KORA4_PROXY_PROXY_FACTORY_H */
