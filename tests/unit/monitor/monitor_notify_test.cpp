// SPDX-License-Identifier: MIT
// What wakes the monitor, where the notification arrives, and what ends it.
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

class MonitorNotification : public InApartment {};

TEST_P(MonitorNotification, ArrivesInTheOwnersApartment) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_EQ(GetParam() == Apartment::eMulti, client.inMultithreadedApartment);
        EXPECT_EQ(GetParam() == Apartment::eSingle, client.threadId == GetCurrentThreadId());
    });
}

TEST_P(MonitorNotification, IsSentForAWriteBelowTheKey) {
    Run([] {
        TestKey key;
        key.CreateBelow(L"one\\two");
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.WriteBelow(L"one\\two");
        EXPECT_TRUE(client.AwaitCall(GetParam()));
    });
}

TEST_P(MonitorNotification, IsNotSentForANewEmptySubkey) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.CreateBelow(L"empty");
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        monitor.TearDown();
        EXPECT_EQ(1, client.calls);
    });
}

TEST_P(MonitorNotification, IsSentForEachAwaitedWrite) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        for (int i = 0; i < 20; ++i) {
            key.Write();
            ASSERT_TRUE(client.AwaitCall(GetParam()));
        }
        EXPECT_EQ(20, client.calls);
    });
}

TEST_P(MonitorNotification, FollowsAWriteThatIsMadeDuringTheCallback) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        client.hook = [&] {
            if (client.calls == 1)
                key.Write();
        };
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_TRUE(client.AwaitCall(GetParam()));
    });
}

// Two or many writes give any number of callbacks, but one that sees the last value.
TEST_P(MonitorNotification, ComesAfterTheLastOfManyWrites) {
    for (const int writes : {2, 500}) {
        Run([writes] {
            TestKey key;
            RecordingClient client;
            DWORD seen = 0;
            client.hook = [&] { seen = key.Read(); };
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            DWORD last = 0;
            RunInNewThread(Apartment::eNone, [&] {
                for (int i = 0; i < writes; ++i)
                    last = key.Write();
            });
            while (seen != last)
                ASSERT_TRUE(client.AwaitCall(GetParam())) << seen << " of " << last;
            EXPECT_LE(client.calls, writes);
        });
    }
}

TEST_P(MonitorNotification, GoesOnAfterASuccessCode) {
    Run([] {
        TestKey key;
        RecordingClient client;
        client.result = S_FALSE;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_TRUE(monitor->IsMonitoring());
    });
}

TEST_P(MonitorNotification, EndsWithAFailingCallback) {
    Run([] {
        TestKey key;
        RecordingClient client;
        client.result = E_FAIL;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const UniqueHandle thread = monitor->DuplicateThread();
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        ASSERT_TRUE(PumpUntilSignalled(thread.Get()));
        EXPECT_FALSE(monitor->IsMonitoring());
        key.Write();
        // The dead thread still counts as one, so that it is torn down first.
        EXPECT_EQ(E_FAIL, monitor.Spawn(key, client));
        EXPECT_EQ(1, client.calls);

        client.result = S_OK;
        monitor->TerminateRegMonitor();
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        EXPECT_TRUE(monitor->IsMonitoring());
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        monitor->TerminateRegMonitor();
        EXPECT_EQ(1u, monitor.References());
    });
    EXPECT_FALSE(Module::IsLocked());
}

KORA4_IN_APARTMENTS(MonitorNotification, Apartment::eSingle, Apartment::eMulti);

// The loop on its own, with handles that the test has prepared.
class MonitorLoop : public testing::Test {
  protected:
    MonitorLoop() {
        *m_spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, m_key.Path());
        EXPECT_EQ(S_OK, m_spSession->MakeControls());
        RegOpenKeyExW(HKEY_CURRENT_USER, m_key.Path(), 0, KEY_NOTIFY, m_watched.Put());
    }

    HRESULT Run(HANDLE changeEvent) {
        MonitorOwner gate;
        return OpenMonitor::RegMonitorLoop(*m_spSession.Get(), m_watched.Get(), changeEvent,
                                           gate.Get());
    }

    TestKey m_key;
    MonitorSessionPtr m_spSession;
    UniqueRegKey m_watched;
};

TEST_F(MonitorLoop, EndsWithSuccessWhenToldToStop) {
    const UniqueHandle changed(CreateEventW(nullptr, FALSE, TRUE, nullptr));
    SetEvent(m_spSession->StopEvent());
    EXPECT_EQ(S_OK, Run(changed.Get()));
    // The stop goes before a change that is signalled too.
    EXPECT_TRUE(IsSignalledWithin(changed.Get(), 0));
}

TEST_F(MonitorLoop, EndsWithSuccessWhenTheWaitFails) {
    EXPECT_EQ(S_OK, Run(nullptr));
}

TEST_F(MonitorLoop, FailsWhenTheWatchCannotBeArmedAgain) {
    const UniqueHandle changed(CreateEventW(nullptr, FALSE, TRUE, nullptr));
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_CURRENT_USER, m_key.Path()));
    EXPECT_EQ(E_FAIL, Run(changed.Get()));
}

TEST_F(MonitorLoop, FailsWithoutGate) {
    const UniqueHandle changed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    EXPECT_EQ(E_FAIL, OpenMonitor::RegMonitorLoop(*m_spSession.Get(), m_watched.Get(),
                                                  changed.Get(), nullptr));
}

TEST(MonitorThread, FailsWithoutSession) {
    EXPECT_EQ(E_FAIL, OpenMonitor::RunRegMonitor(nullptr));
    RunIn(Apartment::eNone,
          [] { EXPECT_EQ(static_cast<DWORD>(E_FAIL), OpenMonitor::RegMonitorEntry(nullptr)); });
}

}  // namespace
}  // namespace kora4::test
