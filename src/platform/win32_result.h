// SPDX-License-Identifier: MIT
// The one place that turns Win32 errors into HRESULTs.
#pragma once

#include <windows.h>

namespace kora4 {

// Reading or deleting a value: S_FALSE when it is absent, every other error E_FAIL.
inline HRESULT ResultOfValueLookup(LSTATUS status) {
    switch (status) {
        case ERROR_SUCCESS:
            return S_OK;
        case ERROR_FILE_NOT_FOUND:
            return S_FALSE;
        default:
            return E_FAIL;
    }
}

// Opening or deleting a key, of which a parent may be absent too.
inline HRESULT ResultOfKeyLookup(LSTATUS status) {
    return status == ERROR_PATH_NOT_FOUND ? S_FALSE : ResultOfValueLookup(status);
}

// Every error is E_FAIL.
inline HRESULT ResultOfWrite(LSTATUS status) {
    return status == ERROR_SUCCESS ? S_OK : E_FAIL;
}

}  // namespace kora4
