// SPDX-License-Identifier: MIT
// Creates the registry keys of the store and makes them writable for every user.
#pragma once

#include <windows.h>

namespace kora4 {

// The two calls that open and create a key; a test replaces them in order to create a link
// between the two.
struct RegKeyCalls {
    decltype(&RegOpenKeyExW) open = &RegOpenKeyExW;
    decltype(&RegCreateKeyExW) create = &RegCreateKeyExW;
};

// Used at registration only, on the registering thread; no lock. Key paths are relative
// to HKEY_LOCAL_MACHINE. Nothing is rolled back: what was created before a failure stays.
class RegKeySecurity {
  public:
    // A list that ends with null. Each key is created if it is missing, keeps its values,
    // and gets an access list that grants everyone everything. Stops at the first key
    // that fails. E_POINTER without a list, S_OK for an empty one.
    static HRESULT MakeRegKeysAccessible(const wchar_t* const* ppwKeyNames);

    // One key of that list: S_OK, or E_FAIL.
    static HRESULT MakeRegKey(const wchar_t* pwKeyName, const RegKeyCalls& calls = {});

    // Creates or opens the key; the caller closes the handle. E_FAIL for a link that leads to a
    // key: its creator would decide which key becomes writable for everyone. A key that denies
    // access first gets the access list for everyone, if the caller may change its list.
    static HRESULT CreateRegKey(const wchar_t* pwKeyName, HKEY* pKeyHandle,
                                const RegKeyCalls& calls = {});

    // Traces the key's security descriptor. Only the trace uses the result.
    static HRESULT ListSecurityString(HKEY hKey);
};

}  // namespace kora4
