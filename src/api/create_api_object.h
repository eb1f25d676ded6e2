// SPDX-License-Identifier: MIT
// How the module makes an API object without seeing its class.
#pragma once

#include <windows.h>

namespace kora4 {

// Creates a CKORA4ASL in the calling apartment and queries it for `iid`. E_POINTER for a
// null `ppv`, which is otherwise null on failure; E_NOINTERFACE, E_OUTOFMEMORY.
HRESULT CreateApiObject(REFIID iid, void** ppv);

}  // namespace kora4
