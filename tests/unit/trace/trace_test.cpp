// SPDX-License-Identifier: MIT
// The trace statement, the flag word and KALASSERT.
#include "trace/trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "support/trace_capture.h"
#include "support/trace_flags.h"
#include "unit/trace/debuggee.h"

namespace kora4 {
namespace {

using test::Messages;
using test::RunUnderDebugger;
using test::TraceFlags;
using test::TraceLine;
using test::TraceLog;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr trace::Site cSite = trace::SiteOf("CKORA4ASL::GetActiveProfile");

#define TELL(mask, text, ...) \
    KALTRACE_LINE(mask, cSite, __LINE__, text __VA_OPT__(, ) __VA_ARGS__)

constexpr std::uint32_t cToFiles = trace::cDefaultFlags | trace::eLogFiles;
constexpr std::size_t cLongestLine = 1023;

// "KORA4ASL: %4d CKORA4ASL::GetActiveProfile:"
const std::string cHead = "KORA4ASL:  123 CKORA4ASL::GetActiveProfile:";

std::string ReadRaw(const std::string& name) {
    std::ifstream file("C:\\KalLogs\\" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool FileExists(const char* pPath) {
    return GetFileAttributesA(pPath) != INVALID_FILE_ATTRIBUTES;
}

// --- the flag word ----------------------------------------------------------------------

TEST(TraceFlagWord, StartsWithMessagesOnly) {
    EXPECT_EQ(0x00000400u, trace::cDefaultFlags);
    EXPECT_EQ(0x00000400u, trace::Flags());
}

TEST(TraceFlagWord, EnablesAStatementByAnyBitOfItsMask) {
    EXPECT_TRUE(trace::IsEnabled(0x10, 0x811));
    EXPECT_TRUE(trace::IsEnabled(0x01, 0x811));
    EXPECT_TRUE(trace::IsEnabled(0x800, 0x811));
    EXPECT_FALSE(trace::IsEnabled(0x4, 0x811));
    EXPECT_FALSE(trace::IsEnabled(0, 0xFFFFFFFF));
    EXPECT_FALSE(trace::IsEnabled(trace::eLogFiles, 0x811));
}

TEST(TraceFlagWord, IsSilencedByOneValueOfTheMasterSwitchOnly) {
    EXPECT_TRUE(trace::IsEnabled(0x00000400, 0x400));
    EXPECT_FALSE(trace::IsEnabled(0x04000400, 0x400));
    EXPECT_TRUE(trace::IsEnabled(0x02000400, 0x400));
    EXPECT_TRUE(trace::IsEnabled(0x06000400, 0x400));
    EXPECT_FALSE(trace::IsEnabled(0xFDFFFFFF, 0xFFFFFFFF));
    EXPECT_TRUE(trace::IsEnabled(0xFFFFFFFF, 0x1));
}

TEST(TraceFlagWord, HasTheMasksOfTheKindsOfLines) {
    EXPECT_EQ(0x810u, trace::eEntry);
    EXPECT_EQ(0x811u, trace::eExitResult);
    EXPECT_EQ(0x800u, trace::eStoreEntry);
    EXPECT_EQ(0x801u, trace::eStoreExitResult);
    EXPECT_EQ(0x804u, trace::eMonitorEntry);
    EXPECT_EQ(0x805u, trace::eMonitorExitResult);
    EXPECT_EQ(0x900u, trace::eModuleEntry);
    EXPECT_EQ(0x901u, trace::eModuleExitResult);
    EXPECT_EQ(0xA10u, trace::eTrackerEntry);
    EXPECT_EQ(0x210u, trace::eTrackerStartUp);
}

// --- the statement ----------------------------------------------------------------------

TEST(TraceStatement, EvaluatesNoArgumentWhenSuppressed) {
    int evaluated = 0;
    const TraceFlags off(trace::eMasterSwitchOff | trace::eMessages);
    TELL(trace::eMessages, "%d", ++evaluated);
    TELL(trace::eSecurity, "%d", ++evaluated);
    EXPECT_EQ(0, evaluated);
    const TraceFlags on(trace::eMessages);
    TELL(trace::eMessages, "%d", ++evaluated);
    EXPECT_EQ(1, evaluated);
}

TEST(TraceStatement, BeginsWithTagLineInFourColumnsAndFunction) {
    TraceLog log;
    trace::Write(cToFiles, cSite, 7, "a");
    trace::Write(cToFiles, cSite, 123, "b");
    trace::Write(cToFiles, cSite, 12345, "c");
    EXPECT_EQ(
        "KORA4ASL:    7 CKORA4ASL::GetActiveProfile:a\r\n"
        "KORA4ASL:  123 CKORA4ASL::GetActiveProfile:b\r\n"
        "KORA4ASL: 12345 CKORA4ASL::GetActiveProfile:c\r\n",
        ReadRaw("KORA4ASL.log"));
}

TEST(TraceStatement, GivesItsOwnSourceLine) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    const int line = __LINE__ + 1;
    TELL(trace::eMessages, "here");
    ASSERT_EQ(1u, log.Read("KORA4ASL").size());
    EXPECT_EQ(line, log.Read("KORA4ASL")[0].line);
}

TEST(TraceStatement, PrintsNumbersWideStringsPointersAndFloats) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    const auto* const p = reinterpret_cast<const void*>(std::uintptr_t{0x12ABCD});
    TELL(trace::eMessages, "%d %u 0x%08x %S %ls %p %f %10f|", -5, 4000000000u, 0x80004005u,
         L"wide", L"too", p, 1.5, -2.25);
    EXPECT_THAT(Messages(log.Read("KORA4ASL")),
                ElementsAre("-5 4000000000 0x80004005 wide too 000000000012ABCD 1.500000 "
                            " -2.250000|"));
}

TEST(TraceStatement, KeepsNewlinesAndBlanksOfTheMessage) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    TELL(trace::eMessages, "Process ID: %d\n", 5);
    TELL(trace::eMessages, " to %s", "x");
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre("Process ID: 5\n", " to x"));
}

TEST(TraceStatement, CutsALongLineAndKeepsItsNewline) {
    TraceLog log;
    const std::string longText(3000, 'x');
    for (std::size_t length : {cLongestLine - cHead.size() - 2, cLongestLine - cHead.size() - 1,
                               cLongestLine - cHead.size(), std::size_t{2500}}) {
        log.Clear();
        trace::Write(cToFiles, cSite, 123, "%s", longText.substr(0, length).c_str());
        const std::string whole = cHead + longText.substr(0, length);
        EXPECT_EQ(whole.substr(0, cLongestLine - 1) + "\r\n", ReadRaw("KORA4ASL.log"))
            << length;
    }
}

TEST(TraceStatement, CutsALongFunctionName) {
    TraceLog log;
    const std::string name(3000, 'f');
    trace::Write(cToFiles, trace::Site{"KORA4ASL", name.c_str(), 0, 0}, 1, "%s", "x");
    const std::string raw = ReadRaw("KORA4ASL.log");
    EXPECT_EQ(cLongestLine + 1, raw.size());
    EXPECT_TRUE(raw.ends_with("ff\r\n"));
}

TEST(TraceStatement, UsesTheTagBehindItsLastBackslash) {
    TraceLog log;
    trace::Write(cToFiles, trace::Site{"src\\store\\KORA4VisKeyData", "f", 0, 0}, 123, "x");
    EXPECT_EQ("KORA4VisKeyData:  123 f:x\r\n", ReadRaw("KORA4VisKeyData.log"));
    EXPECT_EQ("KORA4VisKeyData:  123 f:x\r\n", ReadRaw("KalTrace.log"));
}

TEST(TraceStatement, LeavesTheLastErrorAlone) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    SetLastError(1234);
    TELL(trace::eMessages, "x");
    EXPECT_EQ(1234u, GetLastError());
}

// --- the log files ----------------------------------------------------------------------

TEST(TraceFiles, AreNotWrittenWithTheDefaultWord) {
    TraceLog log;
    const TraceFlags flags(trace::cDefaultFlags);
    TELL(trace::eMessages, "x");
    EXPECT_FALSE(FileExists("C:\\KalLogs\\KORA4ASL.log"));
    EXPECT_FALSE(FileExists("C:\\KalLogs\\KalTrace.log"));
}

TEST(TraceFiles, GetEachLineInTheModulesFileAndTheSharedOne) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    TELL(trace::eMessages, "one");
    constexpr trace::Site cOther = trace::SiteOf("RegKeyMonitor::Callback");
    KALTRACE_LINE(trace::eMessages, cOther, __LINE__, "two");
    TELL(trace::eMessages, "three");
    TELL(trace::eSecurity, "suppressed");
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre("one", "three"));
    EXPECT_THAT(Messages(log.Read("RegKeyMonitor")), ElementsAre("two"));
    EXPECT_THAT(Messages(log.ReadShared()), ElementsAre("one", "two", "three"));
}

TEST(TraceFiles, AreAppendedTo) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    std::ofstream("C:\\KalLogs\\KORA4ASL.log") << cHead << "before\n";
    TELL(trace::eMessages, "after");
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre("before", "after"));
}

TEST(TraceFiles, GoOnWithTheSharedFileWhenTheModulesCannotBeOpened) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    ASSERT_TRUE(CreateDirectoryA("C:\\KalLogs\\KORA4ASL.log", nullptr));
    TELL(trace::eMessages, "x");
    EXPECT_THAT(Messages(log.ReadShared()), ElementsAre("x"));
    ASSERT_TRUE(RemoveDirectoryA("C:\\KalLogs\\KORA4ASL.log"));
}

TEST(TraceFiles, GoOnWithTheModulesFileWhenTheSharedCannotBeOpened) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    ASSERT_TRUE(CreateDirectoryA("C:\\KalLogs\\KalTrace.log", nullptr));
    TELL(trace::eMessages, "x");
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre("x"));
    ASSERT_TRUE(RemoveDirectoryA("C:\\KalLogs\\KalTrace.log"));
}

TEST(TraceFiles, AreLeftOutForATagThatMakesNoPath) {
    TraceLog log;
    const std::string tag(400, 't');
    trace::Write(cToFiles, trace::Site{tag.c_str(), "f", 0, 0}, 1, "x");
    EXPECT_EQ(1u, log.ReadShared().size());
}

TEST(TraceFiles, AreClosedAfterEachLine) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    TELL(trace::eMessages, "x");
    for (const char* pPath : {"C:\\KalLogs\\KORA4ASL.log", "C:\\KalLogs\\KalTrace.log"})
        EXPECT_TRUE(DeleteFileA(pPath)) << pPath;
}

TEST(TraceFiles, AreNotMadeWhenTheFolderIsMissing) {
    TraceLog log;
    ASSERT_TRUE(RemoveDirectoryA("C:\\KalLogs"));
    const TraceFlags flags(cToFiles);
    TELL(trace::eMessages, "x");
    EXPECT_FALSE(FileExists("C:\\KalLogs"));
}

TEST(TraceFiles, GetWholeLinesFromSeveralThreads) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int j = 0; j < 25; ++j)
                TELL(trace::eMessages, "0123456789abcdef");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const std::vector<std::string> messages = Messages(log.ReadShared());
    EXPECT_FALSE(messages.empty());
    EXPECT_THAT(messages, testing::Each("0123456789abcdef"));
}

TEST(TraceFiles, GetLinesWhileReadersAndWritersHaveThemOpen) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    TELL(trace::eMessages, "before");
    constexpr DWORD cShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
    for (const DWORD share : {cShare, cShare | FILE_SHARE_DELETE}) {
        for (const DWORD access : {DWORD{GENERIC_READ}, DWORD{FILE_APPEND_DATA}}) {
            const HANDLE file = CreateFileA("C:\\KalLogs\\KalTrace.log", access, share, nullptr,
                                            OPEN_EXISTING, 0, nullptr);
            ASSERT_NE(INVALID_HANDLE_VALUE, file);
            const std::size_t count = log.ReadShared().size();
            TELL(trace::eMessages, "meanwhile");
            EXPECT_EQ(count + 1, log.ReadShared().size()) << access << " " << share;
            CloseHandle(file);
        }
    }
}

// Whoever refuses other writers is left alone: no waiting, and the other file gets its line.
TEST(TraceFiles, AreLeftToWhoeverRefusesOtherWriters) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    TELL(trace::eMessages, "before");
    const HANDLE file = CreateFileA("C:\\KalLogs\\KalTrace.log", GENERIC_READ, FILE_SHARE_READ,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file);
    TELL(trace::eMessages, "meanwhile");
    CloseHandle(file);
    TELL(trace::eMessages, "after");
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre("before", "meanwhile", "after"));
    EXPECT_THAT(Messages(log.ReadShared()), ElementsAre("before", "after"));
}

// --- entry and exit lines ---------------------------------------------------------------

TEST(TraceScope, WritesEntryAndExitAroundTheBody) {
    TraceLog log;
    const TraceFlags flags(cToFiles | trace::eAllEntryExit);
    {
        const trace::Scope scope(cSite, 5);
        TELL(trace::eMessages, "body");
    }
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre(">>", "body", "<<"));
}

TEST(TraceScope, PrintsTheResultThatIsThereAtTheEnd) {
    TraceLog log;
    const TraceFlags flags(cToFiles | trace::eAllEntryExit);
    {
        HRESULT hr = S_OK;
        const trace::Scope scope(cSite, 5, &hr);
        hr = E_FAIL;
    }
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre(">>", "<< hr: 0x80004005"));
}

TEST(TraceScope, ShowsTheExitLineAloneWithTheResultsCategory) {
    TraceLog log;
    const TraceFlags flags(trace::eLogFiles | trace::eResults);
    {
        const HRESULT hr = S_FALSE;
        const trace::Scope scope(cSite, 5, &hr);
    }
    EXPECT_THAT(Messages(log.Read("KORA4ASL")), ElementsAre("<< hr: 0x00000001"));
}

TEST(TraceScope, WritesNothingWithTheDefaultWord) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    {
        const HRESULT hr = S_OK;
        const trace::Scope scope(cSite, 5, &hr);
    }
    EXPECT_THAT(log.ReadShared(), IsEmpty());
}

// --- KALASSERT --------------------------------------------------------------------------

constexpr contract::TraceMessage cBroken =
    msg::Assertion("KALASSERT failed: !\"broken\"", "A test broke it.");

TEST(KalAssert, SaysNothingWhenTheConditionHolds) {
    TraceLog log;
    const TraceFlags flags(trace::eLogFiles | trace::eAssertions);
    KALASSERT(cSite, cBroken, 1 + 1 == 2);
    EXPECT_THAT(log.ReadShared(), IsEmpty());
}

TEST(KalAssert, ReportsTheTextOfItsRowAndGoesOn) {
    TraceLog log;
    const TraceFlags flags(trace::eLogFiles | trace::eAssertions);
    const void* const pICallback = nullptr;
    KALASSERT(cSite, msg::cAssertCallback, pICallback != NULL);
    KALASSERT(cSite, msg::cAssertReadable, false);
    KALASSERT(cSite, msg::cAssertArrayFits, pICallback != nullptr);
    EXPECT_THAT(Messages(log.Read("KORA4ASL")),
                ElementsAre("KALASSERT failed: pICallback != NULL",
                            "KALASSERT failed: !\"Invalid ASL technology\"",
                            "KALASSERT failed: (UINT) written <= charsAvail"));
}

TEST(KalAssert, EvaluatesItsConditionOnce) {
    const TraceFlags flags(0);
    int evaluated = 0;
    KALASSERT(cSite, cBroken, ++evaluated == 0);
    EXPECT_EQ(1, evaluated);
}

TEST(KalAssert, IsSilentWithoutItsCategory) {
    TraceLog log;
    const TraceFlags flags(cToFiles);
    KALASSERT(cSite, cBroken, false);
    EXPECT_THAT(log.ReadShared(), IsEmpty());
}

// --- under a debugger -------------------------------------------------------------------

void EmitOneLineOfEachCategory() {
    for (std::uint32_t bit = 1; bit != 0; bit <<= 1)
        TELL(bit, "0x%08x", bit);
}

void EmitWith(std::uint32_t flags) {
    trace::SetFlags(flags);
    EmitOneLineOfEachCategory();
}

void AssertWith(std::uint32_t flags) {
    trace::SetFlags(flags);
    KALASSERT(cSite, cBroken, false);
    TELL(trace::eMessages, "went on");
}

void EmitWithoutLogFolder() {
    RemoveDirectoryA("C:\\KalLogs");
    trace::SetFlags(cToFiles);
    TELL(trace::eMessages, "no folder");
}

void EmitLongLine() {
    const std::string text(5000, 'x');
    TELL(trace::eMessages, "%s", text.c_str());
}

void SayWhetherDebugged() {
    TELL(trace::eMessages, "%d", trace::IsDebuggerAttached() ? 1 : 0);
}

const std::vector<test::Scenario> cScenarios = {
    {"default-word", EmitOneLineOfEachCategory},
    {"switched-off", [] { EmitWith(0x04000400); }},
    {"switch-3", [] { EmitWith(0x06000400); }},
    {"assert-on", [] { AssertWith(trace::eAssertions | trace::eMessages); }},
    {"assert-off", [] { AssertWith(0); }},
    {"assert-switched-off", [] { AssertWith(0xFDFFFFFF); }},
    {"no-folder", EmitWithoutLogFolder},
    {"long-line", EmitLongLine},
    {"debugged", SayWhetherDebugged},
};

std::vector<std::string> DebuggedMessages(const test::DebugRun& run) {
    std::string log;
    for (const std::string& text : run.output)
        log += text;
    return Messages(test::ParseTrace(log));
}

test::DebugRun RunToTheEnd(const std::string& scenario) {
    const test::DebugRun run = RunUnderDebugger(scenario);
    EXPECT_TRUE(run.ended);
    EXPECT_EQ(0u, run.exitCode);
    return run;
}

TEST(DebuggerOutput, GetsMessagesOnlyWithTheDefaultWord) {
    EXPECT_THAT(DebuggedMessages(RunToTheEnd("default-word")), ElementsAre("0x00000400"));
}

TEST(DebuggerOutput, GetsNothingWhenSwitchedOff) {
    EXPECT_THAT(RunToTheEnd("switched-off").output, IsEmpty());
}

TEST(DebuggerOutput, GetsTheEnabledLinesWithAnyOtherValueOfTheSwitch) {
    EXPECT_THAT(DebuggedMessages(RunToTheEnd("switch-3")),
                ElementsAre("0x00000400", "0x02000000", "0x04000000"));
}

TEST(DebuggerOutput, GetsLinesWithoutALogFolder) {
    EXPECT_THAT(DebuggedMessages(RunToTheEnd("no-folder")), ElementsAre("no folder"));
}

TEST(DebuggerOutput, GetsALongLineCutInOnePiece) {
    const test::DebugRun run = RunToTheEnd("long-line");
    ASSERT_EQ(1u, run.output.size());
    EXPECT_EQ(cLongestLine, run.output[0].size());
    EXPECT_TRUE(run.output[0].ends_with("xx\n"));
}

TEST(Debugger, IsNoticed) {
    EXPECT_THAT(DebuggedMessages(RunToTheEnd("debugged")), ElementsAre("1"));
    EXPECT_EQ(trace::IsDebuggerAttached(), IsDebuggerPresent() != FALSE);
}

TEST(Debugger, IsStoppedInByAFailedAssertion) {
    const test::DebugRun run = RunToTheEnd("assert-on");
    EXPECT_EQ(1, run.breakpoints);
    EXPECT_THAT(DebuggedMessages(run), ElementsAre("KALASSERT failed: !\"broken\"", "went on"));
}

TEST(Debugger, IsStoppedInWhenAllCategoriesAreOff) {
    const test::DebugRun run = RunToTheEnd("assert-off");
    EXPECT_EQ(1, run.breakpoints);
    EXPECT_THAT(run.output, IsEmpty());
}

TEST(Debugger, IsStoppedInWhenTheTraceIsSwitchedOff) {
    const test::DebugRun run = RunToTheEnd("assert-switched-off");
    EXPECT_EQ(1, run.breakpoints);
    EXPECT_THAT(run.output, IsEmpty());
}

// --- the reader of the logs -------------------------------------------------------------

TEST(TraceParser, SplitsTheFields) {
    const std::vector<TraceLine> lines =
        test::ParseTrace("KORA4ASL:  123 A::~B::C:<< hr: 0x00000000\r\nT: 12345 f::first:m\n");
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ("KORA4ASL", lines[0].tag);
    EXPECT_EQ(123, lines[0].line);
    EXPECT_EQ("A::~B::C", lines[0].function);
    EXPECT_EQ("<< hr: 0x00000000", lines[0].message);
    EXPECT_EQ(12345, lines[1].line);
    EXPECT_EQ("f::first", lines[1].function);
}

TEST(TraceParser, KeepsTextThatFollowsOnLaterLines) {
    EXPECT_THAT(
        Messages(test::ParseTrace("T:    1 f:a\n\nT:    2 f:b\r\n c: d\r\nT:   3 f:e\n")),
        ElementsAre("a\n", "b\n c: d\nT:   3 f:e"));
}

}  // namespace
}  // namespace kora4

int main(int argc, char** argv) {
    if (const auto exitCode = kora4::test::RunScenario(argc, argv, kora4::cScenarios))
        return *exitCode;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
