// SPDX-License-Identifier: MIT
// kora4ctl load, interrupted at each place in turn: by a write that fails, by a process that
// dies, by Ctrl-C, and while it puts back what was there.
#include "tools/kora4ctl/broken_load.h"

#include <filesystem>

#include "contract/registry_paths.h"

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
        EXPECT_EQ(cFailed, result.exitCode) << result;
        EXPECT_EQ("", result.out) << result;
        EXPECT_NE(std::string::npos, result.err.find("refused for a trial")) << result;
        EXPECT_NE(std::string::npos, result.err.find("The previous values were restored."))
            << result;
        EXPECT_FALSE(HasJournal());
        ExpectSettings(m_stores.before);
        ExpectMoved(m_load.counters, before);
    }
    // And there is no further write.
    ReplaceStoreValues(m_stores.before);
    EXPECT_EQ(cDone, LoadWith(At("fail", m_load.Writes() + 1)).exitCode);
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
        RunningTool tool(cFaulty, {"load", "--stored", DocumentFile()},
                         Faults(At("ctrl-c", n)));
        ASSERT_TRUE(reached.Wait());
        EXPECT_TRUE(HasJournal());
        tool.PressCtrlC();
        const ToolResult result = tool.WaitForEnd();
        EXPECT_EQ(cFailed, result.exitCode) << result;
        EXPECT_EQ("", result.out);
        EXPECT_NE(std::string::npos,
                  result.err.find("Interrupted. The previous values were restored."))
            << result;
        EXPECT_FALSE(HasJournal());
        ExpectSettings(m_stores.before);
        ExpectMoved(m_load.counters, m_stores.before);
    }
}

TEST_F(InterruptedLoad, IsSeenByNoClientAsLongAsItRuns) {
    const Event reached(L"KORA4-reached");
    const Event goOn(L"KORA4-go-on");
    RunningTool tool(cFaulty, {"load", "--stored", DocumentFile()},
                     Faults(At("wait", m_load.changes / 2)));
    ASSERT_TRUE(reached.Wait());
    RunningTool other("kora4ctl", {"dump", "--all"});
    EXPECT_TRUE(other.IsSilentFor(1000));
    goOn.Set();
    EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
    const ToolResult dump = other.WaitForEnd();
    EXPECT_EQ(cDone, dump.exitCode) << dump;
    EXPECT_EQ(WithoutReturns(dump.out), DocumentText(m_stores.after, Scope::eAll));
    ExpectStore(m_load.after);
}

TEST_F(InterruptedLoad, WhosePuttingBackFailsKeepsItsJournalAndDoctorDoesTheRest) {
    for (std::size_t n = 1; n <= m_load.Writes() && !HasFailure(); n += 37) {
        SCOPED_TRACE("writes from " + std::to_string(n));
        ReplaceStoreValues(m_stores.before);
        const ToolResult result = LoadWith(At("fail-from", n));
        EXPECT_EQ(cFailed, result.exitCode) << result;
        EXPECT_NE(std::string::npos, result.err.find("failed, too")) << result;
        EXPECT_NE(std::string::npos, result.err.find(JournalPath())) << result;
        EXPECT_NE(std::string::npos, result.err.find("kora4ctl doctor")) << result;
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
            EXPECT_EQ(cDied, result.exitCode) << result;
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
        EXPECT_EQ(cDied, LoadWith(At("die", n)).exitCode);
        EXPECT_EQ(cDied, RunTool(cFaulty, {"doctor"}, {}, Faults(At("die", m))).exitCode);
        EXPECT_TRUE(HasJournal());
        ExpectUndone();
    }
}

TEST_F(InterruptedLoad, IsToldUntilDoctorHasRepairedIt) {
    EXPECT_EQ(cDied, LoadWith(At("die", m_load.changes / 2)).exitCode);
    const char* const words = "was interrupted half-way. Run 'kora4ctl doctor'";
    for (const Words& arguments : {Words{"get", "enable"}, Words{"status"},
                                   Words{"set", "audio-optimizer.field-3", "1"}}) {
        const ToolResult result = RunCtl(arguments);
        EXPECT_EQ(cDone, result.exitCode) << result;
        EXPECT_NE(std::string::npos, result.err.find(words)) << result;
    }
    EXPECT_EQ(true, DoneJson({"status"})["interrupted"]);
    DoctorOnLoad();
    EXPECT_EQ(false, DoneJson({"status"})["interrupted"]);
    EXPECT_EQ(std::string::npos, RunCtl({"get", "enable"}).err.find(words));
}

// A journal of a change that still runs is none.
TEST_F(InterruptedLoad, IsNotToldWhileItRuns) {
    const Event reached(L"KORA4-reached");
    const Event goOn(L"KORA4-go-on");
    RunningTool tool(cFaulty, {"load", "--stored", DocumentFile()},
                     Faults(At("wait", m_load.changes / 2)));
    ASSERT_TRUE(reached.Wait());
    EXPECT_TRUE(HasJournal());
    RunningTool other("kora4ctl", {"get", "enable"});
    EXPECT_TRUE(other.IsSilentFor(500));
    goOn.Set();
    EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
    const ToolResult result = other.WaitForEnd();
    EXPECT_EQ(std::string::npos, result.err.find("interrupted")) << result;
}

TEST_F(InterruptedLoad, IsLeftToDoctorByEverythingElseThatWrites) {
    EXPECT_EQ(cDied, LoadWith(At("die", m_load.changes / 2)).exitCode);
    const StoreValues half = ReadStoreValues();
    const std::string journal = ContentOf(JournalPath());
    for (const Words& arguments :
         {Words{"load", "--stored", DocumentFile()},
          Words{"load", "--stored", DocumentFile(), "--merge"}, Words{"lint", "--fix"}}) {
        Refused(arguments, cFailed, "was interrupted");
        Refused(arguments, cFailed, "kora4ctl doctor");
        ExpectStore(half);
    }
    const Json told = ParsedJson(RunCtl({"doctor", "--dry-run", "--json"}).out);
    const Json* const finding = FindingOfLoad(told);
    ASSERT_TRUE(finding);
    EXPECT_EQ("warning", (*finding)["severity"]);
    EXPECT_NE(std::string::npos, (*finding)["what"].get<std::string>().find("will be restored"))
        << *finding;
    ExpectStore(half);
    EXPECT_EQ(journal, ContentOf(JournalPath()));
    ExpectUndone();
    EXPECT_EQ(cDone, RunCtl({"load", "--stored", DocumentFile()}).exitCode);
    ExpectSettings(m_load.after);
}

TEST_F(InterruptedLoad, LeavesTheMutexAbandonedAndTheNextOneSaysSo) {
    EXPECT_EQ(cDied, LoadWith(At("die", 5)).exitCode);
    const ToolResult dump = RunCtl({"dump"});
    EXPECT_EQ(cDone, dump.exitCode) << dump;
    EXPECT_NE(std::string::npos, dump.err.find("ended without releasing it")) << dump;
    EXPECT_EQ("", RunCtl({"dump"}).err);
}

TEST_F(InterruptedLoad, WhoseJournalCannotBeMadeChangesNothing) {
    // A folder in the place of the unfinished journal, which cannot be moved while it is open.
    const std::string inTheWay = JournalPath() + ".new";
    CreateDirectoryW(tools::Widen(inTheWay).c_str(), nullptr);
    {
        const UniqueHandle open(CreateFileW(tools::Widen(inTheWay).c_str(), GENERIC_READ,
                                            FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                            FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        const ToolResult result = RunCtl({"load", "--stored", DocumentFile()});
        EXPECT_EQ(cFailed, result.exitCode) << result;
        EXPECT_NE(std::string::npos, result.err.find("cannot be moved aside")) << result;
        ExpectStore(m_stores.before);
    }
    RemoveDirectoryW(tools::Widen(inTheWay).c_str());
}

TEST_F(InterruptedLoad, WithAJournalThatIsNoneIsSaidByDoctorAndMovedAside) {
    ASSERT_EQ(cDied, LoadWith(At("die", 1)).exitCode);
    MakeFile(JournalPath(), "{\"format\": \"something else\"}\n");
    const Json told = ParsedJson(RunCtl({"doctor", "--json"}).out);
    const Json* const finding = FindingOfLoad(told);
    ASSERT_TRUE(finding);
    EXPECT_EQ("warning", (*finding)["severity"]);
    const std::string next = (*finding)["next"];
    EXPECT_NE(std::string::npos, next.find(JournalPath() + ".moved-")) << next;
    EXPECT_FALSE(HasJournal());
    ExpectStore(m_stores.before);
    DeleteFileW(tools::Widen(next.substr(next.find(JournalPath()))).c_str());
    EXPECT_NE(std::string::npos, DoctorOnLoad().find("none was interrupted"));
}

TEST_F(InterruptedLoad, WithAJournalThatIsNoneIsNotHeldUpByIt) {
    MakeFile(JournalPath(), "{\"format\": \"something else\"}\n");
    const ToolResult result = RunCtl({"load", "--stored", DocumentFile()});
    EXPECT_EQ(cDone, result.exitCode) << result;
    const std::size_t begin = result.err.find(JournalPath() + ".moved-");
    ASSERT_NE(std::string::npos, begin) << result;
    const std::size_t end = result.err.find("'.\n", begin);
    EXPECT_TRUE(DeleteFileW(tools::Widen(result.err.substr(begin, end - begin)).c_str()));
    ExpectStore(m_load.after);
}

TEST_F(InterruptedLoad, OverAPlantedLinkLosesNothingOfItsTarget) {
    const std::string victim = m_folder.File("victim");
    MakeFile(victim, "precious");
    for (const std::string& place : {JournalPath() + ".new", JournalPath()}) {
        ASSERT_TRUE(CreateHardLinkW(tools::Widen(place).c_str(), tools::Widen(victim).c_str(),
                                    nullptr));
        const ToolResult result = RunCtl({"load", "--stored", DocumentFile()});
        EXPECT_EQ(cDone, result.exitCode) << result;
        EXPECT_EQ("precious", ContentOf(victim));
        EXPECT_FALSE(HasJournal());
        ReplaceStoreValues(m_stores.before);
    }
    const std::filesystem::path journal(tools::Widen(JournalPath()));
    for (const auto& entry : std::filesystem::directory_iterator(journal.parent_path()))
        if (entry.path().filename().wstring().find(L".moved-") != std::wstring::npos)
            std::filesystem::remove(entry.path());
}

TEST_F(InterruptedLoad, WhoseJournalNamesACommandMakesNoApplicationKeys) {
    RemoveKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    tools::Journal journal;
    journal.entries.push_back({eKeySetApp,
                               pkey::Setting(pkey::cDemoAppCommandPid),
                               tools::StoredValue::FromText(u"planted.exe"),
                               {}});
    // One value as it was before: the load is to be undone.
    const PropertyKey period = pkey::Setting(pkey::cSamplingPeriodPid);
    WriteStoredUINT(eKeySetStatic, period, 40);
    journal.entries.push_back({eKeySetStatic, period, tools::StoredValue::FromDword(40),
                               tools::StoredValue::FromDword(60)});
    tools::JournalFile(JournalPath()).Write(journal);
    DoctorOnLoad();
    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, cAppKeysPath));
    EXPECT_FALSE(HasJournal());
}

TEST_F(InterruptedLoad, WhoseJournalWasNotWholeIsNoMoreThanANote) {
    ASSERT_EQ(cDied, LoadWith(At("die", 1)).exitCode);
    const std::string whole = ContentOf(JournalPath());
    for (const std::size_t length : {std::size_t{0}, whole.size() / 2, whole.size() - 1}) {
        MakeFile(JournalPath(), whole.substr(0, length));
        EXPECT_NE(std::string::npos, DoctorOnLoad().find("before it changed anything"));
        ExpectStore(m_stores.before);
        EXPECT_FALSE(HasJournal());
    }
}

}  // namespace
}  // namespace kora4::test
