// SPDX-License-Identifier: MIT
// Stopping a monitor: in time, in whatever state, with nothing left behind.
#include <objbase.h>

#include <algorithm>

#include "support/message_filter.h"
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

class MonitorStop : public InApartment {};

TEST_P(MonitorStop, EndsTheThreadBeforeItReturns) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const UniqueHandle thread = monitor->DuplicateThread();
        EXPECT_GT(cStopLimit, Measure([&] { monitor->TerminateRegMonitor(); }));
        EXPECT_TRUE(IsSignalledWithin(thread.Get(), 0));
        EXPECT_EQ(1u, monitor.References());
        key.Write();
        EXPECT_EQ(0, client.calls);
    });
    EXPECT_FALSE(Module::IsLocked());
}

TEST_P(MonitorStop, IsInTimeWhileWritesGoOn) {
    Run([] {
        TestKey key;
        std::atomic<bool> stop{false};
        const auto write = [&] {
            while (!stop)
                key.Write();
        };
        RecordingClient client;
        for (int i = 0; i < 20; ++i) {
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            stop = false;
            std::function<void()> writer = write;
            const UniqueHandle thread(CreateThread(
                nullptr, 0,
                [](void* pBody) -> DWORD {
                    (*static_cast<std::function<void()>*>(pBody))();
                    return 0;
                },
                &writer, 0, nullptr));
            EXPECT_TRUE(client.AwaitCall(GetParam()));
            const double time = Measure([&] { monitor->TerminateRegMonitor(); });
            const int calls = client.calls;
            stop = true;
            EXPECT_TRUE(IsSignalledWithin(thread.Get()));
            EXPECT_EQ(client.calls, calls);
            EXPECT_EQ(1u, monitor.References());
            EXPECT_GT(cStopLimit, time);
        }
    });
}

// The owner's last use of the monitor is in the callback itself.
TEST_P(MonitorStop, WithinTheCallbackDoesNotWaitForTheThread) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        double time = 2 * cStopLimit;
        client.hook = [&] { time = Measure([&] { monitor.TearDown(); }); };
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const UniqueHandle thread = monitor->DuplicateThread();
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_GT(cStopLimit, time);
        EXPECT_TRUE(PumpUntilSignalled(thread.Get(), 1000));
        key.Write();
        EXPECT_EQ(1, client.calls);
        EXPECT_FALSE(Module::IsLocked());
    });
}

TEST_P(MonitorStop, WithinTheCallbackAllowsANewStartThere) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        HRESULT hr = E_PENDING;
        client.hook = [&] {
            if (client.calls > 1)
                return;
            monitor->TerminateRegMonitor();
            hr = monitor.Spawn(key, client);
        };
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const UniqueHandle thread = monitor->DuplicateThread();
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_EQ(S_OK, hr);
        EXPECT_TRUE(PumpUntilSignalled(thread.Get()));
        EXPECT_TRUE(monitor->IsMonitoring());
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        monitor->TerminateRegMonitor();
        EXPECT_EQ(1u, monitor.References());
    });
    EXPECT_FALSE(Module::IsLocked());
}

TEST_P(MonitorStop, WithinTheCallbackOfAnotherMonitorIsInTime) {
    Run([] {
        TestKey key;
        RecordingClient client;
        RecordingClient other;
        MonitorOwner monitor;
        MonitorOwner stopped;
        ASSERT_EQ(S_OK, stopped.Spawn(key, other));
        double time = 2 * cStopLimit;
        client.hook = [&] { time = Measure([&] { stopped.TearDown(); }); };
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_GT(cStopLimit, time);
    });
}

TEST_P(MonitorStop, LeavesNothingBehindIn500Cycles) {
    Run([] {
        TestKey key;
        RecordingClient client;
        double slowest = 0;
        const auto cycle = [&](bool pending) {
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            if (pending)
                key.Write();
            slowest = std::max(slowest, Measure([&] { monitor->TerminateRegMonitor(); }));
            ASSERT_EQ(1u, monitor.References());
        };
        for (int i = 0; i < 20; ++i)
            cycle(i % 2 != 0);
        const ULONG_PTR before = NextHandleValue();
        for (int i = 0; i < 500; ++i)
            cycle(i % 2 != 0);
        EXPECT_LE(NextHandleValue(), before + 16 * cHandleStep);
        EXPECT_GT(cStopLimit, slowest);
        EXPECT_FALSE(Module::IsLocked());
    });
}

TEST_P(MonitorStop, WithinTheCallbackLeavesNothingBehind) {
    Run([] {
        TestKey key;
        const auto cycle = [&] {
            RecordingClient client;
            MonitorOwner monitor;
            client.hook = [&] { monitor.TearDown(); };
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            const UniqueHandle thread = monitor->DuplicateThread();
            key.Write();
            ASSERT_TRUE(client.AwaitCall(GetParam()));
            ASSERT_TRUE(PumpUntilSignalled(thread.Get()));
        };
        for (int i = 0; i < 20; ++i)
            cycle();
        const ULONG_PTR before = NextHandleValue();
        for (int i = 0; i < 500; ++i)
            cycle();
        EXPECT_LE(NextHandleValue(), before + 16 * cHandleStep);
        EXPECT_FALSE(Module::IsLocked());
    });
}

// What a client's DllMain and its static destructors run under: no thread of the process
// can begin or end meanwhile.
class LoaderLock {
  public:
    LoaderLock() : m_lock(Function<LockFunction>("LdrLockLoaderLock")) {
        EXPECT_TRUE(m_lock && m_lock(0, nullptr, &m_cookie) == 0);
    }
    ~LoaderLock() {
        const auto unlock = Function<UnlockFunction>("LdrUnlockLoaderLock");
        EXPECT_TRUE(unlock && unlock(0, m_cookie) == 0);
    }
    LoaderLock(const LoaderLock&) = delete;
    LoaderLock& operator=(const LoaderLock&) = delete;

  private:
    using LockFunction = LONG(WINAPI*)(ULONG flags, ULONG* pState, ULONG_PTR* pCookie);
    using UnlockFunction = LONG(WINAPI*)(ULONG flags, ULONG_PTR cookie);

    template <typename Type>
    static Type Function(const char* name) {
        return reinterpret_cast<Type>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
    }

    const LockFunction m_lock;
    ULONG_PTR m_cookie = 0;
};

TEST_P(MonitorStop, UnderTheLoadersLockLeavesTheThreadToEndByItself) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const UniqueHandle thread = monitor->DuplicateThread();
        {
            const LoaderLock lock;
            EXPECT_GT(cStopLimit, Measure([&] { monitor.TearDown(); }));
            EXPECT_FALSE(IsSignalledWithin(thread.Get(), 0));
        }
        EXPECT_TRUE(IsSignalledWithin(thread.Get()));
        DWORD exitCode = WAIT_TIMEOUT;
        GetExitCodeThread(thread.Get(), &exitCode);
        EXPECT_EQ(static_cast<DWORD>(S_OK), exitCode);
        EXPECT_FALSE(Module::IsLocked());
    });
}

KORA4_IN_APARTMENTS(MonitorStop, Apartment::eSingle, Apartment::eMulti);

TEST(MonitorStopInSingleThreadedApartment, LetsThePendingCallInButNotToTheClient) {
    RunIn(Apartment::eSingle, [] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const UniqueHandle thread = monitor->DuplicateThread();
        key.Write();
        ASSERT_TRUE(AwaitPendingCall());
        EXPECT_GT(cStopLimit, Measure([&] { monitor->TerminateRegMonitor(); }));
        EXPECT_TRUE(IsSignalledWithin(thread.Get(), 0));
        EXPECT_EQ(0, client.calls);
        EXPECT_EQ(1u, monitor.References());
        DWORD exitCode = 0;
        GetExitCodeThread(thread.Get(), &exitCode);
        EXPECT_EQ(static_cast<DWORD>(S_OK), exitCode);
    });
}

TEST(MonitorStopInSingleThreadedApartment, LeavesTheOwnersMessagesAsTheyWere) {
    RunIn(Apartment::eSingle, [] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        PostThreadMessageW(GetCurrentThreadId(), WM_APP, 17, 0);
        PostQuitMessage(18);
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        monitor->TerminateRegMonitor();
        // Thread messages only; the quit message comes when there is no other.
        const HWND ofTheThread = reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1));
        MSG message{};
        ASSERT_TRUE(PeekMessageW(&message, ofTheThread, 0, 0, PM_REMOVE));
        EXPECT_EQ(static_cast<UINT>(WM_APP), message.message);
        EXPECT_EQ(17u, message.wParam);
        ASSERT_TRUE(PeekMessageW(&message, ofTheThread, 0, 0, PM_REMOVE));
        EXPECT_EQ(static_cast<UINT>(WM_QUIT), message.message);
        EXPECT_EQ(18u, message.wParam);
        EXPECT_FALSE(PeekMessageW(&message, ofTheThread, 0, 0, PM_REMOVE));
    });
}

TEST(MonitorStopInSingleThreadedApartment, GoesOnWhenTheHostBreaksItsWaitOff) {
    RunIn(Apartment::eSingle, [] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        CancellingFilter filter;
        EXPECT_GT(cStopLimit, Measure([&] { ASSERT_EQ(S_OK, monitor.Spawn(key, client)); }));
        const UniqueHandle thread = monitor->DuplicateThread();
        key.Write();
        ASSERT_TRUE(AwaitPendingCall());
        filter.cancelled = 0;
        EXPECT_GT(cStopLimit, Measure([&] { monitor->TerminateRegMonitor(); }));
        EXPECT_LT(0, filter.cancelled);
        EXPECT_TRUE(IsSignalledWithin(thread.Get(), 0));
        EXPECT_EQ(1u, monitor.References());
    });
}

TEST(WaitLettingCallsIn, LastsAsLongAsAskedForWhenTheHostBreaksItOff) {
    RunIn(Apartment::eSingle, [] {
        const UniqueHandle never = MakeManualEvent();
        const HANDLE handles[] = {never.Get()};
        CancellingFilter filter;
        const double time =
            Measure([&] { EXPECT_EQ(WAIT_TIMEOUT, WaitLettingCallsIn(handles, 1, 200)); });
        EXPECT_LT(0, filter.cancelled);
        EXPECT_LE(150, time);
        EXPECT_GT(cStopLimit, time);
    });
}

// The apartment of an owner that forgot its monitor.
TEST(MonitorStopInSingleThreadedApartment, ThreadEndsWithTheApartment) {
    TestKey key;
    RecordingClient client;
    UniqueHandle thread;
    ComObject<OpenMonitor>* pAbandoned = nullptr;
    RunInNewThread(Apartment::eSingle, [&] {
        ASSERT_EQ(S_OK, ComObject<OpenMonitor>::Create(&pAbandoned));
        ASSERT_EQ(S_OK, pAbandoned->SpawnRegMonitor(HKEY_CURRENT_USER, key.Path(), &client));
        thread = pAbandoned->DuplicateThread();
    });
    EXPECT_TRUE(IsSignalledWithin(thread.Get(), 0));
    key.Write();
    EXPECT_EQ(0, client.calls);
    EXPECT_GT(cStopLimit, Measure([&] { pAbandoned->TerminateRegMonitor(); }));
    EXPECT_EQ(0u, pAbandoned->Release());
    EXPECT_FALSE(Module::IsLocked());
}

// An owner that stops in the callback and then leaves its apartment at once: the thread's
// last call to that apartment is never let in.
TEST(MonitorStopInSingleThreadedApartment, ThreadLetGoEndsWithTheApartment) {
    TestKey key;
    RecordingClient client;
    UniqueHandle thread;
    RunInNewThread(Apartment::eSingle, [&] {
        MonitorOwner monitor;
        const UniqueHandle leave = MakeManualEvent();
        client.hook = [&] {
            const HANDLE sessions = monitor->Session()->Thread();
            monitor.TearDown();
            // Still open and with all its rights: the session lives as long as its thread.
            DWORD exitCode = 0;
            EXPECT_TRUE(GetExitCodeThread(sessions, &exitCode));
            EXPECT_EQ(DWORD{STILL_ACTIVE}, exitCode);
            SetEvent(leave.Get());
        };
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        thread = monitor->DuplicateThread();
        key.Write();
        MSG message;
        while (WaitForSingleObject(leave.Get(), 0) != WAIT_OBJECT_0 &&
               GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
        AwaitPendingCall();
    });
    EXPECT_TRUE(IsSignalledWithin(thread.Get()));
    EXPECT_FALSE(Module::IsLocked());
}

// The same with a notification that stands at the door of the apartment.
TEST(MonitorStopInSingleThreadedApartment, ThreadWithAPendingCallEndsWithTheApartment) {
    TestKey key;
    RecordingClient client;
    UniqueHandle thread;
    ComObject<OpenMonitor>* pAbandoned = nullptr;
    RunInNewThread(Apartment::eSingle, [&] {
        ASSERT_EQ(S_OK, ComObject<OpenMonitor>::Create(&pAbandoned));
        ASSERT_EQ(S_OK, pAbandoned->SpawnRegMonitor(HKEY_CURRENT_USER, key.Path(), &client));
        thread = pAbandoned->DuplicateThread();
        key.Write();
        ASSERT_TRUE(AwaitPendingCall());
    });
    EXPECT_TRUE(IsSignalledWithin(thread.Get()));
    pAbandoned->TerminateRegMonitor();
    EXPECT_EQ(0u, pAbandoned->Release());
    EXPECT_FALSE(Module::IsLocked());
}

// A call of the client is in progress on the monitor thread, the stop comes from another
// thread of the apartment.
class MonitorStopBesideACallback : public testing::Test {
  protected:
    void Run(DWORD callbackLasts, double atLeast, double atMost) {
        RunIn(Apartment::eMulti, [&] {
            TestKey key;
            RecordingClient client;
            MonitorOwner monitor;
            const UniqueHandle entered = MakeManualEvent();
            const UniqueHandle leave = MakeManualEvent();
            client.hook = [&] {
                SetEvent(entered.Get());
                WaitForSingleObject(leave.Get(), callbackLasts);
            };
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            const UniqueHandle thread = monitor->DuplicateThread();
            key.Write();
            ASSERT_TRUE(IsSignalledWithin(entered.Get()));
            const double time = Measure([&] { monitor->TerminateRegMonitor(); });
            EXPECT_GE(time, atLeast);
            EXPECT_LT(time, atMost);
            SetEvent(leave.Get());
            // Not by force: the client's call has come back.
            EXPECT_TRUE(client.AwaitCall(false));
            EXPECT_TRUE(IsSignalledWithin(thread.Get()));
            DWORD exitCode = WAIT_TIMEOUT;
            GetExitCodeThread(thread.Get(), &exitCode);
            EXPECT_EQ(static_cast<DWORD>(S_OK), exitCode);
            EXPECT_EQ(1u, monitor.References());
        });
        EXPECT_FALSE(Module::IsLocked());
    }
};

TEST_F(MonitorStopBesideACallback, WaitsForTheClient) {
    Run(200, 100, cStopLimit);
}

TEST_F(MonitorStopBesideACallback, LeavesAClientThatDoesNotReturnToItself) {
    constexpr double cGrace = RegKeyMonitor::cGraceMilliseconds;
    Run(cPatience, cGrace - 500, cGrace + 1000);
}

}  // namespace
}  // namespace kora4::test
