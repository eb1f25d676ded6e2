// SPDX-License-Identifier: MIT
// The named mutex of the store: creation, ownership, release, and the order of calls when
// creating is refused.
#include "store/access/named_mutex.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "contract/store_mutex.h"
#include "platform/handles.h"
#include "platform/open_mutex.h"
#include "support/foreign_mutex.h"
#include "support/start_process.h"
#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {
namespace {

constexpr char16_t cName[] = u"KORA4.unit-test.named-mutex";
constexpr wchar_t cOwnedEvent[] = L"KORA4.unit-test.named-mutex.owned";
constexpr wchar_t cHolderSwitch[] = L"KORA4_TEST_MUTEX_HOLDER";
constexpr DWORD cPatience = 20000;

const wchar_t* Wide(const char16_t* text) {
    return reinterpret_cast<const wchar_t*>(text);
}

// What another handle to the mutex says within a moment: free, taken or left behind.
DWORD Probe(const char16_t* name = cName) {
    const UniqueHandle mutex(OpenMutexW(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, Wide(name)));
    if (!mutex)
        return WAIT_FAILED;
    DWORD wait = WAIT_FAILED;
    std::thread([&] {
        wait = WaitForSingleObject(mutex.Get(), 0);
        if (wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED)
            ReleaseMutex(mutex.Get());
    }).join();
    return wait;
}

TEST(NamedMutexTest, TheStoresMutexHasItsFixedName) {
    NamedMutex mutex;
    EXPECT_EQ(S_OK, mutex.Create(cStoreMutexName));
    EXPECT_EQ(WAIT_OBJECT_0, Probe(u"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}"));
}

TEST(NamedMutexTest, CreatingItDoesNotOwnIt) {
    NamedMutex mutex;
    EXPECT_FALSE(mutex.IsCreated());
    EXPECT_EQ(S_OK, mutex.Create(cName));
    EXPECT_TRUE(mutex.IsCreated());
    EXPECT_FALSE(mutex.IsAcquired());
    EXPECT_EQ(WAIT_OBJECT_0, Probe());
}

TEST(NamedMutexTest, CreatingItTwiceFailsAndKeepsTheFirst) {
    NamedMutex mutex;
    EXPECT_EQ(S_OK, mutex.Create(cName));
    EXPECT_EQ(E_FAIL, mutex.Create(u"KORA4.unit-test.other"));
    EXPECT_EQ(WAIT_OBJECT_0, Probe());
    EXPECT_EQ(WAIT_FAILED, Probe(u"KORA4.unit-test.other"));
}

TEST(NamedMutexTest, ANameThatMeansSomethingElseCannotBeCreated) {
    const UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, Wide(cName)));
    ASSERT_TRUE(event);
    NamedMutex mutex;
    EXPECT_EQ(E_FAIL, mutex.Create(cName));
    EXPECT_FALSE(mutex.IsCreated());
}

TEST(NamedMutexTest, TheMutexOfAnotherTokenIsOpened) {
    const ForeignMutex foreign(Wide(cName));
    NamedMutex mutex;
    EXPECT_EQ(S_OK, mutex.Create(cName));
    {
        const MutexHold hold(mutex);
        std::thread([&] {
            EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), foreign.Take(0));
        }).join();
    }
    EXPECT_EQ(WAIT_OBJECT_0, foreign.Take(0));
    foreign.Release();
}

TEST(NamedMutexTest, TwoOfThemWithOneNameAreOneMutex) {
    NamedMutex first;
    NamedMutex second;
    EXPECT_EQ(S_OK, first.Create(cName));
    EXPECT_EQ(S_OK, second.Create(cName));
    const MutexHold hold(first);
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Probe());
}

TEST(NamedMutexTest, AHoldEndsWithItsScope) {
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    {
        const MutexHold hold(mutex);
        EXPECT_TRUE(mutex.IsAcquired());
        EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Probe());
    }
    EXPECT_FALSE(mutex.IsAcquired());
    EXPECT_EQ(WAIT_OBJECT_0, Probe());
}

TEST(NamedMutexTest, AReleaseThatThePlatformRefusesFails) {
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    EXPECT_EQ(E_FAIL, mutex.Release());
}

TEST(NamedMutexTest, AFailedWaitGoesOn) {
    NamedMutex mutex;
    mutex.Acquire();
    EXPECT_TRUE(mutex.IsAcquired());
    EXPECT_EQ(E_FAIL, mutex.Release());
    EXPECT_FALSE(mutex.IsAcquired());
}

TEST(NamedMutexTest, FreeingItLetsItBeCreatedAgain) {
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    mutex.FreeMutex();
    EXPECT_FALSE(mutex.IsCreated());
    EXPECT_EQ(WAIT_FAILED, Probe());
    EXPECT_EQ(S_OK, mutex.Create(cName));
}

TEST(NamedMutexTest, AWaiterGetsItWhenTheOwnerReleasesIt) {
    NamedMutex owner;
    ASSERT_EQ(S_OK, owner.Create(cName));
    owner.Acquire();
    std::atomic<bool> released{false};
    std::atomic<bool> inOrder{false};
    const UniqueHandle waiting(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread waiter([&] {
        NamedMutex mutex;
        mutex.Create(cName);
        SetEvent(waiting.Get());
        const MutexHold hold(mutex);
        inOrder = released.load();
    });
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(waiting.Get(), cPatience));
    released = true;
    EXPECT_EQ(S_OK, owner.Release());
    waiter.join();
    EXPECT_TRUE(inOrder);
}

// ---- Which call follows which; Wine refuses nobody SYNCHRONIZE, Windows may ----------------

std::vector<std::string> g_calls;
DWORD g_creationError = ERROR_SUCCESS;

HANDLE WINAPI RefusedCreation(LPSECURITY_ATTRIBUTES attributes, BOOL isOwner, LPCWSTR name) {
    EXPECT_EQ(nullptr, attributes);
    EXPECT_FALSE(isOwner);
    EXPECT_EQ(std::wstring(Wide(cName)), name);
    g_calls.push_back("create");
    SetLastError(g_creationError);
    return nullptr;
}

HANDLE WINAPI RefusedOpening(DWORD access, BOOL isInherited, LPCWSTR name) {
    EXPECT_EQ(static_cast<DWORD>(SYNCHRONIZE), access);
    EXPECT_FALSE(isInherited);
    EXPECT_EQ(std::wstring(Wide(cName)), name);
    g_calls.push_back("open");
    SetLastError(ERROR_FILE_NOT_FOUND);
    return nullptr;
}

std::vector<std::string> CallsWhenCreationFails(DWORD error) {
    g_calls.clear();
    g_creationError = error;
    EXPECT_EQ(nullptr, CreateOrOpenMutex(cName, {&RefusedCreation, &RefusedOpening}));
    return g_calls;
}

TEST(OpenMutexCalls, ADeniedCreationIsFollowedByOpeningWithTheLeastRights) {
    EXPECT_EQ((std::vector<std::string>{"create", "open"}),
              CallsWhenCreationFails(ERROR_ACCESS_DENIED));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, GetLastError());
}

TEST(OpenMutexCalls, AnotherFailureOfTheCreationIsFinal) {
    EXPECT_EQ(std::vector<std::string>{"create"}, CallsWhenCreationFails(ERROR_INVALID_HANDLE));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
}

// ---- A killed owner -------------------------------------------------------------------------

// In the process that OwnerInAnotherProcess starts no test runs: it takes the mutex, says
// so, and never gives it back.
class HolderMode : public ::testing::Environment {
  public:
    void SetUp() override {
        wchar_t value[8];
        if (GetEnvironmentVariableW(cHolderSwitch, value, 8) == 0)
            return;
        NamedMutex mutex;
        mutex.Create(cName);
        mutex.Acquire();
        const UniqueHandle owned(OpenEventW(EVENT_MODIFY_STATE, FALSE, cOwnedEvent));
        SetEvent(owned.Get());
        WaitForSingleObject(GetCurrentProcess(), INFINITE);
    }
};

[[maybe_unused]] const auto* const g_holderMode =
    ::testing::AddGlobalTestEnvironment(new HolderMode);

class OwnerInAnotherProcess {
  public:
    OwnerInAnotherProcess() {
        m_owned.Reset(CreateEventW(nullptr, TRUE, FALSE, cOwnedEvent));
        wchar_t program[1024];
        GetModuleFileNameW(nullptr, program, 1024);
        std::wstring command = L"\"" + std::wstring(program) + L"\" --gtest_brief=1";
        SetEnvironmentVariableW(cHolderSwitch, L"1");
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process{};
        if (StartProcess([&] {
                return CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0,
                                      nullptr, nullptr, &startup, &process);
            })) {
            m_process.Reset(process.hProcess);
            CloseHandle(process.hThread);
        }
        SetEnvironmentVariableW(cHolderSwitch, nullptr);
    }
    ~OwnerInAnotherProcess() { Kill(); }

    bool WaitUntilItOwns() const {
        return WaitForSingleObject(m_owned.Get(), cPatience) == WAIT_OBJECT_0;
    }
    void Kill() {
        if (!m_process)
            return;
        TerminateProcess(m_process.Get(), 1);
        WaitForSingleObject(m_process.Get(), cPatience);
        m_process.Reset();
    }

  private:
    UniqueHandle m_owned;
    UniqueHandle m_process;
};

TEST(NamedMutexTest, AMutexThatItsKilledOwnerLeftBehindIsOwned) {
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    OwnerInAnotherProcess owner;
    ASSERT_TRUE(owner.WaitUntilItOwns());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Probe());
    owner.Kill();
    mutex.Acquire();
    EXPECT_TRUE(mutex.IsAcquired());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), Probe());
    EXPECT_EQ(S_OK, mutex.Release());
    EXPECT_EQ(WAIT_OBJECT_0, Probe());
}

TEST(NamedMutexTest, AWaiterGetsItWhenTheOwnerIsKilled) {
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    OwnerInAnotherProcess owner;
    ASSERT_TRUE(owner.WaitUntilItOwns());
    const UniqueHandle acquired(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread waiter([&] {
        const MutexHold hold(mutex);
        SetEvent(acquired.Get());
    });
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(acquired.Get(), 0));
    owner.Kill();
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(acquired.Get(), cPatience));
    waiter.join();
}

// ---- Trace
// ------------------------------------------------------------------------------------

class NamedMutexTrace : public ::testing::Test {
  protected:
    TraceLog m_log;
    TraceFlags m_flags{trace::eLogFiles | trace::eAssertions};
};

TEST_F(NamedMutexTrace, ReleasingAMutexThatIsNotHeldIsAsserted) {
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    mutex.Release();
    EXPECT_EQ(std::vector<std::string>{"KALASSERT failed: IsAcquired()"},
              MessagesOf(m_log.Read("KORA4UIKeysClient"), "NamedMutex::Release"));
}

TEST_F(NamedMutexTrace, FreeingAMutexThatIsHeldIsAsserted) {
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    mutex.Acquire();
    mutex.FreeMutex();
    EXPECT_EQ(std::vector<std::string>{"KALASSERT failed: !IsAcquired()"},
              MessagesOf(m_log.Read("KORA4KeysClient"), "NamedMutex::FreeMutex"));
    mutex.Release();
}

TEST_F(NamedMutexTrace, DestroyingAMutexThatIsHeldIsAsserted) {
    {
        NamedMutex mutex;
        ASSERT_EQ(S_OK, mutex.Create(cName));
        mutex.Acquire();
    }
    EXPECT_EQ(std::vector<std::string>{"KALASSERT failed: !IsAcquired()"},
              MessagesOf(m_log.Read("KORA4KeysClient"), "NamedMutex::~NamedMutex"));
}

TEST_F(NamedMutexTrace, AWrongUseIsSilentWhileAssertionsAreNotTraced) {
    const TraceFlags flags(trace::eMessages | trace::eLogFiles);
    {
        NamedMutex mutex;
        ASSERT_EQ(S_OK, mutex.Create(cName));
        mutex.Acquire();
        mutex.FreeMutex();
    }
    NamedMutex mutex;
    ASSERT_EQ(S_OK, mutex.Create(cName));
    mutex.Release();
    EXPECT_TRUE(m_log.ReadShared().empty());
}

TEST_F(NamedMutexTrace, AnOrdinaryLifeFailsNoAssertion) {
    {
        NamedMutex mutex;
        ASSERT_EQ(S_OK, mutex.Create(cName));
        const MutexHold hold(mutex);
    }
    EXPECT_TRUE(m_log.ReadShared().empty());
}

}  // namespace
}  // namespace kora4::test
