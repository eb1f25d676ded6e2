// SPDX-License-Identifier: MIT
// Keys that are kept from somebody, and keys that lead elsewhere. Paths are relative to
// HKEY_LOCAL_MACHINE.
#ifndef KORA4_TESTS_SUPPORT_KEY_SECURITY_H
#define KORA4_TESTS_SUPPORT_KEY_SECURITY_H

#include <string>

namespace kora4::test {

// What registration gives to the keys of the store.
inline constexpr wchar_t cWorldAccess[] = L"D:(A;;KA;;;WD)";

// The access list in the platform's notation; that of a link itself, not of its target.
std::wstring DaclOf(const std::wstring& path);
void SetDacl(const std::wstring& path, const wchar_t* sddl);

// A key that may not even be read, for the length of a scope; its owner may change the list.
class DeniedKey {
  public:
    explicit DeniedKey(std::wstring path);
    ~DeniedKey();
    DeniedKey(const DeniedKey&) = delete;
    DeniedKey& operator=(const DeniedKey&) = delete;

  private:
    std::wstring m_path;
};

// A key that is a link to another one, for the length of a scope. The target need not exist.
class RegistryLink {
  public:
    RegistryLink(std::wstring path, const std::wstring& target);
    ~RegistryLink();
    RegistryLink(const RegistryLink&) = delete;
    RegistryLink& operator=(const RegistryLink&) = delete;

  private:
    std::wstring m_path;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_KEY_SECURITY_H
