// The one place that turns Win32 errors into HRESULTs.
#ifndef KORA4_PLATFORM_WIN32_RESULT_H
#define KORA4_PLATFORM_WIN32_RESULT_H

#include <windows.h>

namespace kora4 {

// Absent (the key or the value does not exist) is S_FALSE, every other error E_FAIL.
inline HRESULT ResultOfRead(LSTATUS status) {
    switch (status) {
        case ERROR_SUCCESS:
            return S_OK;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return S_FALSE;
        default:
            return E_FAIL;
    }
}

// Every error is E_FAIL.
inline HRESULT ResultOfWrite(LSTATUS status) {
    return status == ERROR_SUCCESS ? S_OK : E_FAIL;
}

}  // namespace kora4

#endif  // KORA4_PLATFORM_WIN32_RESULT_H
