// SPDX-License-Identifier: MIT
// Each scene of the engine, and each change that a person makes beside it: what kora4ctl
// watch is told, and what the engine sees.
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

#include "tools/kora4sim/sim_watch_fixture.h"

namespace kora4::test {
namespace {

// ---- Scenes -----------------------------------------------------------------------------

struct SceneExpectation {
    const char* scene;
    unsigned mask;
    const char* engine;
    std::size_t bands;  // that a display sees
    bool isStill;       // each picture is like the one before
    bool hasEditor;
    const char* demoApp;  // its arguments; null: there is none
};

constexpr SceneExpectation cScenes[] = {
    {"music", KORA4_ENGINE_FULL, "full engine", 20, false, true, " /music"},
    {"speech", KORA4_ENGINE_FULL, "full engine", 20, false, true, " /speech"},
    {"silence", KORA4_ENGINE_FULL, "full engine", 20, true, true, ""},
    {"sweep", KORA4_ENGINE_FULL, "full engine", 20, false, true, " /sweep"},
    {"engine-full", KORA4_ENGINE_FULL, "full engine", 20, false, true, ""},
    {"engine-standard", KORA4_ENGINE_STANDARD, "standard engine", 20, false, true, nullptr},
    {"engine-basic", KORA4_ENGINE_BASIC, "basic engine", 10, false, false, nullptr},
};

class SimWatchScenes : public SimWatchTest,
                       public testing::WithParamInterface<SceneExpectation> {
  protected:
    static Json Program(const std::string& name, const std::string& arguments = {}) {
        return "\"C:\\Program Files\\KORA4\\" + name + ".exe\"" + arguments;
    }
    // A line of levels --json.
    static void CheckPicture(const std::string& line) {
        const Json picture = ParsedJson(line);
        ASSERT_TRUE(HasShape(picture, R"({"time": "string", "frequencies": ["number"],
            "gains": ["number"], "excitations": ["number"], "still": "boolean",
            "error": "null"})"));
        ASSERT_EQ(std::size_t{KORA4_VISUALIZATION_BANDS}, picture["gains"].size());
        ASSERT_EQ(std::size_t{KORA4_VISUALIZATION_BANDS}, picture["excitations"].size());
        for (std::size_t band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
            SCOPED_TRACE(band);
            const bool isThere = band < GetParam().bands;
            const float gain = picture["gains"][band];
            const float excitation = picture["excitations"][band];
            EXPECT_EQ(isThere, gain != KORA4_SILENT_GAIN);
            EXPECT_GE(36, gain);
            EXPECT_LE(KORA4_SILENT_EXCITATION, excitation);
            EXPECT_GE(36, excitation);
            if (!isThere || GetParam().isStill) {
                EXPECT_EQ(KORA4_SILENT_EXCITATION, excitation);
            }
        }
    }
    static void CheckLevels() {
        const Words look = {"levels", "--json", "--fps", "50"};
        Words arguments = look;
        if (GetParam().isStill)
            arguments.insert(arguments.end(), {"--timeout", "0.4"});
        else
            arguments.insert(arguments.end(), {"--count", "3"});
        const ToolResult levels = RunCtl(arguments);
        EXPECT_EQ(0u, levels.exitCode) << levels;
        EXPECT_EQ(GetParam().isStill ? 1u : 3u, levels.Lines().size()) << levels;
        for (const std::string& line : levels.Lines())
            CheckPicture(line);
    }
};

TEST_P(SimWatchScenes, TellsNobodyAnythingAndShowsItsEngineAndLevels) {
    const SceneExpectation& scene = GetParam();
    StartWatch();
    const Json ready = StartSim({scene.scene, "--seed", "7"});
    EXPECT_EQ(scene.scene, ready["scene"]);
    EXPECT_EQ(7, ready["seed"]);
    EXPECT_EQ(scene.engine, ready["engine"]);
    CheckLevels();
    const Json status = DoneJson({"status"});
    EXPECT_EQ(Json({{"mask", scene.mask}, {"name", scene.engine}}), status["engine"]);
    EXPECT_EQ("published", status["levels"]);
    const Json read = DoneJson({"get", "engine-mask", "profile-editor-command",
                                "profile-selector-command", "demo-app-command"});
    ASSERT_EQ(4u, read.size());
    EXPECT_EQ(scene.mask, read[0]["value"]);
    EXPECT_EQ(scene.hasEditor ? Program("ProfileEditor") : Json(), read[1]["value"]);
    EXPECT_EQ(Program("ProfileSelector"), read[2]["value"]);
    EXPECT_EQ(scene.demoApp != nullptr ? Program("Demo", scene.demoApp) : Json(),
              read[3]["value"]);
    const Rest rest = TakeRest();
    EXPECT_TRUE(rest.told.empty()) << Json(rest.told);
    EXPECT_TRUE(rest.seen.empty()) << Json(rest.seen);
    const Json summary = EndSim();
    EXPECT_LT(0, summary["pictures"]);
    EXPECT_EQ(0, summary["failures"]);
    EXPECT_EQ(0, summary["reloads"]);
    ExpectNothingTold();
}

std::string Identifier(std::string text) {
    for (char& c : text)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return text;
}

INSTANTIATE_TEST_SUITE_P(Scenes, SimWatchScenes, testing::ValuesIn(cScenes),
                         [](const testing::TestParamInfo<SceneExpectation>& one) {
                             return Identifier(one.param.scene);
                         });

TEST(SimWatchAllScenes, HaveAnExpectation) {
    std::set<std::string> expected;
    for (const SceneExpectation& scene : cScenes)
        expected.insert(scene.scene);
    std::set<std::string> listed;
    for (const Json& scene : ParsedJson(RunSim({"--list", "--json"}).out))
        listed.insert(scene["name"].get<std::string>());
    EXPECT_EQ(expected, listed);
    std::set<std::string> files;
    for (const auto& file : std::filesystem::directory_iterator(
             std::filesystem::path(ProgramFolder()) / "scenes")) {
        if (file.path().extension() == ".json")
            files.insert(file.path().stem().string());
    }
    EXPECT_EQ(expected, files);
}

// ---- Changes ----------------------------------------------------------------------------

class SimWatchChanges : public SimWatchTest {
  protected:
    void SetUp() override {
        SimWatchTest::SetUp();
        StartWatch();
        StartSim({"silence"});
    }
    void TearDown() override {
        EndSim();
        SimWatchTest::TearDown();
    }
    // A person's command, and all that comes of it.
    void Expect(const Words& command, const Events& told, const Events& seen) {
        SCOPED_TRACE(Json(command).dump());
        Done(command);
        for (const Json& event : told)
            EXPECT_EQ(event, NextTold());
        ExpectSeen(seen);
        const Rest rest = TakeRest();
        EXPECT_TRUE(rest.told.empty()) << "told: " << Json(rest.told);
        EXPECT_TRUE(rest.seen.empty()) << "seen: " << Json(rest.seen);
    }
    static Json Reload(const std::string& technology, int counter, Json changes) {
        return {{"event", "reload"},
                {"cause",
                 "trigger " + std::to_string(counter - 1) + " -> " + std::to_string(counter)},
                {"technology", technology},
                {"changes", std::move(changes)}};
    }
    static Json OneChange(const std::string& name, Json from, Json to) {
        return Json::array({{{"name", name}, {"from", from}, {"to", to}}});
    }
    static Json Switched(const std::string& technology, bool to) {
        return {{"event", "switch"},
                {"cause", to ? "switch off -> on" : "switch on -> off"},
                {"name", technology + ".on"},
                {"from", !to},
                {"to", to},
                {"technology", technology}};
    }
    static Json Enabled(bool to) {
        return {{"event", "enable"},
                {"cause", to ? "master enable off -> on" : "master enable on -> off"},
                {"from", !to},
                {"to", to}};
    }
    static Json Profiled(const std::string& from, const std::string& to) {
        return {{"event", "profile"},
                {"cause", "active profile " + from + " -> " + to},
                {"from", from},
                {"to", to}};
    }
    static Json Table(int counter, Json names) {
        return {{"event", "table"},
                {"cause", "table counter " + std::to_string(counter - 1) + " -> " +
                              std::to_string(counter)},
                {"names", std::move(names)}};
    }
    // The custom profiles, of which only P1 has that name.
    static Json ToldTable(Json nameOfP1) {
        return Told("table", "custom-profiles",
                    {{"p1", std::move(nameOfP1)},
                     {"p2", nullptr},
                     {"p3", nullptr},
                     {"p4", nullptr},
                     {"p5", nullptr},
                     {"p6", nullptr}});
    }
};

TEST_F(SimWatchChanges, OfValuesAreToldAndSeenWithTheirTriggers) {
    Expect({"set", "volume-leveler", "7"}, {ToldValue("volume-leveler", 7)},
           {Reload("volume-leveler", 1, OneChange("volume-leveler", cMovieVolume, 7))});
    Expect({"set", "volume-leveler", "+2"}, {ToldValue("volume-leveler", 9)},
           {Reload("volume-leveler", 2, OneChange("volume-leveler", 7, 9))});
    Expect({"set", "volume-leveler", "9"}, {ToldValue("volume-leveler", 9)},
           {Reload("volume-leveler", 3, Json::array())});
    Expect({"set", "dialog-enhancer", "0.5"}, {ToldValue("dialog-enhancer", 0.5)},
           {Reload("dialog-enhancer", 1, OneChange("dialog-enhancer", 0.33, 0.5))});
    Expect({"set", "intelligent-eq", "warm"}, {ToldValue("intelligent-eq", "warm")},
           {Reload("intelligent-eq", 1, OneChange("intelligent-eq", "balanced", "warm"))});
    Expect({"set", "headphone-virtualizer", "1.5"}, {ToldValue("headphone-virtualizer", 1.5)},
           {Reload("headphone-virtualizer", 1, OneChange("headphone-virtualizer", 6.0, 1.5))});
    Expect({"set", "speaker-virtualizer", "2"}, {ToldValue("speaker-virtualizer", 2.0)},
           {Reload("speaker-virtualizer", 1, OneChange("speaker-virtualizer", 10.0, 2.0))});
}

TEST_F(SimWatchChanges, OfTheCurveAreToldAsAWholeAndSeenAsGains) {
    const Json frequencies = DoneJson({"get", "graphic-eq.frequencies"})["value"];
    const Json before = DoneJson({"get", "graphic-eq.gains"})["value"];
    const Json gains = {6, 4, 2, 1, 0, 0, -1, -2, -1.5, 0};
    const Json flat(10, 0);
    Expect({"eq", "set", "6", "4", "2", "1", "0", "0", "-1", "-2", "-1.5", "0"},
           {Told("graphic-eq", "graphic-eq", {{"frequencies", frequencies}, {"gains", gains}})},
           {Reload("graphic-eq", 1, OneChange("graphic-eq.gains", before, gains))});
    Expect({"eq", "flat"},
           {Told("graphic-eq", "graphic-eq", {{"frequencies", frequencies}, {"gains", flat}})},
           {Reload("graphic-eq", 2, OneChange("graphic-eq.gains", gains, flat))});
}

TEST_F(SimWatchChanges, OfSwitchesAreToldAndSeenWithoutAReload) {
    Expect({"toggle", "dialog-enhancer"}, {Told("switch", "dialog-enhancer.on", false)},
           {Switched("dialog-enhancer", false)});
    Expect({"set", "intelligent-eq", "on"}, {Told("switch", "intelligent-eq.on", true)},
           {Switched("intelligent-eq", true)});
    Expect({"toggle", "enable"}, {Told("enable", "enable", false)}, {Enabled(false)});
    Expect({"set", "enable", "on"}, {Told("enable", "enable", true)}, {Enabled(true)});
    Expect({"set", "enable", "on"}, {}, {});
}

TEST_F(SimWatchChanges, OfProfilesAreToldByTheProfileAlone) {
    Expect({"set", "volume-leveler", "3"}, {ToldValue("volume-leveler", 3)},
           {Reload("volume-leveler", 1, OneChange("volume-leveler", cMovieVolume, 3))});
    Expect({"profile", "create", "p1", "Late evening"}, {ToldTable("Late evening")},
           {Table(1, {{"p1", "Late evening"}})});
    Expect({"profile", "rename", "p1", "Früher Morgen"}, {ToldTable("Früher Morgen")},
           {Table(2, {{"p1", "Früher Morgen"}})});
    Expect({"profile", "use", "p1"}, {Told("profile", "profile", "p1")},
           {Profiled("movie", "p1")});
    Expect({"profile", "use", "music"}, {Told("profile", "profile", "music")},
           {Profiled("p1", "music")});
    Expect({"profile", "delete", "p1"}, {ToldTable(nullptr)}, {Table(3, Json::object())});
    Expect({"demo", "enter", "games"}, {Told("profile", "profile", "demo-games")},
           {Profiled("music", "demo-games")});
    EXPECT_EQ(cRefused, RunCtl({"set", "volume-leveler", "5"}).exitCode);
    Expect({"demo", "force-leave"}, {Told("profile", "profile", "music")},
           {Profiled("demo-games", "music")});
}

TEST_F(SimWatchChanges, OfARevertAreEveryTechnology) {
    Expect({"set", "volume-leveler", "3"}, {ToldValue("volume-leveler", 3)},
           {Reload("volume-leveler", 1, OneChange("volume-leveler", cMovieVolume, 3))});
    Expect({"toggle", "dialog-enhancer"}, {Told("switch", "dialog-enhancer.on", false)},
           {Switched("dialog-enhancer", false)});
    const Json curve = {{"frequencies", DoneJson({"get", "graphic-eq.frequencies"})["value"]},
                        {"gains", DoneJson({"get", "graphic-eq.gains"})["value"]}};
    Expect({"profile", "revert"},
           {ToldValue("volume-leveler", cMovieVolume),
            Told("switch", "dialog-enhancer.on", true), ToldValue("dialog-enhancer", 0.33),
            ToldValue("intelligent-eq", "balanced"), Told("graphic-eq", "graphic-eq", curve),
            ToldValue("headphone-virtualizer", 6.0), ToldValue("speaker-virtualizer", 10.0)},
           {Switched("dialog-enhancer", true),
            Reload("volume-leveler", 2, OneChange("volume-leveler", 3, cMovieVolume)),
            Reload("graphic-eq", 1, Json::array()), Reload("intelligent-eq", 1, Json::array()),
            Reload("dialog-enhancer", 1, Json::array()),
            Reload("headphone-virtualizer", 1, Json::array()),
            Reload("speaker-virtualizer", 1, Json::array()),
            Reload("next-gen-surround", 1, Json::array())});
}

TEST_F(SimWatchChanges, OfWhatOnlyTheEngineUsesAreSeenAndNotTold) {
    Expect({"set", "sampling-period", "20"}, {},
           {{{"event", "period"}, {"cause", "sampling period 50 -> 20"}, {"to", 20}}});
    Expect({"set", "dynamic-switch", "off"}, {},
           {{{"event", "setting"}, {"name", "dynamic-switch"}, {"to", false}}});
    Expect({"set", "peak-limiter", "off"}, {}, {Switched("peak-limiter", false)});
}

TEST_F(SimWatchChanges, OfAnotherProfileLeaveTheActiveOneAsItIs) {
    Expect({"set", "dialog-enhancer", "0.75", "--profile", "games"},
           {ToldValue("dialog-enhancer", 0.33)}, {Reload("dialog-enhancer", 1, Json::array())});
    Expect({"set", "dialog-enhancer", "on", "--profile", "games"}, {}, {});
}

// ---- Lines and repetition ---------------------------------------------------------------

class SimWatchRuns : public SimWatchTest {};

TEST_F(SimWatchRuns, HaveEveryDocumentedEventInItsShape) {
    StartSim({"music", "--write-defaults", "--fault", "hold=0.1", "--fault", "burst=2@0.2"});
    NextSeen("burst");
    NextSeen("reload");
    // One after the other: changes that are seen together come in an order of their own.
    const std::pair<const char*, Words> changes[] = {
        {"switch", {"toggle", "dialog-enhancer"}},
        {"setting", {"set", "dynamic-switch", "off"}},
        {"table", {"profile", "create", "p1", "One"}},
        {"profile", {"profile", "use", "games"}},
        {"period", {"set", "sampling-period", "40"}},
    };
    for (const auto& [event, command] : changes) {
        Done(command);
        NextSeen(event);
    }
    EXPECT_EQ(1u, RunSim({"--fault", "die", "--no-publish"}).exitCode);
    RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
    NextSeen("abandoned");
    NextSeen("enable");
    Sim().PressCtrlC();
    const ToolResult result = Sim().WaitForEnd();
    EXPECT_EQ(0u, result.exitCode);
    CheckEvents(result);
    for (const std::string& event : DocumentedEvents()) {
        if (event != "problem") {
            EXPECT_FALSE(EventOf(result, event).is_null()) << event;
        }
    }
}

TEST_F(SimWatchRuns, TellLevelsThatCannotBeWrittenOnce) {
    StartSim({"silence", "--period", "50"});
    RemoveKey(HKEY_LOCAL_MACHINE, KeySetPath(eKeySetStatic));
    NextSeen("problem");
    EXPECT_TRUE(Sim().IsSilentFor(300));
    Sim().PressCtrlC();
    const ToolResult result = Sim().WaitForEnd();
    EXPECT_EQ(cFailed, result.exitCode) << "its last levels were not published";
    CheckEvents(result);
    EXPECT_LT(1, EventOf(result, "summary")["failures"]);
}

TEST_F(SimWatchRuns, GoOnWithoutTheStoresKeysAndWithNewOnes) {
    for (const Words& arguments : {Words{"silence"}, Words{"silence", "--no-publish"}}) {
        StartSim(arguments);
        RawStore::DeleteKeys();
        EXPECT_EQ("problem", NextSeen()["event"]);
        EXPECT_TRUE(Sim().IsSilentFor(300)) << "told once";
        RawStore::CreateKeys();
        EXPECT_EQ("the settings store is back", NextSeen("ready")["cause"]);
        EXPECT_EQ(KORA4_ENGINE_FULL, RawStore::Number(cStatic, MasterEnablesName()));
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
        EXPECT_EQ("enable", NextSeen()["event"]) << "changes are watched again";
        EndSim();
    }
}

TEST_F(SimWatchRuns, FailAtTheEndWithoutTheStoresKeys) {
    StartSim({"silence", "--clean", "--fault", "wrong-types@1"});
    RemoveKey(HKEY_LOCAL_MACHINE, KeySetPath(eKeySetStatic));
    NextSeen("problem");
    EXPECT_TRUE(Sim().IsSilentFor(1000)) << "a fault that cannot happen is no news";
    Sim().PressCtrlC();
    const ToolResult result = Sim().WaitForEnd();
    EXPECT_EQ(cFailed, result.exitCode) << result;
    CheckEvents(result);
    EXPECT_EQ("interrupted", EventOf(result, "summary")["cause"]);
}

TEST_F(SimWatchRuns, AreTheSameAgainWithTheSameSeed) {
    // Without the settings in the levels, so that no clock is in them either.
    std::ofstream("steady.json", std::ios::binary)
        << R"({"format": "kora4sim-scene", "version": 1, "engine": {"mask": "0x03FF"},
               "records": [{"bands": 20}], "follow-settings": false,
               "spectrum": {"kind": "speech", "levels": [-30, -60], "pauses": 0.2}})";
    struct Outcome {
        Json digest;
        Events told;
        bool operator==(const Outcome&) const = default;
    };
    const auto run = [this](const char* seed) {
        TearDown();
        SetUp();
        StartWatch();
        Outcome outcome;
        for (const char* fault : {"burst=1@0.8", "wrong-types@0.8"}) {
            const ToolResult result = RunSimToItsEnd(
                {"steady.json", "--for", "1", "--period", "20", "--seed", seed, "--fault",
                 "garbage=random@0.3", "--fault", "resume@0.6", "--fault", fault});
            outcome.digest.push_back(EventOf(result, "summary")["digest"]);
            for (Json& event : TakeRest().told)
                outcome.told.push_back(std::move(event));
        }
        return outcome;
    };
    const Outcome first = run("7");
    EXPECT_EQ(7u, first.told.size()) << Json(first.told);
    EXPECT_TRUE(first == run("7"));
    const Outcome other = run("8");
    EXPECT_NE(first.digest, other.digest);
    EXPECT_EQ(first.told.size(), other.told.size());
}

}  // namespace
}  // namespace kora4::test
