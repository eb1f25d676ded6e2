// SPDX-License-Identifier: MIT
/* Carrying the KORA4 interfaces into another apartment.
 *
 * IVeltoKORA4API and IVeltoKORA4APICallback are marshalled by proxy code of their own, and
 * nothing in the registry leads COM to it. A client that uses them in one apartment only
 * needs none of this. One that carries them further links the static library
 * kora4_sdk_proxies (and rpcrt4, ole32) and calls Kora4RegisterProxies in each apartment
 * that takes part: the one that owns the object as well as those that use it from afar.
 * A client that cannot link it gets the same two functions from KORA4Proxies.dll. */
#ifndef KORA4_PROXIES_H
#define KORA4_PROXIES_H

#include <windows.h>

#include <objbase.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Registers the proxies and stubs of both interfaces for the calling thread's apartment.
 *
 * pCookie: receives what Kora4RevokeProxies takes. 0 means that the apartment has them
 * already, by an earlier call: that registration goes on serving it.
 *
 * S_OK; E_POINTER without pCookie; CO_E_NOTINITIALIZED on a thread without an apartment;
 * otherwise what COM answers. After a failure nothing is registered and the cookie is 0.
 *
 * The proxy code is part of the calling module, which must stay loaded while a proxy or a
 * stub of these interfaces is alive. */
HRESULT Kora4RegisterProxies(DWORD* pCookie);

/* Ends a registration, in the apartment that made it and before that apartment ends.
 * Proxies and stubs that exist already go on working. Cookie 0 is accepted: S_OK. */
HRESULT Kora4RevokeProxies(DWORD cookie);

#ifdef __cplusplus
}
#endif

#endif /* KORA4_PROXIES_H */
