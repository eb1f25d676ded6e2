// SPDX-License-Identifier: MIT
// kora4ctl load that is interrupted at each place in turn: by a write that fails, by a process
// that dies, by Ctrl-C, and while it puts back what was there.
#include "tools/broken_load.h"

namespace kora4::test {
namespace {

class FailingLoad : public BrokenLoad, public testing::WithParamInterface<Scope> {
  protected:
    void SetUp() override {
        BrokenLoad::SetUp();
        Prepare(GetParam());
    }
};

TEST_P(FailingLoad, AtEachWriteLeavesTheOldStore) {
    for (std::size_t n = 1; n <= m_load.Writes() && !HasFailure(); ++n) {
        SCOPED_TRACE("write " + std::to_string(n));
        const StoreValues before = ReadStoreValues();
        const ToolResult result = LoadWith(At("fail", n));
        EXPECT_EQ(result.exitCode, cFailed) << result;
        EXPECT_EQ(result.out, "") << result;
        EXPECT_NE(result.err.find("refused for a trial"), std::string::npos) << result;
        EXPECT_NE(result.err.find("What was there before has been put back."),
                  std::string::npos)
            << result;
        EXPECT_FALSE(HasJournal());
        ExpectSettings(m_stores.before);
        ExpectMoved(m_load.counters, before);
    }
    // And there is no further write.
    ReplaceStoreValues(m_stores.before);
    EXPECT_EQ(LoadWith(At("fail", m_load.Writes() + 1)).exitCode, cDone);
    ExpectStore(m_load.after);
}

INSTANTIATE_TEST_SUITE_P(Scopes, FailingLoad, testing::Values(Scope::eUser, Scope::eAll),
                         ScopeName);

class InterruptedLoad : public BrokenLoad {
  protected:
    void SetUp() override {
        BrokenLoad::SetUp();
        Prepare(Scope::eAll);
    }
};

TEST_F(InterruptedLoad, ByCtrlCLeavesTheOldStoreAndSaysSo) {
    // The last one but one write of a value, after which the counters follow.
    for (const std::size_t n :
         {std::size_t{1}, m_load.changes / 2, m_load.changes - 1, m_load.changes + 1}) {
        SCOPED_TRACE("write " + std::to_string(n));
        ReplaceStoreValues(m_stores.before);
        const Event reached(L"KORA4-reached");
        RunningTool tool(cFaulty, {"load", DocumentFile()}, Faults(At("ctrl-c", n)));
        ASSERT_TRUE(reached.Wait());
        EXPECT_TRUE(HasJournal());
        tool.PressCtrlC();
        const ToolResult result = tool.WaitForEnd();
        EXPECT_EQ(result.exitCode, cFailed) << result;
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("Interrupted. What was there before has been put back."),
                  std::string::npos)
            << result;
        EXPECT_FALSE(HasJournal());
        ExpectSettings(m_stores.before);
        ExpectMoved(m_load.counters, m_stores.before);
    }
}

TEST_F(InterruptedLoad, IsSeenByNoClientAsLongAsItRuns) {
    const Event reached(L"KORA4-reached");
    const Event goOn(L"KORA4-go-on");
    RunningTool tool(cFaulty, {"load", DocumentFile()}, Faults(At("wait", m_load.changes / 2)));
    ASSERT_TRUE(reached.Wait());
    RunningTool other("kora4ctl", {"dump", "--all"});
    EXPECT_TRUE(other.IsSilentFor(1000));
    goOn.Set();
    EXPECT_EQ(tool.WaitForEnd().exitCode, cDone);
    const ToolResult dump = other.WaitForEnd();
    EXPECT_EQ(dump.exitCode, cDone) << dump;
    EXPECT_EQ(WithoutReturns(dump.out), DocumentText(m_stores.after, Scope::eAll));
    ExpectStore(m_load.after);
}

TEST_F(InterruptedLoad, WhosePuttingBackFailsKeepsItsJournalAndDoctorDoesTheRest) {
    for (std::size_t n = 1; n <= m_load.Writes() && !HasFailure(); n += 37) {
        SCOPED_TRACE("writes from " + std::to_string(n));
        ReplaceStoreValues(m_stores.before);
        const ToolResult result = LoadWith(At("fail-from", n));
        EXPECT_EQ(result.exitCode, cFailed) << result;
        EXPECT_NE(result.err.find("failed as well"), std::string::npos) << result;
        EXPECT_NE(result.err.find(JournalPath()), std::string::npos) << result;
        EXPECT_NE(result.err.find("kora4ctl doctor"), std::string::npos) << result;
        EXPECT_TRUE(HasJournal());
        ExpectMended(n);
    }
}

TEST_F(InterruptedLoad, ThatDiesWhilePuttingBackIsMendedByDoctor) {
    for (const std::size_t n :
         {m_load.changes / 4, m_load.changes / 2, m_load.changes, m_load.Writes()}) {
        // As many writes as before the failure are undone, and the counters follow.
        const std::size_t last = n + std::min(n - 1, m_load.changes) + m_load.counters.size();
        for (std::size_t m = n + 1; m <= last && !HasFailure(); m += (last - n) / 9 + 1) {
            SCOPED_TRACE("fails at " + std::to_string(n) + ", dies at " + std::to_string(m));
            ReplaceStoreValues(m_stores.before);
            const ToolResult result = LoadWith(At("fail", n) + " " + At("die", m));
            EXPECT_EQ(result.exitCode, cDied) << result;
            EXPECT_TRUE(HasJournal());
            // Nothing was put back yet where all values were written.
            if (n > m_load.changes && m == n + 1) {
                ExpectFinished();
            } else {
                ExpectUndone();
            }
        }
    }
}

TEST_F(InterruptedLoad, WhoseDoctorDiesTooIsMendedByTheNextOne) {
    const std::size_t n = m_load.changes * 2 / 3;
    for (std::size_t m = 1; m < n + m_load.counters.size() && !HasFailure(); m += 23) {
        SCOPED_TRACE("doctor dies at " + std::to_string(m));
        ReplaceStoreValues(m_stores.before);
        EXPECT_EQ(LoadWith(At("die", n)).exitCode, cDied);
        EXPECT_EQ(RunTool(cFaulty, {"doctor"}, {}, Faults(At("die", m))).exitCode, cDied);
        EXPECT_TRUE(HasJournal());
        ExpectUndone();
    }
}

TEST_F(InterruptedLoad, IsLeftToDoctorByEverythingElseThatWrites) {
    EXPECT_EQ(LoadWith(At("die", m_load.changes / 2)).exitCode, cDied);
    const StoreValues half = ReadStoreValues();
    const std::string journal = ContentOf(JournalPath());
    for (const Words& arguments :
         {Words{"load", DocumentFile()}, Words{"load", DocumentFile(), "--merge"},
          Words{"lint", "--fix"}}) {
        Refused(arguments, cFailed, "was interrupted");
        Refused(arguments, cFailed, "kora4ctl doctor");
        ExpectStore(half);
    }
    const Json told = ParsedJson(RunCtl({"doctor", "--dry-run", "--json"}).out);
    const Json* const finding = FindingOfLoad(told);
    ASSERT_TRUE(finding);
    EXPECT_EQ((*finding)["severity"], "warning");
    EXPECT_NE((*finding)["what"].get<std::string>().find("are to be put back"),
              std::string::npos)
        << *finding;
    ExpectStore(half);
    EXPECT_EQ(ContentOf(JournalPath()), journal);
    ExpectUndone();
    EXPECT_EQ(RunCtl({"load", DocumentFile()}).exitCode, cDone);
    ExpectSettings(m_load.after);
}

TEST_F(InterruptedLoad, LeavesTheMutexAbandonedAndTheNextOneSaysSo) {
    EXPECT_EQ(LoadWith(At("die", 5)).exitCode, cDied);
    const ToolResult dump = RunCtl({"dump"});
    EXPECT_EQ(dump.exitCode, cDone) << dump;
    EXPECT_NE(dump.err.find("died with it"), std::string::npos) << dump;
    EXPECT_EQ(RunCtl({"dump"}).err, "");
}

TEST_F(InterruptedLoad, WhoseJournalCannotBeMadeChangesNothing) {
    const std::string file = m_folder.File("no-folder");
    MakeFile(file, "in the way");
    const Environment nowhere = {{"ProgramData", file}};
    const ToolResult result = RunTool("kora4ctl", {"load", DocumentFile()}, {}, nowhere);
    EXPECT_EQ(result.exitCode, cFailed) << result;
    EXPECT_NE(result.err.find("Nothing was changed"), std::string::npos) << result;
    ExpectStore(m_stores.before);
}

TEST_F(InterruptedLoad, WithAJournalThatIsNoneIsSaidByDoctorAndLeftAlone) {
    ASSERT_EQ(LoadWith(At("die", 1)).exitCode, cDied);
    MakeFile(JournalPath(), "{\"format\": \"something else\"}\n");
    const Json told = ParsedJson(RunCtl({"doctor", "--json"}).out);
    const Json* const finding = FindingOfLoad(told);
    ASSERT_TRUE(finding);
    EXPECT_EQ((*finding)["severity"], "error");
    EXPECT_NE((*finding)["next"].get<std::string>().find(JournalPath()), std::string::npos);
    EXPECT_TRUE(HasJournal());
    ExpectStore(m_stores.before);
}

TEST_F(InterruptedLoad, WhoseJournalWasNotWholeIsNoMoreThanANote) {
    ASSERT_EQ(LoadWith(At("die", 1)).exitCode, cDied);
    const std::string whole = ContentOf(JournalPath());
    for (const std::size_t length : {std::size_t{0}, whole.size() / 2, whole.size() - 1}) {
        MakeFile(JournalPath(), whole.substr(0, length));
        EXPECT_NE(DoctorOnLoad().find("before it changed anything"), std::string::npos);
        ExpectStore(m_stores.before);
        EXPECT_FALSE(HasJournal());
    }
}

}  // namespace
}  // namespace kora4::test
