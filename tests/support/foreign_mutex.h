// SPDX-License-Identifier: MIT
// A mutex as a program with another token leaves it to the others.
#ifndef KORA4_TESTS_SUPPORT_FOREIGN_MUTEX_H
#define KORA4_TESTS_SUPPORT_FOREIGN_MUTEX_H

#include <gtest/gtest.h>
#include <windows.h>

// Needs the one above.
#include <sddl.h>

namespace kora4::test {

// Its access list grants SYNCHRONIZE and nothing else, as the default list of an elevated
// program does to the same user's other programs. Make it before anybody else makes the mutex.
class ForeignMutex {
  public:
    explicit ForeignMutex(
        const wchar_t* pwName = L"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}") {
        SECURITY_ATTRIBUTES attributes{sizeof attributes, nullptr, FALSE};
        EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
            L"D:(A;;0x100000;;;WD)", SDDL_REVISION_1, &attributes.lpSecurityDescriptor,
            nullptr));
        m_mutex = CreateMutexW(&attributes, FALSE, pwName);
        EXPECT_NE(nullptr, m_mutex);
        EXPECT_NE(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());
        LocalFree(attributes.lpSecurityDescriptor);
        // It is what it is meant to be.
        EXPECT_EQ(nullptr, CreateMutexW(nullptr, FALSE, pwName));
        EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    }
    ~ForeignMutex() { CloseHandle(m_mutex); }
    ForeignMutex(const ForeignMutex&) = delete;
    ForeignMutex& operator=(const ForeignMutex&) = delete;

    DWORD Take(DWORD milliseconds) const { return WaitForSingleObject(m_mutex, milliseconds); }
    void Release() const { ReleaseMutex(m_mutex); }

  private:
    HANDLE m_mutex = nullptr;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_FOREIGN_MUTEX_H
