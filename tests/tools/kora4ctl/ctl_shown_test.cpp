// SPDX-License-Identifier: MIT
// What others have stored never acts on the terminal of who looks at it, from any verb.
#include <filesystem>
#include <fstream>

#include "settings/schema.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

// Clears the screen, in two ways; turns the rest of the line around.
constexpr wchar_t cHostile[] = L"a\x1b[2J\u009B2J\u202Eb";
constexpr char cShown[] = "a\\u001b[2J\\u009b2J\\u202eb";

void ExpectHarmless(const std::string& text) {
    for (const char* part : {"\x1b", "\xC2\x9B", "\xE2\x80\xAE"})
        EXPECT_EQ(std::string::npos, text.find(part)) << text;
}

class CtlShown : public CtlTest {
  protected:
    void SetUp() override {
        CtlTest::SetUp();
        ASSERT_EQ(S_OK, Client().CreateCustomProfile(3, cHostile));
        WriteStoredText(eKeySetApp, pkey::Setting(pkey::cDemoAppCommandPid), cHostile);
    }
    static void ExpectShown(const Words& arguments, const char* shown = cShown) {
        const ToolResult result = RunCtl(arguments);
        ExpectHarmless(result.out + result.err);
        EXPECT_NE(std::string::npos, (result.out + result.err).find(shown)) << result;
    }
};

TEST_F(CtlShown, IsTheNameOfAProfile) {
    for (const Words& arguments :
         {Words{"profile", "table"}, Words{"profile", "show", "p1"},
          Words{"get", "name", "--profile", "p1"}, Words{"describe", "name", "--profile", "p1"},
          Words{"status"}, Words{"dump"}, Words{"profile", "create", "p1", "x"},
          Words{"profile", "rename", "p1", "x"}})
        ExpectShown(arguments);
}

TEST_F(CtlShown, IsACommand) {
    for (const Words& arguments :
         {Words{"get", "demo-app-command"}, Words{"describe", "demo-app-command"},
          Words{"dump", "--all"}})
        ExpectShown(arguments);
    // Cut to its column.
    ExpectShown({"list"}, "a\\u001b[2J");
}

TEST_F(CtlShown, IsEscapedInJsonAndStaysTheSame) {
    const std::string text = Done({"get", "name", "--profile", "p1", "--json"});
    ExpectHarmless(text);
    EXPECT_EQ(
        "a\x1b[2J\xC2\x9B"
        "2J\xE2\x80\xAE"
        "b",
        ParsedJson(text)["value"]);
}

TEST_F(CtlShown, IsALineOfTheTrace) {
    const std::filesystem::path folder = L"C:\\KalLogs";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / L"KalTrace.log", std::ios::binary)
        << "KORA4ASL:    1 \x1b[2J\xC2\x9B"
           "2J hostile\r\n";
    const std::string text = Done({"trace", "show"});
    std::filesystem::remove_all(folder);
    ExpectHarmless(text);
    EXPECT_NE(std::string::npos, text.find("\\u001b[2J")) << text;
}

// A line feed would make two lines of one, and the second could say anything.
TEST_F(CtlShown, IsNotALineOfItsOwn) {
    constexpr wchar_t cForged[] = L"a\nerror: forged";
    ASSERT_EQ(S_OK, Client().SetCustomProfileName(3, cForged));
    WriteValue(HKEY_LOCAL_MACHINE, KeySetPath(eKeySetStatic), cForged, REG_SZ, L"", 2);
    for (const Words& arguments :
         {Words{"get", "name", "--profile", "p1"}, Words{"describe", "name", "--profile", "p1"},
          Words{"profile", "table"}, Words{"profile", "use", "no such one"}, Words{"lint"},
          Words{"lin\nerror: forged"}, Words{"get", "a\nerror: forged"},
          Words{"profile", "rename", "p1", "b\nerror: forged"},
          Words{"profile", "create", "p2", "c\nerror: forged"}}) {
        const ToolResult result = RunCtl(arguments);
        EXPECT_EQ(std::string::npos, ("\n" + result.out + result.err).find("\nerror: forged"))
            << result;
        EXPECT_NE(std::string::npos, (result.out + result.err).find("\\u000aerror: forged"))
            << result;
    }
}

TEST_F(CtlShown, IsWhatWasTyped) {
    const ToolResult result = RunCtl({"get", "\x1b[2J"});
    EXPECT_EQ(cBadInput, result.exitCode) << result;
    ExpectHarmless(result.err);
}

}  // namespace
}  // namespace kora4::test
