// SPDX-License-Identifier: MIT
// The SDK's call that registers the proxies, and its counterpart.
#include <gtest/gtest.h>

#include "contract/proxy/apartment.h"
#include "contract/proxy/api_recorder.h"
#include "kora4_proxies.h"

namespace kora4::test {
namespace {

HRESULT MarshalAndDrop(IVeltoKORA4API* api) {
    IStream* stream = nullptr;
    const HRESULT hr = CoMarshalInterThreadInterfaceInStream(IID_IVeltoKORA4API, api, &stream);
    if (stream) {
        CoReleaseMarshalData(stream);
        stream->Release();
    }
    return hr;
}

TEST(SdkProxies, NullCookieIsRefused) {
    EXPECT_EQ(E_POINTER, Kora4RegisterProxies(nullptr));
}

TEST(SdkProxies, ThreadWithoutAnApartmentIsRefusedAndGetsNoCookie) {
    DWORD cookie = 99;
    EXPECT_EQ(CO_E_NOTINITIALIZED, Kora4RegisterProxies(&cookie));
    EXPECT_EQ(0u, cookie);
}

TEST(SdkProxies, CookieZeroIsNothingToRevoke) {
    EXPECT_EQ(S_OK, Kora4RevokeProxies(0));
}

TEST(SdkProxies, RegistrationMakesTheApiMarshalUntilItIsRevoked) {
    Apartment apartment(
        ApartmentKind::Single, [] {}, [] {});
    apartment.Run([] {
        Microsoft::WRL::ComPtr<ApiRecorder> api(new ApiRecorder);
        EXPECT_HRESULT_FAILED(MarshalAndDrop(api.Get()));
        DWORD cookie = 0;
        EXPECT_EQ(S_OK, Kora4RegisterProxies(&cookie));
        EXPECT_NE(0u, cookie);
        EXPECT_EQ(S_OK, MarshalAndDrop(api.Get()));
        EXPECT_EQ(S_OK, Kora4RevokeProxies(cookie));
        EXPECT_HRESULT_FAILED(MarshalAndDrop(api.Get()));
    });
}

// What a client sees that forgot to register the proxies: one code in the apartment that hands
// the interface out, another in the one that takes it. Windows may say REGDB_E_IIDNOTREG for
// the first.
TEST(SdkProxies, WithoutThemMarshallingFindsNoInterface) {
    Apartment apartment(
        ApartmentKind::Single, [] {}, [] {});
    apartment.Run([] {
        Microsoft::WRL::ComPtr<ApiRecorder> api(new ApiRecorder);
        EXPECT_EQ(E_NOINTERFACE, MarshalAndDrop(api.Get()));
    });
}

TEST(SdkProxies, WithoutThemUnmarshallingFindsNoClass) {
    DWORD cookie = 0;
    Microsoft::WRL::ComPtr<ApiRecorder> api(new ApiRecorder);
    IStream* pStream = nullptr;
    Apartment owner(
        ApartmentKind::Single, [&] { EXPECT_EQ(S_OK, Kora4RegisterProxies(&cookie)); },
        [&] { EXPECT_EQ(S_OK, Kora4RevokeProxies(cookie)); });
    owner.Run([&] {
        EXPECT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(IID_IVeltoKORA4API, api.Get(),
                                                              &pStream));
    });
    Apartment user(
        ApartmentKind::Single, [] {}, [] {});
    user.Run([&] {
        IVeltoKORA4API* pCarried = nullptr;
        EXPECT_EQ(REGDB_E_CLASSNOTREG,
                  CoUnmarshalInterface(pStream, IID_IVeltoKORA4API,
                                       reinterpret_cast<void**>(&pCarried)));
    });
    owner.Run([&] {
        pStream->Seek({}, STREAM_SEEK_SET, nullptr);
        CoReleaseMarshalData(pStream);
        pStream->Release();
    });
}

TEST(SdkProxies, SecondRegistrationOfAnApartmentCanBeRevokedWithoutHarm) {
    Apartment apartment(
        ApartmentKind::Single, [] {}, [] {});
    apartment.Run([] {
        Microsoft::WRL::ComPtr<ApiRecorder> api(new ApiRecorder);
        DWORD first = 0;
        DWORD second = 0;
        EXPECT_EQ(S_OK, Kora4RegisterProxies(&first));
        EXPECT_EQ(S_OK, Kora4RegisterProxies(&second));
        EXPECT_EQ(S_OK, Kora4RevokeProxies(second));
        EXPECT_EQ(S_OK, MarshalAndDrop(api.Get()));
        EXPECT_EQ(S_OK, Kora4RevokeProxies(first));
    });
}

}  // namespace
}  // namespace kora4::test
