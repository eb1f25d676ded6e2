// SPDX-License-Identifier: MIT
// Starting a monitor, and what it tells about itself.
#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "support/import_redirection.h"
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

class MonitorStart : public InApartment {};

TEST_P(MonitorStart, RefusesNullArgumentsAndStaysIdle) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        EXPECT_EQ(E_INVALIDARG, monitor->SpawnRegMonitor(nullptr, key.Path(), &client));
        EXPECT_EQ(E_INVALIDARG, monitor->SpawnRegMonitor(HKEY_CURRENT_USER, nullptr, &client));
        EXPECT_EQ(E_INVALIDARG,
                  monitor->SpawnRegMonitor(HKEY_CURRENT_USER, key.Path(), nullptr));
        EXPECT_FALSE(monitor->IsMonitoring());
        EXPECT_FALSE(monitor->Session());
    });
}

TEST_P(MonitorStart, MonitorsFromSpawnToTerminate) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        EXPECT_FALSE(monitor->IsMonitoring());
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        EXPECT_TRUE(monitor->IsMonitoring());
        monitor->TerminateRegMonitor();
        EXPECT_FALSE(monitor->IsMonitoring());
        monitor->TerminateRegMonitor();
        EXPECT_EQ(1u, monitor.References());
    });
}

TEST_P(MonitorStart, IsArmedWhenSpawnReturns) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
    });
}

TEST_P(MonitorStart, SecondSpawnFailsAndLeavesTheFirstAlone) {
    Run([] {
        TestKey key;
        TestKey other;
        RecordingClient client;
        RecordingClient second;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        EXPECT_EQ(E_FAIL, monitor.Spawn(other, second));
        EXPECT_TRUE(monitor->IsMonitoring());
        other.Write();
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_EQ(0, second.calls);
    });
}

TEST_P(MonitorStart, CanBeStartedAgainOnAnotherKey) {
    Run([] {
        TestKey key;
        TestKey other;
        RecordingClient client;
        RecordingClient second;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        monitor->TerminateRegMonitor();
        ASSERT_EQ(S_OK, monitor.Spawn(other, second));
        key.Write();
        other.Write();
        EXPECT_TRUE(second.AwaitCall(GetParam()));
        EXPECT_EQ(0, client.calls);
    });
}

TEST_P(MonitorStart, MissingKeyFailsAtOnceWithoutPumping) {
    Run([] {
        RecordingClient client;
        MonitorOwner monitor;
        HRESULT hr = S_OK;
        const double time = Measure([&] {
            hr = monitor->SpawnRegMonitor(HKEY_CURRENT_USER, L"SOFTWARE\\Velto\\NoSuchKey",
                                          &client);
        });
        EXPECT_EQ(E_FAIL, hr);
        EXPECT_GT(cStopLimit, time);
        EXPECT_FALSE(monitor->IsMonitoring());
        EXPECT_FALSE(monitor->Session());
        EXPECT_EQ(1u, monitor.References());
    });
}

TEST_P(MonitorStart, KeyThatCannotBeOpenedFails) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        const HKEY noKey = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x7FFF'FFF0));
        EXPECT_EQ(E_FAIL, monitor->SpawnRegMonitor(noKey, key.Path(), &client));
        EXPECT_EQ(1u, monitor.References());
    });
}

TEST_P(MonitorStart, SucceedsAfterAFailedStart) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        EXPECT_EQ(E_FAIL, monitor->SpawnRegMonitor(HKEY_CURRENT_USER,
                                                   L"SOFTWARE\\Velto\\NoSuchKey", &client));
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
    });
}

TEST_P(MonitorStart, FailedStartsLeaveNoHandle) {
    Run([] {
        RecordingClient client;
        const auto fail = [&client] {
            MonitorOwner monitor;
            EXPECT_EQ(E_FAIL, monitor->SpawnRegMonitor(HKEY_CURRENT_USER,
                                                       L"SOFTWARE\\Velto\\NoSuchKey", &client));
        };
        for (int i = 0; i < 10; ++i)
            fail();
        const ULONG_PTR before = NextHandleValue();
        for (int i = 0; i < 100; ++i)
            fail();
        EXPECT_LE(NextHandleValue(), before + 10 * cHandleStep);
    });
    EXPECT_FALSE(Module::IsLocked());
}

TEST_P(MonitorStart, LocksTheModuleWhileItLives) {
    Run([] {
        TestKey key;
        RecordingClient client;
        EXPECT_FALSE(Module::IsLocked());
        MonitorOwner monitor;
        EXPECT_TRUE(Module::IsLocked());
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        monitor.TearDown();
        EXPECT_FALSE(Module::IsLocked());
    });
}

KORA4_IN_APARTMENTS(MonitorStart, Apartment::eSingle, Apartment::eMulti, Apartment::eNone);

TEST(MonitorObject, AnswersForItsInterfacesOnly) {
    RunIn(Apartment::eMulti, [] {
        MonitorOwner monitor;
        Microsoft::WRL::ComPtr<IUnknown> spUnknown;
        EXPECT_EQ(S_OK, monitor->QueryInterface(IID_PPV_ARGS(&spUnknown)));
        Microsoft::WRL::ComPtr<ICOMCallbackGate> spGate;
        EXPECT_EQ(S_OK, monitor->QueryInterface(IID_PPV_ARGS(&spGate)));
        Microsoft::WRL::ComPtr<IDispatch> spOther;
        EXPECT_EQ(E_NOINTERFACE, monitor->QueryInterface(IID_PPV_ARGS(&spOther)));
    });
}

TEST(MonitorObject, CallbackWithoutClientSucceeds) {
    RunIn(Apartment::eMulti, [] {
        MonitorOwner monitor;
        EXPECT_EQ(S_OK, monitor->Callback(0));
    });
}

TEST(MonitorObject, CallbackIgnoresItsArgumentAndReturnsTheClientsResult) {
    RunIn(Apartment::eMulti, [] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        EXPECT_EQ(S_OK, monitor->Callback(17));
        client.result = E_ACCESSDENIED;
        EXPECT_EQ(E_ACCESSDENIED, monitor->Callback(0));
        EXPECT_EQ(2, client.calls);
    });
}

TEST(MonitorObject, CallbacksMayEndInAnyOrder) {
    RunIn(Apartment::eMulti, [] {
        TestKey key;
        RecordingClient client;
        const UniqueHandle inside[] = {MakeManualEvent(), MakeManualEvent()};
        const UniqueHandle goOn[] = {MakeManualEvent(), MakeManualEvent()};
        std::atomic<int> next{0};
        client.hook = [&] {
            const int number = next++;
            SetEvent(inside[number].Get());
            EXPECT_TRUE(IsSignalledWithin(goOn[number].Get()));
        };
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        std::jthread callers[2];
        for (int i = 0; i < 2; ++i) {
            callers[i] = std::jthread([&] { EXPECT_EQ(S_OK, monitor->Callback(0)); });
            ASSERT_TRUE(IsSignalledWithin(inside[i].Get()));
        }
        for (int i = 0; i < 2; ++i) {
            SetEvent(goOn[i].Get());
            callers[i].join();
        }
        EXPECT_EQ(2, client.calls);
        // No frame is left that a stop would take for a running callback.
        EXPECT_GT(cStopLimit, Measure([&] { monitor->TerminateRegMonitor(); }));
    });
}

// The owner's first waits fail: the platform's own, and the plain one after it.
thread_local int s_waitsToFail = 0;

HRESULT WINAPI FailingComWait(DWORD flags, DWORD milliseconds, ULONG count, HANDLE* handles,
                              DWORD* pIndex) {
    return s_waitsToFail > 0
               ? E_OUTOFMEMORY
               : CoWaitForMultipleHandles(flags, milliseconds, count, handles, pIndex);
}

DWORD WINAPI FailingWait(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds) {
    if (s_waitsToFail > 0) {
        --s_waitsToFail;
        return WAIT_FAILED;
    }
    return WaitForMultipleObjectsEx(count, handles, all, milliseconds, FALSE);
}

TEST(MonitorObject, DoesNotStartWhenTheWaitForItsThreadFails) {
    RunIn(Apartment::eMulti, [] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        const ApartmentCalls calls{&CoGetApartmentType, &FailingComWait};
        {
            const ImportRedirection waits(GetModuleHandleW(nullptr), "WaitForMultipleObjects",
                                          &FailingWait);
            ASSERT_TRUE(waits.IsInPlace());
            SetApartmentCalls(&calls);
            s_waitsToFail = 1;
            EXPECT_EQ(E_FAIL, monitor.Spawn(key, client));
            EXPECT_EQ(0, s_waitsToFail);
            SetApartmentCalls(nullptr);
        }
        EXPECT_FALSE(monitor->IsMonitoring());
        EXPECT_EQ(S_OK, monitor.Spawn(key, client));
    });
}

// What happens in the owner's first wait, which then reports that the thread has ended.
std::function<void()> s_duringWait;

HRESULT WINAPI InterruptedComWait(DWORD flags, DWORD milliseconds, ULONG count, HANDLE* handles,
                                  DWORD* pIndex) {
    const auto interruption = std::exchange(s_duringWait, nullptr);
    if (!interruption)
        return CoWaitForMultipleHandles(flags, milliseconds, count, handles, pIndex);
    interruption();
    *pIndex = 1;
    return S_OK;
}

TEST(MonitorObject, ReplacedWhileItStartsLeavesItsSuccessorAlone) {
    RunIn(Apartment::eMulti, [] {
        TestKey key;
        RecordingClient client;
        RecordingClient successor;
        MonitorOwner monitor;
        s_duringWait = [&] {
            monitor->TerminateRegMonitor();
            EXPECT_EQ(S_OK, monitor.Spawn(key, successor));
        };
        const ApartmentCalls calls{&CoGetApartmentType, &InterruptedComWait};
        SetApartmentCalls(&calls);
        EXPECT_EQ(E_FAIL, monitor.Spawn(key, client));
        SetApartmentCalls(nullptr);
        EXPECT_TRUE(monitor->IsMonitoring());
        key.Write();
        EXPECT_TRUE(successor.AwaitCall(Apartment::eMulti));
        EXPECT_EQ(0, client.calls);
    });
}

}  // namespace
}  // namespace kora4::test
