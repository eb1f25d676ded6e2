// SPDX-License-Identifier: MIT
// kora4ctl watch: every notification of the library, told as it comes.
#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <memory>

#include "support/raw_store.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

constexpr DWORD cTimedOut = 6;

constexpr char cEventShape[] =
    R"({"time": "string", "event": "string", "name": "string", "value": "any"})";

class CtlWatch : public CtlTest {
  protected:
    // Past its registration.
    static std::unique_ptr<RunningTool> Start(const Words& more = {}) {
        Words arguments = {"watch"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        auto tool = std::make_unique<RunningTool>("kora4ctl", arguments);
        tool->ErrorLineWith("Watching");
        return tool;
    }
    static std::unique_ptr<RunningTool> StartJson() {
        auto tool = Start({"--json"});
        const Json ready = ParsedJson(tool->NextLine());
        EXPECT_TRUE(HasShape(ready, R"({"time": "string", "event": "=ready"})"));
        return tool;
    }
    // The next event but for its time.
    static Json NextEvent(RunningTool& tool) {
        Json event = ParsedJson(tool.NextLine());
        EXPECT_TRUE(HasShape(event, cEventShape));
        EXPECT_THAT(event.value("time", std::string()),
                    MatchesRegex("....-..-..T..:..:......Z"));
        event.erase("time");
        return event;
    }
    void SetVolume(ULONG amount) {
        KORA4PatchValueUnion value{};
        value.m_technology = eVolumeLeveler;
        value.m_values.m_volumeSlider = amount;
        EXPECT_EQ(S_OK, Client().SetSimplePatchValue(&value));
    }
};

TEST_F(CtlWatch, LineHasTimeNameAndValue) {
    const auto tool = Start();
    SetVolume(7);
    EXPECT_THAT(tool->NextLine(), MatchesRegex("..:..:......Z  volume-leveler  7"));
    EXPECT_EQ(S_OK, Client().SetActiveProfile(1));
    EXPECT_THAT(tool->NextLine(), MatchesRegex(".*  profile  music"));
    EXPECT_EQ(S_OK, Client().SetVeltoEnable(FALSE));
    EXPECT_THAT(tool->NextLine(), MatchesRegex(".*  enable  off"));
    EXPECT_EQ(S_OK, Client().CreateCustomProfile(3, L"Späte \"Stunde\""));
    EXPECT_THAT(tool->NextLine(), HasSubstr("  custom-profiles  p1 \"Späte \\\"Stunde\\\"\""));
    EXPECT_EQ(S_OK, Client().DeleteCustomProfile(3));
    EXPECT_THAT(tool->NextLine(), HasSubstr("  custom-profiles  none"));
}

TEST_F(CtlWatch, JsonHasEachEventInItsShape) {
    const auto tool = StartJson();
    EXPECT_EQ(S_OK, Client().SetVeltoEnable(FALSE));
    EXPECT_EQ(ParsedJson(R"({"event": "enable", "name": "enable", "value": false})"),
              NextEvent(*tool));
    EXPECT_EQ(S_OK, Client().SetTechnologyOnElseOff(eVirtualizerHP, FALSE));
    EXPECT_EQ(ParsedJson(
                  R"({"event": "switch", "name": "headphone-virtualizer.on", "value": false})"),
              NextEvent(*tool));
    EXPECT_EQ(S_OK, Client().CreateCustomProfile(8, L"Last"));
    EXPECT_EQ(ParsedJson(R"({"event": "table", "name": "custom-profiles", "value": {"p1": null,
                             "p2": null, "p3": null, "p4": null, "p5": null, "p6": "Last"}})"),
              NextEvent(*tool));
    EXPECT_EQ(S_OK, Client().SetActiveProfile(8));
    EXPECT_EQ(ParsedJson(R"({"event": "profile", "name": "profile", "value": "p6"})"),
              NextEvent(*tool));
}

TEST_F(CtlWatch, JsonHasEachValueAsDumpHasIt) {
    const auto tool = StartJson();
    const struct {
        const char* set;
        const char* value;
    } cases[] = {{"volume-leveler", "3"},
                 {"intelligent-eq", "\"warm\""},
                 {"dialog-enhancer", "0.25"},
                 {"headphone-virtualizer", "1.5"},
                 {"speaker-virtualizer", "2.0"}};
    for (const auto& [name, value] : cases) {
        const Json wanted = ParsedJson(value);
        Done({"set", name, wanted.is_string() ? wanted.get<std::string>() : value});
        const Json event = NextEvent(*tool);
        EXPECT_EQ("value", event["event"]);
        EXPECT_EQ(name, event["name"]);
        EXPECT_EQ(wanted, event["value"]);
    }
}

TEST_F(CtlWatch, CurveComesAsAWhole) {
    const auto tool = StartJson();
    GraphicEQData eq{};
    eq.m_bands = 2;
    eq.m_freq[0] = 100;
    eq.m_freq[1] = 1000;
    eq.m_gain[0] = 1.5f;
    eq.m_gain[1] = -3;
    EXPECT_EQ(S_OK, Client().SetGraphicEQData(&eq));
    EXPECT_EQ(ParsedJson(R"({"event": "graphic-eq", "name": "graphic-eq",
                             "value": {"frequencies": [100, 1000], "gains": [1.5, -3]}})"),
              NextEvent(*tool));
}

TEST_F(CtlWatch, OnlySomeAreReportedAndCounted) {
    const auto tool =
        Start({"--only", "volume,profile", "--only", "graphic-eq.gains", "--count", "3"});
    EXPECT_EQ(S_OK, Client().SetVeltoEnable(FALSE));
    SetVolume(7);
    EXPECT_THAT(tool->NextLine(), HasSubstr("volume-leveler  7"));
    Done({"set", "dialog-enhancer", "0.5"});
    Done({"eq", "set", "1k=1"});
    EXPECT_THAT(tool->NextLine(), HasSubstr("graphic-eq  32:0 "));
    EXPECT_EQ(S_OK, Client().CreateCustomProfile(3, L"x"));
    EXPECT_EQ(S_OK, Client().SetActiveProfile(1));
    EXPECT_THAT(tool->NextLine(), HasSubstr("profile  music"));
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
}

TEST_F(CtlWatch, WhatIsNeverReportedIsNotWaitedFor) {
    for (const char* const name : {"trace-flags", "peak-limiter", "sampling-period", "version"})
        Refused({"watch", "--only", name}, cBadInput, "not reported");
    Refused({"watch", "--only", "volum-leveler"}, cBadInput, "volume-leveler");
    Refused({"watch", "--only"}, cUsage, "--only");
    EXPECT_EQ(cDone, RunCtl({"watch", "--timeout", "0", "--only", "name"}).exitCode);
}

TEST_F(CtlWatch, SnapshotFollowsAChangeOfTheProfile) {
    Done({"set", "dialog-enhancer", "0.75", "--profile", "music"});
    const auto tool = Start({"--json", "--snapshot", "--count", "1"});
    tool->NextLine();
    EXPECT_EQ(S_OK, Client().SetActiveProfile(1));
    EXPECT_EQ("profile", NextEvent(*tool)["event"]);
    Json values;
    for (const std::string& line : tool->WaitForEnd().Lines()) {
        const Json event = ParsedJson(line);
        if (event["event"] != "snapshot")
            continue;
        EXPECT_TRUE(HasShape(event, cEventShape));
        values[event["name"].get<std::string>()] = event["value"];
    }
    EXPECT_EQ(12u, values.size()) << values;
    EXPECT_EQ(0.75, values["dialog-enhancer"]);
    EXPECT_EQ(false, values["speaker-virtualizer.on"]);
    EXPECT_EQ(10u, values["graphic-eq"]["gains"].size());
}

TEST_F(CtlWatch, ProgramIsRunWithTheChangeInItsEnvironment) {
    const auto tool = Start({"--exec", "cmd /c set KORA4_", "--count", "2"});
    SetVolume(7);
    tool->ErrorLineWith("KORA4_EVENT=value");
    EXPECT_THAT(tool->ErrorLineWith("KORA4_JSON="),
                HasSubstr(R"("event":"value","name":"volume-leveler","value":7})"));
    tool->ErrorLineWith("KORA4_NAME=volume-leveler");
    tool->ErrorLineWith("KORA4_TIME=");
    tool->ErrorLineWith("KORA4_VALUE=7");
    // A name that a shell would take for a command.
    EXPECT_EQ(S_OK, Client().CreateCustomProfile(3, L"x\" & echo planted & \"%PATH%"));
    EXPECT_THAT(tool->ErrorLineWith("KORA4_VALUE="),
                HasSubstr(R"(=p1 "x\" & echo planted & \"%PATH%")"));
    const ToolResult result = tool->WaitForEnd();
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(2u, result.Lines().size()) << "its output is not a result\n" << result;
    EXPECT_THAT(result.err, testing::Not(HasSubstr("\nplanted")));
}

TEST_F(CtlWatch, ProgramThatFailsIsNamedAndTheNextOneRuns) {
    const auto tool = Start({"--exec", "cmd.exe /c exit 3", "--count", "2"});
    SetVolume(7);
    tool->ErrorLineWith("ended with exit code 3.");
    SetVolume(8);
    tool->ErrorLineWith("ended with exit code 3.");
    EXPECT_EQ(cDone, tool->WaitForEnd().exitCode);
}

TEST_F(CtlWatch, CtrlCEndsItWhileTheProgramRuns) {
    const auto tool = Start({"--exec", "cmd /c echo begins & pause"});
    SetVolume(7);
    tool->NextLine();
    tool->ErrorLineWith("begins");
    tool->PressCtrlC();
    EXPECT_EQ(cDone, tool->WaitForEnd(10000).exitCode);
}

TEST_F(CtlWatch, ProgramsThatThereAreNotAndBatchFilesAreRefused) {
    Refused({"watch", "--exec", "no-such-program x"}, cBadInput, "'no-such-program'");
    Refused({"watch", "--exec", "\"no such program\" x"}, cBadInput, "'no such program'");
    for (const char* const nothing : {"", " "})
        Refused({"watch", "--exec", nothing}, cBadInput, "no program ''");
    std::ofstream("ctl_watch_test.bat") << "@echo off";
    Refused({"watch", "--exec", ".\\ctl_watch_test.bat"}, cBadInput, "batch file");
    std::remove("ctl_watch_test.bat");
}

TEST_F(CtlWatch, CountEndsIt) {
    const auto tool = Start({"--count", "2"});
    SetVolume(1);
    tool->NextLine();
    SetVolume(2);
    const ToolResult result = tool->WaitForEnd();
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(2u, result.Lines().size()) << result;
}

TEST_F(CtlWatch, TimeoutEndsIt) {
    const ToolResult result = RunCtl({"watch", "--timeout", "0.3"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_LE(300u, result.elapsed);
    EXPECT_EQ("", result.out);
}

TEST_F(CtlWatch, TimeoutBeforeTheCountIsTold) {
    Refused({"watch", "--count", "2", "--timeout", "0.3"}, cTimedOut,
            "After 0.3 s, there were only 0 of 2 notifications.");
}

TEST_F(CtlWatch, QuietSaysNothing) {
    const ToolResult result = RunCtl({"watch", "--quiet", "--timeout", "0"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ("", result.err);
}

TEST_F(CtlWatch, CtrlCEndsItAsDone) {
    const auto tool = Start();
    tool->PressCtrlC();
    const ToolResult result = tool->WaitForEnd();
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ("", result.out);
}

TEST_F(CtlWatch, ReaderThatGoesAwayEndsItQuietly) {
    const auto tool = Start();
    tool->CloseOutput();
    SetVolume(4);
    const ToolResult result = tool->WaitForEnd();
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ(1u,
              static_cast<std::size_t>(std::count(result.err.begin(), result.err.end(), '\n')))
        << result;
}

TEST_F(CtlWatch, UnreadableTableIsToldInWords) {
    const auto tool = StartJson();
    Client();
    {
        const RawTransaction transaction;
        RawStore::SetNumber(cStatic, ProfileNameName(3), 1);
        RawStore::Bump(SettingName(cTablePid));
    }
    const Json event = NextEvent(*tool);
    EXPECT_EQ("table", event["event"]);
    EXPECT_TRUE(event["value"].is_null()) << event;
}

TEST_F(CtlWatch, NumberThatIsNoProfileIsToldAsItIs) {
    const auto tool = StartJson();
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 77);
    EXPECT_EQ(ParsedJson(R"({"event": "profile", "name": "profile", "value": 77})"),
              NextEvent(*tool));
}

TEST_F(CtlWatch, EndsWithASentenceWhenTheKeysAreDeleted) {
    for (const KORA4KeySet keySet : {eKeySetStatic, eKeySetDynamic}) {
        const auto tool = Start();
        RemoveKey(HKEY_LOCAL_MACHINE, KeySetPath(keySet));
        const ToolResult result = tool->WaitForEnd();
        EXPECT_EQ(cNotReady, result.exitCode) << result;
        EXPECT_THAT(result.err, HasSubstr("The store's keys were deleted"));
        EXPECT_EQ(S_OK, LoadedLibrary().RegisterServer());
    }
}

TEST_F(CtlWatch, WithoutALibraryItSaysSo) {
    Unregister();
    Refused({"watch"}, cNotReady, "kora4ctl register");
}

TEST_F(CtlWatch, WrongUseIsRefused) {
    Refused({"watch", "--count", "0"}, cUsage, "--count");
    Refused({"watch", "--timeout", "-1"}, cUsage, "--timeout");
    Refused({"watch", "--cuont", "1"}, cUsage, "Did you mean '--count'");
    Refused({"watch", "something"}, cUsage, "something");
}

}  // namespace
}  // namespace kora4::test
