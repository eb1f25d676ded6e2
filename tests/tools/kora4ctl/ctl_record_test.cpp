// SPDX-License-Identifier: MIT
// kora4ctl record and replay: what was recorded ends in the same settings when it is made
// again.
#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <random>

#include "registry/registry_store.h"
#include "settings/document.h"
#include "support/raw_store.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

using testing::HasSubstr;

constexpr DWORD cTimedOut = 6;
constexpr char cFile[] = "recording späte Stunde.jsonl";

constexpr char cStartShape[] = R"({"event": "=start", "format": "=kora4-recording",
    "version": "integer", "time": "string", "settings": "object"})";
constexpr char cEventShape[] = R"({"event": "string", "name": "string", "value": "any",
    "offset": "integer",
    "changes?": [{"profile?": "string", "section?": "string", "name": "string", "value": "any"}]})";
constexpr char cEndShape[] = R"({"event": "=end", "offset": "integer", "settings": "object"})";

class CtlRecord : public CtlTest {
  protected:
    void TearDown() override {
        DeleteFileW(L"recording späte Stunde.jsonl");
        CtlTest::TearDown();
    }

    static std::unique_ptr<RunningTool> Record(const Words& more = {}) {
        Words arguments = {"record", cFile};
        arguments.insert(arguments.end(), more.begin(), more.end());
        auto tool = std::make_unique<RunningTool>("kora4ctl", arguments);
        tool->ErrorLineWith("Recording");
        return tool;
    }
    static void End(RunningTool& tool) {
        tool.PressCtrlC();
        const ToolResult result = tool.WaitForEnd();
        EXPECT_EQ(cDone, result.exitCode) << result;
    }
    static std::string Recorded() {
        const HANDLE file =
            CreateFileW(L"recording späte Stunde.jsonl", GENERIC_READ,
                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_NE(INVALID_HANDLE_VALUE, file);
        std::string text(GetFileSize(file, nullptr), '\0');
        DWORD size = 0;
        EXPECT_TRUE(
            ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &size, nullptr));
        CloseHandle(file);
        return text;
    }
    static std::vector<Json> Lines(const std::string& text) {
        std::vector<Json> lines;
        for (const std::string& line : ToolResult{0, text, {}, 0}.Lines())
            lines.push_back(ParsedJson(line));
        return lines;
    }
    // Changes that come together are told as one: waits until one is on disk.
    static void WaitForLines(std::ptrdiff_t count) {
        EXPECT_TRUE(PumpUntil([count] {
            const std::string text = Recorded();
            return std::count(text.begin(), text.end(), '\n') >= count;
        }));
    }
    void SetVolume(ULONG amount) {
        KORA4PatchValueUnion value{};
        value.m_technology = eVolumeLeveler;
        value.m_values.m_volumeSlider = amount;
        EXPECT_EQ(S_OK, Client().SetSimplePatchValue(&value));
    }
};

// One of everything that a client, or somebody at the store, can do.
class RandomChanges {
  public:
    RandomChanges(unsigned seed, IVeltoKORA4API& api) : m_engine(seed), m_api(api) {}

    void Make() {
        switch (Below(11)) {
            case 0:
                m_api.SetActiveProfile(Below(9));
                break;
            case 1:
                m_api.SetVeltoEnable(Below(2));
                break;
            case 2:
                m_api.SetTechnologyOnElseOff(static_cast<KORA4APITechnology>(Below(6)),
                                             Below(2));
                break;
            case 3:
            case 4:
                SetValue();
                break;
            case 5:
                SetCurve();
                break;
            case 6:
                m_api.CreateCustomProfile(3 + Below(6), Name().c_str());
                break;
            case 7:
                m_api.SetCustomProfileName(3 + Below(6), Name().c_str());
                break;
            case 8:
                m_api.DeleteCustomProfile(3 + Below(6));
                break;
            case 9:
                if (Below(2) != 0)
                    m_api.SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE + Below(3),
                                                  Below(2));
                else
                    m_api.ForceRevertFromDemoMode();
                break;
            default:
                WriteBehindTheLibrary();
        }
    }
    int Below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(m_engine); }

  private:
    void SetValue() {
        constexpr KORA4APITechnology cTechnologies[] = {
            eVolumeLeveler, eIntelligentEQ, eDialogEnhancer, eVirtualizerHP, eVirtualizerSpkr};
        KORA4PatchValueUnion value{};
        value.m_technology = cTechnologies[Below(5)];
        if (value.m_technology == eVolumeLeveler || value.m_technology == eIntelligentEQ)
            value.m_values.m_volumeSlider = static_cast<ULONG>(Below(6));
        else
            value.m_values.m_enhancementSlider = static_cast<float>(Below(1000)) / 999.0f;
        m_api.SetSimplePatchValue(&value);
    }
    void SetCurve() {
        GraphicEQData eq{};
        eq.m_bands = static_cast<ULONG>(1 + Below(20));
        for (ULONG i = 0; i < eq.m_bands; ++i) {
            eq.m_freq[i] = static_cast<float>(100 * (i + 1));
            eq.m_gain[i] = static_cast<float>(Below(240) - 120) / 10.0f;
        }
        m_api.SetGraphicEQData(&eq);
    }
    // An inactive profile's value, another encoding, a value that is gone, a plain setting.
    void WriteBehindTheLibrary() {
        const RawTransaction transaction;
        const auto profile = static_cast<std::uint32_t>(Below(9));
        switch (Below(4)) {
            case 0:
                RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, profile, 3),
                                    static_cast<DWORD>(Below(100)));
                break;
            case 1:
                RawStore::SetText(cStatic, PatchName(RawTechnology::eHeadphone, profile, 3),
                                  L"1.50 and more");
                break;
            case 2:
                RawStore::SetNumber(cDynamic,
                                    PatchName(RawTechnology::eEnhancement, profile, 0),
                                    static_cast<DWORD>(Below(3)));
                break;
            default:
                RawStore::SetNumber(cStatic, SettingName(cPeriodPid),
                                    static_cast<DWORD>(20 + Below(100)));
        }
        if (Below(2) != 0)
            RawStore::Bump(TriggerName(RawTechnology::eVolume));
    }
    std::wstring Name() { return L"Näme " + std::to_wstring(Below(100)); }

    std::mt19937 m_engine;
    IVeltoKORA4API& m_api;
};

class CtlRecordRandom : public CtlRecord, public testing::WithParamInterface<unsigned> {};

// How these settings differ, in few words. A whole document would hide the rest of a message.
std::string Differences(const Json& a, const Json& b) {
    return Json::diff(a, b).dump();
}

// With the demo, which a dump leaves out.
Json SettingsNow() {
    tools::RegistryStore store(tools::OpenMode::eRead);
    return tools::Dump(store, tools::Scope::eUser, tools::InDemo::eStored);
}

TEST_P(CtlRecordRandom, ReplayEndsInTheSameSettings) {
    RandomChanges changes(GetParam(), Client());
    for (int i = 0; i < 20; ++i)
        changes.Make();
    const auto tool = Record();
    for (int i = 0; i < 80; ++i) {
        changes.Make();
        // Some come together, some alone.
        if (changes.Below(3) == 0) {
            EXPECT_FALSE(PumpUntil([] { return false; }, nullptr, 15));
        }
    }
    End(*tool);
    const Json end = SettingsNow();
    const std::vector<Json> lines = Lines(Recorded());
    EXPECT_EQ("[]", Differences(end, lines.back().value("settings", Json())));
    EXPECT_LT(20u, lines.size());
    for (int i = 0; i < 20; ++i)
        changes.Make();
    const ToolResult replay = RunCtl({"replay", cFile, "--speed", "0"});
    EXPECT_EQ(cDone, replay.exitCode) << replay;
    EXPECT_EQ("[]", Differences(end, SettingsNow()));
}

INSTANTIATE_TEST_SUITE_P(Seeds, CtlRecordRandom, testing::Range(1u, 7u));

TEST_F(CtlRecord, EachLineHasItsShape) {
    SetVolume(1);
    const auto tool = Record({"--count", "3"});
    SetVolume(9);
    WaitForLines(2);
    EXPECT_EQ(S_OK, Client().CreateCustomProfile(3, L"Later"));
    WaitForLines(3);
    EXPECT_EQ(S_OK, Client().SetActiveProfile(3));
    const ToolResult result = tool->WaitForEnd();
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_THAT(result.err, HasSubstr("Recorded 3 notifications in"));
    const std::vector<Json> lines = Lines(Recorded());
    ASSERT_LE(5u, lines.size());
    EXPECT_TRUE(HasShape(lines.front(), cStartShape));
    EXPECT_EQ(1, lines.front()["settings"]["profiles"]["movie"]["volume-leveler"]);
    EXPECT_TRUE(HasShape(lines.back(), cEndShape));
    EXPECT_EQ("p1", lines.back()["settings"]["general"]["profile"]);
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        if (lines[i]["event"] != "changes") {
            EXPECT_TRUE(HasShape(lines[i], cEventShape)) << lines[i];
        }
    }
}

TEST_F(CtlRecord, LinesAreInTheFileWhenTheyCome) {
    const auto tool = Record();
    EXPECT_EQ(1u, Lines(Recorded()).size());
    SetVolume(9);
    WaitForLines(2);
    tool->Kill();
    RefusedUnchanged({"replay", cFile}, cBadInput, "The recording is incomplete");
}

TEST_F(CtlRecord, StandardOutputCanBeReplayedFromStandardInput) {
    RunningTool tool("kora4ctl", {"record", "-", "--count", "1"});
    tool.ErrorLineWith("Recording");
    SetVolume(9);
    const std::string recording = tool.WaitForEnd().out;
    SetVolume(2);
    EXPECT_EQ("", Done({"replay", "-", "--quiet"}, recording));
    EXPECT_EQ("9\n", Done({"get", "volume-leveler"}));
}

TEST_F(CtlRecord, ChangesAreMadeInTheirTime) {
    const auto tool = Record({"--count", "2"});
    SetVolume(3);
    WaitForLines(2);
    EXPECT_FALSE(PumpUntil([] { return false; }, nullptr, 2000));
    SetVolume(4);
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
    const ToolResult asRecorded = RunCtl({"replay", cFile});
    EXPECT_EQ(cDone, asRecorded.exitCode) << asRecorded;
    EXPECT_LE(2000u, asRecorded.elapsed);
    const ToolResult faster = RunCtl({"replay", cFile, "--speed", "4"});
    EXPECT_EQ(cDone, faster.exitCode) << faster;
    EXPECT_LE(500u, faster.elapsed);
    EXPECT_LT(faster.elapsed, asRecorded.elapsed);
}

TEST_F(CtlRecord, OthersAreToldOfWhatIsReplayed) {
    const auto tool = Record({"--count", "2"});
    SetVolume(3);
    WaitForLines(2);
    SetVolume(5);
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
    RunningTool watch("kora4ctl", {"watch"});
    watch.ErrorLineWith("Watching");
    EXPECT_EQ(cDone, RunCtl({"replay", cFile}).exitCode);
    EXPECT_THAT(watch.LineWith("  5"), HasSubstr("volume-leveler"));
}

TEST_F(CtlRecord, DemoIsEnteredAndLeftAsInTheRecording) {
    EXPECT_EQ(S_OK, Client().SetActiveProfile(1));
    const auto tool = Record();
    EXPECT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, FALSE));
    WaitForLines(3);
    End(*tool);
    EXPECT_EQ(S_OK, Client().RevertFromDemoMode());
    EXPECT_EQ(cDone, RunCtl({"replay", cFile, "--speed", "0"}).exitCode);
    EXPECT_EQ("demo-games\n", Done({"get", "profile"}));
    Done({"demo", "force-leave"});
    EXPECT_EQ("music\n", Done({"get", "profile"}));
    EXPECT_EQ("on\n", Done({"get", "enable"}));
}

TEST_F(CtlRecord, ReplayResultAsJson) {
    const auto tool = Record({"--count", "1"});
    SetVolume(9);
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
    const Json result = DoneJson({"replay", cFile});
    EXPECT_TRUE(HasShape(
        result, R"({"notifications": "integer", "same": "boolean", "differences": ["any"],
                    "written": "integer", "deleted": "integer"})"));
    EXPECT_EQ(1, result["notifications"]);
    EXPECT_EQ(true, result["same"]);
}

TEST_F(CtlRecord, WithoutTheStartOtherSettingsStay) {
    const auto tool = Record({"--count", "1"});
    SetVolume(9);
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
    Done({"set", "enable", "off"});
    const ToolResult result = RunCtl({"replay", cFile, "--no-start", "--json"});
    EXPECT_EQ(cFailed, result.exitCode) << result;
    const Json document = ParsedJson(result.out);
    EXPECT_EQ(false, document["same"]);
    ASSERT_EQ(1u, document["differences"].size()) << result;
    EXPECT_EQ("enable", document["differences"][0]["name"]);
    EXPECT_EQ("9\n", Done({"get", "volume-leveler"}));
    EXPECT_EQ("off\n", Done({"get", "enable"}));
}

TEST_F(CtlRecord, CtrlCEndsAReplayBetweenChanges) {
    const auto tool = Record({"--count", "1"});
    EXPECT_FALSE(PumpUntil([] { return false; }, nullptr, 300));
    SetVolume(9);
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
    RunningTool watch("kora4ctl", {"watch"});
    watch.ErrorLineWith("Watching");
    RunningTool replay("kora4ctl", {"replay", cFile, "--speed", "0.001"});
    // The start is restored, and the one change is minutes away.
    watch.LineWith("volume-leveler");
    replay.PressCtrlC();
    const ToolResult result = replay.WaitForEnd();
    EXPECT_EQ(cFailed, result.exitCode) << result;
    EXPECT_THAT(result.err, HasSubstr("Interrupted"));
}

TEST_F(CtlRecord, BadFilesChangeNothing) {
    const auto tool = Record({"--count", "1"});
    SetVolume(9);
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
    const std::string good = Recorded();
    const std::size_t second = good.find('\n') + 1;
    const std::string start = good.substr(0, second);
    const std::string rest = good.substr(second);
    const auto with = [&good](const std::string& old, const std::string& text) {
        std::string changed = good;
        EXPECT_NE(std::string::npos, changed.find(old)) << old;
        return changed.replace(changed.find(old), old.size(), text);
    };
    const std::string change = "[{\"profile\":\"movie\"";
    SetVolume(2);
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {"", "The recording is empty"},
        {"nothing\n", "Line 1: Not valid JSON: line 1, column"},
        {"[1]\n", "Line 1: expected an object with an 'event'"},
        {"{\"event\": \"start\"}\n", "Line 1: not a recording"},
        {with("\"version\":1,\"time\"", "\"version\":2,\"time\""),
         "Line 1: unsupported version"},
        {start, "The recording is incomplete"},
        {rest, "Line 1: not a recording"},
        {good.substr(0, good.size() / 2), "The document is truncated"},
        {good.substr(0, good.find('\n')) + std::string(1, '\0') + "[\n",
         "Line 1: Not valid JSON: it contains a null character"},
        {std::string(200000, '[') + "\n", "Line 1: The document is nested too deeply"},
        {with("\"scope\":\"user\"", "\"scope\":\"all\""),
         "Line 1: a recording has the settings"},
        {"{\"event\": \"start\", \"event\": \"start\"}\n", "Line 1: event: duplicate member"},
        {good + rest, "unexpected line after the end"},
        {with("\"event\":\"value\"", "\"event\":\"volume\""), "Line 2: unknown event 'volume'"},
        {with("\"event\":\"value\"", "\"event\":\"switch\""), "Line 2: invalid name or value"},
        {with("\"value\":9,\"offset\"", "\"value\":[9],\"offset\""),
         "Line 2: invalid name or value"},
        {with("\"value\":9,\"offset\"", "\"value\":-9,\"offset\""),
         "Line 2: invalid name or value"},
        {with("\"value\":9,\"offset\"", "\"value\":\"loud\",\"offset\""),
         "Line 2: invalid name or value"},
        {with("\"offset\":", "\"offset\":-"), "'offset': expected a number"},
        {with("\"changes\":[", "\"changed\":["), "unknown member 'changed'"},
        {with("\"name\":\"volume-leveler\"", "\"name\":\"volume-levler\""), "Line 2"},
        {with(change, "[{\"section\":\"format\""), "Line 2: a change: 'section' must be"},
        {with(change, "[{\"section\":\"profiles\""), "Line 2: a change: 'section' must be"},
        {with(change, "[{\"section\":\"\""), "Line 2: a change: 'section' must be"},
        {with(change, change + ",\"section\":\"global\""),
         "Line 2: a change: 'profile' and 'section'"},
        {with(change, "[{\"profile\":\"film\""), "Line 2: a change: unknown 'profile'"},
        {with(change, "[{\"profile\":\"\""), "Line 2: a change: unknown 'profile'"},
        {with("\"value\":9,\"offset\"", "\"value\":1e999,\"offset\""), "Line 2: "},
        {with("\"value\":9,\"offset\"",
              "\"value\":" + std::string(20000, '[') + std::string(20000, ']') + ",\"offset\""),
         "Line 2: The document is nested too deeply"},
        {good + std::string(16 * 1024 * 1024, '\n'), "is larger than 16 MB"},
    };
    for (const auto& [text, message] : cases)
        RefusedUnchanged({"replay", "-"}, cBadInput, message, text);
    RefusedUnchanged({"replay", "no such file"}, cBadInput, "no such file");
}

TEST_F(CtlRecord, TimeoutEndsItAndTheRecordingIsWhole) {
    Refused({"record", cFile, "--count", "1", "--timeout", "0.2"}, cTimedOut,
            "After 0.2 s, there were only 0 of 1 notifications.");
    EXPECT_EQ(2u, Lines(Recorded()).size());
    EXPECT_EQ(cDone, RunCtl({"replay", cFile}).exitCode);
    EXPECT_EQ(cDone, RunCtl({"record", cFile, "--timeout", "0"}).exitCode);
}

TEST_F(CtlRecord, FileThatCannotBeMadeIsTold) {
    Refused({"record", "no such folder\\file", "--timeout", "0"}, cFailed,
            "no such folder\\file' cannot be created");
}

TEST_F(CtlRecord, WithoutALibraryItSaysSo) {
    Unregister();
    Refused({"record", cFile}, cNotReady, "kora4ctl register");
}

TEST_F(CtlRecord, WrongUseIsRefused) {
    Refused({"record"}, cUsage, "FILE");
    Refused({"replay"}, cUsage, "FILE");
    Refused({"replay", cFile, "--speed", "-1"}, cUsage, "--speed");
}

}  // namespace
}  // namespace kora4::test
