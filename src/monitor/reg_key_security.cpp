#include "monitor/reg_key_security.h"

#include <aclapi.h>

#include "monitor/security_types.h"
#include "platform/win32_result.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

constexpr const char* cTag = "RegKeySecurity";

// Everything for everyone. The entry carries no inheritance flags: subkeys do not get it
// from their parent, so each key of the store is given its own.
constexpr wchar_t cWorldDacl[] = L"D:(A;;KA;;;WD)";

constexpr SECURITY_INFORMATION cAllParts =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION |
    SACL_SECURITY_INFORMATION;

DWORD SetDaclThrough(HKEY hKey, PACL dacl) {
    return SetSecurityInfo(hKey, SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                           dacl, nullptr);
}

// The handle that created the key lacks WRITE_DAC. Where the platform does not open the
// key anew by itself, it is opened through that handle, never by name: the name could
// mean another key by now.
HRESULT SetDacl(HKEY hKey, PACL dacl) {
    DWORD status = SetDaclThrough(hKey, dacl);
    if (status != ERROR_SUCCESS) {
        UniqueRegKey key;
        status = static_cast<DWORD>(
            RegOpenKeyExW(hKey, L"", 0, READ_CONTROL | WRITE_DAC, key.Put()));
        if (status == ERROR_SUCCESS)
            status = SetDaclThrough(key.Get(), dacl);
    }
    return ResultOfWrite(static_cast<LSTATUS>(status));
}

HRESULT OpenToWorld(const trace::Site& site, HKEY hKey) {
    const SecurityDescriptor world = SecurityDescriptor::FromSddl(cWorldDacl);
    if (!world) {
        KALTRACE(trace::eSecurity, site, "Error loading DACL string 0x%08x\n",
                 static_cast<unsigned>(GetLastError()));
        return E_FAIL;
    }
    const PACL dacl = world.Dacl();
    if (!dacl) {
        KALTRACE(trace::eSecurity, site, "Error getting DACL from CSecurityDesc\n");
        return E_FAIL;
    }
    const HRESULT hr = SetDacl(hKey, dacl);
    if (FAILED(hr))
        KALTRACE(trace::eSecurity, site, "Error setting world DACL\n");
    return hr;
}

}  // namespace

HRESULT RegKeySecurity::MakeRegKeysAccessible(const wchar_t* const* ppwKeyNames) {
    static constexpr trace::Site cSite{cTag, "RegKeySecurity::MakeRegKeysAccessible"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    if (!ppwKeyNames)
        return hr = E_POINTER;
    for (; *ppwKeyNames && SUCCEEDED(hr); ++ppwKeyNames) {
        hr = MakeRegKey(*ppwKeyNames);
        KALTRACE(trace::eSecurity, cSite, "MakeRegKey hr: 0x%08x name: %S\n",
                 static_cast<unsigned>(hr), *ppwKeyNames);
    }
    return hr;
}

HRESULT RegKeySecurity::MakeRegKey(const wchar_t* pwKeyName) {
    static constexpr trace::Site cSite{cTag, "RegKeySecurity::MakeRegKey"};
    KALTRACE(trace::eEntry, cSite, ">>\n");
    UniqueRegKey key;
    HRESULT hr = CreateRegKey(pwKeyName, key.Put());
    if (SUCCEEDED(hr)) {
        KALTRACE(trace::eSecurity, cSite, "Post creation security string for: %S\n", pwKeyName);
        ListSecurityString(key.Get());
        hr = OpenToWorld(cSite, key.Get());
        if (SUCCEEDED(hr)) {
            KALTRACE(trace::eSecurity, cSite, "Post-set security string for: %S\n", pwKeyName);
            ListSecurityString(key.Get());
        }
        key.Reset();
    }
    // The marker of an entry line on an exit line: readers of the log know it like this.
    KALTRACE(trace::eExitResult, cSite, ">> hr: 0x%08x\n", static_cast<unsigned>(hr));
    return hr;
}

HRESULT RegKeySecurity::CreateRegKey(const wchar_t* pwKeyName, HKEY* pKeyHandle) {
    static constexpr trace::Site cSite{cTag, "RegKeySecurity::CreateRegKey"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    KALASSERT(cSite, (pwKeyName != NULL) && (pKeyHandle != NULL));
    if (!pwKeyName || !pKeyHandle)
        return hr;
    HKEY hKey = nullptr;
    DWORD disposition = 0;
    const LSTATUS status =
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, pwKeyName, 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_READ | KEY_SET_VALUE, nullptr, &hKey, &disposition);
    KALTRACE(trace::eSecurity, cSite, "Create reg key %S code: %ld\n", pwKeyName, status);
    hr = ResultOfWrite(status);
    if (SUCCEEDED(hr))
        *pKeyHandle = hKey;
    return hr;
}

HRESULT RegKeySecurity::ListSecurityString(HKEY hKey) {
    static constexpr trace::Site cSite{cTag, "RegKeySecurity::ListSecurityString"};
    HRESULT hr = E_FAIL;
    trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    const SecurityDescriptor descriptor = [hKey] {
        // The audit part of a descriptor is readable with this privilege only.
        const PrivilegeHold security(SE_SECURITY_NAME);
        return SecurityDescriptor::OfRegKey(hKey, cAllParts);
    }();
    if (!descriptor) {
        KALTRACE(trace::eSecurity, cSite, "Error getting security descriptor %x\n",
                 static_cast<unsigned>(GetLastError()));
        return hr;
    }
    const SecurityDescriptor::Text text = descriptor.ToSddl(cAllParts);
    if (!text) {
        KALTRACE(trace::eSecurity, cSite, "Error getting security string 0x%08x\n",
                 static_cast<unsigned>(GetLastError()));
        return hr;
    }
    KALTRACE(trace::eSecurity, cSite, "securityString: %S\n", text.Get());
    return hr = S_OK;
}

}  // namespace kora4
