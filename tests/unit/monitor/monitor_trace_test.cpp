// SPDX-License-Identifier: MIT
// What the monitor writes to its log, and under which categories.
#include <gmock/gmock.h>

#include "support/trace_capture.h"
#include "support/trace_flags.h"
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr char cTag[] = "RegKeyMonitor";

class MonitorTrace : public testing::Test {
  protected:
    // One start, one notification, one stop, with that flag word.
    std::vector<TraceLine> Trace(std::uint32_t flags) {
        m_log.Clear();
        RunIn(Apartment::eMulti, [flags] {
            const TraceFlags traced(flags | trace::eLogFiles);
            TestKey key;
            RecordingClient client;
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            key.Write();
            ASSERT_TRUE(client.AwaitCall(false));
            monitor->TerminateRegMonitor();
            monitor.TearDown();
        });
        return m_log.Read(cTag);
    }

    TraceLog m_log;
};

TEST_F(MonitorTrace, IsSilentByDefault) {
    EXPECT_THAT(Messages(Trace(trace::cDefaultFlags)), IsEmpty());
}

TEST_F(MonitorTrace, ShowsTheThreadHandleAndResults) {
    const auto lines = Trace(trace::eResults);
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::SpawnRegMonitor"),
                ElementsAre(MatchesRegex("CreateThread : 0x........"), "<< hr: 0x00000000"));
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::RunRegMonitor"),
                ElementsAre("<< hr: 0x00000000"));
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::RegMonitorLoop"),
                ElementsAre("<< hr: 0x00000000"));
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::RegMonitorEntry"),
                ElementsAre("<< hr: 0x00000000"));
}

TEST_F(MonitorTrace, ShowsTheThreadsOfANotification) {
    const auto lines = Trace(trace::eNotificationThreads);
    EXPECT_THAT(
        Messages(lines),
        ElementsAre(MatchesRegex("Calling through Callback gate: pICOMCallbackGate: .* TID: "
                                 "0x........"),
                    MatchesRegex(">> TID: 0x........"),
                    MatchesRegex("<< pClient: .* hr: 0x00000000"),
                    "Post callback: hr: 0x00000000"));
    EXPECT_EQ("RegKeyMonitor::RegMonitorLoop", lines[0].function);
    EXPECT_EQ("RegKeyMonitor::Callback", lines[1].function);
}

TEST_F(MonitorTrace, ShowsEntryAndExitOfEachStep) {
    const auto lines = Trace(trace::eAllEntryExit);
    for (const char* step : {"SpawnRegMonitor", "MakeControls", "MarshalInterface"})
        EXPECT_THAT(MessagesOf(lines, std::string("RegKeyMonitor::") + step),
                    ElementsAre(">>", "<< hr: 0x00000000"))
            << step;
    EXPECT_THAT(
        MessagesOf(lines, "RegKeyMonitor::RegMonitorEntry"),
        ElementsAre(MatchesRegex(">> CurrentThreadId: 0x........"), "<< hr: 0x00000000"));
    for (const char* step : {"RunRegMonitor", "RegMonitorLoop"})
        EXPECT_THAT(MessagesOf(lines, std::string("RegKeyMonitor::") + step),
                    ElementsAre(">>", "<< hr: 0x00000000"))
            << step;
    // Once for each TerminateRegMonitor: the test's, the tear-down's, the destructor's.
    for (const char* step : {"TerminateRegMonitor", "HaltMonitorThread"})
        EXPECT_THAT(MessagesOf(lines, std::string("RegKeyMonitor::") + step),
                    ElementsAre(">>", "<<", ">>", "<<", ">>", "<<"))
            << step;
    // And once more before the start.
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::CloseAndReset"),
                ElementsAre(">>", "<<", ">>", "<<", ">>", "<<", ">>", "<<"));
    EXPECT_THAT(MessagesOf(lines, "GateStreamHolder::Marshal"),
                ElementsAre(">>", "<< hr: 0x00000000"));
}

// The thread's exit lines are results, but none of the monitor's own category.
TEST_F(MonitorTrace, ShowsTheOwnersExitsButNotTheThreadsUnderTheMonitorsCategory) {
    const auto lines = Trace(trace::eSecurity);
    for (const char* step : {"RegKeyMonitor::SpawnRegMonitor", "RegKeyMonitor::MakeControls",
                             "RegKeyMonitor::MarshalInterface", "GateStreamHolder::Marshal",
                             "GateStreamHolder::Unmarshal"})
        EXPECT_THAT(MessagesOf(lines, step), ElementsAre(">>", "<< hr: 0x00000000")) << step;
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::HaltMonitorThread"),
                ElementsAre(">>", "<<", ">>", "<<", ">>", "<<"));
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::RegMonitorEntry"),
                ElementsAre(MatchesRegex(">> CurrentThreadId: 0x........")));
    for (const char* step : {"RegKeyMonitor::RunRegMonitor", "RegKeyMonitor::RegMonitorLoop"})
        EXPECT_THAT(MessagesOf(lines, step), ElementsAre(">>")) << step;
}

TEST_F(MonitorTrace, ShowsAFailedWait) {
    TestKey key;
    MonitorSessionPtr spSession;
    *spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, key.Path());
    ASSERT_EQ(S_OK, spSession->MakeControls());
    MonitorOwner gate;
    m_log.Clear();
    {
        const TraceFlags traced(trace::eSecurity | trace::eLogFiles);
        OpenMonitor::RegMonitorLoop(*spSession.Get(), nullptr, nullptr, gate.Get());
    }
    EXPECT_THAT(MessagesOf(m_log.Read(cTag), "RegKeyMonitor::RegMonitorLoop"),
                ElementsAre(">>", MatchesRegex("WAIT_FAILED, TID: 0x........ lastError: 6 "
                                               ".0x00000006.")));
}

TEST_F(MonitorTrace, TellsApartWhyAWatchCannotBeArmed) {
    const UniqueHandle changed = MakeManualEvent();
    const auto lineOf = [&](HKEY key) {
        m_log.Clear();
        const TraceFlags traced(trace::eSecurity | trace::eLogFiles);
        EXPECT_EQ(E_FAIL, OpenMonitor::ArmNotification(key, changed.Get()));
        return MessagesOf(m_log.Read(cTag), "RegKeyMonitor::ArmNotification");
    };
    TestKey key;
    UniqueRegKey watched;
    RegOpenKeyExW(HKEY_CURRENT_USER, key.Path(), 0, KEY_QUERY_VALUE, watched.Put());
    EXPECT_THAT(lineOf(watched.Get()),
                ElementsAre("RegNotifyChangeKeyValue: access denied, error: 5 (0x00000005)"));
    RegOpenKeyExW(HKEY_CURRENT_USER, key.Path(), 0, KEY_NOTIFY, watched.Put());
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_CURRENT_USER, key.Path()));
    EXPECT_THAT(lineOf(watched.Get()),
                ElementsAre("RegNotifyChangeKeyValue: key deleted, error: 1018 (0x000003fa)"));
    EXPECT_THAT(lineOf(nullptr),
                ElementsAre("RegNotifyChangeKeyValue: other failure, error: 6 (0x00000006)"));
    for (const LSTATUS status :
         {ERROR_NOT_ENOUGH_MEMORY, ERROR_OUTOFMEMORY, ERROR_NO_SYSTEM_RESOURCES})
        EXPECT_STREQ("no more memory", OpenMonitor::ReasonOfArmingError(status)) << status;
}

TEST_F(MonitorTrace, SaysNothingOfAWatchThatIsArmed) {
    const auto lines = Trace(trace::eSecurity);
    EXPECT_THAT(MessagesOf(lines, "RegKeyMonitor::ArmNotification"), IsEmpty());
}

TEST_F(MonitorTrace, ShowsAMissingGateAsAFailedAssertion) {
    TestKey key;
    MonitorSessionPtr spSession;
    *spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, key.Path());
    m_log.Clear();
    {
        const TraceFlags traced(trace::eAssertions | trace::eLogFiles);
        OpenMonitor::RegMonitorLoop(*spSession.Get(), nullptr, nullptr, nullptr);
    }
    EXPECT_THAT(Messages(m_log.Read(cTag)),
                ElementsAre("KALASSERT failed: pICOMCallbackGate != NULL"));
}

}  // namespace
}  // namespace kora4::test
