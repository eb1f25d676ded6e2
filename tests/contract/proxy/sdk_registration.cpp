// SPDX-License-Identifier: MIT
// Registers the proxies with the call of the SDK, as a client does.
#include <gtest/gtest.h>

#include "contract/proxy/registration.h"
#include "kora4_proxies.h"

namespace kora4::test {

DWORD EnterProxies() {
    DWORD cookie = 0;
    EXPECT_EQ(S_OK, Kora4RegisterProxies(&cookie));
    EXPECT_NE(0u, cookie);
    return cookie;
}

void LeaveProxies(DWORD cookie) {
    EXPECT_EQ(S_OK, Kora4RevokeProxies(cookie));
}

}  // namespace kora4::test
