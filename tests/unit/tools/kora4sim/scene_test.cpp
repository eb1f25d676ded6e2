// SPDX-License-Identifier: MIT
// Scene files: what is read from them, and what is said of bad ones.
#include "kora4sim/scene/scene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "base/failure.h"
#include "contract/engine_masks.h"
#include "contract/value_kind.h"

namespace kora4::tools::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr char cFile[] = "some\\folder\\mine.json";

constexpr char cWhole[] = R"({
  "format": "kora4sim-scene", "version": 1, "description": "What it is",
  "engine": { "mask": "0x021f", "commands": { "demo-app": "demo.exe /x", "profile-editor": "" } },
  "records": [ { "bands": 20 }, { "bands": 0, "offset": -6.5 } ],
  "spectrum": { "kind": "speech", "levels": [-20, -30.5], "swing": 9, "rate": 3, "noise": 1,
                "pauses": 0.5 },
  "follow-settings": false,
  "timeline": [ { "at": 3, "fault": "resume" },
                { "at": 0.5, "fault": "garbage", "argument": "nan" },
                { "at": 1, "fault": "burst", "argument": 20 } ]
})";

// The smallest scene, with something in place of one of its members.
std::string With(const std::string& member, const std::string& value) {
    std::string text = "{";
    const std::pair<const char*, const char*> members[] = {
        {"format", "\"kora4sim-scene\""},
        {"version", "1"},
        {"engine", "{\"mask\": 1}"},
        {"records", "[{\"bands\": 4}]"},
        {"spectrum", "{\"kind\": \"silence\"}"},
    };
    bool isThere = false;
    for (const auto& [name, usual] : members) {
        isThere |= member == name;
        text += std::string(text.size() > 1 ? ", " : "") + "\"" + name +
                "\": " + (member == name ? value : usual);
    }
    return text + (isThere ? "" : ", \"" + member + "\": " + value) + "}";
}

// What is said of a scene; empty when it is taken.
std::string Refusal(const std::string& text) {
    try {
        ReadScene(text, cFile);
    } catch (const Failure& failure) {
        EXPECT_EQ(ExitCode::eBadInput, failure.Code()) << text;
        const std::string what = failure.what();
        EXPECT_EQ(0u, what.rfind(cFile, 0)) << what;
        EXPECT_EQ('.', what.find("Did you mean") == std::string::npos ? what.back() : '.');
        return what;
    }
    return {};
}

TEST(ReadScene, TakesEveryMember) {
    const Scene scene = ReadScene(cWhole, cFile);
    EXPECT_EQ("mine", scene.name);
    EXPECT_EQ("What it is", scene.description);
    EXPECT_EQ(0x021Fu, scene.mask);
    ASSERT_TRUE(scene.commands);
    const Commands expected = {{"profile-editor", ""}, {"demo-app", "demo.exe /x"}};
    EXPECT_EQ(expected, *scene.commands);
    ASSERT_EQ(2u, scene.records.size());
    EXPECT_EQ(20u, scene.records[0].bands);
    EXPECT_EQ(0, scene.records[0].offset);
    EXPECT_EQ(0u, scene.records[1].bands);
    EXPECT_EQ(-6.5, scene.records[1].offset);
    EXPECT_EQ(SpectrumKind::eSpeech, scene.spectrum.kind);
    EXPECT_THAT(scene.spectrum.levels, ElementsAre(-20, -30.5));
    EXPECT_EQ(9, scene.spectrum.swing);
    EXPECT_EQ(3, scene.spectrum.rate);
    EXPECT_EQ(1, scene.spectrum.noise);
    EXPECT_EQ(0.5, scene.spectrum.pauses);
    EXPECT_FALSE(scene.followsSettings);
}

TEST(ReadScene, PutsTheTimelineIntoItsOrder) {
    const std::vector<Fault> timeline = ReadScene(cWhole, cFile).timeline;
    ASSERT_EQ(3u, timeline.size());
    EXPECT_EQ("garbage=nan", timeline[0].Text());
    EXPECT_EQ(500u, timeline[0].atMilliseconds);
    EXPECT_EQ(FaultCause::eTimeline, timeline[0].cause);
    EXPECT_EQ("burst=20", timeline[1].Text());
    EXPECT_EQ(20, timeline[1].number);
    EXPECT_EQ("resume", timeline[2].Text());
}

TEST(ReadScene, DoesWithWhatIsNeeded) {
    const Scene scene = ReadScene(With("version", "1"), cFile);
    EXPECT_FALSE(scene.commands);
    EXPECT_TRUE(scene.followsSettings);
    EXPECT_TRUE(scene.timeline.empty());
    EXPECT_EQ(1u, scene.mask);
}

TEST(ReadScene, RefusesWhatIsNoJsonAndSaysWhere) {
    EXPECT_EQ(std::string(cFile) + ": The document is empty.", Refusal(""));
    EXPECT_THAT(Refusal("{\n  \"format\": \"kora4sim-scene\",\n  oops\n}"),
                HasSubstr("Not valid JSON: line 3, column "));
    EXPECT_THAT(Refusal(std::string(cWhole).substr(0, 200)), HasSubstr("truncated"));
    EXPECT_THAT(Refusal(std::string(cWhole) + "x"), HasSubstr("Not valid JSON"));
    EXPECT_THAT(Refusal(With("version", "1e400")), HasSubstr("number overflow"));
    EXPECT_THAT(Refusal(With("engine", "{\"mask\": 1e400}")), HasSubstr("number overflow"));
    EXPECT_THAT(Refusal(With("engine", std::string(20000, '['))), HasSubstr("too deeply"));
}

TEST(ReadScene, RefusesMembersThatStandTwice) {
    EXPECT_THAT(Refusal("{\"format\": \"kora4sim-scene\", \"version\": 1, \"version\": 1}"),
                HasSubstr("version: duplicate member."));
}

TEST(ReadScene, RefusesOtherFormatsAndVersions) {
    EXPECT_THAT(Refusal("[]"), HasSubstr("not a scene"));
    EXPECT_THAT(Refusal("{}"), HasSubstr("not a scene"));
    EXPECT_THAT(Refusal(With("format", "\"kora4-settings\"")),
                HasSubstr("format: not a scene"));
    EXPECT_THAT(Refusal(With("version", "2")),
                HasSubstr("version: version 2 of scenes is not supported; this program reads "
                          "version 1."));
    EXPECT_THAT(Refusal(With("version", "\"1\"")), HasSubstr("whole number"));
}

TEST(ReadScene, NamesTheNearestMember) {
    EXPECT_THAT(Refusal(With("spektrum", "{}")), HasSubstr("spektrum: unknown member. "));
    EXPECT_THAT(Refusal(With("time", "[]")), HasSubstr("Did you mean 'timeline'?"));
    EXPECT_THAT(Refusal("{\"format\": \"kora4sim-scene\", \"version\": 1, \"records\": []}"),
                HasSubstr("member 'engine' is missing"));
    EXPECT_THAT(Refusal(With("records", "[{\"bands\": 1, \"gain\": 2}]")),
                HasSubstr("records[0].gain: unknown member"));
}

TEST(ReadScene, RefusesBadEngines) {
    for (const char* mask : {"\"3FF\"", "\"0x\"", "\"0x1G\"", "\"0x123456789\"", "-1", "1.5",
                             "4294967296", "null", "true"})
        EXPECT_THAT(Refusal(With("engine", std::string("{\"mask\": ") + mask + "}")),
                    HasSubstr("engine.mask: expected a text like '0x03ff'"))
            << mask;
    EXPECT_THAT(Refusal(With("engine", "{\"mask\": 1, \"commands\": {\"editor\": \"x\"}}")),
                HasSubstr("engine.commands.editor: unknown member"));
    EXPECT_THAT(Refusal(With("engine", "{\"mask\": 1, \"commands\": {\"demo-app\": 7}}")),
                HasSubstr("engine.commands.demo-app: expected a text."));
    const std::string tooLong(cMaxTextChars + 1, 'x');
    EXPECT_THAT(Refusal(With("engine", "{\"mask\": 1, \"commands\": {\"demo-app\": \"" +
                                           tooLong + "\"}}")),
                HasSubstr("at most 2047 characters"));
    EXPECT_EQ("", Refusal(With("engine", "{\"mask\": 1, \"commands\": {\"demo-app\": \"" +
                                             tooLong.substr(1) + "\"}}")));
}

TEST(ReadScene, RefusesBadRecords) {
    EXPECT_THAT(Refusal(With("records", "7")), HasSubstr("records: expected an array."));
    for (const char* bands : {"-1", "65", "2.5", "\"20\"", "null", "1e300"})
        EXPECT_THAT(Refusal(With("records",
                                 std::string("[{\"bands\": 1}, {\"bands\": ") + bands + "}]")),
                    HasSubstr("records[1].bands: expected a whole number from 0 to 64."))
            << bands;
    EXPECT_THAT(Refusal(With("records", "[{\"bands\": 1, \"offset\": 21}]")),
                HasSubstr("records[0].offset: expected a number from -100 to 20."));
    std::string many = "[";
    for (int i = 0; i < 65; ++i)
        many += std::string(i == 0 ? "" : ",") + "{\"bands\": 1}";
    EXPECT_THAT(Refusal(With("records", many + "]")),
                HasSubstr("records: expected 0 to 64 elements, got 65."));
}

TEST(ReadScene, RefusesBadSpectra) {
    EXPECT_THAT(Refusal(With("spectrum", "{\"kind\": \"speach\"}")),
                HasSubstr("spectrum.kind: unknown value 'speach'"));
    EXPECT_THAT(Refusal(With("spectrum", "{}")), HasSubstr("member 'kind' is missing"));
    EXPECT_THAT(Refusal(With("spectrum", "7")), HasSubstr("spectrum: expected an object."));
    EXPECT_THAT(Refusal(With("spectrum", "{\"kind\": \"silence\", \"noise\": 2}")),
                HasSubstr("spectrum.noise: unknown member"));
    EXPECT_THAT(Refusal(With("spectrum", "{\"kind\": \"sweep\", \"levels\": []}")),
                HasSubstr("spectrum.levels: unknown member"));
    EXPECT_THAT(Refusal(With("spectrum", "{\"kind\": \"sweep\", \"seconds\": 0}")),
                HasSubstr("spectrum.seconds: expected a number from 0.1 to 3600."));
    EXPECT_THAT(Refusal(With("spectrum", "{\"kind\": \"music\"}")),
                HasSubstr("member 'levels' is missing"));
    EXPECT_THAT(Refusal(With("spectrum", "{\"kind\": \"music\", \"levels\": []}")),
                HasSubstr("spectrum.levels: expected 1 to 128 elements, got 0."));
    EXPECT_THAT(Refusal(With("spectrum", "{\"kind\": \"music\", \"levels\": [-10, 1]}")),
                HasSubstr("spectrum.levels[1]: expected a number from -144 to 0."));
    EXPECT_THAT(
        Refusal(With("spectrum", "{\"kind\": \"music\", \"levels\": [-1], \"pauses\": 0.1}")),
        HasSubstr("spectrum.pauses: unknown member"));
}

TEST(ReadScene, RefusesBadTimelines) {
    EXPECT_THAT(Refusal(With("timeline", "[{\"at\": 1, \"fault\": \"stopp\"}]")),
                HasSubstr("timeline[0]: Unknown fault 'stopp'. "));
    EXPECT_THAT(Refusal(With("timeline", "[{\"at\": -1, \"fault\": \"stop\"}]")),
                HasSubstr("timeline[0].at: expected a number from 0 to 86400."));
    EXPECT_THAT(Refusal(With("timeline", "[{\"at\": 1}]")),
                HasSubstr("timeline[0]: member 'fault' is missing"));
    EXPECT_THAT(
        Refusal(With("timeline", "[{\"at\": 1, \"fault\": \"hold\", \"argument\": 0}]")),
        HasSubstr("timeline[0]: Invalid argument '0' for the fault 'hold'"));
    EXPECT_THAT(
        Refusal(With("timeline", "[{\"at\": 1, \"fault\": \"die\", \"argument\": []}]")),
        HasSubstr("timeline[0].argument: expected a text."));
    EXPECT_THAT(Refusal(With("follow-settings", "1")),
                HasSubstr("follow-settings: expected true or false."));
}

TEST(SceneFolder, HasTheScenesThatAreShipped) {
    EXPECT_THAT(SceneFolder().Names(),
                ElementsAre("engine-basic", "engine-full", "engine-standard", "music",
                            "silence", "speech", "sweep"));
    for (const std::string& name : SceneFolder().Names()) {
        const Scene scene = SceneFolder().Load(name);
        EXPECT_EQ(name, scene.name);
        EXPECT_FALSE(scene.description.empty()) << name;
        EXPECT_TRUE(scene.commands) << name;
        EXPECT_FALSE(scene.records.empty()) << name;
    }
}

TEST(SceneFolder, HasASceneForEachKnownEngine) {
    std::vector<std::uint32_t> masks;
    for (const char* name : {"engine-full", "engine-standard", "engine-basic"})
        masks.push_back(SceneFolder().Load(name).mask);
    std::vector<std::uint32_t> known;
    for (const EngineConfiguration& configuration : cEngineConfigurations)
        known.push_back(configuration.mask);
    EXPECT_EQ(known, masks);
}

TEST(SceneFolder, TakesNamesInAnyCaseAndPaths) {
    EXPECT_EQ("music", SceneFolder().Load("Music").name);
    EXPECT_EQ("music", SceneFolder().Load(SceneFolder().Path() + "\\music.json").name);
}

std::string LoadRefusal(const SceneFolder& folder, const std::string& name) {
    try {
        folder.Load(name);
    } catch (const Failure& failure) {
        EXPECT_EQ(ExitCode::eBadInput, failure.Code());
        return failure.what();
    }
    return {};
}

TEST(SceneFolder, AnswersUnknownNamesWithTheNearest) {
    EXPECT_EQ("Unknown scene 'musi'. Did you mean 'music'?",
              LoadRefusal(SceneFolder(), "musi"));
    EXPECT_THAT(LoadRefusal(SceneFolder(), "xyzzy"),
                HasSubstr("Expected one of: engine-basic, engine-full"));
    EXPECT_THAT(LoadRefusal(SceneFolder(), "nowhere\\music.json"), HasSubstr("nowhere"));
    EXPECT_THAT(LoadRefusal(SceneFolder("C:\\no such folder"), "music"),
                HasSubstr("There are no scenes in 'C:\\no such folder'."));
}

}  // namespace
}  // namespace kora4::tools::sim
