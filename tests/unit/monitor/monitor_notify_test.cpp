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
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        EXPECT_EQ(client.inMultithreadedApartment, GetParam() == Apartment::eMulti);
        EXPECT_EQ(client.threadId == GetCurrentThreadId(), GetParam() == Apartment::eSingle);
    });
}

TEST_P(MonitorNotification, IsSentForAWriteBelowTheKey) {
    Run([] {
        TestKey key;
        key.CreateBelow(L"one\\two");
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        key.WriteBelow(L"one\\two");
        EXPECT_TRUE(client.AwaitCall(GetParam()));
    });
}

TEST_P(MonitorNotification, IsNotSentForANewEmptySubkey) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        key.CreateBelow(L"empty");
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        monitor.TearDown();
        EXPECT_EQ(client.calls, 1);
    });
}

TEST_P(MonitorNotification, IsSentForEachAwaitedWrite) {
    Run([] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        for (int i = 0; i < 20; ++i) {
            key.Write();
            ASSERT_TRUE(client.AwaitCall(GetParam()));
        }
        EXPECT_EQ(client.calls, 20);
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
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
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
            ASSERT_EQ(monitor.Spawn(key, client), S_OK);
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
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
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
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        const UniqueHandle thread = monitor->DuplicateThread();
        key.Write();
        ASSERT_TRUE(client.AwaitCall(GetParam()));
        ASSERT_TRUE(PumpUntilSignalled(thread.Get()));
        EXPECT_FALSE(monitor->IsMonitoring());
        key.Write();
        // The dead thread still counts as one, so that it is torn down first.
        EXPECT_EQ(monitor.Spawn(key, client), E_FAIL);
        EXPECT_EQ(client.calls, 1);

        client.result = S_OK;
        monitor->TerminateRegMonitor();
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        EXPECT_TRUE(monitor->IsMonitoring());
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        monitor->TerminateRegMonitor();
        EXPECT_EQ(monitor.References(), 1u);
    });
    EXPECT_FALSE(Module::IsLocked());
}

KORA4_IN_APARTMENTS(MonitorNotification, Apartment::eSingle, Apartment::eMulti);

// The loop on its own, with handles that the test has prepared.
class MonitorLoop : public testing::Test {
  protected:
    MonitorLoop() {
        *m_spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, m_key.Path());
        EXPECT_EQ(m_spSession->MakeControls(), S_OK);
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
    EXPECT_EQ(Run(changed.Get()), S_OK);
    // The stop goes before a change that is signalled too.
    EXPECT_TRUE(IsSignalledWithin(changed.Get(), 0));
}

TEST_F(MonitorLoop, EndsWithSuccessWhenTheWaitFails) {
    EXPECT_EQ(Run(nullptr), S_OK);
}

TEST_F(MonitorLoop, FailsWhenTheWatchCannotBeArmedAgain) {
    const UniqueHandle changed(CreateEventW(nullptr, FALSE, TRUE, nullptr));
    ASSERT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, m_key.Path()), ERROR_SUCCESS);
    EXPECT_EQ(Run(changed.Get()), E_FAIL);
}

TEST_F(MonitorLoop, FailsWithoutGate) {
    const UniqueHandle changed(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    EXPECT_EQ(OpenMonitor::RegMonitorLoop(*m_spSession.Get(), m_watched.Get(), changed.Get(),
                                          nullptr),
              E_FAIL);
}

TEST(MonitorThread, FailsWithoutSession) {
    EXPECT_EQ(OpenMonitor::RunRegMonitor(nullptr), E_FAIL);
    RunIn(Apartment::eNone,
          [] { EXPECT_EQ(OpenMonitor::RegMonitorEntry(nullptr), static_cast<DWORD>(E_FAIL)); });
}

}  // namespace
}  // namespace kora4::test
