// SPDX-License-Identifier: MIT
// The driver of the tools' tests, tried on a tool that does what it is told.
#include "tools/support/tool_process.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "tools/support/json_shape.h"

namespace kora4::test {
namespace {

constexpr char cTool[] = "kora4_test_trial_tool";

TEST(ToolProcess, ArgumentsArriveAsTheyWereGiven) {
    const std::vector<std::string> arguments = {"plain",     "two words",
                                                "",          "a\"b",
                                                "tail\\",    "two tails\\\\",
                                                "\\\"both",  "C:\\a folder\\\\\"x",
                                                "tab\there", "Späte Müdigkeit",
                                                "夜の音楽",  "*",
                                                "%PATH%",    "a\\b",
                                                "--x=\"1\"", "🎧"};
    std::vector<std::string> expected;
    for (const std::string& argument : arguments)
        expected.push_back("[" + argument + "]");
    std::vector<std::string> words = {"arguments"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const ToolResult result = RunTool(cTool, words);
    EXPECT_EQ(expected, result.Lines());
    EXPECT_EQ(0u, result.exitCode);
}

TEST(ToolProcess, InputOfAnySizePassesUnchanged) {
    std::string input;
    for (int i = 0; i < 40000; ++i)
        input += "line " + std::to_string(i) + " é\n";
    EXPECT_EQ(input, RunTool(cTool, {"input"}, input).out);
    EXPECT_EQ("", RunTool(cTool, {"input"}).out);
}

TEST(ToolProcess, EnvironmentIsTheTestsWithChanges) {
    EXPECT_EQ(
        "[späte Stunde]\n",
        RunTool(cTool, {"variable", "KORA4_TRIAL"}, {}, {{"KORA4_TRIAL", "späte Stunde"}}).out);
    EXPECT_NE("[]\n", RunTool(cTool, {"variable", "PATH"}).out);
    EXPECT_EQ("[]\n", RunTool(cTool, {"variable", "PATH"}, {}, {{"Path", ""}}).out);
}

TEST(ToolProcess, OutputsAndExitCodeAreKeptApart) {
    const ToolResult result = RunTool(cTool, {"both"});
    EXPECT_EQ("result\n", result.out);
    EXPECT_EQ("message\n", result.err);
    EXPECT_EQ(2u, RunTool(cTool, {"unknown"}).exitCode);
}

TEST(ToolProcess, ToolThatDoesNotEndFailsTheTestAndIsEnded) {
    ToolResult result;
    EXPECT_NONFATAL_FAILURE(result = RunTool(cTool, {"hang"}, {}, {}, 2000),
                            "has not ended after 2000 ms");
    EXPECT_EQ(cNoExitCode, result.exitCode);
    EXPECT_EQ("ready\n", result.out);
}

TEST(ToolProcess, LineThatDoesNotComeFailsTheTest) {
    RunningTool tool(cTool, {"hang"});
    EXPECT_EQ("ready", tool.NextLine());
    EXPECT_TRUE(tool.IsSilentFor(100));
    EXPECT_NONFATAL_FAILURE(tool.NextLine(300), "no further line");
    EXPECT_TRUE(tool.IsRunning());
    tool.Kill();
    EXPECT_FALSE(tool.IsRunning());
}

TEST(ToolProcess, ProgramThatIsNotThereFailsTheTest) {
    EXPECT_NONFATAL_FAILURE(RunTool("kora4_no_such_tool", {}), "cannot be started, error 2");
}

TEST(ToolProcess, RunningToolTakesInput) {
    RunningTool tool(cTool, {"input"});
    tool.Send("one\r\ntwo\nthree");
    EXPECT_EQ("one", tool.NextLine());
    EXPECT_EQ("two", tool.NextLine());
    tool.EndInput();
    EXPECT_EQ("three", tool.NextLine());
    EXPECT_EQ("one\r\ntwo\nthree", tool.WaitForEnd().out);
}

TEST(ToolProcess, ToolWhoseReaderGoesAwayEnds) {
    RunningTool tool(cTool, {"flood"});
    EXPECT_EQ("again", tool.NextLine());
    tool.CloseOutput();
    EXPECT_EQ(0u, tool.WaitForEnd().exitCode);
}

TEST(Interrupt, FirstCtrlCIsTheToolsToAnswer) {
    for (int i = 0; i < 3; ++i) {
        RunningTool tool(cTool, {"wait"});
        EXPECT_EQ("ready", tool.NextLine());
        tool.PressCtrlC();
        EXPECT_EQ("interrupted", tool.NextLine());
        EXPECT_EQ(5u, tool.WaitForEnd().exitCode);
    }
}

TEST(Interrupt, SecondCtrlCEndsTheTool) {
    RunningTool tool(cTool, {"wait-on"});
    EXPECT_EQ("ready", tool.NextLine());
    tool.PressCtrlC();
    EXPECT_EQ("interrupted", tool.NextLine());
    EXPECT_TRUE(tool.IsRunning());
    tool.PressCtrlC();
    EXPECT_EQ(cEndedByCtrlC, tool.WaitForEnd().exitCode);
}

TEST(JsonShape, WordsStandForTypes) {
    const Json document = ParsedJson(
        R"({"name": "p1", "gain": -1.5, "count": 3, "on": true, "none": null, "list": [1, 2]})");
    EXPECT_TRUE(HasShape(document, R"({"name": "=p1", "gain": "number", "count": "integer",
        "on": "boolean", "none": "string|null", "list": ["integer"], "more?": "string"})"));
    EXPECT_TRUE(HasShape(document, R"({"name": "string", "*": "any"})"));
    EXPECT_TRUE(HasShape(ParsedJson("[1, \"x\"]"), R"(["number", "string"])"));
    EXPECT_TRUE(HasShape(ParsedJson("[]"), R"(["number"])"));
}

TEST(JsonShape, DifferencesAreFoundAndNamed) {
    const auto difference = [](const char* document, const char* shape) {
        return std::string(HasShape(ParsedJson(document), shape).message());
    };
    EXPECT_EQ("the document has no member 'b'",
              difference(R"({"a": 1})", R"({"a": "any", "b": "any"})"));
    EXPECT_EQ("the document has a member 'b'", difference(R"({"b": 1})", R"({"a?": "any"})"));
    EXPECT_EQ("the document.a[1] is not number but \"x\"",
              difference(R"({"a": [1, "x"]})", R"({"a": ["number"]})"));
    EXPECT_EQ("the document is not integer but 1.5", difference("1.5", "\"integer\""));
    EXPECT_EQ("the document is not =a but \"b\"", difference("\"b\"", "\"=a\""));
    EXPECT_EQ("the document has 3 elements, not 2", difference("[1,2,3]", R"(["any", "any"])"));
    EXPECT_EQ("the document is no array but {}", difference("{}", R"(["any"])"));
    EXPECT_EQ("the document is no object but []", difference("[]", "{}"));
    EXPECT_NONFATAL_FAILURE(ParsedJson("{"), "this is no JSON");
}

}  // namespace
}  // namespace kora4::test
