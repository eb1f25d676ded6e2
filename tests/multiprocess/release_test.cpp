// SPDX-License-Identifier: MIT
// The last reference to an object goes: how long that takes, and what is left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"
#include "support/trace_capture.h"

namespace kora4::test {
namespace {

using Lines = std::vector<std::string>;

// The monitor's lines and no more, in the log files: the store's would take seconds.
constexpr DWORD cTraceTheMonitor = 0x01010004;
constexpr DWORD cASecond = 1000;

class Release : public testing::TestWithParam<OwnerKind> {
  protected:
    void SetUp() override {
        RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), cTraceTheMonitor);
        // The word is loaded by an object that is gone again before the test.
        m_owner.Run([this] {
            WatchingClient client;
            ASSERT_EQ(S_OK, client.Start(*m_upLibrary));
        });
        m_log.Clear();
        m_owner.Run([this] { ASSERT_EQ(S_OK, m_client.Start(*m_upLibrary)); });
        m_thread = OpenMonitorThread();
        ASSERT_TRUE(m_thread);
    }

    // Whatever the test has done: the thread has ended by itself and the library unloads.
    void TearDown() override {
        m_owner.Run([this] { m_client.spApi.Reset(); });
        ExpectThreadToEndByItself();
        EXPECT_TRUE(
            PumpUntil([&] { return m_upLibrary->CanUnloadNow() == S_OK; }, nullptr, cASecond));
        m_upLibrary.reset();
        EXPECT_EQ(nullptr, GetModuleHandleW(L"QXA64T.dll"));
        EXPECT_EQ(1u, m_client.spRecorder->References());
    }

    void ExpectThreadToEndByItself() {
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_thread.Get(), cASecond));
        // A thread that is ended by force gets this exit code.
        DWORD exitCode = WAIT_TIMEOUT;
        EXPECT_TRUE(GetExitCodeThread(m_thread.Get(), &exitCode));
        EXPECT_NE(static_cast<DWORD>(WAIT_TIMEOUT), exitCode);
        for (const TraceLine& line : m_log.Read("RegKeyMonitor"))
            EXPECT_EQ(std::string::npos, line.message.find("Zombie thread")) << line.message;
    }

    // Returns when the monitor thread calls for the owner because of the write.
    void WriteAndAwaitTheCall() {
        const std::size_t before = CallsForTheOwner();
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
        EXPECT_TRUE(PumplessUntil([&] { return CallsForTheOwner() > before; }));
    }

    // Another process changes the enable and the profile in one go.
    void ChangeEnableAndProfile() {
        m_owner.SetPumping(GetParam() == OwnerKind::eStaPumping);
        ChildProcess peer(cPeerRole);
        for (const char* command : {"raw begin", "raw enable 0", "raw profile 1", "raw end"})
            EXPECT_EQ("ok", peer.Ask(command));
        m_owner.SetPumping(true);
    }

    Lines LogAfterBarrier(CallbackRecorder& recorder) {
        RawStore::Bump(SettingName(cTablePid));
        EXPECT_TRUE(recorder.WaitForLine("OnCustomProfileTableChange()"));
        return recorder.Log();
    }

    void ReleaseInTime() {
        const ULONGLONG start = GetTickCount64();
        m_client.spApi.Reset();
        EXPECT_GT(cASecond, GetTickCount64() - start);
    }

    // A wait that lets nothing into the calling thread.
    static bool PumplessUntil(const std::function<bool()>& done) {
        const UniqueHandle never(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        const ULONGLONG end = GetTickCount64() + cBoundedWait;
        while (!done()) {
            if (GetTickCount64() >= end)
                return false;
            WaitForSingleObject(never.Get(), 5);
        }
        return true;
    }

    RawStore m_store;
    TraceLog m_log;
    std::unique_ptr<ApiLibrary> m_upLibrary = std::make_unique<ApiLibrary>();
    ApartmentThread m_owner{GetParam()};
    WatchingClient m_client;
    UniqueHandle m_thread;

  private:
    UniqueHandle OpenMonitorThread() {
        const std::string entry = ">> CurrentThreadId: ";
        for (const TraceLine& line : m_log.Read("RegKeyMonitor")) {
            if (line.message.starts_with(entry))
                return UniqueHandle(
                    OpenThread(SYNCHRONIZE | THREAD_QUERY_INFORMATION, FALSE,
                               std::stoul(line.message.substr(entry.size()), nullptr, 16)));
        }
        return {};
    }

    std::size_t CallsForTheOwner() const {
        std::size_t calls = 0;
        for (const TraceLine& line : m_log.Read("RegKeyMonitor"))
            calls += line.message.starts_with("Calling through Callback gate");
        return calls;
    }
};

TEST_P(Release, EndsWithinASecond) {
    m_owner.Run([this] { ReleaseInTime(); });
    EXPECT_EQ(S_OK, m_upLibrary->CanUnloadNow());
}

TEST_P(Release, EndsWithinASecondWithoutACallback) {
    m_owner.Run([this] {
        m_client.spApi->UnregisterChangeNotifications();
        ReleaseInTime();
    });
    EXPECT_EQ(S_OK, m_upLibrary->CanUnloadNow());
}

// The owner's thread is busy with this; nothing gets in.
TEST_P(Release, EndsWithinASecondWithANotificationPending) {
    m_owner.Run([this] {
        WriteAndAwaitTheCall();
        ReleaseInTime();
    });
    EXPECT_TRUE(
        PumpUntil([&] { return m_upLibrary->CanUnloadNow() == S_OK; }, nullptr, cASecond));
}

// Only in the multithreaded apartment does a callback run while the owner is elsewhere. In
// the others this releases between two passes.
TEST_P(Release, EndsWithinASecondWhileACallbackRuns) {
    const UniqueHandle goOn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle entered(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (GetParam() != OwnerKind::eMta)
        SetEvent(goOn.Get());
    m_client.spRecorder->React("OnEnableStateChange", [&] {
        SetEvent(entered.Get());
        WaitForSingleObject(goOn.Get(), cBoundedWait);
        return S_OK;
    });
    ChangeEnableAndProfile();
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(entered.Get(), cBoundedWait));
    m_owner.Run([this] { ReleaseInTime(); });
    SetEvent(goOn.Get());
    EXPECT_TRUE(
        PumpUntil([&] { return m_upLibrary->CanUnloadNow() == S_OK; }, nullptr, cASecond));
}

TEST_P(Release, InACallbackEndsWithThePass) {
    HRESULT canUnloadInside = E_FAIL;
    m_client.spRecorder->React("OnEnableStateChange", [&] {
        ReleaseInTime();
        canUnloadInside = m_upLibrary->CanUnloadNow();
        return S_OK;
    });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_client.spRecorder->WaitForLines(2));
    EXPECT_TRUE(
        PumpUntil([&] { return m_upLibrary->CanUnloadNow() == S_OK; }, nullptr, cASecond));
    EXPECT_EQ(S_FALSE, canUnloadInside);
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnActiveProfileChange(1)"}),
              m_client.spRecorder->Log());
}

TEST_P(Release, InACallbackAfterUnregisteringEndsThePass) {
    m_client.spRecorder->React("OnEnableStateChange", [&] {
        m_client.spApi->UnregisterChangeNotifications();
        ReleaseInTime();
        return S_OK;
    });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_client.spRecorder->WaitForLines(1));
    EXPECT_TRUE(
        PumpUntil([&] { return m_upLibrary->CanUnloadNow() == S_OK; }, nullptr, cASecond));
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_client.spRecorder->Log());
}

TEST_P(Release, InAFailingCallbackEndsThePass) {
    m_client.spRecorder->React("OnEnableStateChange", [&] {
        ReleaseInTime();
        return E_FAIL;
    });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_client.spRecorder->WaitForLines(1));
    EXPECT_TRUE(
        PumpUntil([&] { return m_upLibrary->CanUnloadNow() == S_OK; }, nullptr, cASecond));
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_client.spRecorder->Log());
}

TEST_P(Release, AfterAFailingCallbackEndsWithinASecond) {
    m_client.spRecorder->React("OnEnableStateChange", [] { return E_FAIL; });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_client.spRecorder->WaitForLines(1));
    // The thread ends of its own accord; in an idle apartment it is let in for that.
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_thread.Get(), cASecond));
    m_owner.Run([this] {
        LONG profile = -1;
        EXPECT_EQ(S_OK, m_client.spApi->GetActiveProfile(&profile));
        EXPECT_EQ(1, profile);
        ReleaseInTime();
    });
    EXPECT_EQ(S_OK, m_upLibrary->CanUnloadNow());
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_client.spRecorder->Log());
}

TEST_P(Release, AfterACallbackUnregisteredItselfEndsWithinASecond) {
    m_client.spRecorder->React("OnEnableStateChange",
                               [&] { return m_client.spApi->UnregisterChangeNotifications(); });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_client.spRecorder->WaitForLines(1));
    m_owner.Run([this] { ReleaseInTime(); });
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_client.spRecorder->Log());
}

TEST_P(Release, AfterACallbackReplacedItselfEndsWithinASecond) {
    const auto spNext = CallbackRecorder::Create();
    m_client.spRecorder->React("OnEnableStateChange", [&] {
        return m_client.spApi->RegisterChangeNotifications(spNext.Get());
    });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_client.spRecorder->WaitForLines(1));
    EXPECT_EQ(Lines{"OnCustomProfileTableChange()"}, LogAfterBarrier(*spNext.Get()));
    m_owner.Run([this] { ReleaseInTime(); });
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_client.spRecorder->Log());
    // In the multithreaded apartment the pass may still be at its end.
    EXPECT_TRUE(PumpUntil([&] { return spNext->References() == 1; }, nullptr, cASecond));
}

// Writers all the time, a release at any moment of a notification's way.
TEST_P(Release, EndsWithinASecondAtAnyMoment) {
    ChildProcess peer(cPeerRole);
    for (unsigned round = 0; round < 30; ++round) {
        WatchingClient passing;
        m_owner.Run([&] { EXPECT_EQ(S_OK, passing.Start(*m_upLibrary)); });
        peer.Send("raw profile " + std::to_string(round % 3));
        if (round % 2 == 0) {
            EXPECT_EQ("ok", peer.Receive());
        }
        m_owner.Run([&] {
            const ULONGLONG start = GetTickCount64();
            passing.spApi.Reset();
            EXPECT_GT(cASecond, GetTickCount64() - start);
        });
        if (round % 2 != 0) {
            EXPECT_EQ("ok", peer.Receive());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Owner, Release, testing::ValuesIn(cEveryOwnerKind), NameOfOwner);

}  // namespace
}  // namespace kora4::test
