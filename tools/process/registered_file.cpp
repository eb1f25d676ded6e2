// SPDX-License-Identifier: MIT
// Reads the class's server from the registry.
#include "process/registered_file.h"

#include <kora4api.h>
#include <windows.h>

#include <cwchar>

#include "base/text.h"

namespace kora4::tools {

std::wstring GuidText(REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

std::wstring ClassKey() {
    return L"CLSID\\" + GuidText(CLSID_VeltoKORA4APITestCoclass);
}

std::wstring ServerKey() {
    return ClassKey() + L"\\InprocServer32";
}

std::wstring TypeLibraryKey() {
    return L"TypeLib\\" + GuidText(LIBID_KORA4ASLLib);
}

std::string RegisteredFile() {
    // The longest path that Windows knows. A text with variables is expanded.
    std::wstring path(32768, L'\0');
    auto size = static_cast<DWORD>(path.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_CLASSES_ROOT, ServerKey().c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                     path.data(), &size) != ERROR_SUCCESS)
        return {};
    path.resize(std::wcslen(path.c_str()));
    return Narrow(path);
}

bool IsRegisteredFileMissing() {
    const std::string path = RegisteredFile();
    return !path.empty() && GetFileAttributesW(Widen(path).c_str()) == INVALID_FILE_ATTRIBUTES;
}

}  // namespace kora4::tools
