// SPDX-License-Identifier: MIT
// kora4ctl undo: every change of many values can be taken back, to the byte.
#include <filesystem>

#include "contract/value_kind.h"
#include "settings/backup.h"
#include "settings/settings_table.h"
#include "tools/kora4ctl/store_fixture.h"

namespace kora4::test {
namespace {

class CtlUndo : public StoreTest {
  protected:
    void SetUp() override {
        StoreTest::SetUp();
        RemoveBackups();
    }
    void TearDown() override {
        RemoveBackups();
        StoreTest::TearDown();
    }

    static void RemoveBackups() {
        const tools::GuardedFolder folder{tools::DataFolder()};
        for (const std::string& name : folder.Names("backup-"))
            folder.Remove(name);
    }
    static void ExpectUndone(const StoreValues& expected) {
        const auto settings = [](const StoreValues& values) {
            return tools::WithoutAppKeys(tools::Covered(values, Scope::eAll));
        };
        EXPECT_EQ("", DifferencesOf(settings(expected), settings(ReadStoreValues())));
    }
};

constexpr char cEmptyDocument[] =
    R"({"format": "kora4-settings", "version": 1, "scope": "all"})";

TEST_F(CtlUndo, TheNewestIsTheFirstThoughTheClockRanAhead) {
    const tools::GuardedFolder folder{tools::DataFolder()};
    for (const char* const time : {"29990101T000000000", "29990101T000000001"})
        folder.Write(std::string("backup-") + time + "Z-load.json", "{}\n");
    // No such time: not one of this program's.
    folder.Write("backup-99999999T999999999Z-load.json", "{}\n");
    EXPECT_EQ(2u, DoneJson({"undo"}).size());
    Done({"set", "volume-leveler", "7"});
    Done({"reset", "volume-leveler"});
    const Json all = DoneJson({"undo"});
    ASSERT_EQ(3u, all.size());
    EXPECT_EQ("reset", all[0]["verb"]);
    Done({"undo", "1"});
    EXPECT_EQ("7\n", Done({"get", "volume-leveler"}));
    // The others are none, and named.
    RefusedUnchanged({"undo", "3"}, cBadInput, "backup-2999");
}

TEST_F(CtlUndo, RestoresWhatALoadOfNothingDeleted) {
    const TwoStores stores = DifferentStores(5);
    ReplaceStoreValues(stores.before);
    const Json loaded = DoneJson({"load", "-", "--stored"}, cEmptyDocument);
    EXPECT_EQ(0, loaded["written"]);
    EXPECT_EQ(loaded["changes"].size(), loaded["deleted"]);
    EXPECT_LT(100, loaded["deleted"]);
    const Json undone = DoneJson({"undo", "1"});
    EXPECT_LT(100, undone["written"]);
    EXPECT_EQ(0, undone["deleted"]);
    ExpectUndone(stores.before);
    // Application keys stay as they are.
    for (const auto& [place, value] : ReadStoreValues())
        EXPECT_NE(eKeySetApp, place.first) << place.second;
    // And back again.
    DoneJson({"undo", "1"});
    ExpectUndone({});
}

TEST_F(CtlUndo, RestoresWhatARevertLost) {
    Done({"profile", "use", "music"});
    Done({"set", "volume-leveler", "3"});
    const StoreValues before = ReadStoreValues();
    Done({"profile", "revert"});
    EXPECT_NE("3\n", Done({"get", "volume-leveler"}));
    Done({"undo", "1"});
    ExpectUndone(before);
}

TEST_F(CtlUndo, RestoresWhatAReplayRemoved) {
    Done({"profile", "create", "p1", "Mine"});
    const std::string settings = ParsedJson(cEmptyDocument).dump();
    std::string user = settings;
    user.replace(user.find("all"), 3, "user");
    const std::string recording =
        R"({"event":"start","format":"kora4-recording","version":1,"settings":)" + user +
        "}\n" + R"({"event":"end","offset":0,"settings":)" + user + "}\n";
    const StoreValues before = ReadStoreValues();
    const Json replayed = DoneJson({"replay", "-"}, recording);
    EXPECT_LT(0, replayed["deleted"]);
    EXPECT_EQ(0, replayed["written"]);
    Done({"undo", "1"});
    ExpectUndone(before);
}

TEST_F(CtlUndo, ListsTheLastTenTheNewestFirst) {
    EXPECT_EQ(Json::array(), DoneJson({"undo"}));
    for (int i = 0; i < 12; ++i)
        Done({"profile", "revert"});
    Done({"set", "volume-leveler", "11", "--stored"});
    Done({"lint", "--fix"});
    const Json list = DoneJson({"undo"});
    ASSERT_EQ(tools::cMostBackups, list.size());
    EXPECT_EQ("lint", list[0]["verb"]);
    EXPECT_EQ("revert", list[9]["verb"]);
    EXPECT_EQ(10, list[9]["number"]);
    EXPECT_LT(list[1]["time"], list[0]["time"]);
    const std::string text = Done({"undo"});
    EXPECT_NE(std::string::npos, text.find("before lint")) << text;
}

TEST_F(CtlUndo, KeepsNoBackupWhenNothingChanges) {
    Done({"load", "-"}, Done({"dump"}));
    EXPECT_EQ(Json::array(), DoneJson({"undo"}));
}

TEST_F(CtlUndo, KeepsNoBackupOfARefusedRevert) {
    Done({"profile", "create", "p1", "Mine"});
    Done({"profile", "use", "p1"});
    Refused({"profile", "revert"}, cRefused, "KORA4_S_NOT_A_PRESET_PROFILE");
    Done({"profile", "use", "movie"});
    Done({"demo", "enter", "movie"});
    Refused({"profile", "revert"}, cRefused, "KORA4_S_NOT_A_PRESET_PROFILE");
    EXPECT_EQ(Json::array(), DoneJson({"undo"}));
}

// More than the 16 MB that a document in a file may have.
TEST_F(CtlUndo, RestoresABackupHoweverLargeItIs) {
    StoreValues values;
    std::size_t bytes = 0;
    for (const tools::Setting& setting : tools::SettingsTable()) {
        if (!setting.perProfile || !setting.isStored || bytes > 9 * 1024 * 1024)
            continue;
        const tools::SchemaValue place = setting.Stored(4);
        values[{place.keySet, place.Name()}] = {cBinaryType, tools::Bytes(900000, 0xA5)};
        bytes += 900000;
    }
    StoreValues larger = values;
    const tools::SchemaValue place = tools::SettingNamed("volume-leveler").Stored(1);
    larger[{place.keySet, place.Name()}] = {cBinaryType, tools::Bytes(2000000, 0xA5)};
    ReplaceStoreValues(larger);
    const ToolResult found = RunCtl({"lint"});
    EXPECT_EQ(cFindings, found.exitCode);
    EXPECT_NE(std::string::npos,
              found.out.find("music: volume-leveler: it has 2000000 bytes; more than 1048576 "
                             "are never read (stored: REG_BINARY of 2000000 bytes)"));
    EXPECT_GT(5000u, found.out.size());
    Done({"lint", "--fix", "--quiet"});
    EXPECT_EQ(cDone, RunCtl({"lint"}).exitCode);
    EXPECT_EQ(values.size(), DoneJson({"undo", "1"})["written"]);
    // What is larger than is ever read counts as absent from then on.
    ExpectUndone(values);
}

TEST_F(CtlUndo, RefusesWhatIsNoBackup) {
    RefusedUnchanged({"undo", "1"}, cBadInput, "There is no backup 1.");
    RefusedUnchanged({"undo", "0"}, cUsage, "");
    RefusedUnchanged({"undo", "last"}, cUsage, "");
}

}  // namespace
}  // namespace kora4::test
