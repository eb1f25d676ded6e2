// SPDX-License-Identifier: MIT
// An owner whose message filter turns calls away.
#include <objbase.h>

#include <algorithm>
#include <vector>

#include "support/message_filter.h"
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

// Turns that many calls away, then lets every call in.
class RefusingFilter final : public MessageFilter {
  public:
    explicit RefusingFilter(int refused) : m_left(refused) {}

    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        if (m_left == 0)
            return SERVERCALL_ISHANDLED;
        --m_left;
        ++m_refused;
        times.push_back(GetTickCount64());
        ReleaseSemaphore(m_refusal.Get(), 1, nullptr);
        if (onRefusal)
            onRefusal();
        return SERVERCALL_REJECTED;
    }

    bool AwaitRefusal() { return PumpUntilSignalled(m_refusal.Get()); }
    void LetIn() { m_left = 0; }
    int Refused() const { return m_refused; }

    std::vector<ULONGLONG> times;
    std::function<void()> onRefusal;

  private:
    int m_left;
    int m_refused = 0;
    const UniqueHandle m_refusal{CreateSemaphoreW(nullptr, 0, MAXLONG, nullptr)};
};

constexpr int cForEver = MAXLONG;

class BusyOwner : public testing::Test {
  protected:
    // In a single-threaded apartment: no other has a filter.
    void Run(int refused, const std::function<void(TestKey&, RecordingClient&, MonitorOwner&,
                                                   RefusingFilter&)>& body) {
        RunIn(Apartment::eSingle, [&] {
            TestKey key;
            RecordingClient client;
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            RefusingFilter filter(refused);
            body(key, client, monitor, filter);
            monitor.TearDown();
        });
        EXPECT_FALSE(Module::IsLocked());
    }
};

TEST_F(BusyOwner, IsCalledAgainUntilItLetsTheCallIn) {
    Run(4, [](TestKey& key, RecordingClient& client, MonitorOwner& monitor,
              RefusingFilter& filter) {
        key.Write();
        EXPECT_TRUE(client.AwaitCall(true));
        EXPECT_EQ(4, filter.Refused());
        EXPECT_EQ(1, client.calls);
        EXPECT_TRUE(monitor->IsMonitoring());
        key.Write();
        EXPECT_TRUE(client.AwaitCall(true));
    });
}

TEST_F(BusyOwner, IsCalledLessAndLessOften) {
    Run(8, [](TestKey& key, RecordingClient& client, MonitorOwner&, RefusingFilter& filter) {
        key.Write();
        EXPECT_TRUE(client.AwaitCall(true));
        ASSERT_EQ(8u, filter.times.size());
        const auto pause = [&](std::size_t i) { return filter.times[i] - filter.times[i - 1]; };
        EXPECT_LE(10u, pause(1) + 16);  // the clock's step
        EXPECT_LE(300u, pause(6));
        EXPECT_LE(480u, pause(7));
        EXPECT_GT(900u, pause(7));
    });
}

// Many changes while no call is let in: one call sees the last.
TEST_F(BusyOwner, LosesNoChangeMadeWhileItIsBusy) {
    Run(cForEver,
        [](TestKey& key, RecordingClient& client, MonitorOwner&, RefusingFilter& filter) {
            DWORD seen = 0;
            client.hook = [&] { seen = key.Read(); };
            DWORD last = key.Write();
            ASSERT_TRUE(filter.AwaitRefusal());
            filter.onRefusal = [&] { last = key.Write(); };
            for (int i = 0; i < 5; ++i)
                ASSERT_TRUE(filter.AwaitRefusal());
            last = key.Write();
            filter.LetIn();
            while (seen != last)
                ASSERT_TRUE(client.AwaitCall(true)) << seen << " of " << last;
            EXPECT_GE(2, client.calls);
        });
}

TEST_F(BusyOwner, HearsOfTheNextChangeToo) {
    Run(1, [](TestKey& key, RecordingClient& client, MonitorOwner&, RefusingFilter& filter) {
        DWORD seen = 0;
        client.hook = [&] { seen = key.Read(); };
        key.Write();
        ASSERT_TRUE(filter.AwaitRefusal());
        ASSERT_TRUE(client.AwaitCall(true));
        const DWORD last = key.Write();
        ASSERT_TRUE(client.AwaitCall(true));
        EXPECT_EQ(last, seen);
    });
}

// While the call is turned away, and in the longest pause between two.
TEST_F(BusyOwner, IsReleasedAtOnce) {
    for (const int refusals : {1, 7}) {
        Run(cForEver, [refusals](TestKey& key, RecordingClient& client, MonitorOwner& monitor,
                                 RefusingFilter& filter) {
            const UniqueHandle thread = monitor->DuplicateThread();
            key.Write();
            for (int i = 0; i < refusals; ++i)
                ASSERT_TRUE(filter.AwaitRefusal());
            const double time = Measure([&] { monitor->TerminateRegMonitor(); });
            RecordProperty("Milliseconds" + std::to_string(refusals), std::to_string(time));
            EXPECT_GT(100, time);
            EXPECT_TRUE(IsSignalledWithin(thread.Get(), 0));
            DWORD exitCode = WAIT_TIMEOUT;
            GetExitCodeThread(thread.Get(), &exitCode);
            EXPECT_EQ(static_cast<DWORD>(S_OK), exitCode);
            EXPECT_EQ(1u, monitor.References());
            EXPECT_EQ(0, client.calls);
        });
    }
}

TEST_F(BusyOwner, LeavesNothingBehindIn100Cycles) {
    Run(cForEver, [](TestKey&, RecordingClient&, MonitorOwner&, RefusingFilter& filter) {
        const auto cycle = [&] {
            TestKey key;
            RecordingClient client;
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            key.Write();
            ASSERT_TRUE(filter.AwaitRefusal());
            monitor->TerminateRegMonitor();
            ASSERT_EQ(1u, monitor.References());
        };
        for (int i = 0; i < 20; ++i)
            cycle();
        const ULONG_PTR before = NextHandleValue();
        for (int i = 0; i < 100; ++i)
            cycle();
        EXPECT_GE(before + 16 * cHandleStep, NextHandleValue());
    });
}

// The gate of an owner that answers so for a while. Wine 8 lets a call in that the filter
// wants to have later; on Windows the thread sees that answer too.
class TurningGate final : public ICOMCallbackGate {
  public:
    explicit TurningGate(HRESULT hr, int refused) : m_hr(hr), m_left(refused) {}

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP Callback(ULONG) override {
        ++calls;
        if (onCall)
            onCall();
        return m_left-- > 0 ? m_hr : E_ABORT;
    }

    int calls = 0;
    std::function<void()> onCall;

  private:
    const HRESULT m_hr;
    int m_left;
};

class BusyGate : public testing::TestWithParam<HRESULT> {
  protected:
    BusyGate() {
        *m_spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, m_key.Path());
        EXPECT_EQ(S_OK, m_spSession->MakeControls());
        RegOpenKeyExW(HKEY_CURRENT_USER, m_key.Path(), 0, KEY_NOTIFY, m_watched.Put());
    }

    HRESULT RunLoop(TurningGate& gate) {
        const UniqueHandle changed(CreateEventW(nullptr, FALSE, TRUE, nullptr));
        return OpenMonitor::RegMonitorLoop(*m_spSession.Get(), m_watched.Get(), changed.Get(),
                                           &gate);
    }

    TestKey m_key;
    MonitorSessionPtr m_spSession;
    UniqueRegKey m_watched;
};

TEST_P(BusyGate, IsCalledAgainUntilItAnswersOtherwise) {
    TurningGate gate(GetParam(), 3);
    EXPECT_EQ(E_ABORT, RunLoop(gate));
    EXPECT_EQ(4, gate.calls);
}

TEST_P(BusyGate, IsCalledNoMoreWhenTheStopComes) {
    TurningGate gate(GetParam(), 3);
    gate.onCall = [&] {
        if (gate.calls == 2)
            SetEvent(m_spSession->StopEvent());
    };
    EXPECT_EQ(S_OK, RunLoop(gate));
    EXPECT_EQ(2, gate.calls);
}

TEST_P(BusyGate, EndsTheMonitorWhenTheCallHasEntered) {
    TurningGate gate(GetParam(), 3);
    gate.onCall = [&] {
        if (gate.calls == 2)
            m_spSession->CountEntry();
    };
    EXPECT_EQ(GetParam(), RunLoop(gate));
    EXPECT_EQ(2, gate.calls);
}

INSTANTIATE_TEST_SUITE_P(Answers, BusyGate,
                         testing::Values(RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER),
                         [](const auto& hr) {
                             return hr.param == RPC_E_CALL_REJECTED ? "Rejected" : "RetryLater";
                         });

TEST(GateThatFails, EndsTheMonitorAtOnce) {
    TestKey key;
    MonitorSessionPtr spSession;
    *spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, key.Path());
    ASSERT_EQ(S_OK, spSession->MakeControls());
    UniqueRegKey watched;
    RegOpenKeyExW(HKEY_CURRENT_USER, key.Path(), 0, KEY_NOTIFY, watched.Put());
    for (const HRESULT hr : {RPC_E_DISCONNECTED, RPC_E_CALL_CANCELED, RPC_E_SERVERFAULT}) {
        TurningGate gate(hr, 1);
        const UniqueHandle changed(CreateEventW(nullptr, FALSE, TRUE, nullptr));
        EXPECT_EQ(hr, OpenMonitor::RegMonitorLoop(*spSession.Get(), watched.Get(),
                                                  changed.Get(), &gate));
        EXPECT_EQ(1, gate.calls);
    }
}

// The same results from the client itself are failures like any other.
class BusyClient : public InApartment {};

TEST_P(BusyClient, EndsTheMonitor) {
    for (const HRESULT result : {RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER}) {
        Run([result] {
            TestKey key;
            RecordingClient client;
            client.result = result;
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            const UniqueHandle thread = monitor->DuplicateThread();
            key.Write();
            ASSERT_TRUE(client.AwaitCall(GetParam()));
            ASSERT_TRUE(PumpUntilSignalled(thread.Get()));
            EXPECT_EQ(1, client.calls);
            EXPECT_FALSE(monitor->IsMonitoring());
            DWORD exitCode = 0;
            GetExitCodeThread(thread.Get(), &exitCode);
            EXPECT_EQ(static_cast<DWORD>(result), exitCode);
        });
    }
}

KORA4_IN_APARTMENTS(BusyClient, Apartment::eSingle, Apartment::eMulti);

}  // namespace
}  // namespace kora4::test
