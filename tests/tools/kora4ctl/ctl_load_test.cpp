// SPDX-License-Identifier: MIT
// kora4ctl load as a person uses it: good and bad documents, and the clients beside it.
#include <memory>
#include <sstream>

#include "contract/value_kind.h"
#include "registry/registry_store.h"
#include "settings/document.h"
#include "settings/settings_table.h"
#include "support/raw_store.h"
#include "tools/kora4ctl/store_fixture.h"

namespace kora4::test {
namespace {

constexpr char cResultShape[] =
    R"({"dryRun": "boolean",
        "changes": [{"name": "string", "profile": "string|null", "stored": "any",
                     "wanted": "any"}],
        "written": "integer", "deleted": "integer", "backup": "string|null"})";

std::string WithBody(const std::string& body) {
    return R"({"format": "kora4-settings", "version": 1, "scope": "all")" +
           (body.empty() ? "" : ", " + body) + "}";
}

std::string InMusic(const std::string& members) {
    return WithBody(R"("profiles": {"music": {)" + members + "}}");
}

constexpr char cRecording[] =
    R"({"event":"start","format":"kora4-recording","version":1,"settings":)"
    R"({"format": "kora4-settings", "version": 1, "scope": "user"}})"
    "\n"
    R"({"event":"end","offset":0,"settings":)"
    R"({"format": "kora4-settings", "version": 1, "scope": "user"}})"
    "\n";

class CtlLoad : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        m_stores = DifferentStores(21);
        ReplaceStoreValues(m_stores.before);
    }

    // The document is refused with that text, nothing changes, nor does a trial say otherwise.
    void ExpectRefusal(const std::string& document, std::string_view text) {
        SCOPED_TRACE(document.substr(0, 300));
        Refused({"load", "-"}, cBadInput, text, document);
        ExpectStore(m_stores.before);
        EXPECT_FALSE(HasJournal());
    }

    TwoStores m_stores;
};

// A line for each change; of bands, one for each that differs.
std::vector<std::string> LinesOfLoad(const std::string& document) {
    tools::RegistryStore store(tools::OpenMode::eRead);
    std::vector<std::string> lines;
    for (const tools::Difference& change :
         tools::Compare(tools::ReadDocument(document), store)) {
        std::istringstream text(change.Line());
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
    }
    return lines;
}

TEST_F(CtlLoad, SaysEachChange) {
    const std::string text = DocumentText(m_stores.after, Scope::eAll);
    const std::vector<std::string> lines = LinesOfLoad(text);
    const ExpectedLoad load = LoadOf(m_stores.before, m_stores.after, Scope::eAll);
    const ToolResult result = RunCtl({"load", "--stored", "-"}, text);
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(lines, result.Lines());
    EXPECT_LE(load.changes, lines.size());
    EXPECT_NE(std::string::npos,
              result.err.find(std::to_string(load.changes) + " values changed: "))
        << result.err;
    ExpectStore(load.after);
}

TEST_F(CtlLoad, SaysEachChangeInJson) {
    const std::string text = DocumentText(m_stores.after, Scope::eUser);
    const ExpectedLoad load = LoadOf(m_stores.before, m_stores.after, Scope::eUser);
    const Json result = DoneJson({"load", "--stored", "-"}, text);
    EXPECT_TRUE(HasShape(result, cResultShape));
    EXPECT_EQ(false, result["dryRun"]);
    EXPECT_EQ(load.changes, result["changes"].size());
    ExpectStore(load.after);
}

TEST_F(CtlLoad, OfWhatIsThereAlreadyWritesNothing) {
    const std::string text = Done({"dump", "--all"});
    const ToolResult result = RunCtl({"load", "--stored", "-"}, text);
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ("", result.out);
    EXPECT_NE(std::string::npos, result.err.find("nothing was written")) << result;
    ExpectStore(m_stores.before);
}

TEST_F(CtlLoad, AsATrialTellsAndChangesNothing) {
    const std::string text = DocumentText(m_stores.after, Scope::eAll);
    const std::size_t changes = LoadOf(m_stores.before, m_stores.after, Scope::eAll).changes;
    const ToolResult trial = RunCtl({"load", "--stored", "-", "--dry-run"}, text);
    EXPECT_EQ(cDone, trial.exitCode) << trial;
    EXPECT_EQ(LinesOfLoad(text), trial.Lines());
    EXPECT_NE(std::string::npos, trial.err.find("would change")) << trial.err;
    const Json result = DoneJson({"load", "--stored", "-", "--dry-run"}, text);
    EXPECT_TRUE(HasShape(result, cResultShape));
    EXPECT_EQ(true, result["dryRun"]);
    EXPECT_EQ(changes, result["changes"].size());
    ExpectStore(m_stores.before);
    EXPECT_FALSE(HasJournal());
    EXPECT_EQ(WithoutReturns(RunCtl({"load", "--stored", "-"}, text).out),
              WithoutReturns(trial.out));
}

TEST_F(CtlLoad, MergingLeavesAloneWhatTheDocumentDoesNotHave) {
    const std::string text = InMusic(R"("volume-leveler": 4242, "dialog-enhancer": 0.125)");
    StoreValues expected = m_stores.before;
    for (const auto& [name, stored] :
         {std::pair("volume-leveler", tools::StoredValue::FromDword(4242)),
          std::pair("dialog-enhancer", tools::StoredValue::FromText(u"0.125000"))}) {
        const tools::SchemaValue place = tools::SettingNamed(name).Stored(1);
        expected[{place.keySet, place.Name()}] = stored;
    }
    const Json result = DoneJson({"load", "--stored", "-", "--merge"}, text);
    EXPECT_EQ(2u, result["changes"].size());
    ExpectStore(LoadOf(m_stores.before, expected, Scope::eAll).after);
}

TEST_F(CtlLoad, WithoutMergingDeletesWhatTheDocumentDoesNotHave) {
    Done({"load", "--stored", "-"}, InMusic(R"("volume-leveler": 5)"));
    const StoreValues left = tools::Covered(ReadStoreValues(), Scope::eAll);
    ASSERT_EQ(1u, left.size());
    EXPECT_EQ(tools::StoredValue::FromDword(5), left.begin()->second);
}

TEST_F(CtlLoad, TakesWhatOtherProgramsMakeOfADocument) {
    const std::string text = DocumentText(m_stores.after, Scope::eAll);
    const ExpectedLoad load = LoadOf(m_stores.before, m_stores.after, Scope::eAll);
    std::string wide = "\xFF\xFE";
    std::string bigEndian = "\xFE\xFF";
    for (const wchar_t unit : tools::Widen(text)) {
        wide += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        bigEndian += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    }
    std::string returns;
    for (const char c : text)
        returns += c == '\n' ? std::string("\r\n") : std::string(1, c);
    for (const std::string& form :
         {"\xEF\xBB\xBF" + text, wide, bigEndian, returns, ParsedJson(text).dump()}) {
        ReplaceStoreValues(m_stores.before);
        Done({"load", "--stored", "-", "--quiet"}, form);
        ExpectStore(load.after);
    }
}

// ---- Bad documents ------------------------------------------------------------------------

TEST_F(CtlLoad, RefusesWhatIsNoDocument) {
    ExpectRefusal("", "empty");
    ExpectRefusal("hello", "Not valid JSON");
    ExpectRefusal("[1, 2]", "expected a JSON object");
    ExpectRefusal("{}", "format");
    ExpectRefusal(std::string(1000, '\0'), "Not valid JSON");
    ExpectRefusal(std::string("\xFF\xFE\x00\xD8", 4), "Not valid JSON");
    ExpectRefusal(WithBody("") + "x", "Not valid JSON");
    ExpectRefusal(WithBody("") + std::string("\0x", 2), "null character");
    ExpectRefusal(std::string(100000, '['), "nested too deeply");
}

TEST_F(CtlLoad, RefusesDocumentsOfOtherVersionsAndScopes) {
    const std::string text = DocumentText(m_stores.after, Scope::eAll);
    const auto with = [&text](const char* name, const Json& value) {
        Json document = ParsedJson(text);
        document[name] = value;
        return document.dump();
    };
    ExpectRefusal(with("version", 2), "version 2 is not supported");
    ExpectRefusal(with("version", 0), "version");
    ExpectRefusal(with("version", 1.5), "version");
    ExpectRefusal(with("version", "1"), "version");
    ExpectRefusal(with("format", "kora4-recording"), "format");
    ExpectRefusal(with("scope", "mine"), "'user' or 'all'");
    ExpectRefusal(with("scope", nullptr), "'user' or 'all'");
    // What only the other scope has.
    ExpectRefusal(with("scope", "user"), "");
}

TEST_F(CtlLoad, RefusesADocumentThatIsCutOffAnywhere) {
    tools::RandomStore random(5);
    const std::string text = DocumentText(random.Values(5), Scope::eUser);
    ASSERT_LT(3000u, text.size());
    for (std::size_t length = 0; length < text.size() - 2 && !HasFailure(); length += 100)
        ExpectRefusal(text.substr(0, length), length == 0 ? "empty" : "");
    ExpectRefusal(text.substr(0, text.size() - 2), "truncated");
}

TEST_F(CtlLoad, RefusesUnknownNamesWithTheNearest) {
    ExpectRefusal(WithBody(R"("genral": {})"), "general");
    ExpectRefusal(WithBody(R"("profiles": {"musik": {}})"), "'music'");
    ExpectRefusal(InMusic(R"("volume-levler": 1)"), "'volume-leveler'");
    ExpectRefusal(WithBody(R"("global": {"peak-limitter.on": true})"), "'peak-limiter.on'");
    ExpectRefusal(WithBody(R"("general": {"sampling": 50})"), "'sampling-period'");
    ExpectRefusal(InMusic(R"("name": "x")"), "profiles.music.name");
}

TEST_F(CtlLoad, RefusesNamesThatAreThereTwice) {
    ExpectRefusal(InMusic(R"("volume-leveler": 1, "volume-leveler": 1)"), "duplicate");
    ExpectRefusal(WithBody(R"("profiles": {"music": {}, "music": {}})"), "duplicate");
}

TEST_F(CtlLoad, RefusesOneBadValueOfEachKindAmongGoodOnes) {
    struct Bad {
        const char* profile;
        const char* name;
        const char* value;
    };
    const std::string tooLong = "\"" + std::string(cMaxTextChars + 1, 'x') + "\"";
    const std::string tooMany = Json(std::vector<int>(41)).dump();
    for (const Bad& bad : {Bad{"music", "volume-leveler.on", "\"maybe\""},
                           Bad{"music", "volume-leveler", "-1"},
                           Bad{"music", "volume-leveler", "1e3"},
                           Bad{"music", "volume-leveler", "4294967296"},
                           Bad{"music", "volume-leveler", "null"},
                           Bad{"music", "intelligent-eq", "\"loud\""},
                           Bad{"music", "intelligent-eq", "6"},
                           Bad{"music", "dialog-enhancer", "\"0.5\""},
                           Bad{"music", "dialog-enhancer", "1e300"},
                           Bad{"music", "dialog-enhancer", "true"},
                           Bad{"music", "graphic-eq.gains", "[1, null]"},
                           Bad{"music", "graphic-eq.gains", "5"},
                           Bad{"music", "graphic-eq.gains", tooMany.c_str()},
                           Bad{"music", "volume-leveler", R"({"type": 4, "data": "0"})"},
                           Bad{"music", "volume-leveler", R"({"type": 4})"},
                           Bad{"music", "dialog-enhancer", R"({"text": 5})"},
                           Bad{"p1", "name", "5"},
                           Bad{"p1", "name", tooLong.c_str()},
                           Bad{"p1", "name", R"("a\u0000b")"},
                           Bad{"p1", "name", "\"\xC3\x28\""}}) {
        Json document = ParsedJson(DocumentText(m_stores.after, Scope::eUser));
        document["profiles"][bad.profile][bad.name] = "THE BAD ONE";
        std::string text = document.dump();
        const std::string mark = "\"THE BAD ONE\"";
        text.replace(text.find(mark), mark.size(), bad.value);
        // Malformed text has no place in a document.
        const bool isText = std::string_view(bad.value).find('\xC3') == std::string::npos;
        ExpectRefusal(text, isText ? std::string("profiles.") + bad.profile + "." + bad.name
                                   : "Not valid JSON");
    }
    ExpectRefusal(WithBody(R"("global": {"audio-regulator.isolated": [1]})"),
                  "global.audio-regulator.isolated");
    ExpectRefusal(WithBody(R"("general": {"demo-app-command": true})"),
                  "general.demo-app-command");
}

TEST_F(CtlLoad, RefusesWhatLintCallsWrongUnlessStored) {
    const struct {
        std::string document;
        const char* complaint;
    } cases[] = {
        {InMusic(R"("volume-leveler": 11)"), "music: volume-leveler: out of range"},
        {InMusic(R"("dialog-enhancer": {"type": 4, "data": "00000000"})"), "expected a REG_SZ"},
        {InMusic(R"("graphic-eq.gains": [13, 0, 0, 0, 0, 0, 0, 0, 0, 0])"), "out of range"},
        {InMusic(R"("graphic-eq.gains": [1, 2, 3])"), "expected 10 gains, got 3"},
        {InMusic(R"("graphic-eq.frequencies": [100, 300, 200])"),
         "band 3 is at 200 Hz, which is not above the previous band"},
        {InMusic(R"("graphic-eq.frequencies": [0, 300])"), "band 1 is at 0 Hz"},
        {WithBody(R"("global": {"audio-optimizer.frequencies": [2, 1]})"), "band 2"},
        {WithBody(R"("general": {"profile": "p5"})"), "the profile p5 does not exist"},
        {WithBody(R"("general": {"profile": 77})"), "not the number of a profile"},
        {WithBody(R"("general": {"profile": "demo-music"})"), "kora4ctl demo enter"},
    };
    for (const auto& one : cases) {
        ExpectRefusal(one.document, one.complaint);
        ExpectRefusal(one.document, "--stored");
        Refused({"load", "-", "--dry-run"}, cBadInput, one.complaint, one.document);
        Done({"load", "-", "--stored", "--quiet"}, one.document);
        ReplaceStoreValues(m_stores.before);
    }
}

TEST_F(CtlLoad, ChangesFactoryValuesWithStoredOnly) {
    ReplaceStoreValues({});
    const std::string document =
        WithBody(R"("profiles": {"demo-movie": {"volume-leveler": 4}})");
    Refused({"load", "-"}, cRefused, "factory values, such as volume-leveler of demo-movie",
            document);
    ExpectStore({});
    Done({"load", "-", "--stored", "--quiet"}, document);
    EXPECT_EQ("4\n", Done({"get", "volume-leveler", "--profile", "demo-movie"}));
    // Nor are they deleted because a document lacks them.
    Refused({"load", "-"}, cRefused, "factory values", WithBody(""));
    Done({"load", "-", "--merge"}, WithBody(""));
}

TEST_F(CtlLoad, TellsThatTheDemoWasLeftAndWhatIsNotUndone) {
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, TRUE));
    const ToolResult result =
        RunCtl({"load", "-", "--stored"},
               WithBody(R"("general": {"profile": "games", "demo-app-command": "demo.exe"})"));
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.err.find("demo-music was left.")) << result;
    EXPECT_NE(std::string::npos, result.err.find("which 'undo' does not restore")) << result;
}

TEST_F(CtlLoad, TakesWhatIsRightTogetherOrBuiltIn) {
    ReplaceStoreValues({});
    for (const std::string& document :
         {WithBody(R"("general": {"profile": "p5"}, "profiles": {"p5": {"name": "Five"}})"),
          InMusic(R"("graphic-eq.frequencies": [100, 200], "graphic-eq.gains": [1, -2])"),
          InMusic(R"("volume-leveler": 262151, "speaker-virtualizer": 10.0)")}) {
        Done({"load", "-", "--quiet"}, document);
        EXPECT_EQ(cDone, RunCtl({"lint"}).exitCode) << document;
    }
    // What the document leaves alone counts, too.
    Done({"profile", "create", "p2", "Two"});
    Done({"load", "-", "--merge", "--quiet"}, WithBody(R"("general": {"profile": "p2"})"));
    EXPECT_EQ("p2\n", Done({"get", "profile"}));
}

TEST_F(CtlLoad, RefusesHundredsOfThousandsOfUnknownNamesAtOnce) {
    std::string names;
    for (int i = 0; i < 500000; ++i)
        names += (names.empty() ? "\"n" : ",\"n") + std::to_string(i) + "\":1";
    for (const std::string& document :
         {WithBody(names), InMusic(names), WithBody(R"("general": {)" + names + "}")}) {
        const std::string file = m_folder.File("names.json");
        MakeFile(file, document);
        for (const char* const verb : {"load", "diff"}) {
            const ToolResult result = RunCtl({verb, file});
            EXPECT_EQ(cBadInput, result.exitCode) << result;
            EXPECT_NE(std::string::npos, result.err.find("at most 1000.")) << result;
            EXPECT_GT(5000u, result.elapsed);
        }
    }
    ExpectStore(m_stores.before);
}

TEST_F(CtlLoad, CtrlCEndsTheReadingOfALargeDocument) {
    std::string numbers = "[1";
    while (numbers.size() < 15 * 1024 * 1024)
        numbers += ",1";
    const std::string file = m_folder.File("numbers.json");
    MakeFile(file, WithBody(R"("general": )" + numbers + "]"));
    RunningTool tool("kora4ctl", {"load", file});
    Sleep(300);
    const ULONGLONG pressed = GetTickCount64();
    tool.PressCtrlC();
    const ToolResult result = tool.WaitForEnd();
    EXPECT_GT(1000u, GetTickCount64() - pressed);
    EXPECT_EQ(cFailed, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.err.find("Interrupted; nothing was changed."))
        << result;
    ExpectStore(m_stores.before);
}

TEST_F(CtlLoad, RefusesFilesThatCannotBeRead) {
    const std::string empty = m_folder.File("empty.json");
    MakeFile(empty, "");
    const std::string missing = m_folder.File("missing.json");
    const std::string large = m_folder.File("large.json");
    MakeFile(large, std::string(17 * 1024 * 1024, ' '));
    for (const std::string& file : {empty, missing, large, m_folder.Path()}) {
        Refused({"load", file}, cBadInput, file);
        Refused({"load", file, "--dry-run"}, cBadInput, file);
        Refused({"diff", file}, cBadInput, file);
    }
    ExpectStore(m_stores.before);
}

TEST_F(CtlLoad, NeedsAFile) {
    RefusedUnchanged({"load"}, cUsage, "FILE");
    RefusedUnchanged({"load", "-", "--dryrun"}, cUsage, "--dry-run");
}

TEST_F(CtlLoad, WithoutAStoreNamesTheCommandThatMendsIt) {
    Unregister();
    RemoveStore();
    for (const Words& arguments : {Words{"load", "-"}, Words{"load", "-", "--dry-run"}})
        Refused(arguments, cNotReady, "kora4ctl register", WithBody(""));
}

TEST_F(CtlLoad, NeedsNoLibrary) {
    Unregister();
    Done({"load", "--stored", "-", "--quiet"}, DocumentText(m_stores.after, Scope::eAll));
    ExpectStore(LoadOf(m_stores.before, m_stores.after, Scope::eAll).after);
}

// ---- Clients ------------------------------------------------------------------------------

class CtlLoadBesideAClient : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        ASSERT_EQ(S_OK, Client().RegisterChangeNotifications(m_recorder.Get()));
    }
    void Merge(const std::string& body) {
        m_recorder->ClearLog();
        Done({"load", "-", "--merge", "--quiet"}, WithBody(body));
    }
    void ExpectTold(const char* line) {
        EXPECT_TRUE(m_recorder->WaitForLine(line)) << line << " instead of\n"
                                                   << tools::Join(m_recorder->Log(), "\n");
    }

    const Microsoft::WRL::ComPtr<CallbackRecorder> m_recorder = CallbackRecorder::Create();
};

TEST_F(CtlLoadBesideAClient, EachKindOfChangeIsTold) {
    Merge(R"("general": {"enable": false})");
    ExpectTold("OnEnableStateChange(0)");
    Merge(R"("profiles": {"movie": {"volume-leveler.on": false}})");
    ExpectTold("OnTechnologyOnElseOffChange(eVolumeLeveler, 0)");
    Merge(R"("profiles": {"movie": {"dialog-enhancer": 0.75}})");
    ExpectTold("OnSimplePatchValueChange(eDialogEnhancer, 0.75)");
    Merge(R"("profiles": {"p1": {"name": "Late"}})");
    ExpectTold("OnCustomProfileTableChange()");
    Merge(R"("general": {"profile": "games"})");
    ExpectTold("OnActiveProfileChange(2)");
}

TEST_F(CtlLoadBesideAClient, AWholeDocumentIsToldAtOnce) {
    Merge(R"("general": {"enable": false},
             "profiles": {"movie": {"volume-leveler": 3, "graphic-eq.on": false,
                                    "graphic-eq.gains": [1, 2, 0, 0, 0, 0, 0, 0, 0, 0]},
                          "p1": {"name": "Late"}})");
    for (const char* const line : {"OnEnableStateChange(0)", "OnCustomProfileTableChange()",
                                   "OnTechnologyOnElseOffChange(eGraphicEQ, 0)",
                                   "OnSimplePatchValueChange(eVolumeLeveler, 3)"})
        ExpectTold(line);
    EXPECT_NE(std::string::npos,
              tools::Join(m_recorder->Log(), "\n").find("OnGraphicEQChange("));
}

TEST_F(CtlLoadBesideAClient, AnotherProfileIsToldAndItsValuesAreThere) {
    Merge(R"("general": {"profile": "music"},
             "profiles": {"music": {"volume-leveler": 3}, "p1": {"name": "Late"}})");
    ExpectTold("OnActiveProfileChange(1)");
    ExpectTold("OnCustomProfileTableChange()");
    KORA4PatchValueUnion value = {};
    value.m_technology = eVolumeLeveler;
    EXPECT_EQ(S_OK, Client().GetSimplePatchValue(&value));
    EXPECT_EQ(3u, value.m_values.m_volumeSlider);
}

// ---- The mutex ----------------------------------------------------------------------------

TEST_F(CtlLoad, WaitsForAProgramThatHoldsTheStore) {
    auto hold = std::make_unique<RawTransaction>();
    const std::string file = m_folder.File("late.json");
    MakeFile(file, DocumentText(m_stores.after, Scope::eAll));
    RunningTool tool("kora4ctl", {"load", "--stored", file});
    EXPECT_TRUE(tool.IsSilentFor(1000));
    EXPECT_EQ("Waiting for the settings store, held by another program.", tool.NextErrorLine());
    EXPECT_TRUE(tool.IsRunning());
    ExpectStore(m_stores.before);
    hold.reset();
    const ToolResult result = tool.WaitForEnd();
    EXPECT_EQ(cDone, result.exitCode) << result;
    ExpectStore(LoadOf(m_stores.before, m_stores.after, Scope::eAll).after);
}

TEST_F(CtlLoad, WaitsAsLongAsItIsTold) {
    const RawTransaction hold;
    for (const Words& arguments :
         {Words{"dump", "--wait", "0.1"}, Words{"get", "enable", "--wait", "0"},
          Words{"status", "--wait", "0"}, Words{"replay", "--wait", "0", "-"}}) {
        const ToolResult result = RunCtl(arguments, cRecording);
        EXPECT_EQ(cTimedOut, result.exitCode) << result;
        EXPECT_NE(std::string::npos, result.err.find("'kora4ctl doctor'")) << result;
        EXPECT_EQ(std::string::npos, result.err.find("Waiting")) << result;
    }
    const ToolResult told = RunCtl({"lint", "--wait", "2.5"});
    EXPECT_EQ(cTimedOut, told.exitCode) << told;
    EXPECT_EQ(0u, told.err.find("Waiting for the settings store")) << told;
    Refused({"dump", "--wait", "-1"}, cUsage, "--wait");
}

TEST_F(CtlLoad, CtrlCEndsTheWait) {
    const RawTransaction hold;
    const std::string file = m_folder.File("never.json");
    MakeFile(file, DocumentText(m_stores.after, Scope::eAll));
    RunningTool tool("kora4ctl", {"load", file});
    EXPECT_TRUE(tool.IsSilentFor(1000));
    tool.PressCtrlC();
    const ToolResult result = tool.WaitForEnd();
    EXPECT_EQ(cFailed, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.err.find("Interrupted while waiting")) << result;
    ExpectStore(m_stores.before);
}

TEST_F(CtlLoad, NobodyWaitsForeverForAProgramThatDoesNotLetGo) {
    const RawTransaction hold;
    const std::string file = m_folder.File("never.json");
    MakeFile(file, DocumentText(m_stores.after, Scope::eAll));
    std::vector<std::unique_ptr<RunningTool>> tools;
    for (const Words& arguments :
         {Words{"load", file}, Words{"load", file, "--dry-run"}, Words{"dump"},
          Words{"diff", file}, Words{"lint"}, Words{"lint", "--fix"}})
        tools.push_back(std::make_unique<RunningTool>("kora4ctl", arguments));
    for (const std::unique_ptr<RunningTool>& tool : tools) {
        const ToolResult result = tool->WaitForEnd();
        EXPECT_EQ(cTimedOut, result.exitCode) << result;
        EXPECT_EQ("", result.out);
        EXPECT_NE(std::string::npos, result.err.find("holds the settings store")) << result;
        EXPECT_LT(29000u, result.elapsed);
    }
    ExpectStore(m_stores.before);
}

}  // namespace
}  // namespace kora4::test
