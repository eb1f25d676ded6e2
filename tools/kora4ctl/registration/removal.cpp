// SPDX-License-Identifier: MIT
// Deletes keys one by one.
#include "kora4ctl/registration/removal.h"

#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "contract/registry_paths.h"
#include "platform/handles.h"
#include "process/guarded_folder.h"
#include "process/registered_file.h"
#include "process/win32_failure.h"

// Of ntdll.dll, which mingw-w64 declares for drivers only. Unlike RegDeleteKeyExW, it deletes
// what was opened, whatever has taken its name since.
extern "C" LONG NTAPI NtDeleteKey(HANDLE key);

namespace kora4::tools {
namespace {

std::string Denied(LSTATUS status) {
    return status == ERROR_ACCESS_DENIED ? "Run it as an administrator." : "";
}

// With its subkeys, and the key itself.
void Remove(HKEY root, const char* rootName, const std::wstring& key) {
    const std::wstring path = cClassesKey + key;
    const LSTATUS status = RegDeleteTreeW(root, path.c_str());
    if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND ||
        status == ERROR_PATH_NOT_FOUND)
        return;
    throw Win32Failure(static_cast<DWORD>(status),
                       std::string(rootName) + "\\" + Narrow(path) + " cannot be removed",
                       Denied(status));
}

// With its subkeys. A link has none: opened as itself, it shows nothing of what it leads to.
LSTATUS RemoveKey(HKEY parent, const wchar_t* name) {
    UniqueRegKey key;
    LSTATUS status =
        RegOpenKeyExW(parent, name, REG_OPTION_OPEN_LINK,
                      KEY_ENUMERATE_SUB_KEYS | DELETE | KEY_WOW64_64KEY, key.Put());
    if (status != ERROR_SUCCESS)
        return status;
    constexpr DWORD cLongestName = 255;
    wchar_t subkey[cLongestName + 1];
    DWORD length = cLongestName + 1;
    while (RegEnumKeyExW(key.Get(), 0, subkey, &length, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS) {
        if (status = RemoveKey(key.Get(), subkey); status != ERROR_SUCCESS)
            return status;
        length = cLongestName + 1;
    }
    return NtDeleteKey(key.Get()) == 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

}  // namespace

bool RemoveSettings() {
    const LSTATUS status = RemoveKey(HKEY_LOCAL_MACHINE, cBaseKeyPath);
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND)
        throw Win32Failure(static_cast<DWORD>(status),
                           "HKEY_LOCAL_MACHINE\\" + Narrow(cBaseKeyPath) + " cannot be removed",
                           Denied(status));
    const GuardedFolder folder(DataFolder());
    for (const std::string& name : folder.Names(""))
        try {
            folder.Remove(name);
        } catch (const Failure&) {
            // Another program has it open: the folder stays, which the result says.
        }
    return RemoveDirectoryW(Widen(DataFolder()).c_str()) ||
           GetLastError() != ERROR_DIR_NOT_EMPTY;
}

void RemoveEntries(const Registration& registration, EntriesOf whose) {
    const std::wstring apps = cAppIdKey;
    std::vector<std::wstring> keys = {ClassKey(), TypeLibraryKey(), apps + L"QXA64T.DLL"};
    // A GUID, or the entry leads to a key that is none of ours.
    GUID appId{};
    if (SUCCEEDED(CLSIDFromString(Widen(registration.appId).c_str(), &appId)))
        keys.push_back(apps + GuidText(appId));
    for (const std::wstring& key : keys) {
        Remove(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", key);
        if (whose == EntriesOf::eMachineAndUser)
            Remove(HKEY_CURRENT_USER, "HKEY_CURRENT_USER", key);
    }
}

}  // namespace kora4::tools
