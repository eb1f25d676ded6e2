// SPDX-License-Identifier: MIT
// Asks the process's token, and the platform for the one function that only Wine has.
#include "process/privileges.h"

#include <windows.h>

#include "platform/handles.h"

namespace kora4::tools {

namespace {

bool AskElevation() {
    UniqueHandle token;
    TOKEN_ELEVATION elevation{};
    DWORD size = sizeof elevation;
    return OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) &&
           GetTokenInformation(token.Get(), TokenElevation, &elevation, size, &size) &&
           elevation.TokenIsElevated;
}

}  // namespace

bool IsElevated() {
    static const bool isElevated = AskElevation();
    return isElevated;
}

bool RunsUnderWine() {
    static const bool isWine =
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return isWine;
}

}  // namespace kora4::tools
