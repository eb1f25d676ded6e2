// SPDX-License-Identifier: MIT
// Security descriptors from text, from a key and as text; privileges enabled and restored.
#include "monitor/security_types.h"

#include <aclapi.h>
#include <sddl.h>

namespace kora4 {

SecurityDescriptor SecurityDescriptor::FromSddl(const wchar_t* pwSddl) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(pwSddl, SDDL_REVISION_1,
                                                              &descriptor, nullptr))
        descriptor = nullptr;
    return SecurityDescriptor(descriptor);
}

SecurityDescriptor SecurityDescriptor::OfRegKey(HKEY hKey, SECURITY_INFORMATION parts) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD status = GetSecurityInfo(hKey, SE_REGISTRY_KEY, parts, nullptr, nullptr,
                                         nullptr, nullptr, &descriptor);
    SetLastError(status);
    return SecurityDescriptor(status == ERROR_SUCCESS ? descriptor : nullptr);
}

PACL SecurityDescriptor::Dacl() const {
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    PACL dacl = nullptr;
    if (!GetSecurityDescriptorDacl(m_descriptor.Get(), &present, &dacl, &defaulted))
        return nullptr;
    return present ? dacl : nullptr;
}

SecurityDescriptor::Text SecurityDescriptor::ToSddl(SECURITY_INFORMATION parts) const {
    wchar_t* pwText = nullptr;
    if (!ConvertSecurityDescriptorToStringSecurityDescriptorW(
            m_descriptor.Get(), SDDL_REVISION_1, parts, &pwText, nullptr))
        pwText = nullptr;
    return Text(pwText);
}

PrivilegeHold::PrivilegeHold(const wchar_t* pwPrivilege) {
    constexpr DWORD access = TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY;
    UniqueHandle hToken;
    if (!OpenThreadToken(GetCurrentThread(), access, TRUE, hToken.Put()) &&
        !OpenProcessToken(GetCurrentProcess(), access, hToken.Put()))
        return;
    TOKEN_PRIVILEGES wanted{};
    wanted.PrivilegeCount = 1;
    wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!LookupPrivilegeValueW(nullptr, pwPrivilege, &wanted.Privileges[0].Luid))
        return;
    DWORD size = sizeof(m_former);
    if (AdjustTokenPrivileges(hToken.Get(), FALSE, &wanted, sizeof(m_former), &m_former, &size))
        m_hToken = std::move(hToken);
}

PrivilegeHold::~PrivilegeHold() {
    if (!m_hToken || m_former.PrivilegeCount == 0)
        return;
    const DWORD lastError = GetLastError();
    AdjustTokenPrivileges(m_hToken.Get(), FALSE, &m_former, 0, nullptr, nullptr);
    SetLastError(lastError);
}

}  // namespace kora4
