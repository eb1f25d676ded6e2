// SPDX-License-Identifier: MIT
// The end of a monitor thread by force. A program of its own: a thread that is ended so
// never leaves the multithreaded apartment, which then stays for the life of the process.
#include <gmock/gmock.h>
#include <objbase.h>

#include <cstdio>
#include <string>

#include "support/trace_capture.h"
#include "support/trace_flags.h"
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

// The thread's id, its handle and that of the event that it sets at its end.
std::string ZombieLine(OpenMonitor& monitor) {
    const MonitorSessionPtr spSession = monitor.Session();
    char text[64];
    snprintf(text, sizeof text, "Zombie thread 0x%08lx 0x%08lx 0x%08lx",
             GetThreadId(spSession->Thread()), HandleToULong(spSession->Thread()),
             HandleToULong(spSession->ExitedEvent()));
    return text;
}

bool IsFactoryFound() {
    Microsoft::WRL::ComPtr<IUnknown> spFactory;
    return SUCCEEDED(CoGetClassObject(
        __uuidof(ICOMCallbackGate), CLSCTX_INPROC_SERVER, nullptr, __uuidof(IUnknown),
        reinterpret_cast<void**>(spFactory.ReleaseAndGetAddressOf())));
}

bool IsOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags);
}

bool IsOpen(HKEY key) {
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr, nullptr) != ERROR_INVALID_HANDLE;
}

// A thread that is suspended ends by force and in no other way.
class SuspendedThread {
  public:
    explicit SuspendedThread(OpenMonitor& monitor) : m_thread(monitor.DuplicateThread()) {
        EXPECT_NE(static_cast<DWORD>(-1), SuspendThread(m_thread.Get()));
    }
    HANDLE Get() const { return m_thread.Get(); }

  private:
    const UniqueHandle m_thread;
};

// The kinds of apartment that an owner can be in. eNone stands for a thread that has entered
// no apartment while the multithreaded one exists: it counts as part of that.
class MonitorStopByForce : public testing::TestWithParam<Apartment> {
  protected:
    void Run(const std::function<void()>& body) {
        if (GetParam() == Apartment::eNone)
            RunIn(Apartment::eMulti, [&] { RunInNewThread(Apartment::eNone, body); });
        else
            RunIn(GetParam(), body);
    }
};

TEST_P(MonitorStopByForce, EndsAThreadThatCannotEndByItself) {
    TraceLog log;
    Run([&log] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const SuspendedThread thread(*monitor.Get());
        const std::string zombie = ZombieLine(*monitor.Get());
        const TraceFlags traced(trace::eSecurity | trace::eLogFiles);
        log.Clear();
        const double time = Measure([&] { monitor->TerminateRegMonitor(); });
        EXPECT_THAT(MessagesOf(log.Read("RegKeyMonitor"), "RegKeyMonitor::HaltMonitorThread"),
                    testing::ElementsAre(">>", zombie, "<<"));
        EXPECT_GT(RegKeyMonitor::cGraceMilliseconds + 1000.0, time);
        DWORD exitCode = 0;
        GetExitCodeThread(thread.Get(), &exitCode);
        EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), exitCode);
        EXPECT_FALSE(monitor->IsMonitoring());
    });
    EXPECT_FALSE(Module::IsLocked());
}

TEST_P(MonitorStopByForce, GivesBackWhatTheThreadHeld) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const SuspendedThread thread(*monitor.Get());
        const HKEY watched = monitor->Session()->WatchedKey().Get();
        const HANDLE changeEvent = monitor->Session()->ChangeEvent().Get();
        EXPECT_TRUE(IsOpen(watched));
        EXPECT_TRUE(IsOpen(changeEvent));
        EXPECT_LT(1u, monitor.References());
        monitor->TerminateRegMonitor();
        EXPECT_FALSE(IsOpen(watched));
        EXPECT_FALSE(IsOpen(changeEvent));
        EXPECT_EQ(1u, monitor.References());
        // Left there, it would lock the module.
        RunInNewThread(Apartment::eMulti, [] { EXPECT_FALSE(IsFactoryFound()); });
        // It can be started again.
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        monitor->TerminateRegMonitor();
        EXPECT_EQ(1u, monitor.References());
    });
    EXPECT_FALSE(Module::IsLocked());
    RunIn(Apartment::eMulti, [] { EXPECT_FALSE(IsFactoryFound()); });
}

KORA4_IN_APARTMENTS(MonitorStopByForce, Apartment::eSingle, Apartment::eMulti,
                    Apartment::eNone);

// A session without a thread of its own, whose holdings the tests watch.
class EndedSession : public testing::Test {
  protected:
    EndedSession() {
        *m_spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, L"");
        EXPECT_EQ(S_OK, m_spSession->MakeControls());
        m_spSession->ChangeEvent() = MakeManualEvent();
    }

    void ExpectNoReturnFrom(LPTHREAD_START_ROUTINE procedure) {
        const UniqueHandle thread(
            CreateThread(nullptr, 0, procedure, m_spSession.Get(), 0, nullptr));
        EXPECT_FALSE(IsSignalledWithin(thread.Get(), 50));
        EXPECT_TRUE(HoldsItsEvent());
        EXPECT_TRUE(TerminateThread(thread.Get(), 0));
        EXPECT_TRUE(IsSignalledWithin(thread.Get()));
    }

    bool HoldsItsEvent() { return IsOpen(m_spSession->ChangeEvent().Get()); }

    MonitorSessionPtr m_spSession;
};

TEST_F(EndedSession, IsNotEndedByForceOnceItGivesBack) {
    m_spSession->GiveBack();
    EXPECT_FALSE(HoldsItsEvent());
    EXPECT_FALSE(m_spSession->TerminateMonitorThread(1));
}

TEST_F(EndedSession, KeepsWhatItHoldsWhenEvenForceDoesNotEndTheThread) {
    EXPECT_TRUE(m_spSession->TerminateMonitorThread(1));
    EXPECT_TRUE(HoldsItsEvent());
    EXPECT_TRUE(m_spSession->HasWatchEnded());
}

// The thread reaches its end in the moment before it is terminated.
TEST_F(EndedSession, LeavesWhatItHeldToWhoeverTerminatesTheThread) {
    EXPECT_TRUE(m_spSession->TerminateMonitorThread(1));
    ExpectNoReturnFrom([](void* pSession) -> DWORD {
        static_cast<MonitorSession*>(pSession)->GiveBack();
        return 0;
    });
}

TEST_F(EndedSession, LeavesItsEndToWhoeverTerminatesTheThread) {
    EXPECT_TRUE(m_spSession->TerminateMonitorThread(1));
    ExpectNoReturnFrom([](void* pSession) -> DWORD {
        static_cast<MonitorSession*>(pSession)->EndThread(0, false);
    });
}

}  // namespace
}  // namespace kora4::test
