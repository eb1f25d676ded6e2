// SPDX-License-Identifier: MIT
// kora4ctl reset, ab, profile copy, and one profile as a document: states that come back, and
// what is kept of those that go.
#include "contract/field_ids.h"
#include "settings/backup.h"
#include "tools/kora4ctl/store_fixture.h"

namespace kora4::test {
namespace {

class CtlStates : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        RemoveFiles();
    }
    void TearDown() override {
        RemoveFiles();
        StoreTest::TearDown();
    }

    static void RemoveFiles() {
        const tools::GuardedFolder folder{tools::DataFolder()};
        for (const char* const begin : {"backup-", "ab-"})
            for (const std::string& name : folder.Names(begin))
                folder.Remove(name);
    }
    static std::size_t Backups() { return DoneJson({"undo"}).size(); }
    static std::string Value(const std::string& name, const std::string& profile = {}) {
        Words get = {"get", name};
        if (!profile.empty())
            get.insert(get.end(), {"--profile", profile});
        std::string value = Done(get);
        value.pop_back();
        return value;
    }
    // All values and switches of a profile, by name.
    static Json Values(const std::string& profile) {
        Json values;
        for (const Json& setting : DoneJson({"profile", "show", profile, "--all"})["settings"])
            values[setting["name"].get<std::string>()] = setting["value"];
        return values;
    }
};
using CtlReset = CtlStates;
using CtlAb = CtlStates;
using CtlCopy = CtlStates;
using CtlShare = CtlStates;

constexpr char cChangedShape[] =
    R"({"changes": [{"name": "string", "profile": "string|null", "stored": "any",
                     "wanted": "any"}],
        "written": "integer", "deleted": "integer", "backup": "string|null"})";

// ---- reset ------------------------------------------------------------------------------

TEST_F(CtlReset, PutsTheDefaultOfASettingInEffect) {
    Done({"set", "dialog-enhancer", "0.75"});
    Done({"set", "dialog-enhancer", "0.5", "--profile", "music"});
    EXPECT_EQ("movie: dialog-enhancer: 0.75 -> 0.33 (default)\n",
              Done({"reset", "dialog-enhancer"}));
    EXPECT_EQ("0.33", Value("dialog-enhancer"));
    EXPECT_EQ("0.5", Value("dialog-enhancer", "music"));
    EXPECT_EQ("music: dialog-enhancer: 0.5 -> 0.33 (default)\n",
              Done({"reset", "dialog-enhancer", "--profile", "music"}));
    const ToolResult nothing = RunCtl({"reset", "dialog-enhancer"});
    EXPECT_EQ(cDone, nothing.exitCode) << nothing;
    EXPECT_NE(std::string::npos, nothing.err.find("already")) << nothing;
    EXPECT_TRUE(HasShape(DoneJson({"reset", "dialog-enhancer"}), cChangedShape));
}

TEST_F(CtlReset, TakesSwitchesBandsAndSeveralNames) {
    Done({"set", "enable", "off"});
    Done({"set", "peak-limiter", "off"});
    Done({"eq", "set", "1k=3"});
    EXPECT_EQ(Json("movie"), DoneJson({"eq", "show"})["profile"]);
    const std::string text = Done({"reset", "enable", "peak-limiter", "graphic-eq"});
    EXPECT_NE(std::string::npos, text.find("enable: off -> on (default)")) << text;
    EXPECT_NE(std::string::npos, text.find("movie: graphic-eq 1000 Hz: 3 -> 0 dB")) << text;
    EXPECT_EQ("on", Value("enable"));
    for (const char* const name :
         {"graphic-eq.gains", "graphic-eq.frequencies", "peak-limiter.on"})
        EXPECT_EQ(nullptr, DoneJson({"get", name})["stored"]) << name;
}

TEST_F(CtlReset, OfAProfileLeavesTheOthersAndTheName) {
    Done({"profile", "create", "p1", "Mine"});
    Done({"set", "volume-leveler", "3", "--profile", "p1"});
    Done({"set", "volume-leveler", "4", "--profile", "music"});
    const Json reset = DoneJson({"reset", "--profile", "Mine"});
    EXPECT_EQ(0, reset["written"]);
    EXPECT_LT(10, reset["deleted"]);
    for (const Json& change : reset["changes"])
        EXPECT_EQ("p1", change["profile"]);
    EXPECT_EQ("Mine", Value("name", "p1"));
    EXPECT_EQ("4", Value("volume-leveler", "music"));
    EXPECT_EQ("262151", Value("volume-leveler", "p1"));
}

TEST_F(CtlReset, OfAllIsTheStateAfterRegistrationButForNames) {
    Done({"set", "sampling-period", "20"});
    Done({"profile", "create", "p2", "Mine"});
    Done({"profile", "use", "p2"});
    Done({"set", "trace-flags", "0x401"});
    const StoreValues before = ReadStoreValues();
    Done({"reset", "--all"});
    EXPECT_EQ("movie", Value("profile"));
    EXPECT_EQ("50", Value("sampling-period"));
    EXPECT_EQ("Mine", Value("name", "p2"));
    EXPECT_EQ("0x00000401", Value("trace-flags")) << "not the user's";
    Done({"undo", "1"});
    ExpectSettings(before);
}

TEST_F(CtlReset, OtherClientsAreTold) {
    Done({"set", "dialog-enhancer", "0.75"});
    const auto recorder = CallbackRecorder::Create();
    ASSERT_EQ(S_OK, Client().RegisterChangeNotifications(recorder.Get()));
    Done({"reset", "dialog-enhancer"});
    EXPECT_TRUE(recorder->WaitForLine("OnSimplePatchValueChange(eDialogEnhancer, 0.33)"));
}

TEST_F(CtlReset, SaysWhatItDoesNotReset) {
    RefusedUnchanged({"reset"}, cUsage, "--all");
    RefusedUnchanged({"reset", "--all", "enable"}, cUsage, "");
    RefusedUnchanged({"reset", "--all", "--profile", "music"}, cUsage, "");
    RefusedUnchanged({"reset", "volume-levler"}, cBadInput, "volume-leveler");
    RefusedUnchanged({"reset", "enable", "--profile", "music"}, cBadInput, "all profiles");
    RefusedUnchanged({"reset", "name", "--profile", "p1"}, cBadInput, "no default");
    RefusedUnchanged({"reset", "version"}, cBadInput, "no default");
    RefusedUnchanged({"reset", "engine-mask"}, cBadInput, "--stored");
    Done({"set", "volume-leveler", "4", "--profile", "demo-movie", "--stored"});
    RefusedUnchanged({"reset", "--profile", "demo-movie"}, cBadInput, "--stored");
    EXPECT_EQ(1, DoneJson({"reset", "--profile", "demo-movie", "--stored"})["deleted"]);
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    RefusedUnchanged({"reset", "volume-leveler"}, cRefused, "demo-movie");
    RefusedUnchanged({"reset", "profile"}, cRefused, "demo-movie");
    RefusedUnchanged({"reset", "--all"}, cRefused, "demo-movie");
}

// ---- ab -----------------------------------------------------------------------------------

TEST_F(CtlAb, GoesFromOneStateToTheOther) {
    Done({"set", "dialog-enhancer", "0.25"});
    const Json saved = DoneJson({"ab", "save", "a"});
    EXPECT_TRUE(HasShape(saved, R"({"state": "=A", "file": "string"})"));
    EXPECT_TRUE(Exists(saved["file"].get<std::string>()));
    const StoreValues a = ReadStoreValues();
    Done({"set", "dialog-enhancer", "0.75"});
    Done({"profile", "use", "music"});
    Done({"ab", "save", "B"});
    const StoreValues b = ReadStoreValues();
    const std::string text = Done({"ab"});
    EXPECT_NE(std::string::npos, text.find("movie: dialog-enhancer: 0.75 -> 0.25")) << text;
    ExpectSettings(a);
    Done({"ab"});
    ExpectSettings(b);
    Done({"ab", "b"});
    ExpectSettings(b);
    EXPECT_EQ("A", DoneJson({"ab", "A"})["state"]);
    ExpectSettings(a);
    EXPECT_EQ(0u, Backups()) << "each state is kept already";
}

TEST_F(CtlAb, KeepsABackupOfWhatIsNeither) {
    Done({"ab", "save", "A"});
    Done({"set", "dialog-enhancer", "0.5"});
    Done({"ab", "save", "B"});
    Done({"set", "dialog-enhancer", "0.9"});
    const StoreValues neither = ReadStoreValues();
    RefusedUnchanged({"ab"}, cRefused, "neither those of A nor those of B");
    const Json changed = DoneJson({"ab", "B"});
    EXPECT_TRUE(changed["backup"].is_string()) << changed;
    EXPECT_EQ("0.5", Value("dialog-enhancer"));
    Done({"undo", "1"});
    ExpectSettings(neither);
}

TEST_F(CtlAb, SaysWhatIsMissingOrWrong) {
    RefusedUnchanged({"ab"}, cBadInput, "kora4ctl ab save A");
    Done({"ab", "save", "A"});
    RefusedUnchanged({"ab"}, cBadInput, "kora4ctl ab save B");
    RefusedUnchanged({"ab", "B"}, cBadInput, "Nothing was saved as B");
    RefusedUnchanged({"ab", "C"}, cUsage, "A and B");
    RefusedUnchanged({"ab", "save"}, cUsage, "A or B");
    RefusedUnchanged({"ab", "A", "B"}, cUsage, "one state");
    const std::string file = DoneJson({"ab", "save", "B"})["file"];
    MakeFile(file, "{}");
    RefusedUnchanged({"ab", "B"}, cBadInput, "format");
    Done({"ab", "A"});
}

// ---- profile copy, create --from ------------------------------------------------------------

TEST_F(CtlCopy, GivesAProfileTheValuesOfAnotherAndKeepsItsName) {
    Done({"set", "dialog-enhancer", "0.75", "--profile", "music"});
    Done({"profile", "create", "p1", "Mine"});
    const StoreValues before = ReadStoreValues();
    const Json copied = DoneJson({"profile", "copy", "music", "mine"});
    EXPECT_TRUE(HasShape(copied, R"({"profile": "=p1", "from": "=music",
        "changes": [{"name": "string", "profile": "string|null", "stored": "any",
                     "wanted": "any"}],
        "written": "integer", "deleted": "integer", "backup": "string"})"));
    EXPECT_EQ(Values("music"), Values("p1"));
    EXPECT_EQ("Mine", Value("name", "p1"));
    Done({"undo", "1"});
    ExpectSettings(before);
    // Also what is not stored: the defaults of the profiles differ.
    Done({"profile", "copy", "games", "movie"});
    EXPECT_EQ(Values("games"), Values("movie"));
    Done({"profile", "copy", "demo-music", "games"});
    EXPECT_EQ(Values("demo-music"), Values("games"));
}

TEST_F(CtlCopy, CreatesAProfileFromAnyOther) {
    Done({"set", "dialog-enhancer", "0.75", "--profile", "games"});
    EXPECT_EQ(Json({{"profile", "p3"}, {"name", "Loud"}, {"from", "games"}}),
              DoneJson({"profile", "create", "p3", "Loud", "--from", "games"}));
    EXPECT_EQ(Values("games"), Values("p3"));
    EXPECT_EQ(0u, Backups()) << "nothing was lost";
    Done({"profile", "create", "p4", "", "--from", "Loud"});
    EXPECT_EQ(Values("games"), Values("p4"));
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    ASSERT_EQ(S_OK, Client().GetProfileTable(names));
    EXPECT_STREQ(L"Loud", names[5]);
    EXPECT_STREQ(L"", names[6]);
    for (LPWSTR text : names)
        CoTaskMemFree(text);
    RefusedUnchanged({"profile", "create", "p3", "x", "--from", "music"}, cRefused,
                     "already exists");
    RefusedUnchanged({"profile", "create", "p5", "x", "--from", "p6x"}, cBadInput, "p6x");
    RefusedUnchanged({"profile", "create", "p5", "x", "--from", ""}, cBadInput, "profile ''");
    RefusedUnchanged({"profile", "create", "movie", "x", "--from", "music"}, cBadInput,
                     "not a custom profile");
    RefusedUnchanged({"profile", "create", "p5", std::string(2048, 'n'), "--from", "music"},
                     cBadInput, "2047");
}

TEST_F(CtlCopy, SaysWhyNot) {
    RefusedUnchanged({"profile", "copy", "music", "p1"}, cRefused, "p1 does not exist");
    RefusedUnchanged({"profile", "copy", "music", "demo-movie"}, cBadInput, "factory values");
    RefusedUnchanged({"profile", "copy", "music", "music"}, cBadInput, "itself");
    RefusedUnchanged({"profile", "copy", "music"}, cUsage, "TO");
}

// ---- dump --profile, load --into ------------------------------------------------------------

TEST_F(CtlShare, OneProfileGoesIntoAnyOther) {
    Done({"eq", "set", "1k=3", "--profile", "music"});
    Done({"profile", "create", "p1", "Late \"evening\"", "--from", "music"});
    const std::string file = m_folder.File("preset.json");
    EXPECT_EQ("profile", DoneJson({"dump", file, "--profile", "p1"})["scope"]);
    const Json document = ParsedJson(ContentOf(file));
    EXPECT_EQ("Late \"evening\"", document["name"]);
    EXPECT_EQ(0, document["profile"]["volume-leveler"]) << "also what is not stored";
    const Json wanted = Values("p1");
    Done({"profile", "delete", "p1"});
    Done({"load", file, "--into", "games"});
    EXPECT_EQ(wanted, Values("games"));
    // One that does not exist is created, with the name of the document.
    Done({"load", file, "--into", "p5"});
    EXPECT_EQ(wanted, Values("p5"));
    EXPECT_EQ("Late \"evening\"", Value("name", "p5"));
    // One that does keeps its own.
    Done({"profile", "create", "p6", "Other"});
    const StoreValues before = ReadStoreValues();
    EXPECT_LT(0, DoneJson({"load", file, "--into", "other", "--dry-run"})["written"]);
    ExpectStore(before);
    Done({"load", file, "--into", "other"});
    EXPECT_EQ(wanted, Values("p6"));
    EXPECT_EQ("Other", Value("name", "p6"));
    Done({"undo", "1"});
    ExpectSettings(before);
}

TEST_F(CtlShare, WhatTheDocumentLacksIsTheDefaultOrStays) {
    constexpr char cPart[] = R"({"format": "kora4-settings", "version": 1, "scope": "profile",
                                 "profile": {"volume-leveler": 5}})";
    Done({"set", "dialog-enhancer", "0.75", "--profile", "music"});
    Done({"load", "-", "--into", "music", "--merge"}, cPart);
    EXPECT_EQ("5", Value("volume-leveler", "music"));
    EXPECT_EQ("0.75", Value("dialog-enhancer", "music"));
    Done({"load", "-", "--into", "music"}, cPart);
    EXPECT_EQ("0.33", Value("dialog-enhancer", "music"));
    RefusedUnchanged({"load", "-", "--into", "p2"}, cRefused, "p2 does not exist", cPart);
}

TEST_F(CtlShare, EachKindOfDocumentHasItsWay) {
    const std::string all = Done({"dump"});
    const std::string one = Done({"dump", "--profile", "music"});
    RefusedUnchanged({"load", "-"}, cBadInput, "--into P", one);
    RefusedUnchanged({"diff", "-"}, cBadInput, "--into P", one);
    RefusedUnchanged({"load", "-", "--into", "music"}, cBadInput, "dump --profile P", all);
    RefusedUnchanged({"load", "-", "--into", "demo-music"}, cBadInput, "demo profile", one);
    RefusedUnchanged({"load", "-", "--into", "musc"}, cBadInput, "music", one);
    RefusedUnchanged({"load", "-", "--into", ""}, cBadInput, "Unknown profile ''", all);
    RefusedUnchanged({"dump", "--all", "--profile", "music"}, cUsage, "");
    constexpr char cHead[] = R"("format": "kora4-settings", "version": 1, "scope": "profile")";
    for (const char* const rest :
         {"", R"(, "profile": {"volume-leveler": "x"})", R"(, "profile": {"nothing": 1})",
          R"(, "profile": {}, "general": {})", R"(, "name": 5, "profile": {})"})
        RefusedUnchanged({"load", "-", "--into", "p1"}, cBadInput, "",
                         std::string("{") + cHead + rest + "}");
}

// ---- diff -----------------------------------------------------------------------------------

TEST_F(CtlStates, DifferencesOfBandsAreShownBandByBand) {
    const std::string before = Done({"dump"});
    Done({"eq", "set", "32=6", "4k=-2.5"});
    const ToolResult differ = RunCtl({"diff", "-", "--merge"}, before);
    EXPECT_EQ(cDone, differ.exitCode) << "the document does not have the bands\n" << differ;
    const ToolResult diff = RunCtl({"diff", "-"}, before);
    EXPECT_EQ(cFindings, diff.exitCode) << diff;
    const std::string text = WithoutReturns(diff.out);
    EXPECT_NE(std::string::npos, text.find("movie: graphic-eq 32 Hz: 6 -> 0 dB\n"
                                           "movie: graphic-eq 4000 Hz: -2.5 -> 0 dB\n"))
        << text;
    EXPECT_EQ(std::string::npos, text.find("graphic-eq.gains")) << text;
    // With other frequencies, a band of before is none of after.
    const std::string set = Done({"dump"});
    Done({"eq", "import", "-", "--bands", "file"}, "GraphicEQ: 100 1; 1000 2");
    const std::string other = WithoutReturns(RunCtl({"diff", "-"}, set).out);
    EXPECT_NE(std::string::npos, other.find("movie: graphic-eq.gains: [1.0,2.0] -> [6.0,"))
        << other;
}

}  // namespace
}  // namespace kora4::test
