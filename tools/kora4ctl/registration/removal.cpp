// SPDX-License-Identifier: MIT
// Deletes the keys of a registration one by one.
#include "kora4ctl/registration/removal.h"

#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "process/registered_file.h"
#include "process/win32_failure.h"

namespace kora4::tools {
namespace {

// With its subkeys, and the key itself.
void Remove(HKEY root, const char* rootName, const std::wstring& key) {
    const std::wstring path = cClassesKey + key;
    const LSTATUS status = RegDeleteTreeW(root, path.c_str());
    if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND ||
        status == ERROR_PATH_NOT_FOUND)
        return;
    throw Win32Failure(static_cast<DWORD>(status),
                       std::string(rootName) + "\\" + Narrow(path) + " cannot be removed",
                       status == ERROR_ACCESS_DENIED ? "Run it as an administrator." : "");
}

}  // namespace

void RemoveEntries(const Registration& registration) {
    const std::wstring apps = cAppIdKey;
    std::vector<std::wstring> keys = {ClassKey(), TypeLibraryKey(), apps + L"QXA64T.DLL"};
    // A GUID, or the entry leads to a key that is none of ours.
    GUID appId{};
    if (SUCCEEDED(CLSIDFromString(Widen(registration.appId).c_str(), &appId)))
        keys.push_back(apps + GuidText(appId));
    for (const std::wstring& key : keys) {
        Remove(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", key);
        Remove(HKEY_CURRENT_USER, "HKEY_CURRENT_USER", key);
    }
}

}  // namespace kora4::tools
