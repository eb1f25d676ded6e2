// SPDX-License-Identifier: MIT
// kora4ctl explain: everything that the library answers and writes is known to it.
#include <kora4/result_codes.hpp>

#include <fstream>
#include <iterator>

#include "faults/debug_output.h"
#include "faults/trace_scenario.h"
#include "support/trace_capture.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

constexpr char cResultShape[] =
    R"({"input": "string", "kind": "=result", "known": "boolean", "code": "string|null",
        "name": "string|null", "meaning": "string", "why": "string|null",
        "next": "string|null", "nearest?": ["string"]})";
constexpr char cLineShape[] =
    R"({"input": "string", "kind": "=line", "known": "boolean", "code": "string|null",
        "name": "string|null", "meaning": "string|null", "why": "string|null",
        "next": "string|null", "tag": "string|null", "function": "string|null",
        "writer": "string|null", "message": "string|null", "categories": ["string"],
        "values": [{"kind": "string", "text": "string", "meaning": "string|null"}],
        "nearest?": ["string"]})";

constexpr std::uint32_t cEveryCategory = 0x00018F35;
// The categories in which other threads of the process write.
constexpr std::uint32_t cOfOtherThreads = 0x00010900;
constexpr std::uint32_t cLogFiles = 0x01000000;

std::string Hex(std::uint32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(code));
    return text;
}

template <typename Action>
void ForEachResult(Action action) {
    for (const ResultCode& result : cApiResults)
        action(result);
    for (const ResultCode& result : cPlatformResults)
        action(result);
}

// Each line of a log that is not understood.
std::vector<std::string> Unknown(const std::string& log, std::size_t* pLines) {
    const ToolResult result = RunCtl({"explain", "-", "--json"}, log);
    std::vector<std::string> unknown;
    for (const std::string& line : result.Lines()) {
        const Json document = ParsedJson(line);
        EXPECT_TRUE(HasShape(document, cLineShape));
        if (document["known"] != true)
            unknown.push_back(document["input"]);
    }
    *pLines = result.Lines().size();
    EXPECT_EQ(unknown.empty() ? cDone : cBadInput, result.exitCode) << result.err;
    return unknown;
}

TEST(CtlExplain, KnowsEachPublishedCodeByNumberAndByName) {
    ForEachResult([](const ResultCode& published) {
        const ToolResult byNumber = RunCtl({"explain", Hex(published.code)});
        EXPECT_EQ(cDone, byNumber.exitCode) << byNumber;
        EXPECT_NE(std::string::npos, byNumber.out.find(published.name)) << byNumber;
        // A meaning becomes a sentence.
        EXPECT_NE(std::string::npos,
                  byNumber.out.find(std::string(published.meaning).substr(1)))
            << byNumber;
        const ToolResult byName = RunCtl({"explain", published.name});
        EXPECT_EQ(cDone, byName.exitCode) << byName;
        EXPECT_NE(std::string::npos, byName.out.find(Hex(published.code))) << byName;
        EXPECT_NE(std::string::npos, byName.out.find(std::string(published.meaning).substr(1)))
            << byName;
    });
}

TEST(CtlExplain, HasTheShapeOfAResultForEachCode) {
    std::string input;
    ForEachResult(
        [&input](const ResultCode& published) { input += std::string(published.name) + "\n"; });
    const ToolResult result = RunCtl({"explain", "-", "--json"}, input);
    EXPECT_EQ(cDone, result.exitCode) << result;
    const std::vector<std::string> lines = result.Lines();
    EXPECT_EQ(std::size(cApiResults) + std::size(cPlatformResults), lines.size());
    for (const std::string& line : lines)
        EXPECT_TRUE(HasShape(ParsedJson(line), cResultShape));
    const Json one = ParsedJson(RunCtl({"explain", "40200h", "--json"}).out);
    EXPECT_TRUE(HasShape(one, cResultShape));
    EXPECT_EQ("KORA4_S_DEMO_MODE_ACTIVE", one["name"]);
    EXPECT_EQ("0x00040200", one["code"]);
}

TEST(CtlExplain, TakesWordsOfALineWithoutQuotes) {
    const ToolResult result = RunCtl({"explain", "eVolumeLeveler", "set", "to", "4"});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_NE(std::string::npos, result.out.find("volume leveler")) << result;
}

TEST(CtlExplain, TakesSeveralResults) {
    const ToolResult result = RunCtl({"explain", "E_FAIL", "0x00040200", "E_INVALDARG"});
    EXPECT_EQ(cBadInput, result.exitCode) << result;
    for (const char* const name : {"E_FAIL", "KORA4_S_DEMO_MODE_ACTIVE", "E_INVALIDARG"})
        EXPECT_NE(std::string::npos, result.out.find(name)) << result;
    const ToolResult json = RunCtl({"explain", "E_FAIL", "S_OK", "--json"});
    EXPECT_EQ(cDone, json.exitCode) << json;
    const Json documents = ParsedJson(json.out);
    ASSERT_EQ(2u, documents.size());
    for (const Json& document : documents)
        EXPECT_TRUE(HasShape(document, cResultShape));
}

TEST(CtlExplain, SaysOfAnUnknownOneWhatComesNear) {
    const ToolResult name = RunCtl({"explain", "E_INVALDARG"});
    EXPECT_EQ(cBadInput, name.exitCode) << name;
    EXPECT_NE(std::string::npos, name.out.find("E_INVALIDARG")) << name;
    for (const char* const text : {"0xa1234567", "the quick brown fox"}) {
        const ToolResult result = RunCtl({"explain", text, "--json"});
        EXPECT_EQ(cBadInput, result.exitCode) << result;
        const Json document = ParsedJson(result.out);
        EXPECT_EQ(false, document["known"]);
        EXPECT_TRUE(HasShape(document, document["kind"] == "line" ? cLineShape : cResultShape));
        EXPECT_FALSE(document["meaning"].get<std::string>().empty());
    }
    // One among many is enough.
    EXPECT_EQ(cBadInput, RunCtl({"explain", "-"}, "S_OK\nzzz\nS_FALSE\n").exitCode);
    EXPECT_EQ(cDone, RunCtl({"explain", "-"}, "S_OK\n\n   \r\nS_FALSE\r\n").exitCode);
    EXPECT_EQ(cDone, RunCtl({"explain", "-"}, "").exitCode);
}

TEST(CtlExplain, NeedsSomethingToExplain) {
    const ToolResult result = RunCtl({"explain"});
    EXPECT_EQ(cUsage, result.exitCode) << result;
    EXPECT_EQ("", result.out);
}

TEST(CtlExplain, AnswersEachLineAsItComes) {
    RunningTool tool("kora4ctl", {"explain", "-", "--json"});
    for (const char* const name : {"S_OK", "E_FAIL", "E_POINTER"}) {
        tool.Send(std::string(name) + "\n");
        EXPECT_EQ(name, ParsedJson(tool.NextLine())["name"]);
    }
    tool.EndInput();
    EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
}

TEST(CtlExplain, KnowsEachLineOfTheLogFile) {
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    DebugOutput output;
    TraceLog log;
    std::string written;
    // One thread at a time writes, so that the lines of the file are whole.
    DriveFromOneThread((cEveryCategory & ~cOfOtherThreads) | cLogFiles, output, [] {},
                       [&written] {
                           std::ifstream file("C:\\KalLogs\\KalTrace.log", std::ios::binary);
                           written.assign(std::istreambuf_iterator<char>(file), {});
                       });
    log.Clear();
    ASSERT_LT(500u, ParseTrace(written).size());
    std::size_t lines = 0;
    EXPECT_EQ(std::vector<std::string>(), Unknown(written, &lines));
    EXPECT_GE(lines, ParseTrace(written).size());
}

TEST(CtlExplain, KnowsEachLineThatADebuggerHears) {
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    DebugOutput output;
    DriveEveryLine(cEveryCategory, output);
    ASSERT_LT(500u, output.Texts().size());
    std::size_t lines = 0;
    EXPECT_EQ(std::vector<std::string>(), Unknown(output.Log(), &lines));
    EXPECT_GE(lines, output.Texts().size());
}

}  // namespace
}  // namespace kora4::test
