// SPDX-License-Identifier: MIT
// Self-registration: what COM and the applications need to find in the registry.
#pragma once

#include <windows.h>

namespace kora4 {

// The AppID, the served classes and the type library. The first failure ends the work and
// is the result. The thread's locale is the system's meanwhile.
HRESULT RegisterModule();

// Removes what RegisterModule made. The first failure ends the work and is the result.
HRESULT UnregisterModule();

// The library's own step after a successful registration: creates the keys of the store and
// opens them to every user. Unregistration leaves them in place.
HRESULT OnRegisterServer();

}  // namespace kora4
