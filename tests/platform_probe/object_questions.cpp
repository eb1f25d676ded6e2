// SPDX-License-Identifier: MIT
// Questions about named mutexes and their access lists.
#include <aclapi.h>
#include <sddl.h>

#include <array>
#include <thread>

#include "platform_probe/answers.h"
#include "platform_probe/question.h"

namespace kora4::probe {

namespace {

constexpr wchar_t cName[] = L"Kora4PlatformProbeMutex";

// A mutex as a program with another token leaves it: the list grants that much and no more.
class ForeignMutex {
  public:
    explicit ForeignMutex(const wchar_t* sddl) {
        UniqueLocalMemory list;
        ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, list.Put(),
                                                             nullptr);
        SECURITY_ATTRIBUTES attributes{sizeof attributes, list.Get(), FALSE};
        m_mutex.Reset(CreateMutexW(&attributes, FALSE, cName));
    }

  private:
    UniqueHandle m_mutex;
};

constexpr wchar_t cWaitOnly[] = L"D:P(A;;0x00100000;;;WD)";
constexpr wchar_t cNothing[] = L"D:P(D;;GA;;;WD)";

std::string CreatedAgain() {
    const ForeignMutex foreign(cWaitOnly);
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, cName));
    return NameOf(mutex ? ERROR_SUCCESS : static_cast<LONG>(GetLastError()));
}

std::string OpenedToWait() {
    const ForeignMutex foreign(cWaitOnly);
    const UniqueHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, cName));
    const bool isHeld = mutex && WaitForSingleObject(mutex.Get(), 0) == WAIT_OBJECT_0;
    return YesOrNo(isHeld && ReleaseMutex(mutex.Get()));
}

std::string OpenedDenied() {
    const ForeignMutex foreign(cNothing);
    const UniqueHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, cName));
    return NameOf(mutex ? ERROR_SUCCESS : static_cast<LONG>(GetLastError()));
}

std::string DefaultList() {
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, cName));
    PACL list = nullptr;
    UniqueLocalMemory memory;
    if (GetSecurityInfo(mutex.Get(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                        nullptr, &list, nullptr, memory.Put()) != ERROR_SUCCESS)
        return cCannotTell;
    if (!list)
        return "yes";
    for (DWORD i = 0; i < list->AceCount; ++i) {
        ACCESS_ALLOWED_ACE* entry = nullptr;
        if (GetAce(list, i, reinterpret_cast<void**>(&entry)) &&
            IsWellKnownSid(&entry->SidStart, WinWorldSid))
            return "yes";
    }
    return "no";
}

std::string Abandoned() {
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, cName));
    std::thread([&] { WaitForSingleObject(mutex.Get(), 0); }).join();
    const DWORD waited = WaitForSingleObject(mutex.Get(), cMoment);
    return YesOrNo(waited == WAIT_ABANDONED && ReleaseMutex(mutex.Get()));
}

std::string NameWithoutPrefix() {
    const UniqueHandle mutex(CreateMutexW(nullptr, FALSE, cName));
    const UniqueHandle local(
        OpenMutexW(SYNCHRONIZE, FALSE, (std::wstring(L"Local\\") + cName).c_str()));
    const UniqueHandle global(
        OpenMutexW(SYNCHRONIZE, FALSE, (std::wstring(L"Global\\") + cName).c_str()));
    return !local ? "no session" : global ? "the machine" : "the session";
}

constexpr char cMutex[] = "src/platform/open_mutex.h";
constexpr char cRights[] = "Synchronization Object Security and Access Rights";

constexpr std::array cQuestions{
    Question{"default-list", "Does the default list of a new mutex name everyone?", "no",
             cRights, cMutex, &DefaultList},
    Question{"mutex-of-another-token",
             "What does creating a mutex give that exists and grants SYNCHRONIZE only?",
             "ERROR_ACCESS_DENIED", "CreateMutexW function (synchapi.h)", cMutex,
             &CreatedAgain},
    Question{"mutex-to-wait", "Is SYNCHRONIZE enough to take and to release it?", "yes",
             cRights, cMutex, &OpenedToWait},
    Question{"denied-mutex", "What does opening a mutex give whose list grants nothing?",
             "ERROR_ACCESS_DENIED", cRights, cMutex, &OpenedDenied},
    Question{"abandoned-mutex", "Is an abandoned mutex owned by who waited for it?", "yes",
             "Mutex Objects", "src/store/access/named_mutex.cpp", &Abandoned},
    Question{"name-without-prefix", "Who shares a name without a prefix?", "the session",
             "Kernel object namespaces", "src/store/access/named_mutex.cpp",
             &NameWithoutPrefix},
};

}  // namespace

std::span<const Question> ObjectQuestions() {
    return cQuestions;
}

}  // namespace kora4::probe
