// SPDX-License-Identifier: MIT
// Registers the proxies with KORA4Proxies.dll, as a client does that cannot link them.
#include <gtest/gtest.h>
#include <windows.h>

#include "contract/proxy/registration.h"

namespace kora4::test {
namespace {

// Stays loaded: proxies and stubs are its code.
template <typename Function>
Function* Find(const char* name) {
    static const HMODULE s_proxies = LoadLibraryW(L"KORA4Proxies.dll");
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(s_proxies, name)));
}

}  // namespace

DWORD EnterProxies() {
    DWORD cookie = 0;
    const auto pRegister = Find<HRESULT(DWORD*)>("Kora4RegisterProxies");
    EXPECT_TRUE(pRegister && pRegister(&cookie) == S_OK);
    EXPECT_NE(0u, cookie);
    return cookie;
}

void LeaveProxies(DWORD cookie) {
    const auto pRevoke = Find<HRESULT(DWORD)>("Kora4RevokeProxies");
    EXPECT_TRUE(pRevoke && pRevoke(cookie) == S_OK);
}

}  // namespace kora4::test
