// SPDX-License-Identifier: MIT
// The main program of the multi-process tests: roles of children, a watchdog for tests that
// hang, children that end with it, and --times=N for a longer run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

#include "multiprocess/roles.h"
#include "multiprocess/watchdog.h"
#include "platform/handles.h"
#include "support/desktop_hold.h"

namespace kora4::test {
namespace {

constexpr UINT cHungExitCode = 124;
constexpr char cTimesArgument[] = "--times=";

// Watches one test at a time; lives as long as the program.
class Watchdog : public testing::EmptyTestEventListener {
  public:
    Watchdog() : m_changed(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
        std::thread([this] { Watch(); }).detach();
    }

    void OnTestStart(const testing::TestInfo& info) override {
        {
            const std::lock_guard hold(m_mutex);
            m_test = std::string(info.test_suite_name()) + "." + info.name();
        }
        Allow(cTestSeconds);
    }
    void OnTestEnd(const testing::TestInfo&) override { Set(0); }

    void Allow(DWORD seconds) {
        m_seconds = seconds;
        Set(GetTickCount64() + seconds * 1000ull);
    }

  private:
    void Set(ULONGLONG deadline) {
        m_deadline = deadline;
        SetEvent(m_changed.Get());
    }

    void Watch() {
        for (;;) {
            const ULONGLONG deadline = m_deadline;
            const ULONGLONG now = GetTickCount64();
            if (deadline != 0 && now >= deadline)
                End();
            WaitForSingleObject(m_changed.Get(),
                                deadline == 0 ? INFINITE : static_cast<DWORD>(deadline - now));
        }
    }

    void End() {
        const std::lock_guard hold(m_mutex);
        std::printf("[  HUNG    ] %s did not end within %lu s\n", m_test.c_str(),
                    static_cast<unsigned long>(m_seconds));
        std::fflush(stdout);
        TerminateProcess(GetCurrentProcess(), cHungExitCode);
    }

    std::mutex m_mutex;
    std::string m_test;
    std::atomic<DWORD> m_seconds{0};
    std::atomic<ULONGLONG> m_deadline{0};  // 0: no test runs
    UniqueHandle m_changed;
};

Watchdog* s_pWatchdog = nullptr;
unsigned s_times = 1;

// Children do not outlive the program, however it ends.
void TieChildrenToThisProcess() {
    static UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits,
                            sizeof limits);
    AssignProcessToJobObject(job.Get(), GetCurrentProcess());
}

}  // namespace

void AllowSeconds(DWORD seconds) {
    s_pWatchdog->Allow(seconds * s_times);
}

unsigned Times() {
    return s_times;
}

}  // namespace kora4::test

int main(int argc, char** argv) {
    using namespace kora4::test;
    const std::size_t length = std::strlen(cRoleArgument);
    if (argc > 1 && std::strncmp(argv[1], cRoleArgument, length) == 0)
        return RunRole(argv[1] + length);
    testing::InitGoogleMock(&argc, argv);
    const std::size_t timesLength = std::strlen(cTimesArgument);
    if (argc > 1 && std::strncmp(argv[1], cTimesArgument, timesLength) == 0)
        s_times = std::max(
            1u, static_cast<unsigned>(std::strtoul(argv[1] + timesLength, nullptr, 10)));
    TieChildrenToThisProcess();
    const DesktopHold desktop;
    // The framework owns its listeners.
    s_pWatchdog = new Watchdog;
    testing::UnitTest::GetInstance()->listeners().Append(s_pWatchdog);
    const int result = RUN_ALL_TESTS();
    std::fflush(stdout);
    // The watching thread never ends; it goes with the process.
    ExitProcess(static_cast<UINT>(result));
}
