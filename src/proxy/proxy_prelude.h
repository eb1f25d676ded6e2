// SPDX-License-Identifier: MIT
/* Included in front of the generated proxy code: what it uses and the platform's headers
 * declare for C++ only. It must not include rpcproxy.h, whose layouts depend on settings
 * that the generated code makes first. */
#ifndef KORA4_PROXY_PROXY_PRELUDE_H
#define KORA4_PROXY_PROXY_PRELUDE_H

#include <objbase.h>
#include <windows.h>

HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* This, REFIID riid,
                                                        void** ppvObject);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* This);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* This);

#endif /* KORA4_PROXY_PROXY_PRELUDE_H */
