// SPDX-License-Identifier: MIT
// Starting a monitor, and what it tells about itself.
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

}  // namespace
}  // namespace kora4::test
