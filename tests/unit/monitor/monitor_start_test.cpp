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
        EXPECT_EQ(monitor->SpawnRegMonitor(nullptr, key.Path(), &client), E_INVALIDARG);
        EXPECT_EQ(monitor->SpawnRegMonitor(HKEY_CURRENT_USER, nullptr, &client), E_INVALIDARG);
        EXPECT_EQ(monitor->SpawnRegMonitor(HKEY_CURRENT_USER, key.Path(), nullptr),
                  E_INVALIDARG);
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
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        EXPECT_TRUE(monitor->IsMonitoring());
        monitor->TerminateRegMonitor();
        EXPECT_FALSE(monitor->IsMonitoring());
        monitor->TerminateRegMonitor();
        EXPECT_EQ(monitor.References(), 1u);
    });
}

TEST_P(MonitorStart, IsArmedWhenSpawnReturns) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
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
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        EXPECT_EQ(monitor.Spawn(other, second), E_FAIL);
        EXPECT_TRUE(monitor->IsMonitoring());
        other.Write();
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_EQ(second.calls, 0);
    });
}

TEST_P(MonitorStart, CanBeStartedAgainOnAnotherKey) {
    Run([] {
        TestKey key;
        TestKey other;
        RecordingClient client;
        RecordingClient second;
        MonitorOwner monitor;
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        monitor->TerminateRegMonitor();
        ASSERT_EQ(monitor.Spawn(other, second), S_OK);
        key.Write();
        other.Write();
        EXPECT_TRUE(second.AwaitCall(GetParam()));
        EXPECT_EQ(client.calls, 0);
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
        EXPECT_EQ(hr, E_FAIL);
        EXPECT_LT(time, cStopLimit);
        EXPECT_FALSE(monitor->IsMonitoring());
        EXPECT_FALSE(monitor->Session());
        EXPECT_EQ(monitor.References(), 1u);
    });
}

TEST_P(MonitorStart, KeyThatCannotBeOpenedFails) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        const HKEY noKey = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x7FFF'FFF0));
        EXPECT_EQ(monitor->SpawnRegMonitor(noKey, key.Path(), &client), E_FAIL);
        EXPECT_EQ(monitor.References(), 1u);
    });
}

TEST_P(MonitorStart, SucceedsAfterAFailedStart) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        EXPECT_EQ(
            monitor->SpawnRegMonitor(HKEY_CURRENT_USER, L"SOFTWARE\\Velto\\NoSuchKey", &client),
            E_FAIL);
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
    });
}

TEST_P(MonitorStart, FailedStartsLeaveNoHandle) {
    Run([] {
        RecordingClient client;
        const auto fail = [&client] {
            MonitorOwner monitor;
            EXPECT_EQ(monitor->SpawnRegMonitor(HKEY_CURRENT_USER, L"SOFTWARE\\Velto\\NoSuchKey",
                                               &client),
                      E_FAIL);
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
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        monitor.TearDown();
        EXPECT_FALSE(Module::IsLocked());
    });
}

KORA4_IN_APARTMENTS(MonitorStart, Apartment::eSingle, Apartment::eMulti, Apartment::eNone);

TEST(MonitorObject, AnswersForItsInterfacesOnly) {
    RunIn(Apartment::eMulti, [] {
        MonitorOwner monitor;
        Microsoft::WRL::ComPtr<IUnknown> spUnknown;
        EXPECT_EQ(monitor->QueryInterface(IID_PPV_ARGS(&spUnknown)), S_OK);
        Microsoft::WRL::ComPtr<ICOMCallbackGate> spGate;
        EXPECT_EQ(monitor->QueryInterface(IID_PPV_ARGS(&spGate)), S_OK);
        Microsoft::WRL::ComPtr<IDispatch> spOther;
        EXPECT_EQ(monitor->QueryInterface(IID_PPV_ARGS(&spOther)), E_NOINTERFACE);
    });
}

TEST(MonitorObject, CallbackWithoutClientSucceeds) {
    RunIn(Apartment::eMulti, [] {
        MonitorOwner monitor;
        EXPECT_EQ(monitor->Callback(0), S_OK);
    });
}

TEST(MonitorObject, CallbackIgnoresItsArgumentAndReturnsTheClientsResult) {
    RunIn(Apartment::eMulti, [] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        EXPECT_EQ(monitor->Callback(17), S_OK);
        client.result = E_ACCESSDENIED;
        EXPECT_EQ(monitor->Callback(0), E_ACCESSDENIED);
        EXPECT_EQ(client.calls, 2);
    });
}

}  // namespace
}  // namespace kora4::test
