// SPDX-License-Identifier: MIT
// kora4ctl profile and demo.
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

class CtlProfile : public CtlTest {
  protected:
    LONG Active() {
        LONG profile = -1;
        EXPECT_EQ(Client().GetActiveProfile(&profile), S_OK);
        return profile;
    }
};
using CtlDemo = CtlProfile;

TEST_F(CtlProfile, UseTellsOldAndNew) {
    EXPECT_EQ(Done({"profile", "use", "music"}), "profile: movie -> music\n");
    EXPECT_EQ(Active(), 1);
    EXPECT_EQ(DoneJson({"profile", "use", "2"}),
              Json({{"profile", "games"}, {"old", "music"}}));
}

TEST_F(CtlProfile, UseSaysWhyNot) {
    RefusedUnchanged({"profile", "use", "p3"}, cRefused, "does not exist");
    RefusedUnchanged({"profile", "use", "demo-movie"}, cBadInput, "demo enter");
    RefusedUnchanged({"profile", "use", "musc"}, cBadInput, "music");
    ASSERT_EQ(Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE), S_OK);
    RefusedUnchanged({"profile", "use", "music"}, cRefused, "demo");
}

TEST_F(CtlProfile, CreateRenameUseAndDeleteACustomProfile) {
    const std::string name = "Sp\xC3\xA4t \xE2\x98\xBE \xF0\x9F\x8E\xA7";
    EXPECT_EQ(DoneJson({"profile", "create", "p1", name}),
              Json({{"profile", "p1"}, {"name", name}, {"from", "movie"}}));
    LPWSTR names[9] = {};
    ASSERT_EQ(Client().GetProfileTable(names), S_OK);
    EXPECT_STREQ(names[3], L"Sp\u00E4t \u263E \U0001F3A7");
    for (LPWSTR text : names)
        CoTaskMemFree(text);
    EXPECT_EQ(Done({"profile", "rename", "3", "Two"}), "p1: '" + name + "' -> 'Two'\n");
    EXPECT_EQ(Done({"profile", "use", "p1"}), "profile: movie -> p1\n");
    RefusedUnchanged({"profile", "delete", "p1"}, cFailed, "active");
    Done({"profile", "use", "movie"});
    EXPECT_EQ(Done({"profile", "delete", "p1"}), "p1 was deleted.\n");
    RefusedUnchanged({"profile", "delete", "p1"}, cRefused, "does not exist");
}

TEST_F(CtlProfile, CreateAndRenameSayWhyNot) {
    Done({"profile", "create", "p1", ""});
    RefusedUnchanged({"profile", "create", "p1", "x"}, cFailed, "exists already");
    RefusedUnchanged({"profile", "rename", "p2", "x"}, cFailed, "does not exist");
    RefusedUnchanged({"profile", "create", "music", "x"}, cBadInput, "no custom profile");
    RefusedUnchanged({"profile", "delete", "games"}, cBadInput, "no custom profile");
    RefusedUnchanged({"profile", "create", "p9", "x"}, cBadInput, "no profile 'p9'");
    RefusedUnchanged({"profile", "create", "p2"}, cUsage, "NAME");
}

TEST_F(CtlProfile, NamesAreAsLongAsCanBeReadAgain) {
    Done({"profile", "create", "p1", std::string(2047, 'n')});
    EXPECT_EQ(Done({"get", "name", "--profile", "p1"}), std::string(2047, 'n') + "\n");
    RefusedUnchanged({"profile", "create", "p2", std::string(2048, 'n')}, cBadInput, "2047");
    RefusedUnchanged({"profile", "rename", "p1", std::string(2048, 'n')}, cBadInput, "2047");
}

TEST_F(CtlProfile, AnUnreadableNameIsExplained) {
    WriteStoredUINT(eKeySetStatic, pkey::ProfileName(5), 1);
    Refused({"profile", "table"}, cFailed, "lint");
    EXPECT_EQ(Done({"profile", "delete", "p3"}), "p3 was deleted.\n");
    Done({"profile", "table"});
}

TEST_F(CtlProfile, TableHasNineRows) {
    Done({"profile", "create", "p2", "Second"});
    const Json table = DoneJson({"profile", "table"});
    ASSERT_EQ(table.size(), 9u);
    EXPECT_TRUE(HasShape(table, R"([{"profile": "string", "number": "integer",
        "kind": "string", "exists": "boolean", "name": "string|null",
        "active": "boolean"}])"));
    EXPECT_EQ(table[0]["active"], true);
    EXPECT_EQ(table[4]["name"], "Second");
    EXPECT_EQ(table[5]["exists"], false);
    const std::string text = Done({"profile", "table"});
    EXPECT_NE(text.find("'Second'"), std::string::npos) << text;
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
    EXPECT_EQ(DoneJson({"profile", "show"})["profile"], "movie");
    EXPECT_NE(Done({"profile", "show", "p4"}).find("does not exist"), std::string::npos);
}

TEST_F(CtlProfile, RevertGivesTheFactoryValuesOfPresetProfilesOnly) {
    Done({"set", "dialog-enhancer", "0.75"});
    EXPECT_EQ(Done({"profile", "revert"}), "movie has its factory values again.\n");
    EXPECT_EQ(Done({"get", "dialog-enhancer"}), "0.33\n");
    Done({"profile", "create", "p1", "x"});
    Done({"profile", "use", "p1"});
    RefusedUnchanged({"profile", "revert"}, cRefused, "KORA4_S_NOT_A_PRESET_PROFILE");
}

TEST_F(CtlProfile, SubcommandsAreNamedWhenOneIsMissingOrWrong) {
    Refused({"profile"}, cUsage, "show");
    Refused({"profile", "shwo"}, cUsage, "show");
    Refused({"demo", "enter"}, cUsage, "P");
}

TEST_F(CtlDemo, EnterAndForceLeaveRestoreProfileAndEnable) {
    Done({"profile", "use", "music"});
    EXPECT_EQ(DoneJson({"demo", "enter", "games", "--off"}),
              Json({{"profile", "demo-games"}, {"demo", true}, {"enable", false}}));
    EXPECT_EQ(Active(), KORA4_PROFILE_DEMO_GAMES);
    RefusedUnchanged({"demo", "enter", "movie"}, cRefused, "demo-games");
    RefusedUnchanged({"demo", "leave"}, cRefused, "force-leave");
    EXPECT_EQ(DoneJson({"demo", "force-leave"}),
              Json({{"profile", "music"}, {"demo", false}, {"enable", true}}));
    EXPECT_EQ(Active(), 1);
}

TEST_F(CtlDemo, WithoutADemoThereIsNothingToLeave) {
    RefusedUnchanged({"demo", "leave"}, cRefused, "no demo is active");
    const std::string text = Done({"demo", "force-leave"});
    EXPECT_NE(text.find("No demo was active"), std::string::npos) << text;
}

TEST_F(CtlDemo, EnterTakesTheThreeDemosByAnyOfTheirNames) {
    for (const char* const name : {"movie", "demo-movie", "240"}) {
        EXPECT_EQ(DoneJson({"demo", "enter", name})["profile"], "demo-movie") << name;
        Done({"demo", "force-leave"});
    }
    RefusedUnchanged({"demo", "enter", "p1"}, cBadInput, "movie, music and games");
    RefusedUnchanged({"demo", "enter", "movie", "--on", "--off"}, cUsage, "--off");
}

TEST_F(CtlDemo, NothingWorksWithoutTheLibrary) {
    Unregister();
    for (const Words& arguments : {Words{"profile", "table"},
                                   {"profile", "show"},
                                   {"profile", "use", "music"},
                                   {"profile", "create", "p1", "x"},
                                   {"demo", "enter", "movie"},
                                   {"demo", "leave"}})
        Refused(arguments, cNotReady, "kora4ctl register");
}

}  // namespace
}  // namespace kora4::test
