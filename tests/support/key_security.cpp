// SPDX-License-Identifier: MIT
// Sets access lists by text, and makes registry links, each undone at the end of a scope.
#include "support/key_security.h"

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>
#include <windows.h>

#include <utility>

#include "platform/handles.h"

namespace kora4::test {

namespace {

UniqueRegKey OpenItself(const std::wstring& path, REGSAM access) {
    UniqueRegKey key;
    EXPECT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(),
                                           REG_OPTION_OPEN_LINK, access, key.Put()));
    return key;
}

}  // namespace

std::wstring DaclOf(const std::wstring& path) {
    const UniqueRegKey key = OpenItself(path, READ_CONTROL);
    UniqueLocalMemory descriptor;
    EXPECT_EQ(DWORD{ERROR_SUCCESS},
              GetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, nullptr, nullptr, descriptor.Put()));
    wchar_t* text = nullptr;
    EXPECT_TRUE(descriptor && ConvertSecurityDescriptorToStringSecurityDescriptorW(
                                  descriptor.Get(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION,
                                  &text, nullptr));
    const UniqueLocalMemory memory(text);
    return text ? text : L"(none)";
}

void SetDacl(const std::wstring& path, const wchar_t* sddl) {
    const UniqueRegKey key = OpenItself(path, WRITE_DAC);
    UniqueLocalMemory descriptor;
    EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
        sddl, SDDL_REVISION_1, descriptor.Put(), nullptr));
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor.Get()));
}

DeniedKey::DeniedKey(std::wstring path) : m_path(std::move(path)) {
    SetDacl(m_path, L"D:(D;;KA;;;WD)");
    UniqueRegKey key;
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(),
                                                 REG_OPTION_OPEN_LINK, KEY_READ, key.Put()));
}

DeniedKey::~DeniedKey() {
    SetDacl(m_path, cWorldAccess);
}

RegistryLink::RegistryLink(std::wstring path, const std::wstring& target)
    : m_path(std::move(path)) {
    UniqueRegKey link;
    EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(), 0, nullptr,
                                             REG_OPTION_CREATE_LINK, KEY_ALL_ACCESS, nullptr,
                                             link.Put(), nullptr));
    const std::wstring name = L"\\Registry\\Machine\\" + target;
    EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(link.Get(), L"SymbolicLinkValue", 0, REG_LINK,
                                            reinterpret_cast<const BYTE*>(name.data()),
                                            static_cast<DWORD>(name.size() * sizeof(wchar_t))));
}

RegistryLink::~RegistryLink() {
    // The documented calls that delete a key take its name, and follow the link.
    const auto deleteKey = reinterpret_cast<LONG(NTAPI*)(HANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDeleteKey")));
    EXPECT_EQ(0, deleteKey(OpenItself(m_path, DELETE).Get()));
}

}  // namespace kora4::test
