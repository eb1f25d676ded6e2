// SPDX-License-Identifier: MIT
// kora4ctl profile and demo.
#include "contract/value_kind.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

class CtlProfile : public CtlTest {
  protected:
    LONG Active() {
        LONG profile = -1;
        EXPECT_EQ(S_OK, Client().GetActiveProfile(&profile));
        return profile;
    }
};
using CtlDemo = CtlProfile;

TEST_F(CtlProfile, UseTellsOldAndNew) {
    EXPECT_EQ("profile: movie -> music\n", Done({"profile", "use", "music"}));
    EXPECT_EQ(1, Active());
    EXPECT_EQ(Json({{"profile", "games"}, {"old", "music"}}),
              DoneJson({"profile", "use", "2"}));
}

TEST_F(CtlProfile, UseSaysWhyNot) {
    RefusedUnchanged({"profile", "use", "p3"}, cRefused, "does not exist");
    RefusedUnchanged({"profile", "use", "demo-movie"}, cBadInput, "demo enter");
    RefusedUnchanged({"profile", "use", "musc"}, cBadInput, "music");
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    RefusedUnchanged({"profile", "use", "music"}, cRefused, "demo");
}

TEST_F(CtlProfile, CreateRenameUseAndDeleteACustomProfile) {
    const std::string name = "Sp\xC3\xA4t \xE2\x98\xBE \xF0\x9F\x8E\xA7";
    EXPECT_EQ(DoneJson({"profile", "create", "p1", name}),
              Json({{"profile", "p1"}, {"name", name}, {"from", "movie"}}));
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    ASSERT_EQ(S_OK, Client().GetProfileTable(names));
    EXPECT_STREQ(L"Sp\u00E4t \u263E \U0001F3A7", names[3]);
    for (LPWSTR text : names)
        CoTaskMemFree(text);
    EXPECT_EQ("p1: '" + name + "' -> 'Two'\n", Done({"profile", "rename", "3", "Two"}));
    EXPECT_EQ("profile: movie -> p1\n", Done({"profile", "use", "p1"}));
    RefusedUnchanged({"profile", "delete", "p1"}, cRefused, "active");
    Done({"profile", "use", "movie"});
    EXPECT_EQ("p1 was deleted.\n", Done({"profile", "delete", "p1"}));
    RefusedUnchanged({"profile", "delete", "p1"}, cRefused, "does not exist");
}

TEST_F(CtlProfile, CreateAndRenameSayWhyNot) {
    Done({"profile", "create", "p1", ""});
    RefusedUnchanged({"profile", "create", "p1", "x"}, cRefused, "already exists");
    RefusedUnchanged({"profile", "rename", "p2", "x"}, cRefused, "does not exist");
    RefusedUnchanged({"profile", "create", "music", "x"}, cBadInput, "not a custom profile");
    RefusedUnchanged({"profile", "delete", "games"}, cBadInput, "not a custom profile");
    RefusedUnchanged({"profile", "create", "p9", "x"}, cBadInput, "Unknown profile 'p9'");
    RefusedUnchanged({"profile", "create", "p2"}, cUsage, "NAME");
}

TEST_F(CtlProfile, ANameThatBeginsLikeAnOptionComesBehindTwoDashes) {
    Done({"profile", "create", "p1", "x"});
    RefusedUnchanged({"profile", "rename", "p1", "-x"}, cUsage,
                     "Unknown option '-x'. If it is a value, put '--' before it.");
    RefusedUnchanged({"profile", "rename", "p1", "-V"}, cUsage, "Unknown option '-V'.");
    EXPECT_EQ("p1: 'x' -> '-x'\n", Done({"profile", "rename", "p1", "--", "-x"}));
    RefusedUnchanged({"profile", "rename", "p1", "++"}, cUsage,
                     "Unknown option '++'. If it is a value, put '--' before it.");
    EXPECT_EQ("p1: '-x' -> '++'\n", Done({"profile", "rename", "p1", "--", "++"}));
}

TEST_F(CtlProfile, TheListHasAnOlderName) {
    EXPECT_EQ(Done({"profile", "list"}), Done({"profile", "table"}));
}

TEST_F(CtlProfile, NamesAreAsLongAsCanBeReadAgain) {
    Done({"profile", "create", "p1", std::string(cMaxTextChars, 'n')});
    EXPECT_EQ(std::string(cMaxTextChars, 'n') + "\n", Done({"get", "name", "--profile", "p1"}));
    RefusedUnchanged({"profile", "create", "p2", std::string(cMaxTextChars + 1, 'n')},
                     cBadInput, "2047");
    RefusedUnchanged({"profile", "rename", "p1", std::string(cMaxTextChars + 1, 'n')},
                     cBadInput, "2047");
}

TEST_F(CtlProfile, AnUnreadableNameIsExplained) {
    WriteStoredUINT(eKeySetStatic, pkey::ProfileName(5), 1);
    Refused({"profile", "list"}, cFailed, "lint");
    EXPECT_EQ("p3 was deleted.\n", Done({"profile", "delete", "p3"}));
    Done({"profile", "list"});
}

TEST_F(CtlProfile, TableHasNineRows) {
    Done({"profile", "create", "p2", "Second"});
    const Json table = DoneJson({"profile", "list"});
    ASSERT_EQ(9u, table.size());
    EXPECT_TRUE(HasShape(table, R"([{"profile": "string", "number": "integer",
        "kind": "string", "exists": "boolean", "name": "string|null",
        "active": "boolean"}])"));
    EXPECT_EQ(true, table[0]["active"]);
    EXPECT_EQ("Second", table[4]["name"]);
    EXPECT_EQ(false, table[5]["exists"]);
    const std::string text = Done({"profile", "list"});
    EXPECT_NE(std::string::npos, text.find("'Second'")) << text;
}

TEST_F(CtlProfile, ShowHasTheValuesOfActiveAndInactiveProfiles) {
    Done({"set", "dialog-enhancer", "0.75", "--profile", "music"});
    for (const char* const profile : {"movie", "music", "p4", "demo-games"}) {
        SCOPED_TRACE(profile);
        const Json shown = DoneJson({"profile", "show", profile});
        EXPECT_TRUE(HasShape(shown, R"({"profile": "string", "number": "integer",
            "kind": "string", "name": "string|null", "active": "boolean",
            "settings": [{"name": "string", "value": "any", "unit": "string|null",
                          "profile": "string", "stored": "any", "inRange": "boolean",
                          "source": "string"}]})"));
        EXPECT_EQ(shown["profile"], profile);
        EXPECT_EQ(shown["active"], std::string(profile) == "movie");
        for (const Json& setting : shown["settings"]) {
            if (setting["name"] == "dialog-enhancer") {
                EXPECT_EQ(setting["value"], std::string(profile) == "music" ? 0.75 : 0.33);
            }
        }
    }
    EXPECT_EQ("movie", DoneJson({"profile", "show"})["profile"]);
    EXPECT_NE(std::string::npos, Done({"profile", "show", "p4"}).find("does not exist"));
}

TEST_F(CtlProfile, RevertGivesTheFactoryValuesOfPresetProfilesOnly) {
    Done({"set", "dialog-enhancer", "0.75"});
    EXPECT_EQ(0u, Done({"profile", "revert"}).find("movie was reset to its factory values: "));
    EXPECT_EQ("0.33\n", Done({"get", "dialog-enhancer"}));
    Done({"profile", "create", "p1", "x"});
    Done({"profile", "use", "p1"});
    RefusedUnchanged({"profile", "revert"}, cRefused, "KORA4_S_NOT_A_PRESET_PROFILE");
}

TEST_F(CtlProfile, RevertNamesFactoryValuesThatAreNotBuiltIn) {
    EXPECT_EQ(Json::array(), DoneJson({"profile", "revert"})["notBuiltIn"]);
    Done({"set", "volume-leveler", "4", "--profile", "demo-movie", "--stored"});
    Done({"set", "dialog-enhancer", "0.33", "--profile", "demo-movie", "--stored"});
    const ToolResult words = RunCtl({"profile", "revert"});
    EXPECT_EQ(cDone, words.exitCode) << words;
    EXPECT_NE(std::string::npos,
              words.err.find("Not the built-in ones, but those stored for demo-movie: "
                             "volume-leveler.\n"))
        << words;
    EXPECT_EQ("4\n", Done({"get", "volume-leveler"}));
    EXPECT_EQ(Json::array({"volume-leveler"}), DoneJson({"profile", "revert"})["notBuiltIn"]);
    Done({"profile", "use", "music"});
    EXPECT_EQ(Json::array(), DoneJson({"profile", "revert"})["notBuiltIn"]);
}

TEST_F(CtlProfile, IsFoundByTheNameThatItsOwnerGaveIt) {
    Done({"profile", "create", "p1", "Sp\xC3\xA4t abends"});
    EXPECT_EQ("profile: movie -> p1\n", Done({"profile", "use", "SP\xC3\xA4T Abends"}));
    Done({"set", "dialog-enhancer", "0.75", "--profile", "Sp\xC3\xA4t abends"});
    EXPECT_EQ("0.75\n", Done({"get", "dialog-enhancer", "--profile", "p1"}));
    EXPECT_EQ("p1", DoneJson({"profile", "show", "sp\xC3\xA4t abends"})["profile"]);
    Done({"set", "profile", "music"});
    EXPECT_EQ("profile: music -> p1\n", Done({"set", "profile", "Sp\xC3\xA4t", "abends"}));
    Done({"set", "profile", "music"});
    Done({"profile", "rename", "Sp\xC3\xA4t abends", "Late"});
    RefusedUnchanged({"profile", "use", "Lote"}, cBadInput, "'Late'");
    EXPECT_EQ("p1 was deleted.\n", Done({"profile", "delete", "late"}));
    RefusedUnchanged({"profile", "delete", "late"}, cBadInput, "Unknown profile 'late'");
}

TEST_F(CtlProfile, ANameThatSeveralHaveMeansNoneOfThem) {
    Done({"profile", "create", "p1", "Same"});
    Done({"profile", "create", "p4", "Same"});
    Done({"profile", "create", "p5", "SAME"});
    RefusedUnchanged({"profile", "use", "Same"}, cBadInput, "the name of p1 and p4");
    RefusedUnchanged({"profile", "use", "same"}, cBadInput, "the name of p1 and p4 and p5");
    EXPECT_EQ("p5", DoneJson({"profile", "use", "SAME"})["profile"]) << "just that one";
}

TEST_F(CtlProfile, TheWordsAndNumbersOfProfilesMeanThoseProfiles) {
    const ToolResult created = RunCtl({"profile", "create", "p1", "Music"});
    EXPECT_NE(std::string::npos, created.err.find("call this one p1")) << created;
    EXPECT_EQ("music", DoneJson({"profile", "use", "Music"})["profile"]);
    const ToolResult renamed = RunCtl({"profile", "rename", "p1", "4"});
    EXPECT_NE(std::string::npos, renamed.err.find("call this one p1")) << renamed;
    EXPECT_EQ("p2", DoneJson({"profile", "show", "4"})["profile"]);
    EXPECT_EQ("", RunCtl({"profile", "rename", "p1", "P1"}).err);
}

TEST_F(CtlProfile, StepsGoThroughTheProfilesThatExist) {
    Done({"profile", "create", "p3", "x"});
    EXPECT_EQ("profile: movie -> games\n", Done({"set", "profile", "+2"}));
    EXPECT_EQ("profile: games -> p3\n", Done({"set", "profile", "+1"}));
    EXPECT_EQ("profile: p3 -> p3\n", Done({"set", "profile", "+1"}));
    EXPECT_EQ("profile: p3 -> movie\n", Done({"set", "profile", "-100000"}));
    RefusedUnchanged({"set", "profile", "+x"}, cBadInput, "'profile'");
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    RefusedUnchanged({"set", "profile", "+1"}, cRefused, "demo-movie");
}

TEST_F(CtlProfile, CarriedFieldsAreShownWhenAsked) {
    EXPECT_EQ(std::string::npos, Done({"profile", "show"}).find("field-"));
    EXPECT_NE(std::string::npos, Done({"profile", "show", "--all"}).find("field-4"));
}

TEST_F(CtlProfile, SubcommandsAreNamedWhenOneIsMissingOrWrong) {
    Refused({"profile"}, cUsage, "show");
    Refused({"profile", "shwo"}, cUsage, "show");
    Refused({"demo", "enter"}, cUsage, "P");
}

TEST_F(CtlDemo, EnterAndForceLeaveRestoreProfileAndEnable) {
    Done({"profile", "use", "music"});
    EXPECT_EQ(Json({{"profile", "demo-games"}, {"demo", true}, {"enable", false}}),
              DoneJson({"demo", "enter", "games", "--off"}));
    EXPECT_EQ(KORA4_PROFILE_DEMO_GAMES, Active());
    RefusedUnchanged({"demo", "enter", "movie"}, cRefused, "demo-games");
    RefusedUnchanged({"demo", "leave"}, cUsage, "Did you mean 'force-leave'?");
    EXPECT_EQ(Json({{"profile", "music"}, {"demo", false}, {"enable", true}}),
              DoneJson({"demo", "force-leave"}));
    EXPECT_EQ(1, Active());
}

TEST_F(CtlDemo, WithoutADemoThereIsNothingToLeave) {
    const std::string text = Done({"demo", "force-leave"});
    EXPECT_NE(std::string::npos, text.find("No demo was active")) << text;
}

TEST_F(CtlDemo, EnterTakesTheThreeDemosByAnyOfTheirNames) {
    for (const char* const name : {"movie", "demo-movie", "240"}) {
        EXPECT_EQ("demo-movie", DoneJson({"demo", "enter", name})["profile"]) << name;
        Done({"demo", "force-leave"});
    }
    RefusedUnchanged({"demo", "enter", "p1"}, cBadInput, "movie, music and games");
    RefusedUnchanged({"demo", "enter", "movie", "--on", "--off"}, cUsage, "--off");
}

TEST_F(CtlDemo, NothingWorksWithoutTheLibrary) {
    Unregister();
    for (const Words& arguments : {Words{"profile", "list"},
                                   {"profile", "show"},
                                   {"profile", "use", "music"},
                                   {"profile", "create", "p1", "x"},
                                   {"demo", "enter", "movie"},
                                   {"demo", "force-leave"}})
        Refused(arguments, cNotReady, "kora4ctl register");
}

}  // namespace
}  // namespace kora4::test
