// SPDX-License-Identifier: MIT
// Owning types for security descriptors and for a privilege that is enabled for a scope.
#pragma once

#include <windows.h>

#include "platform/handles.h"
#include "platform/non_copyable.h"

namespace kora4 {

// A self-relative security descriptor; empty when its factory failed, and the reason is
// then GetLastError.
class SecurityDescriptor {
  public:
    // The descriptor that a text in SDDL describes; empty if the text is not valid.
    static SecurityDescriptor FromSddl(const wchar_t* pwSddl);
    // `parts` are the SECURITY_INFORMATION bits to read.
    static SecurityDescriptor OfRegKey(HKEY hKey, SECURITY_INFORMATION parts);

    explicit operator bool() const { return static_cast<bool>(m_descriptor); }
    PSECURITY_DESCRIPTOR Get() const { return m_descriptor.Get(); }

    // Null when the descriptor has no access list. Lives as long as the descriptor.
    PACL Dacl() const;

    // The text of the given parts; empty, with GetLastError set, when there is none.
    class Text {
      public:
        explicit Text(wchar_t* pwText) : m_memory(pwText) {}
        explicit operator bool() const { return static_cast<bool>(m_memory); }
        const wchar_t* Get() const { return static_cast<const wchar_t*>(m_memory.Get()); }

      private:
        UniqueLocalMemory m_memory;
    };

    // The descriptor as text; `parts` as for OfRegKey.
    Text ToSddl(SECURITY_INFORMATION parts) const;

  private:
    explicit SecurityDescriptor(PSECURITY_DESCRIPTOR descriptor) : m_descriptor(descriptor) {}

    UniqueLocalMemory m_descriptor;
};

// Turns a privilege of the calling thread (of the process, when the thread does not
// impersonate) on for the length of a scope and puts its former state back. Without the
// privilege it does nothing: what needs it then fails by itself.
class PrivilegeHold : NonCopyable {
  public:
    explicit PrivilegeHold(const wchar_t* pwPrivilege);
    ~PrivilegeHold();

  private:
    UniqueHandle m_hToken;
    TOKEN_PRIVILEGES m_former{};
};

}  // namespace kora4
