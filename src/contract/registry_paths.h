// SPDX-License-Identifier: MIT
// Where the store lives in the registry, under HKEY_LOCAL_MACHINE.
#pragma once

namespace kora4 {

inline constexpr wchar_t cBaseKeyPath[] = L"SOFTWARE\\Velto\\KORA4";
inline constexpr wchar_t cStaticKeysPath[] = L"SOFTWARE\\Velto\\KORA4\\StaticKeys";
inline constexpr wchar_t cDynamicKeysPath[] = L"SOFTWARE\\Velto\\KORA4\\DynamicKeys";
inline constexpr wchar_t cAppKeysPath[] = L"SOFTWARE\\Velto\\KORA4\\AppKeys";

}  // namespace kora4
