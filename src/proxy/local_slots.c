// SPDX-License-Identifier: MIT
/* The slots of IKaltrixVeltoKORA4 that do not cross apartments. The proxy answers for
 * itself and sends nothing; the stub refuses a call that some other code has sent, before
 * it reaches the object. */
#include "kaltrixveltokora4.h"

#define REFUSED_BY_PROXY(method)                                                      \
    HRESULT CALLBACK IKaltrixVeltoKORA4_##method##_Proxy(IKaltrixVeltoKORA4* This,    \
                                                         void* pContext) {            \
        (void)This;                                                                   \
        (void)pContext;                                                               \
        return E_NOTIMPL;                                                             \
    }                                                                                 \
    HRESULT __RPC_STUB IKaltrixVeltoKORA4_##method##_Stub(IKaltrixVeltoKORA4* This) { \
        (void)This;                                                                   \
        return E_NOTIMPL;                                                             \
    }

REFUSED_BY_PROXY(LocalAttach)
REFUSED_BY_PROXY(LocalDetach)
REFUSED_BY_PROXY(LocalRead)
REFUSED_BY_PROXY(LocalWrite)
