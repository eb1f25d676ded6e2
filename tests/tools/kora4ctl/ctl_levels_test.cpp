// SPDX-License-Identifier: MIT
// kora4ctl levels, where the output is not a terminal: a line for each picture.
#include <gmock/gmock.h>

#include <cstring>
#include <limits>

#include "support/raw_store.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

constexpr DWORD cTimedOut = 6;
constexpr char cNoLevels[] = "no levels: no engine has published any (start kora4sim)";

class CtlLevels : public CtlTest {
  protected:
    // One processing object whose bands all have that gain, and an excitation 20 dB below.
    static void Publish(float gain) {
        std::vector<std::uint8_t> blob;
        const auto append = [&blob](const auto number) {
            const std::size_t begin = blob.size();
            blob.resize(begin + sizeof number);
            std::memcpy(blob.data() + begin, &number, sizeof number);
        };
        append(std::uint32_t{0});
        append(std::uint32_t{1});
        blob.resize(blob.size() + 16);
        append(std::uint32_t{KORA4_VISUALIZATION_BANDS});
        append(std::uint32_t{0});
        for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i)
            append(gain);
        for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i)
            append(gain - 20);
        RawStore::SetBytes(cStatic, SettingName(cBlobPid), blob);
    }
    static std::string Twenty(const std::string& number) {
        std::string text;
        for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i)
            text += " " + number;
        return text;
    }
};

TEST_F(CtlLevels, EachPictureIsALine) {
    Publish(-30);
    RunningTool tool("kora4ctl", {"levels", "--count", "2"});
    EXPECT_THAT(tool.NextLine(), MatchesRegex("..:..:......Z  gain" + Twenty("-30.0") +
                                              "  excitation" + Twenty("-14.0")));
    EXPECT_TRUE(tool.IsSilentFor(300));
    Publish(-12.25);
    EXPECT_THAT(tool.NextLine(), HasSubstr("gain" + Twenty("-12.2")));
    EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
}

TEST_F(CtlLevels, JsonHasNumbersAndNullForNone) {
    RunningTool tool("kora4ctl", {"levels", "--json", "--fps", "50"});
    EXPECT_TRUE(HasShape(ParsedJson(tool.NextLine()), R"({"time": "string",
        "frequencies": ["number"], "gains": "null", "excitations": "null", "still": "boolean",
        "error": "null"})"));
    Publish(-30);
    const Json picture = ParsedJson(tool.NextLine());
    EXPECT_TRUE(HasShape(picture, R"({"time": "string", "frequencies": ["number"],
        "gains": ["number"], "excitations": ["number"], "still": "boolean",
        "error": "null"})"));
    EXPECT_EQ(20u, picture["frequencies"].size());
    EXPECT_EQ(65, picture["frequencies"][0]);
    EXPECT_EQ(17326, picture["frequencies"][19]);
    EXPECT_EQ(20u, picture["gains"].size());
    EXPECT_EQ(-30, picture["gains"][19]);
    EXPECT_EQ(-14, picture["excitations"][0]);
    tool.PressCtrlC();
    EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
}

TEST_F(CtlLevels, WithoutAnEngineItSaysSoOnce) {
    RunningTool tool("kora4ctl", {"levels", "--timeout", "0.5"});
    EXPECT_EQ(cNoLevels, tool.NextErrorLine());
    const ToolResult result = tool.WaitForEnd();
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ("", result.out);
    EXPECT_THAT(result.err, MatchesRegex(std::string(cNoLevels, 9) + ".*\n"));
}

TEST_F(CtlLevels, LevelsThatCannotBeReadAreToldInWords) {
    RawStore::SetNumber(cStatic, SettingName(cBlobPid), 7);
    RunningTool tool("kora4ctl", {"levels", "--json"});
    const Json picture = ParsedJson(tool.NextLine());
    EXPECT_TRUE(HasShape(picture, R"({"time": "string", "frequencies": ["number"],
        "gains": "null", "excitations": "null", "still": "boolean", "error": "string"})"));
    EXPECT_THAT(picture["error"].get<std::string>(), HasSubstr("what is stored is not valid"));
    Publish(-6);
    EXPECT_THAT(tool.NextLine(), HasSubstr("\"error\":null"));
}

TEST_F(CtlLevels, NumbersThatAreNoneAreNull) {
    Publish(std::numeric_limits<float>::infinity());
    const ToolResult result = RunCtl({"levels", "--json", "--count", "1"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_TRUE(HasShape(ParsedJson(result.out), R"({"time": "string",
        "frequencies": ["number"], "gains": ["number|null"], "excitations": ["number|null"],
        "still": "boolean", "error": "null"})"));
    EXPECT_TRUE(ParsedJson(result.out)["gains"][0].is_null());
}

TEST_F(CtlLevels, LevelsThatStandStillAreTold) {
    Publish(-30);
    RunningTool words("kora4ctl", {"levels"});
    RunningTool json("kora4ctl", {"levels", "--json"});
    EXPECT_EQ("unchanged for 1 s: nothing plays, or the engine has stopped",
              words.NextErrorLine());
    EXPECT_FALSE(ParsedJson(json.NextLine())["still"].get<bool>());
    const Json still = ParsedJson(json.NextLine());
    EXPECT_TRUE(still["still"].get<bool>());
    EXPECT_EQ(-30, still["gains"][0]);
    EXPECT_TRUE(json.IsSilentFor(300)) << "told once";
    Publish(-20);
    EXPECT_FALSE(ParsedJson(json.NextLine())["still"].get<bool>());
    EXPECT_TRUE(ParsedJson(json.NextLine())["still"].get<bool>()) << "and once more";
}

TEST_F(CtlLevels, PeriodIsTheStoresOne) {
    Publish(-30);
    Done({"set", "sampling-period", "1500"});
    RunningTool tool("kora4ctl", {"levels"});
    tool.NextLine();
    Publish(-20);
    EXPECT_TRUE(tool.IsSilentFor(300));
    EXPECT_THAT(tool.NextLine(), HasSubstr("-20.0"));
}

TEST_F(CtlLevels, TimeoutBeforeTheCountIsTold) {
    const ToolResult result = RunCtl({"levels", "--count", "1", "--timeout", "0.2"});
    EXPECT_EQ(cTimedOut, result.exitCode) << result;
    EXPECT_THAT(result.err, HasSubstr("After 0.2 s, there were only 0 of 1 frames."));
}

TEST_F(CtlLevels, CtrlCAndAReaderThatGoesAwayEndItAsDone) {
    Publish(-30);
    RunningTool interrupted("kora4ctl", {"levels"});
    interrupted.NextLine();
    interrupted.PressCtrlC();
    EXPECT_EQ(cDone, interrupted.WaitForEnd().exitCode);
    RunningTool unread("kora4ctl", {"levels"});
    unread.NextLine();
    unread.CloseOutput();
    Publish(-20);
    EXPECT_EQ(cDone, unread.WaitForEnd().exitCode);
}

TEST_F(CtlLevels, NothingOfATerminalIsInAPipe) {
    Publish(-30);
    const ToolResult result = RunCtl({"levels", "--count", "1"});
    EXPECT_EQ(std::string::npos, result.out.find('\x1b'));
    EXPECT_EQ(1u, result.Lines().size());
}

TEST_F(CtlLevels, WithoutALibraryItSaysSo) {
    Unregister();
    Refused({"levels"}, cNotReady, "kora4ctl register");
}

TEST_F(CtlLevels, WrongUseIsRefused) {
    Refused({"levels", "--fps", "0"}, cUsage, "--fps");
    Refused({"levels", "--fps", "fast"}, cUsage, "--fps");
    Refused({"levels", "--count", "-1"}, cUsage, "--count");
}

}  // namespace
}  // namespace kora4::test
