// SPDX-License-Identifier: MIT
// Creates keys without following links and gives them the access list for everyone, in an order
// that leaves nobody a chance to substitute another key.
#include "monitor/reg_key_security.h"

#include <aclapi.h>

#include "contract/messages/trace_messages_store.h"
#include "monitor/security_types.h"
#include "platform/win32_result.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

// Everything for everyone. The entry carries no inheritance flags: subkeys do not get it
// from their parent, so each key of the store is given its own.
constexpr wchar_t cWorldDacl[] = L"D:(A;;KA;;;WD)";

constexpr SECURITY_INFORMATION cAllParts =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION |
    SACL_SECURITY_INFORMATION;

constexpr REGSAM cKeyAccess = KEY_READ | KEY_SET_VALUE;

// ERROR_STOPPED_ON_SYMLINK, which the headers of mingw-w64 10 lack.
constexpr LSTATUS cStoppedOnLink = 681;

// The key below `parent`, or for an empty path `parent` once more; if it is a link, the link
// itself and not what it leads to.
LSTATUS OpenItself(const RegKeyCalls& calls, HKEY parent, const wchar_t* pwPath, REGSAM access,
                   UniqueRegKey& key) {
    return calls.open(parent, pwPath, REG_OPTION_OPEN_LINK, access, key.Put());
}

// A key is a link from its creation on or never, so a handle that has passed stays valid. A
// link without a target also passes: nothing here follows it, so only the link gets the list.
LSTATUS RefuseLink(HKEY hKey) {
    DWORD type = REG_NONE;
    const LSTATUS status =
        RegQueryValueExW(hKey, L"SymbolicLinkValue", nullptr, &type, nullptr, nullptr);
    if (status == ERROR_FILE_NOT_FOUND)
        return ERROR_SUCCESS;
    return status == ERROR_SUCCESS && type == REG_LINK ? cStoppedOnLink : status;
}

LSTATUS OpenUnlinked(const RegKeyCalls& calls, HKEY parent, const wchar_t* pwPath,
                     UniqueRegKey& key) {
    LSTATUS status = OpenItself(calls, parent, pwPath, cKeyAccess, key);
    if (status == ERROR_SUCCESS)
        status = RefuseLink(key.Get());
    return status;
}

// An access list may deny everything to everybody, but its owner may still set another one. If
// the key cannot be opened for another reason, it gets its former list back.
LSTATUS RepairAndOpen(const RegKeyCalls& calls, const wchar_t* pwPath, UniqueRegKey& key) {
    UniqueRegKey denied;
    LSTATUS status = OpenItself(calls, HKEY_LOCAL_MACHINE, pwPath, WRITE_DAC, denied);
    if (status != ERROR_SUCCESS)
        return status;
    UniqueRegKey readable;
    OpenItself(calls, denied.Get(), L"", READ_CONTROL, readable);
    const SecurityDescriptor former =
        SecurityDescriptor::OfRegKey(readable.Get(), DACL_SECURITY_INFORMATION);
    const SecurityDescriptor world = SecurityDescriptor::FromSddl(cWorldDacl);
    if (!world)
        return ERROR_ACCESS_DENIED;
    status = RegSetKeySecurity(denied.Get(), DACL_SECURITY_INFORMATION, world.Get());
    if (status == ERROR_SUCCESS)
        status = OpenUnlinked(calls, denied.Get(), L"", key);
    if (status != ERROR_SUCCESS && former)
        RegSetKeySecurity(denied.Get(), DACL_SECURITY_INFORMATION, former.Get());
    return status;
}

// Creating follows links, even to keys that do not exist yet. A key is therefore opened first,
// and a key that had to be created is opened again: a link may have been created there
// meanwhile. Only the last part of a path is checked. The others are listed before it, or are
// in places where only administrators may create a key or a link.
LSTATUS OpenOrCreate(const RegKeyCalls& calls, const wchar_t* pwPath, UniqueRegKey& key) {
    LSTATUS status = OpenUnlinked(calls, HKEY_LOCAL_MACHINE, pwPath, key);
    if (ResultOfKeyLookup(status) == S_FALSE) {
        UniqueRegKey created;
        DWORD disposition = 0;
        status = calls.create(HKEY_LOCAL_MACHINE, pwPath, 0, nullptr, REG_OPTION_NON_VOLATILE,
                              cKeyAccess, nullptr, created.Put(), &disposition);
        if (status == ERROR_SUCCESS)
            status = OpenUnlinked(calls, HKEY_LOCAL_MACHINE, pwPath, key);
    } else if (status == ERROR_ACCESS_DENIED) {
        status = RepairAndOpen(calls, pwPath, key);
    }
    return status;
}

// The handle lacks WRITE_DAC. Wine 8 refuses to set a list through such a one; Windows
// re-opens the key by itself, and does not say whether that follows links. So it is opened
// here, through the handle that was checked, never by name: by now the name could refer to
// another key.
HRESULT SetDacl(HKEY hKey, PACL dacl) {
    UniqueRegKey key;
    const LSTATUS status = OpenItself(RegKeyCalls(), hKey, L"", READ_CONTROL | WRITE_DAC, key);
    if (status != ERROR_SUCCESS)
        return ResultOfWrite(status);
    return ResultOfWrite(static_cast<LSTATUS>(
        SetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                        dacl, nullptr)));
}

constexpr const trace::Site& cMakeKeySite = trace::cSiteOf<msg::cMakeKeyExit>;

HRESULT OpenToWorld(HKEY hKey) {
    const SecurityDescriptor world = SecurityDescriptor::FromSddl(cWorldDacl);
    if (!world) {
        KALTRACE_AS(cMakeKeySite, msg::cNoWorldDescriptor, GetLastError());
        return E_FAIL;
    }
    const PACL dacl = world.Dacl();
    if (!dacl) {
        KALTRACE_AS(cMakeKeySite, msg::cNoWorldDacl);
        return E_FAIL;
    }
    const HRESULT hr = SetDacl(hKey, dacl);
    if (FAILED(hr))
        KALTRACE_AS(cMakeKeySite, msg::cWorldDaclRefused);
    return hr;
}

}  // namespace

HRESULT RegKeySecurity::MakeRegKeysAccessible(const wchar_t* const* ppwKeyNames) {
    KALTRACE_RESULT(hr, S_OK, msg::cMakeKeyResult.function);
    if (!ppwKeyNames)
        return hr = E_POINTER;
    for (; *ppwKeyNames && SUCCEEDED(hr); ++ppwKeyNames) {
        hr = MakeRegKey(*ppwKeyNames);
        KALTRACE(msg::cMakeKeyResult, hr, *ppwKeyNames);
    }
    return hr;
}

HRESULT RegKeySecurity::MakeRegKey(const wchar_t* pwKeyName, const RegKeyCalls& calls) {
    trace::Enter(cMakeKeySite, __LINE__);
    UniqueRegKey key;
    HRESULT hr = CreateRegKey(pwKeyName, key.Put(), calls);
    if (SUCCEEDED(hr)) {
        KALTRACE(msg::cKeyCreated, pwKeyName);
        ListSecurityString(key.Get());
        hr = OpenToWorld(key.Get());
        if (SUCCEEDED(hr)) {
            KALTRACE(msg::cKeyOpened, pwKeyName);
            ListSecurityString(key.Get());
        }
        key.Reset();
    }
    // An exit line with the marker of an entry line: log readers depend on it.
    KALTRACE(msg::cMakeKeyExit, hr);
    return hr;
}

HRESULT RegKeySecurity::CreateRegKey(const wchar_t* pwKeyName, HKEY* pKeyHandle,
                                     const RegKeyCalls& calls) {
    KALTRACE_RESULT(hr, E_FAIL, msg::cCreateKeyStatus.function);
    KALASSERT(cSite, msg::cAssertKeyName, (pwKeyName != NULL) && (pKeyHandle != NULL));
    if (!pwKeyName || !pKeyHandle)
        return hr;
    UniqueRegKey key;
    const LSTATUS status = OpenOrCreate(calls, pwKeyName, key);
    KALTRACE(msg::cCreateKeyStatus, pwKeyName, status);
    hr = ResultOfWrite(status);
    if (SUCCEEDED(hr))
        *pKeyHandle = key.Detach();
    return hr;
}

HRESULT RegKeySecurity::ListSecurityString(HKEY hKey) {
    KALTRACE_RESULT(hr, E_FAIL, msg::cNoDescriptor.function);
    const SecurityDescriptor descriptor = [hKey] {
        // The audit part of a descriptor is readable with this privilege only.
        const PrivilegeHold security(SE_SECURITY_NAME);
        return SecurityDescriptor::OfRegKey(hKey, cAllParts);
    }();
    if (!descriptor) {
        KALTRACE(msg::cNoDescriptor, GetLastError());
        return hr;
    }
    const SecurityDescriptor::Text text = descriptor.ToSddl(cAllParts);
    if (!text) {
        KALTRACE(msg::cNoDescriptorText, GetLastError());
        return hr;
    }
    KALTRACE(msg::cDescriptorText, text.Get());
    return hr = S_OK;
}

}  // namespace kora4
