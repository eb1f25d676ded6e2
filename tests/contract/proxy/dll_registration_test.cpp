// SPDX-License-Identifier: MIT
// KORA4Proxies.dll registered with the machine, as regsvr32 does it.
#include <gtest/gtest.h>

#include "contract/proxy/apartment.h"
#include "contract/proxy/api_recorder.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

HRESULT MarshalAndDrop(IVeltoKORA4API* pApi) {
    IStream* pStream = nullptr;
    const HRESULT hr =
        CoMarshalInterThreadInterfaceInStream(IID_IVeltoKORA4API, pApi, &pStream);
    if (pStream) {
        CoReleaseMarshalData(pStream);
        pStream->Release();
    }
    return hr;
}

TEST(ProxyDll, GivesEveryApartmentTheProxiesWhileItIsRegistered) {
    const LoadedLibrary proxies(ProgramFolder() + L"\\KORA4Proxies.dll");
    ASSERT_TRUE(proxies.IsLoaded());
    const std::string before = DumpKey(HKEY_CLASSES_ROOT, L"Interface");
    ASSERT_EQ(S_OK, proxies.RegisterServer());
    Apartment apartment(
        ApartmentKind::Single, [] {}, [] {});
    apartment.Run([] {
        Microsoft::WRL::ComPtr<ApiRecorder> api(new ApiRecorder);
        EXPECT_EQ(S_OK, MarshalAndDrop(api.Get()));
    });
    EXPECT_EQ(S_OK, proxies.UnregisterServer());
    EXPECT_EQ(before, DumpKey(HKEY_CLASSES_ROOT, L"Interface"));
}

TEST(ProxyDll, HasOneClass) {
    const LoadedLibrary proxies(ProgramFolder() + L"\\KORA4Proxies.dll");
    void* pFactory = nullptr;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              proxies.GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_IUnknown, &pFactory));
    ASSERT_EQ(S_OK,
              proxies.GetClassObject(IID_IVeltoKORA4API, IID_IPSFactoryBuffer, &pFactory));
    static_cast<IUnknown*>(pFactory)->Release();
    EXPECT_EQ(S_OK, proxies.CanUnloadNow());
}

}  // namespace
}  // namespace kora4::test
