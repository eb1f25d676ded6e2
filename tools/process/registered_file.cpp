// SPDX-License-Identifier: MIT
// Reads the class's server from the registry.
#include "process/registered_file.h"

#include <kora4api.h>
#include <windows.h>

#include "base/text.h"

namespace kora4::tools {

std::string RegisteredFile() {
    wchar_t guid[40] = {};
    StringFromGUID2(CLSID_VeltoKORA4APITestCoclass, guid, 40);
    const std::wstring key = std::wstring(L"CLSID\\") + guid + L"\\InprocServer32";
    // The longest path that Windows knows. A text with variables is expanded.
    std::wstring path(32768, L'\0');
    auto size = static_cast<DWORD>(path.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                     path.data(), &size) != ERROR_SUCCESS)
        return {};
    return Narrow(path.c_str());
}

bool IsRegisteredFileMissing() {
    const std::string path = RegisteredFile();
    return !path.empty() && GetFileAttributesW(Widen(path).c_str()) == INVALID_FILE_ATTRIBUTES;
}

}  // namespace kora4::tools
