// Creates the registry keys of the store and opens them to every user.
#ifndef KORA4_MONITOR_REG_KEY_SECURITY_H
#define KORA4_MONITOR_REG_KEY_SECURITY_H

#include <windows.h>

namespace kora4 {

// Used at registration only, on the registering thread; no lock. Key paths are relative
// to HKEY_LOCAL_MACHINE. Nothing is rolled back: what was created before a failure stays.
class RegKeySecurity {
  public:
    // A list that ends with null. Each key is created if it is missing, keeps its values,
    // and gets an access list that grants everyone everything. Stops at the first key
    // that fails. E_POINTER without a list, S_OK for an empty one.
    static HRESULT MakeRegKeysAccessible(const wchar_t* const* ppwKeyNames);

    static HRESULT MakeRegKey(const wchar_t* pwKeyName);

    // The caller closes the handle.
    static HRESULT CreateRegKey(const wchar_t* pwKeyName, HKEY* pKeyHandle);

    // Traces the key's security descriptor. The result matters to nobody but the trace.
    static HRESULT ListSecurityString(HKEY hKey);
};

}  // namespace kora4

#endif  // KORA4_MONITOR_REG_KEY_SECURITY_H
