// SPDX-License-Identifier: MIT
// Registers the proxy code of the library itself, all its interfaces included.
#include <gtest/gtest.h>
#include <wrl/client.h>

#include "comcallbackgate.h"
#include "contract/proxy/registration.h"
#include "kaltrixaudioprocessor.h"
#include "kaltrixveltokora4.h"
#include "kaltrixversion.h"
#include "proxy/proxy_factory.h"
#include "veltokora4api.h"

namespace kora4::test {

DWORD EnterProxies() {
    Microsoft::WRL::ComPtr<IUnknown> factory;
    EXPECT_EQ(S_OK, PrxDllGetClassObject(IID_ICOMCallbackGate, IID_PPV_ARGS(&factory)));
    DWORD cookie = 0;
    EXPECT_EQ(S_OK, CoRegisterClassObject(IID_ICOMCallbackGate, factory.Get(),
                                          CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie));
    const IID* const interfaces[] = {&IID_ICOMCallbackGate,       &IID_IKaltrixAudioProcessor,
                                     &IID_IKaltrixVersion,        &IID_IKaltrixVeltoKORA4,
                                     &IID_IVeltoKORA4APICallback, &IID_IVeltoKORA4API};
    for (const IID* iid : interfaces)
        EXPECT_EQ(S_OK, CoRegisterPSClsid(*iid, IID_ICOMCallbackGate));
    return cookie;
}

void LeaveProxies(DWORD cookie) {
    EXPECT_EQ(S_OK, CoRevokeClassObject(cookie));
}

}  // namespace kora4::test
