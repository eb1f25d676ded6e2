// SPDX-License-Identifier: MIT
// The file that COM loads for the library's class.
#pragma once

#include <windows.h>

#include <string>

namespace kora4::tools {

// The keys of a registration: those of the machine and of a user below their root, those that
// COM shows below HKEY_CLASSES_ROOT. Each ends where a name or a GUID follows.
inline constexpr wchar_t cClassesKey[] = L"Software\\Classes\\";
inline constexpr wchar_t cAppIdKey[] = L"AppID\\";

// "{16CC6CDB-...}"
std::wstring GuidText(REFGUID guid);

// Of the library's class, of its server, and of its type library; below the classes.
std::wstring ClassKey();
std::wstring ServerKey();
std::wstring TypeLibraryKey();

// Its path in UTF-8, as registered; empty when the class is not registered.
std::string RegisteredFile();

// Whether a file is registered that does not exist.
bool IsRegisteredFileMissing();

}  // namespace kora4::tools
