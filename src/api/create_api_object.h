// SPDX-License-Identifier: MIT
// How the module makes an API object without seeing its class.
#pragma once

#include <windows.h>

namespace kora4 {

// Creates a CKORA4ASL in the calling apartment and queries it for `iid`. `*ppv` must be null,
// and stays so on failure; E_NOINTERFACE, E_OUTOFMEMORY.
HRESULT CreateApiObject(REFIID iid, void** ppv);

}  // namespace kora4
