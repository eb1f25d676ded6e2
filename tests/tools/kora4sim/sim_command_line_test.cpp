// SPDX-License-Identifier: MIT
// The command line of kora4sim: what it takes, what it refuses, and how a run ends.
#include <fstream>

#include "tools/kora4sim/sim_fixture.h"

namespace kora4::test {
namespace {

using testing::HasSubstr;

class SimCommandLine : public SimTest {};

std::string DigestOf(const Texts& arguments) {
    Texts all = arguments;
    all.insert(all.end(), {"--json", "--quiet"});
    const ToolResult result = RunSim(all);
    EXPECT_EQ(0u, result.exitCode) << result;
    return EventOf(result, "summary")["digest"];
}

TEST_F(SimCommandLine, SameSeedPublishesTheSame) {
    const Texts run = {"music", "--period", "10", "--for", "1", "--seed", "7"};
    EXPECT_EQ(DigestOf(run), DigestOf(run));
    EXPECT_NE(DigestOf(run),
              DigestOf({"music", "--period", "10", "--for", "1", "--seed", "8"}));
    EXPECT_NE(DigestOf(run),
              DigestOf({"music", "--period", "10", "--for", "0.9", "--seed", "7"}));
    EXPECT_NE(DigestOf(run),
              DigestOf({"speech", "--period", "10", "--for", "1", "--seed", "7"}));
}

TEST_F(SimCommandLine, SameSeedRepeatsFaultsToo) {
    const Texts run = {"speech",
                       "--period",
                       "10",
                       "--for",
                       "1",
                       "--fault",
                       "garbage=random@0.2",
                       "--fault",
                       "stop@0.5",
                       "--fault",
                       "resume@0.6",
                       "--fault",
                       "counts=records-max@0.8"};
    EXPECT_EQ(DigestOf(run), DigestOf(run));
}

TEST_F(SimCommandLine, LengthIsCountedInPictures) {
    const ToolResult result = RunSim({"--for", "1.02", "--json"});
    const Json summary = EventOf(result, "summary");
    EXPECT_TRUE(HasShape(summary, R"({"time": "string", "event": "=summary", "cause": "=--for",
        "picture": "integer", "pictures": "integer", "failures": "integer",
        "reloads": "integer", "faults": "integer", "digest": "string"})"));
    EXPECT_EQ(21, summary["pictures"]);
    EXPECT_LE(1000u, result.elapsed);
    EXPECT_EQ(10, EventOf(RunSim({"--for", "1", "--period", "100", "--json"}),
                          "summary")["pictures"]);
}

TEST_F(SimCommandLine, ForZeroOnlyPreparesTheStore) {
    const ToolResult result = RunSim({"--for", "0", "--json"});
    EXPECT_EQ(0u, result.exitCode);
    EXPECT_EQ(0, EventOf(result, "summary")["pictures"]);
    EXPECT_EQ(KORA4_ENGINE_FULL, RawStore::Number(cStatic, MasterEnablesName()));
    EXPECT_EQ(S_FALSE, Shown(Client().Get()).result);
}

TEST_F(SimCommandLine, LastLevelsStayUnlessTheyAreCleaned) {
    EXPECT_EQ(0u, RunSim({"--for", "0.1"}).exitCode);
    EXPECT_EQ(S_OK, Shown(Client().Get()).result);
    EXPECT_EQ(0u, RunSim({"--for", "0.1", "--clean"}).exitCode);
    EXPECT_EQ(S_FALSE, Shown(Client().Get()).result);
}

TEST_F(SimCommandLine, WithoutPublishingOnlyLooks) {
    const ToolResult result = RunSim({"--for", "0.2", "--no-publish", "--json"});
    EXPECT_EQ(0, EventOf(result, "summary")["pictures"]);
    EXPECT_EQ(S_FALSE, Shown(Client().Get()).result);
}

TEST_F(SimCommandLine, RecordsReplaceThoseOfTheScene) {
    EXPECT_EQ(0u, RunSim({"--for", "0.1", "--records", "0"}).exitCode);
    EXPECT_TRUE(Shown(Client().Get()).IsFloor());
    EXPECT_EQ(0u, RunSim({"engine-basic", "--for", "0.1", "--records", "7"}).exitCode);
    EXPECT_FALSE(Shown(Client().Get()).IsFloor());
}

TEST_F(SimCommandLine, DefaultsAreWrittenWholeAndAnnounced) {
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, 1, 3), 9);
    const ToolResult result = RunSim({"--write-defaults", "--for", "0", "--json"});
    EXPECT_EQ(0u, result.exitCode) << result;
    const Json defaults = EventOf(result, "defaults");
    EXPECT_TRUE(HasShape(defaults, R"({"time": "string", "event": "=defaults",
        "cause": "=--write-defaults", "picture": "integer", "values": "integer"})"));
    for (const DWORD profile : {0u, 1u, 2u, 3u, 8u, cDemoMovie, cDemoGames}) {
        const bool isMovie = profile % cDemoMovie != 1 && profile % cDemoMovie != 2;
        EXPECT_EQ(isMovie ? cMovieVolume : 0u,
                  RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, profile, 3)))
            << profile;
        EXPECT_EQ(1u, RawStore::Number(cDynamic, PatchName(RawTechnology::eVolume, profile, 0)))
            << profile;
    }
    EXPECT_EQ(L"0.330000",
              RawStore::Text(cStatic, PatchName(RawTechnology::eEnhancement, 8, 3)));
    EXPECT_EQ(L"9.000000", RawStore::Text(cStatic, GlobalPatchName(2, 3)));
    EXPECT_EQ(1u, RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)));
    EXPECT_EQ(1u, RawStore::Number(cDynamic, GlobalTriggerName(2)));
    EXPECT_EQ(50u, RawStore::Number(cStatic, SettingName(cPeriodPid)));
    const ComPtr<IVeltoKORA4API> api = Client();
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    EXPECT_EQ(S_OK, api->GetProfileTable(names));
    EXPECT_EQ(nullptr, names[3]) << "defaults make no custom profiles";
    for (LPWSTR name : names)
        CoTaskMemFree(name);
}

TEST_F(SimCommandLine, QuietLeavesBeginningAndEnd) {
    const ToolResult result =
        RunSim({"--for", "0.2", "--quiet", "--write-defaults", "--fault", "stop"});
    ASSERT_EQ(2u, result.Lines().size()) << result;
    EXPECT_THAT(result.Lines()[0], testing::MatchesRegex("..:..:......Z ready: .*"));
    EXPECT_THAT(result.Lines()[1], HasSubstr(" summary: "));
    EXPECT_EQ("", result.err);
}

TEST_F(SimCommandLine, SeedHas64Bits) {
    const ToolResult result =
        RunSim({"--seed", "18446744073709551615", "--for", "0", "--json"});
    EXPECT_EQ(0u, result.exitCode) << result;
    EXPECT_EQ(18446744073709551615u, EventOf(result, "ready")["seed"].get<std::uint64_t>());
}

TEST_F(SimCommandLine, FaultTakesOneArgumentAndLeavesTheScene) {
    const ToolResult result =
        RunSim({"--fault", "stop", "sweep", "--fault", "resume@0.1", "--for", "0.2", "--json"});
    EXPECT_EQ(0u, result.exitCode) << result;
    EXPECT_EQ("sweep", EventOf(result, "ready")["scene"]);
    EXPECT_EQ(2, EventOf(result, "summary")["faults"]);
}

TEST_F(SimCommandLine, SecondOneWarnsThatTheyDisturbEachOther) {
    RunningSim first;
    const ToolResult second = RunSim({"--for", "0", "--quiet"});
    EXPECT_EQ(0u, second.exitCode) << second;
    EXPECT_EQ(
        "kora4sim: Another kora4sim is running, and both write the engine mask and the "
        "levels. End one of them.\n",
        second.err);
    first.End();
    EXPECT_EQ("", RunSim({"--for", "0"}).err);
}

TEST_F(SimCommandLine, CtrlCEndsWithASummary) {
    RunningSim sim;
    const Json summary = sim.End();
    EXPECT_EQ("interrupted", summary["cause"]);
}

TEST_F(SimCommandLine, CtrlCEndsAWaitForTheMutexToo) {
    RunningSim holder({"--fault", "hold=600"});
    holder.Next("fault");
    RunningTool waiting("kora4sim", {"--fault", "burst=5", "--json", "--for", "600"});
    EXPECT_TRUE(waiting.IsSilentFor(500));
    waiting.PressCtrlC();
    EXPECT_EQ(0u, waiting.WaitForEnd().exitCode);
    holder.End();
}

TEST_F(SimCommandLine, EndsWhenNobodyReadsAnyMore) {
    RunningTool sim("kora4sim", {"--json", "--for", "600"});
    sim.LineWith("ready");
    sim.CloseOutput();
    const ComPtr<IVeltoKORA4API> api = Client();
    EXPECT_TRUE(PumpUntil([&] {
        BOOL isOn = FALSE;
        api->ToggleVeltoEnable(&isOn);
        return !sim.IsRunning();
    }));
    EXPECT_EQ(0u, sim.WaitForEnd().exitCode);
}

TEST_F(SimCommandLine, AppKeysAreMadeWhenTheyAreMissing) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4\\AppKeys");
    ASSERT_FALSE(RawStore::KeyExists(cApp));
    EXPECT_EQ(0u, RunSim({"--for", "0"}).exitCode);
    EXPECT_EQ(L"\"C:\\Program Files\\KORA4\\Demo.exe\" /music",
              RawStore::Text(cApp, SettingName(63)));
}

TEST_F(SimCommandLine, WithoutTheKeysSaysHowToMendThat) {
    RawStore::DeleteKeys();
    const ToolResult result = RunSim({"--for", "1"});
    EXPECT_EQ(4u, result.exitCode) << result;
    EXPECT_EQ("", result.out);
    EXPECT_THAT(result.err, HasSubstr("kora4ctl register"));
}

TEST_F(SimCommandLine, ListHasEveryScene) {
    const ToolResult words = RunSim({"--list"});
    EXPECT_EQ(0u, words.exitCode);
    for (const char* scene : {"music", "speech", "silence", "sweep", "engine-full",
                              "engine-standard", "engine-basic"})
        EXPECT_THAT(words.out, HasSubstr(std::string("\n") + scene + " ")) << scene;
    const ToolResult json = RunSim({"--list", "--json"});
    const Json list = ParsedJson(json.out);
    EXPECT_EQ(7u, list.size());
    EXPECT_TRUE(
        HasShape(list, R"([{"name": "string", "mask": "string", "description": "string"}])"));
}

TEST_F(SimCommandLine, HelpNamesEveryFault) {
    const ToolResult result = RunSim({"--help"});
    EXPECT_EQ(0u, result.exitCode);
    for (const char* text :
         {"  stop ", "garbage=KIND", "counts=KIND", "die[=KIND]", "hold=S", "burst=N",
          "(1 to 100000)", "wrong-types[=KIND]", "profile-garbage[=KIND]", "  resume ",
          "records-max", "half-way", "unterminated", "Exit codes: 0 done"})
        EXPECT_THAT(result.out, HasSubstr(text));
    EXPECT_EQ("7.2.7000.4\n", RunSim({"--version"}).out);
}

TEST_F(SimCommandLine, BadInputIsRefusedInWordsAndChangesNothing) {
    struct Case {
        Texts arguments;
        DWORD exitCode;
        const char* message;
    };
    const Case cases[] = {
        {{"musci"}, 5, "Unknown scene 'musci'. Did you mean 'music'?"},
        {{"nowhere.json"}, 5, "nowhere.json"},
        {{"--fault", "garbige=nan"}, 5, "Did you mean 'garbage'?"},
        {{"--fault", "garbage=nam"}, 5, "Did you mean 'nan'?"},
        {{"--fault", "hold=0"}, 5, "0.001 to 600 seconds"},
        {{"--fault", "stop@soon"}, 5, "expected a number of seconds"},
        {{"--for", "-1"}, 5, "Invalid value '-1' for --for: expected 0 to 86400 seconds."},
        {{"--for", "nan"}, 5, "Invalid value 'nan' for --for: expected 0 to 86400 seconds."},
        {{"--period", "9"},
         5,
         "Invalid value '9' for --period: expected 10 to 10000 milliseconds."},
        {{"--period", "10001"},
         5,
         "Invalid value '10001' for --period: expected 10 to 10000 milliseconds."},
        {{"--records", "65"},
         5,
         "Invalid value '65' for --records: expected 0 to 64 processing objects."},
        {{"--for", "soon"}, 5, "Invalid value 'soon' for --for: expected 0 to 86400 seconds."},
        {{"--period", "0x10"},
         5,
         "Invalid value '0x10' for --period: expected 10 to 10000 milliseconds."},
        {{"--records", "true"},
         5,
         "Invalid value 'true' for --records: expected 0 to 64 processing objects."},
        {{"--recods", "1"}, 2, "Did you mean '--records'?"},
        {{"--seed", "many"},
         5,
         "Invalid value 'many' for --seed: expected 0 to 18446744073709551615."},
        {{"--seed", "-1"},
         5,
         "Invalid value '-1' for --seed: expected 0 to 18446744073709551615."},
        {{"--seed", "18446744073709551616"},
         5,
         "Invalid value '18446744073709551616' for --seed: expected 0 to "
         "18446744073709551615."},
        {{"--fault", "stop", "--fault"}, 2, "--fault"},
        {{"--for"}, 2, "--for"},
        {{"music", "speech"}, 2, "speech"},
    };
    for (const Case& one : cases) {
        const ToolResult result = RunSim(one.arguments);
        EXPECT_EQ(one.exitCode, result.exitCode) << one.arguments.front() << result;
        EXPECT_THAT(result.err, HasSubstr(one.message));
        EXPECT_EQ("", result.out);
    }
    EXPECT_FALSE(RawStore::Number(cStatic, MasterEnablesName()));
}

void WriteFile(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
}

TEST_F(SimCommandLine, SceneFileWithATimelineIsPlayed) {
    WriteFile("timeline.json", R"({"format": "kora4sim-scene", "version": 1,
        "engine": {"mask": 2}, "records": [{"bands": 5}], "spectrum": {"kind": "silence"},
        "timeline": [{"at": 0.2, "fault": "resume"}, {"at": 0.1, "fault": "stop"}]})");
    const ToolResult result = RunSim({"timeline.json", "--for", "0.5", "--json"});
    EXPECT_EQ(0u, result.exitCode) << result;
    EXPECT_EQ("timeline", EventOf(result, "ready")["scene"]);
    EXPECT_TRUE(EventOf(result, "ready")["engine"].is_null());
    EXPECT_EQ("the scene's timeline", EventOf(result, "fault")["cause"]);
    EXPECT_EQ("stop", EventOf(result, "fault")["fault"]);
    const Json summary = EventOf(result, "summary");
    EXPECT_EQ(8, summary["pictures"]);
    EXPECT_EQ(2, summary["faults"]);
}

TEST_F(SimCommandLine, ASceneComesFromStandardInputInAnyEncoding) {
    const std::string scene = R"({"format": "kora4sim-scene", "version": 1,
        "engine": {"mask": 2}, "records": [{"bands": 5}], "spectrum": {"kind": "silence"}})";
    std::string wide = "\xFF\xFE";
    for (const char c : scene)
        wide += {c, '\0'};
    for (const std::string& form : {scene, "\xEF\xBB\xBF" + scene, wide}) {
        const ToolResult result = RunSim({"-", "--for", "0.1", "--json"}, form);
        EXPECT_EQ(0u, result.exitCode) << result;
        EXPECT_EQ("standard input", EventOf(result, "ready")["scene"]);
    }
    const ToolResult result = RunSim({"-", "--for", "0.1"}, "{");
    EXPECT_EQ(5u, result.exitCode) << result;
    EXPECT_THAT(result.err, HasSubstr("standard input: The document is truncated"));
}

TEST_F(SimCommandLine, BadSceneFilesAreRefusedWithTheirPlace) {
    WriteFile("newer.json", R"({"format": "kora4sim-scene", "version": 2})");
    ToolResult result = RunSim({"newer.json", "--for", "1"});
    EXPECT_EQ(5u, result.exitCode);
    EXPECT_THAT(result.err,
                HasSubstr("newer.json: version: version 2 of scenes is not supported"));
    WriteFile("broken.json", "{\n\"format\": \"kora4sim-scene\",\n\"version\": 1");
    result = RunSim({"broken.json", "--for", "1"});
    EXPECT_EQ(5u, result.exitCode);
    EXPECT_THAT(result.err, HasSubstr("broken.json: The document is truncated"));
    EXPECT_FALSE(RawStore::Number(cStatic, MasterEnablesName()));
}

}  // namespace
}  // namespace kora4::test
