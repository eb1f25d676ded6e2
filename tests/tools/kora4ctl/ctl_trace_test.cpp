// SPDX-License-Identifier: MIT
// kora4ctl trace: the word in words, and the log files as they grow.
#include <filesystem>
#include <fstream>

#include "base/text.h"
#include "contract/messages/trace_categories.h"
#include "contract/messages/trace_files.h"
#include "kora4ctl/explain/trace_log.h"
#include "tools/kora4ctl/ctl_fixture.h"
#include "trace/line_text.h"

namespace kora4::test {
namespace {

constexpr PropertyKey cTraceWord = pkey::Setting(pkey::cTraceFlagsPid);

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::optional<std::uint32_t> Stored() {
    return ReadStoredUINT(eKeySetStatic, cTraceWord);
}

std::filesystem::path Folder() {
    return trace::cLogFolder;
}

void RemoveLogs() {
    std::error_code error;
    std::filesystem::remove_all(Folder(), error);
}

class CtlTrace : public CtlTest {
  protected:
    void SetUp() override {
        CtlTest::SetUp();
        RemoveLogs();
    }
    void TearDown() override {
        RemoveLogs();
        CtlTest::TearDown();
    }

    // As the library appends: opened, written, closed.
    static void Append(const std::string& text, const std::string& tag = trace::cSharedLog) {
        std::filesystem::create_directories(Folder());
        std::ofstream(Folder() / (tag + trace::cLogExtension), std::ios::app) << text;
    }
};

// ---- on and off -------------------------------------------------------------------------

TEST_F(CtlTrace, OnWithoutCategoriesTracesCallsResultsAndMessages) {
    const ToolResult result = RunCtl({"trace", "on"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(trace::eMessages | trace::eResults | trace::eApiEntryExit, Stored());
    EXPECT_TRUE(Has(result.err, "Initialize")) << result;
    EXPECT_FALSE(std::filesystem::exists(Folder()));
}

TEST_F(CtlTrace, OnTakesEachCategoryByItsName) {
    for (const contract::TraceBits& category : contract::cTraceCategories) {
        Done({"trace", "on", category.name});
        EXPECT_EQ(category.bits, Stored()) << category.name;
    }
}

TEST_F(CtlTrace, OnTracesTheNamedCategoriesAndNoOthers) {
    Done({"trace", "on", "assertions", "security"});
    const Json document = DoneJson({"trace", "on", "Results", "module"});
    EXPECT_EQ(trace::eResults | trace::eModuleEvents, Stored());
    EXPECT_EQ("0x00000101", document["flags"]);
    EXPECT_EQ(Json::array({"results", "module"}), document["categories"]);
}

TEST_F(CtlTrace, AllIsEveryCategoryButTheLogFiles) {
    Done({"trace", "on", "all"});
    EXPECT_EQ(contract::AllTraceCategories(), Stored());
}

TEST_F(CtlTrace, FilesMakesTheFolderThatTheLibraryNeeds) {
    const ToolResult result = RunCtl({"trace", "on", "--files", "messages"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(trace::eMessages | trace::eLogFiles, Stored());
    EXPECT_TRUE(std::filesystem::is_directory(Folder()));
    EXPECT_TRUE(Has(result.err, "Created the folder 'C:\\KalLogs'.")) << result;
    EXPECT_FALSE(Has(RunCtl({"trace", "on", "--files"}).err, "Created"));
}

TEST_F(CtlTrace, OffIsTheWordThatAProcessBeginsWith) {
    Done({"trace", "on", "all", "--files"});
    Done({"trace", "off"});
    EXPECT_EQ(trace::cDefaultFlags, Stored());
}

TEST_F(CtlTrace, OffSilentTurnsTheMasterSwitch) {
    Done({"trace", "off", "--silent"});
    EXPECT_EQ(trace::eMasterSwitchOff, Stored());
    EXPECT_EQ(true, DoneJson({"trace", "show"})["silent"]);
}

TEST_F(CtlTrace, RefusesAnUnknownCategoryAndStoresNothing) {
    RefusedUnchanged({"trace", "on", "messages", "result"}, cBadInput, "'results'");
    RefusedUnchanged({"trace", "on", "everything"}, cBadInput, "Unknown trace category");
    RefusedUnchanged({"trace"}, cUsage, "on, off, show");
    RefusedUnchanged({"trace", "onn"}, cUsage, "'on'");
}

TEST_F(CtlTrace, WithoutAStoreItSaysWhatMendsThat) {
    RemoveStore();
    Refused({"trace", "on"}, cNotReady, "kora4ctl register");
    Refused({"trace", "show"}, cNotReady, "kora4ctl register");
}

TEST_F(CtlTrace, AClientTracesWhatWasSwitchedOn) {
    Done({"trace", "on", "api", "results", "--files"});
    Done({"get", "profile"});
    const Json shown = DoneJson({"trace", "show", "--lines", "100000", "--module", "kora4asl"});
    bool isThere = false;
    for (const Json& line : shown["lines"]) {
        EXPECT_EQ("KORA4ASL", line["module"]) << line;
        isThere |= line["function"] == "CKORA4ASL::GetActiveProfile";
    }
    EXPECT_TRUE(isThere) << shown;
    EXPECT_FALSE(shown["files"].empty());
}

// ---- show -------------------------------------------------------------------------------

TEST_F(CtlTrace, ShowsTheWordInWords) {
    const Json before = DoneJson({"trace", "show"});
    EXPECT_TRUE(HasShape(before, R"({"flags": "=0x00000400", "categories": ["=messages"],
        "logFiles": "boolean", "silent": "boolean", "unknown": "null", "folder": "null",
        "files": [], "lines": []})"))
        << before;
    WriteStoredUINT(eKeySetStatic, cTraceWord, 0x41000002);
    const Json after = DoneJson({"trace", "show"});
    EXPECT_EQ("0x40000002", after["unknown"]);
    EXPECT_EQ(true, after["logFiles"]);
    EXPECT_EQ(Json::array(), after["categories"]);
    EXPECT_TRUE(Has(Done({"trace", "show"}), "unknown bits 0x40000002"));
}

TEST_F(CtlTrace, ShowsTheFilesAndTheLastLines) {
    for (int i = 1; i <= 30; ++i)
        Append("KORA4ASL:  " + std::to_string(100 + i) + " CKORA4ASL::Initialize:line " +
               std::to_string(i) + "\r\n\r\n");
    Append("RegKeyMonitor:    7 RegKeyMonitor::Run:>>\r\n", "RegKeyMonitor");
    const Json shown = DoneJson({"trace", "show"});
    EXPECT_TRUE(HasShape(shown["files"],
                         R"([{"name": "string", "bytes": "integer", "changed": "string"}])"));
    EXPECT_EQ(2u, shown["files"].size());
    EXPECT_EQ("KalTrace.log", shown["files"][0]["name"]);
    ASSERT_EQ(10u, shown["lines"].size());
    EXPECT_EQ("line 21", shown["lines"][0]["text"]);
    EXPECT_EQ(Json({{"module", "KORA4ASL"},
                    {"line", 130},
                    {"function", "CKORA4ASL::Initialize"},
                    {"text", "line 30"}}),
              shown["lines"][9]);
    EXPECT_EQ(2u, DoneJson({"trace", "show", "-n", "2"})["lines"].size());
    EXPECT_EQ(0u, DoneJson({"trace", "show", "--lines", "0"})["lines"].size());
    const std::string text = Done({"trace", "show", "--module", "RegKeyMonitor"});
    EXPECT_TRUE(Has(text, "RegKeyMonitor.log\nRegKeyMonitor:    7 RegKeyMonitor::Run:>>\n"))
        << text;
}

TEST_F(CtlTrace, RefusesAModuleThatThereIsNot) {
    Refused({"trace", "show", "--module", "KORA4ALS"}, cBadInput, "'KORA4ASL'");
    Refused({"trace", "show", "--lines", "-1"}, cUsage, "--lines");
}

// ---- show --follow ----------------------------------------------------------------------

TEST_F(CtlTrace, FollowsWhatIsAppendedUntilCtrlC) {
    Append("KORA4ASL:    1 F:old\r\n");
    RunningTool tool("kora4ctl", {"trace", "show", "--follow", "--json", "--lines", "1"});
    EXPECT_EQ("old", ParsedJson(tool.NextLine())["text"]);
    Append("KORA4ASL:    2 F::G:half a");
    Append(" line\r\n\r\nKORA4ASL:    3 F:next\r\n");
    EXPECT_EQ(Json({{"module", "KORA4ASL"},
                    {"line", 2},
                    {"function", "F::G"},
                    {"text", "half a line"}}),
              ParsedJson(tool.NextLine()));
    EXPECT_EQ("next", ParsedJson(tool.NextLine())["text"]);
    tool.PressCtrlC();
    EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
}

TEST_F(CtlTrace, FollowsAFileThatComesIsEmptiedAndGoes) {
    RunningTool tool("kora4ctl", {"trace", "show", "--follow"});
    tool.ErrorLineWith("Waiting for");
    Append("KORA4ASL:    1 F:a first line of some length\r\n");
    EXPECT_EQ("KORA4ASL:    1 F:a first line of some length", tool.NextLine());
    std::ofstream(Folder() / "KalTrace.log", std::ios::trunc) << "KORA4ASL:    2 F:b\r\n";
    EXPECT_EQ("KORA4ASL:    2 F:b", tool.NextLine());
    EXPECT_EQ("The file was replaced; starting over.", tool.NextErrorLine());
    ASSERT_TRUE(std::filesystem::remove(Folder() / "KalTrace.log"));
    Append("KORA4ASL:    3 F:c, in a file of that name\r\n");
    EXPECT_EQ("KORA4ASL:    3 F:c, in a file of that name", tool.NextLine());
    tool.PressCtrlC();
    EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
}

TEST_F(CtlTrace, FollowingEndsWhenNobodyReadsAnyMore) {
    Append("KORA4ASL:    1 F:a\r\n");
    RunningTool tool("kora4ctl", {"trace", "show", "--follow"});
    EXPECT_EQ("KORA4ASL:    1 F:a", tool.NextLine());
    tool.CloseOutput();
    for (int i = 0; i < 100 && tool.IsRunning(); ++i) {
        Append("KORA4ASL:    2 F:more\r\n");
        tool.IsSilentFor(100);
    }
    EXPECT_FALSE(tool.IsRunning());
}

// ---- Code pages --------------------------------------------------------------------------

// As the library writes a name in a process with that code page.
std::string Written(unsigned codePage, const wchar_t* name) {
    trace::LineText line(codePage);
    line.Append("KORA4ASL:    1 F:(4, %ls)\n", name);
    std::string text = line.End();
    text.pop_back();
    return text;
}

TEST(TraceLineText, IsReadInTheCodePageThatItWasWrittenIn) {
    const struct {
        unsigned codePage;
        const wchar_t* name;
        const wchar_t* read;
    } cases[] = {
        {1250, L"Kv\u011Bt \u4E2D", L"Kv\u011Bt ?"},
        {1251, L"\u041A\u0438\u043D\u043E \u4E2D", L"\u041A\u0438\u043D\u043E ?"},
        {1252, L"Gr\u00F6\u00DFe \u20AC \u0416", L"Gr\u00F6\u00DFe \u20AC ?"},
        {1253, L"\u03A4\u03B1\u03B9\u03BD\u03AF\u03B1",
         L"\u03A4\u03B1\u03B9\u03BD\u03AF\u03B1"},
        {1254, L"\u0130\u0131\u011F", L"\u0130\u0131\u011F"},
        {1255, L"\u05E7\u05D5\u05DC\u05E0\u05D5\u05E2",
         L"\u05E7\u05D5\u05DC\u05E0\u05D5\u05E2"},
        {1256, L"\u0633\u064A\u0646\u0645\u0627", L"\u0633\u064A\u0646\u0645\u0627"},
        {1257, L"\u0160\u012B \u0416", L"\u0160\u012B ?"},
        {874, L"\u0E2B\u0E19\u0E31\u0E07", L"\u0E2B\u0E19\u0E31\u0E07"},
        {932, L"\u6620\u753B \u8868\u30BD \u00E9", L"\u6620\u753B \u8868\u30BD ?"},
        {936, L"\u7535\u5F71\u8054\u901A", L"\u7535\u5F71\u8054\u901A"},
        {949, L"\uC601\uD654", L"\uC601\uD654"},
        {950, L"\u96FB\u5F71\u529F", L"\u96FB\u5F71\u529F"},
        {CP_UTF8, L"Kino \u0416\u4E2D\U0001F600", L"Kino \u0416\u4E2D\U0001F600"},
    };
    for (const auto& one : cases) {
        const std::string expected = "KORA4ASL:    1 F:(4, " + tools::Narrow(one.read) + ")";
        EXPECT_EQ(expected, tools::TextOfLine(Written(one.codePage, one.name), one.codePage))
            << one.codePage;
    }
}

// A program with a manifest of its own.
TEST(TraceLineText, IsReadWhereAProgramWritesUtf8OnAWesternMachine) {
    const wchar_t cName[] = L"Gr\u00F6\u00DFe \u0416\u4E2D";
    EXPECT_EQ("KORA4ASL:    1 F:(4, " + tools::Narrow(cName) + ")",
              tools::TextOfLine(Written(CP_UTF8, cName), 1252));
}

TEST(TraceLineText, IsReadAlsoWhereItIsNoTextOfAnyCodePage) {
    EXPECT_TRUE(tools::TextOfLine("a\x81\xFFz", 932).starts_with("a"));
    EXPECT_EQ("", tools::TextOfLine("", 1252));
}

TEST_F(CtlTrace, ShowsTheNamesThatTheLibraryWrote) {
    const std::wstring name = L"Gr\u00F6\u00DFe \u20AC \u0416\u4E2D!";
    const std::string bytes = Written(GetACP(), name.c_str());
    EXPECT_TRUE(bytes.ends_with("!)")) << bytes;
    Done({"profile", "create", "p1", "Day"});
    Done({"trace", "on", "messages", "--files"});
    Done({"profile", "rename", "p1", tools::Narrow(name)});
    const std::string line = tools::TextOfLine(bytes, GetACP());
    const std::string shown = Done({"trace", "show", "--lines", "1000"});
    EXPECT_TRUE(Has(shown, "SetCustomProfileName:(3" + line.substr(line.find(", ")))) << shown;
}

// ---- A line ------------------------------------------------------------------------------

TEST(TraceLine, IsTakenApart) {
    const auto line = tools::ParseTraceLine("KORA4ASL: 1204 CKORA4ASL::~CKORA4ASL:<< hr: 0x1");
    ASSERT_TRUE(line);
    EXPECT_EQ("KORA4ASL", line->tag);
    EXPECT_EQ("1204", line->line);
    EXPECT_EQ("CKORA4ASL::~CKORA4ASL", line->function);
    EXPECT_EQ("<< hr: 0x1", line->message);
}

TEST(TraceLine, KeepsBlanksAtTheBeginningOfTheText) {
    const auto line = tools::ParseTraceLine("KORA4ASL:   12 F: to Music");
    ASSERT_TRUE(line);
    EXPECT_EQ(" to Music", line->message);
}

TEST(TraceLine, IsNoneForOtherText) {
    for (const char* text : {"", "hello", "a: b", ": 12 F:x", "two words: 12 F:x", "A:   12F:x",
                             "A:   12 F", "A:   x F:y", "A:   12 :y"})
        EXPECT_FALSE(tools::ParseTraceLine(text)) << text;
}

}  // namespace
}  // namespace kora4::test
