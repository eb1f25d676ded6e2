// SPDX-License-Identifier: MIT
// What the questions have in common: answers in words, keys and files of their own that
// disappear again, and short waits.
#ifndef KORA4_TESTS_PLATFORM_PROBE_ANSWERS_H
#define KORA4_TESTS_PLATFORM_PROBE_ANSWERS_H

#include <windows.h>

#include <string>

#include "platform/handles.h"

namespace kora4::probe {

// Milliseconds in which something that is going to happen has happened.
inline constexpr DWORD cMoment = 500;

inline std::string YesOrNo(bool is) {
    return is ? "yes" : "no";
}

// The name of an error or a result that an answer is about; its number if it has none.
std::string NameOf(LONG code);

// Whether the event is signalled within a moment.
bool IsSignalled(HANDLE event);

std::wstring Wide(const std::string& text);

// A key of the probe's own, with what is in it, for the length of a scope; empty at first.
class ProbeKey {
  public:
    explicit ProbeKey(HKEY root = HKEY_LOCAL_MACHINE,
                      std::wstring path = L"SOFTWARE\\Kora4PlatformProbe",
                      const SECURITY_ATTRIBUTES* pSecurity = nullptr);
    ~ProbeKey();
    ProbeKey(const ProbeKey&) = delete;
    ProbeKey& operator=(const ProbeKey&) = delete;

    HKEY Get() const { return m_key.Get(); }
    const std::wstring& Path() const { return m_path; }

  private:
    const HKEY m_root;
    const std::wstring m_path;
    UniqueRegKey m_key;
};

// A file name in the folder for temporary files; the file is deleted at the end of the scope.
class ProbeFile {
  public:
    explicit ProbeFile(const wchar_t* name);
    ~ProbeFile() { DeleteFileW(m_path.c_str()); }
    ProbeFile(const ProbeFile&) = delete;
    ProbeFile& operator=(const ProbeFile&) = delete;

    const std::wstring& Path() const { return m_path; }
    // Makes it, with these bytes in it.
    void Write(const std::string& bytes) const;

  private:
    std::wstring m_path;
};

}  // namespace kora4::probe

#endif  // KORA4_TESTS_PLATFORM_PROBE_ANSWERS_H
