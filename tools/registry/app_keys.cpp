// SPDX-License-Identifier: MIT
// Makes the key with its access list, and reads the list of one that is there.
#include "registry/app_keys.h"

#include <aclapi.h>
#include <sddl.h>

#include "contract/registry_paths.h"
#include "process/privileges.h"

namespace kora4::tools {
namespace {

// Protected: the key above lets everyone do everything.
constexpr wchar_t cList[] = L"O:BAD:P(A;CI;KA;;;BA)(A;CI;KA;;;SY)(A;CI;KR;;;WD)";

constexpr SECURITY_INFORMATION cOwnerAndList =
    OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

constexpr ACCESS_MASK cWriting = KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | DELETE |
                                 WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

bool IsAdministrators(PSID sid) {
    return sid && (IsWellKnownSid(sid, WinBuiltinAdministratorsSid) ||
                   IsWellKnownSid(sid, WinLocalSystemSid));
}

bool LetsOthersWrite(PACL list) {
    for (DWORD i = 0; list && i < list->AceCount; ++i) {
        void* place = nullptr;
        if (!GetAce(list, i, &place))
            return true;
        auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(place);
        if (entry->Header.AceFlags & INHERIT_ONLY_ACE || !(entry->Mask & cWriting) ||
            entry->Header.AceType == ACCESS_DENIED_ACE_TYPE)
            continue;
        if (entry->Header.AceType != ACCESS_ALLOWED_ACE_TYPE ||
            !IsAdministrators(&entry->SidStart))
            return true;
    }
    // Without a list everybody may.
    return list == nullptr;
}

LSTATUS MakeDescriptor(UniqueLocalMemory& descriptor) {
    if (!IsElevated())
        return ERROR_ACCESS_DENIED;
    return ConvertStringSecurityDescriptorToSecurityDescriptorW(cList, SDDL_REVISION_1,
                                                                descriptor.Put(), nullptr)
               ? ERROR_SUCCESS
               : static_cast<LSTATUS>(GetLastError());
}

}  // namespace

LSTATUS CreateAppKeys(REGSAM access, UniqueRegKey& key) {
    UniqueLocalMemory descriptor;
    if (const LSTATUS status = MakeDescriptor(descriptor); status != ERROR_SUCCESS)
        return status;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, descriptor.Get(), FALSE};
    DWORD disposition = 0;
    LSTATUS status =
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, cAppKeysPath, 0, nullptr, REG_OPTION_NON_VOLATILE,
                        access | WRITE_DAC | WRITE_OWNER | KEY_WOW64_64KEY, &attributes,
                        key.Put(), &disposition);
    // Wine makes keys without the list that it is given.
    if (status == ERROR_SUCCESS && disposition == REG_CREATED_NEW_KEY)
        status = RegSetKeySecurity(key.Get(), cOwnerAndList, descriptor.Get());
    return status;
}

LSTATUS ResetAppKeys() {
    UniqueLocalMemory descriptor;
    if (const LSTATUS status = MakeDescriptor(descriptor); status != ERROR_SUCCESS)
        return status;
    UniqueRegKey key;
    const LSTATUS opening =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, cAppKeysPath, REG_OPTION_OPEN_LINK,
                      KEY_QUERY_VALUE | WRITE_DAC | WRITE_OWNER | KEY_WOW64_64KEY, key.Put());
    if (opening != ERROR_SUCCESS)
        return opening;
    // All that a link has is one value of this type, with a name of 17 characters.
    DWORD type = REG_NONE;
    wchar_t name[32];
    DWORD length = 32;
    RegEnumValueW(key.Get(), 0, name, &length, nullptr, &type, nullptr, nullptr);
    if (type == REG_LINK)
        return ERROR_ACCESS_DENIED;
    return RegSetKeySecurity(key.Get(), cOwnerAndList, descriptor.Get());
}

bool AreAppKeysOpenToOthers() {
    UniqueRegKey key;
    const LSTATUS opening = RegOpenKeyExW(HKEY_LOCAL_MACHINE, cAppKeysPath, 0,
                                          READ_CONTROL | KEY_WOW64_64KEY, key.Put());
    if (opening == ERROR_FILE_NOT_FOUND)
        return false;
    PSID owner = nullptr;
    PACL list = nullptr;
    UniqueLocalMemory descriptor;
    return opening != ERROR_SUCCESS ||
           GetSecurityInfo(key.Get(), SE_REGISTRY_KEY, cOwnerAndList, &owner, nullptr, &list,
                           nullptr, descriptor.Put()) != ERROR_SUCCESS ||
           !IsAdministrators(owner) || LetsOthersWrite(list);
}

}  // namespace kora4::tools
