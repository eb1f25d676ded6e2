// SPDX-License-Identifier: MIT
// Where verbs read from and print to: "-" is the stream, and texts come in any encoding that
// programs write.
#include <algorithm>
#include <filesystem>

#include "base/text.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

class CtlStreams : public CtlTest {};

// The forms of a text that programs and shells write.
std::vector<std::string> FormsOf(const std::string& text) {
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const wchar_t unit : tools::Widen(text)) {
        little += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    }
    return {text, "\xEF\xBB\xBF" + text, little, big};
}

TEST_F(CtlStreams, ADashIsTheStreamForEveryVerbThatTakesAFile) {
    const std::string document = Done({"dump"});
    EXPECT_EQ(document, Done({"dump", "-"}));
    EXPECT_EQ(document, Done({"dump", "-", "--json"}));
    EXPECT_EQ(Done({"eq", "export"}), Done({"eq", "export", "-"}));
    EXPECT_EQ(cDone, RunCtl({"diff", "-"}, document).exitCode);
    EXPECT_NE("", Done({"record", "-", "--timeout", "0"}));
    Refused({"lint", "--fix", "--backup", "-"}, cBadInput, "--backup requires a file");
    EXPECT_FALSE(std::filesystem::exists(L"-"));
}

TEST_F(CtlStreams, EveryVerbReadsEachEncoding) {
    const std::string document = Done({"dump"});
    const std::string recording = Done({"record", "-", "--timeout", "0"});
    for (const std::string& form : FormsOf(document))
        EXPECT_EQ(cDone, RunCtl({"diff", "-"}, form).exitCode);
    for (const std::string& form : FormsOf("GraphicEQ: 20 0; 20000 0\n"))
        EXPECT_EQ(cDone, RunCtl({"eq", "import", "-"}, form).exitCode);
    for (const std::string& form : FormsOf(recording))
        EXPECT_EQ(cDone, RunCtl({"replay", "-"}, form).exitCode);
    for (const std::string& form : FormsOf("E_FAIL\r\nS_OK\r\n"))
        EXPECT_EQ(cDone, RunCtl({"explain", "-"}, form).exitCode);
}

TEST_F(CtlStreams, WithJsonAnErrorIsALineOfJson) {
    struct Case {
        Words arguments;
        DWORD exitCode;
        const char* error;
    };
    const Case cases[] = {
        {{"set", "volume-leveler", "11"}, cBadInput, "out of range"},
        {{"stauts"}, cUsage, "Unknown command 'stauts'"},
        {{"get"}, cUsage, "Missing argument NAME."},
        {{"profile", "use", "p6"}, cRefused, "KORA4_S_NO_SUCH_CUSTOM_PROFILE"},
    };
    for (const Case& one : cases) {
        Words arguments = one.arguments;
        arguments.insert(arguments.begin(), "--json");
        const ToolResult result = RunCtl(arguments);
        EXPECT_EQ(one.exitCode, result.exitCode) << result;
        EXPECT_EQ("", result.out);
        const Json document = ParsedJson(result.err);
        EXPECT_TRUE(HasShape(
            document, R"({"error": "string", "next": "string|null", "exitCode": "integer"})"));
        EXPECT_EQ(one.exitCode, document["exitCode"]);
        EXPECT_NE(std::string::npos, document["error"].get<std::string>().find(one.error))
            << document;
        EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n'));
    }
    // Behind two dashes it is an argument.
    EXPECT_NE(std::string::npos,
              RunCtl({"profile", "use", "--", "--json"}).err.find("Unknown profile '--json'"));
}

TEST_F(CtlStreams, HelpOfACommandIsAVerbToo) {
    EXPECT_EQ(Done({"--help"}), Done({"help"}));
    EXPECT_EQ(Done({"get", "--help"}), Done({"help", "get"}));
    EXPECT_EQ(Done({"profile", "create", "--help"}), Done({"help", "profile", "create"}));
    EXPECT_EQ(Done({"help", "get"}), DoneJson({"help", "get"})["help"]);
    Refused({"help", "gte"}, cUsage, "Did you mean 'get'");
    Refused({"help", "get", "name"}, cUsage, "Unknown command 'get name'");
}

}  // namespace
}  // namespace kora4::test
