// SPDX-License-Identifier: MIT
// Which proxies an apartment of these tests uses: the library's own or the SDK's. Each test
// program links one implementation.
#ifndef KORA4_TESTS_CONTRACT_PROXY_REGISTRATION_H
#define KORA4_TESTS_CONTRACT_PROXY_REGISTRATION_H

#include <windows.h>

namespace kora4::test {

// Registers the proxies for the calling thread's apartment; the result is for
// LeaveProxies, on the same thread.
DWORD EnterProxies();
void LeaveProxies(DWORD cookie);

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_PROXY_REGISTRATION_H
