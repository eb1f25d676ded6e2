// SPDX-License-Identifier: MIT
// Results and lines of the trace in words.
#include <gtest/gtest.h>
#include <kora4/result_codes.hpp>

#include <algorithm>

#include "kora4ctl/explain/explain_text.h"
#include "kora4ctl/explain/explain_values.h"
#include "kora4ctl/terminal/text_layout.h"

namespace kora4::tools {
namespace {

using contract::TraceKind;
using Kind = Explanation::Kind;

// --- codes ---------------------------------------------------------------------------------

TEST(CodeSpellings, AreAllUnderstood) {
    for (const char* text : {"0x80070057", "0X80070057", "80070057h", "80070057H", "80070057",
                             "-2147024809", "2147942487", "E_INVALIDARG", "e_invalidarg",
                             " 0x80070057\r\n", "0x80070057L", "0x80070057UL"})
        EXPECT_EQ(0x80070057u, ParseCode(text)) << text;
    for (const char* text : {"0x00040200", "0x40200", "40200h", "262656",
                             "KORA4_S_DEMO_MODE_ACTIVE", "kora4_s_demo_mode_active"})
        EXPECT_EQ(0x00040200u, ParseCode(text)) << text;
    EXPECT_EQ(0x887D0002u, ParseCode("887d0002"));
    EXPECT_EQ(0u, ParseCode("0"));
    EXPECT_EQ(1u, ParseCode("1"));
    EXPECT_EQ(0x80000000u, ParseCode("-2147483648"));
    EXPECT_EQ(0xFFFFFFFFu, ParseCode("4294967295"));
}

TEST(CodeSpellings, OfSmallNumbersAreErrorsOfWin32) {
    EXPECT_EQ(0x80070005u, ParseCode("5"));
    EXPECT_EQ(0x800703FAu, ParseCode("1018"));
    EXPECT_EQ(0x8007FFFFu, ParseCode("65535"));
    EXPECT_EQ(65536u, ParseCode("65536"));
    EXPECT_EQ(5u, ParseCode("0x5"));
}

TEST(CodeSpellings, ThatAreNoneAreRefused) {
    for (const char* text : {"", "0x", "h", "-", "0x123456789", "4294967296", "-2147483649",
                             "0xg", "12 34", "E_", "1.5", "--1", "deadbee", ">>"})
        EXPECT_FALSE(ParseCode(text).has_value()) << text;
}

TEST(ExplainedCodes, SayMeaningReasonAndNextStep) {
    const Explanation explanation = Explain("KORA4_S_NOT_A_PRESET_PROFILE");
    EXPECT_TRUE(explanation.isKnown);
    EXPECT_EQ(Kind::eResult, explanation.kind);
    EXPECT_EQ(0x00040203u, explanation.code);
    EXPECT_EQ("KORA4_S_NOT_A_PRESET_PROFILE", explanation.name);
    EXPECT_EQ("Nothing changed: the active profile is not a preset profile.",
              explanation.meaning);
    EXPECT_NE(std::string::npos, explanation.why.find("factory values")) << explanation.why;
    EXPECT_NE(std::string::npos, explanation.next.find("kora4ctl profile use"))
        << explanation.next;
}

TEST(ExplainedCodes, AreEveryPublishedOneInEachSpelling) {
    const auto check = [](const ResultCode& result) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%08x", static_cast<unsigned>(result.code));
        for (const std::string& spelling :
             {std::string(result.name), std::string(hex),
              std::to_string(static_cast<std::int32_t>(result.code))}) {
            const Explanation explanation = Explain(spelling);
            EXPECT_TRUE(explanation.isKnown) << spelling;
            EXPECT_EQ(result.name, explanation.name) << spelling;
            EXPECT_EQ(result.code, explanation.code) << spelling;
        }
    };
    std::ranges::for_each(cApiResults, check);
    std::ranges::for_each(cPlatformResults, check);
}

TEST(ExplainedCodes, OfThePlatformAreInItsWords) {
    const Explanation explanation = Explain("0x800700b7");  // exists already
    EXPECT_TRUE(explanation.isKnown);
    EXPECT_TRUE(explanation.name.empty());
    EXPECT_TRUE(explanation.meaning.ends_with('.')) << explanation.meaning;
    EXPECT_LT(10u, explanation.meaning.size());
}

TEST(ExplainedCodes, ThatNobodyKnowsAreSaidToBe) {
    const Explanation explanation = Explain("0xa1234567");
    EXPECT_FALSE(explanation.isKnown);
    EXPECT_EQ(0xA1234567u, explanation.code);
    EXPECT_FALSE(explanation.meaning.empty());
}

TEST(ExplainedCodes, WithAMistypedNameComeWithTheNearest) {
    const Explanation explanation = Explain("E_INVALDARG");
    EXPECT_FALSE(explanation.isKnown);
    EXPECT_EQ(Kind::eResult, explanation.kind);
    ASSERT_FALSE(explanation.nearest.empty());
    EXPECT_EQ("E_INVALIDARG", explanation.nearest.front());
}

TEST(ExplainedCodes, AreFoundInTheTextsOfOtherPrograms) {
    for (const char* text : {"CoCreateInstance failed, hr=0x80040154",
                             "error REGDB_E_CLASSNOTREG in panel.exe", "(0X80040154)"}) {
        const Explanation explanation = Explain(text);
        EXPECT_TRUE(explanation.isKnown) << text;
        EXPECT_EQ("REGDB_E_CLASSNOTREG", explanation.name) << text;
        EXPECT_EQ(text, explanation.input);
    }
}

// Both come of proxies that are missing, too, and nothing else that a client did is wrong then.
TEST(ExplainedCodes, OfMissingProxiesNameTheCallThatRegistersThem) {
    for (const char* code : {"0x80004002", "0x80040154", "0x80040155"}) {
        const Explanation explanation = Explain(code);
        EXPECT_NE(std::string::npos, explanation.why.find("apartment")) << code;
        EXPECT_NE(std::string::npos, explanation.next.find("Kora4RegisterProxies")) << code;
    }
}

// --- lines ---------------------------------------------------------------------------------

TEST(ExplainedLines, HaveWriterMessageAndCategories) {
    const Explanation explanation =
        Explain("KORA4ASL:   42 CKORA4ASL::GetProfileTable:() completed\n");
    EXPECT_TRUE(explanation.isKnown);
    EXPECT_EQ(Kind::eLine, explanation.kind);
    EXPECT_EQ("KORA4ASL", explanation.tag);
    EXPECT_EQ("CKORA4ASL::GetProfileTable", explanation.function);
    EXPECT_EQ("a method of the object that clients use", explanation.writer);
    EXPECT_EQ("() completed", explanation.message);
    EXPECT_EQ(std::vector<std::string>{"messages"}, explanation.categories);
    EXPECT_FALSE(explanation.meaning.empty());
    EXPECT_FALSE(explanation.code.has_value());
}

TEST(ExplainedLines, MayHaveTheirDebuggersWordsInFront) {
    const std::string line = "KORA4ASL: 42 CKORA4ASL::GetProfileTable:() completed";
    const std::string meaning = Explain(line).meaning;
    for (const char* before : {"[1234] ", "00000012\t0.04711\t[1234] ", "12:34:56.789 "}) {
        const Explanation explanation = Explain(before + line);
        EXPECT_EQ(meaning, explanation.meaning) << before;
        EXPECT_EQ("KORA4ASL", explanation.tag) << before;
    }
}

TEST(ExplainedLines, OfAnExitHaveTheResultInWords) {
    const Explanation explanation =
        Explain("KORA4ASL: 99 CKORA4ASL::SetActiveProfile:<< hr: 0x00040202");
    EXPECT_EQ("The function ends with this result.", explanation.meaning);
    EXPECT_EQ(0x00040202u, explanation.code);
    EXPECT_EQ("KORA4_S_NO_SUCH_CUSTOM_PROFILE", explanation.name);
    ASSERT_EQ(1u, explanation.values.size());
    EXPECT_EQ("result", explanation.values[0].kind);
    EXPECT_EQ("00040202", explanation.values[0].text);
    EXPECT_NE(std::string::npos, explanation.values[0].meaning.find("does not exist"));
    EXPECT_NE(std::string::npos, explanation.next.find("profile table")) << explanation.next;
}

// What the first value of a line says.
std::string FirstMeaning(const char* line) {
    const Explanation explanation = Explain(line);
    EXPECT_TRUE(explanation.isKnown) << line;
    return explanation.values.empty() ? "no value" : explanation.values[0].meaning;
}

TEST(ExplainedLines, NameProfilesAndTechnologies) {
    EXPECT_EQ("p2", FirstMeaning("KORA4ASL: 1 CKORA4ASL::CreateCustomProfile:(4)"));
    EXPECT_EQ("music", FirstMeaning("KORA4ASL: 1 CKORA4ASL::SetActiveProfile:>> profile: 1"));
    EXPECT_EQ("no profile",
              FirstMeaning("KORA4ASL: 1 CKORA4ASL::SetActiveProfile:>> profile: -1"));
    EXPECT_EQ("demo-games", FirstMeaning(">> demoProfileID: 242 demoVeltoEnable: 1"));
    EXPECT_EQ("graphic-eq", FirstMeaning("Invalid API technology: 1"));
    EXPECT_EQ("no technology", FirstMeaning("Invalid API technology: 77"));
    EXPECT_EQ("dialog-enhancer", FirstMeaning("eDialogEnhancer set to 0.500000"));
    EXPECT_EQ("speaker-virtualizer", FirstMeaning("eVirtualizerSpkr to Off"));
}

TEST(ExplainedLines, NameTheValuesOfTheStore) {
    EXPECT_EQ("profile",
              FirstMeaning("to RegQueryValueEx of: {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},2"));
    EXPECT_EQ("dialog-enhancer of p2",
              FirstMeaning("to RegQueryValueEx of: {5E0A0403-2C71-4B9E-8F36-D41A07C9B2E5},3"));
    EXPECT_EQ("counts the changes of the dialog enhancer",
              FirstMeaning("to RegQueryValueEx of: {3D95E203-7A1C-4F08-9B64-C2E8510FA93D},0"));
    EXPECT_EQ("not a value of the store",
              FirstMeaning("to RegDeleteValue of: {00000000-7A1C-4F08-9B64-C2E8510FA93D},0"));
}

TEST(ExplainedLines, NameErrorsMasksAndCurves) {
    EXPECT_EQ("success", FirstMeaning("RegSetValue retStatus: 0"));
    EXPECT_TRUE(FirstMeaning("RegSetValue retStatus: 1018").starts_with("ERROR_KEY_DELETED"));
    EXPECT_TRUE(
        FirstMeaning("Error getting security descriptor 5").starts_with("E_ACCESSDENIED"));
    EXPECT_EQ("standard engine", MeaningOfValue(TraceKind::eMask, "021F"));
    EXPECT_EQ("no known configuration", MeaningOfValue(TraceKind::eMask, "3"));
    EXPECT_EQ("warm", MeaningOfValue(TraceKind::eCurve, "5"));
    EXPECT_EQ("no curve", MeaningOfValue(TraceKind::eCurve, "6"));
    EXPECT_EQ("off", MeaningOfValue(TraceKind::eSwitch, "Disabled"));
    EXPECT_EQ("on", MeaningOfValue(TraceKind::eSwitch, "7"));
    EXPECT_EQ("a process attaches", MeaningOfValue(TraceKind::eAttachReason, "00000001"));
    EXPECT_EQ("", MeaningOfValue(TraceKind::eAttachReason, "00000004"));
    EXPECT_EQ("", MeaningOfValue(TraceKind::ePointer, "000000000012F0A0"));
}

TEST(ExplainedLines, OfAnUnknownFunctionAreExplainedByTheirMessage) {
    const Explanation explanation = Explain(
        "KORA4ASL: 1 CKORA4ASL::SomethingNew:Graphic EQ gain band 1 limited to 12.000000 "
        "(was 13.000000).");
    EXPECT_TRUE(explanation.isKnown);
    EXPECT_EQ("CKORA4ASL::SomethingNew", explanation.function);
}

TEST(ExplainedLines, OfAFailedAssertionSayWhichRuleWasBroken) {
    const Explanation known = Explain(
        "KORA4PropKey: 90 KORA4ManagedPatchSet::LoadPresetPatch:KALASSERT failed: "
        "KORA4KeysClient::IsAllowableProfile( profile )");
    EXPECT_EQ("The profile number is not valid.", known.meaning);
    const Explanation other = Explain("KALASSERT failed: something else");
    EXPECT_EQ("A condition that the library relies on did not hold.", other.meaning);
    EXPECT_EQ(std::vector<std::string>{"assertions"}, other.categories);
}

TEST(ExplainedLines, ThatNobodyWritesComeWithTheNearest) {
    const Explanation explanation =
        Explain("KORA4ASL: 1 CKORA4ASL::GetVeltoEnable:Graphic EQ gain limited to -12");
    EXPECT_FALSE(explanation.isKnown);
    EXPECT_EQ(Kind::eLine, explanation.kind);
    EXPECT_EQ("CKORA4ASL::GetVeltoEnable", explanation.function);
    ASSERT_FALSE(explanation.nearest.empty());
    EXPECT_TRUE(explanation.nearest.front().starts_with("Graphic EQ gain band"));
    EXPECT_GE(3u, explanation.nearest.size());
}

TEST(ExplainedLines, ThatAreLikeNothingHaveNothingNear) {
    for (const char* text : {"zzz", "the quick brown fox", ""}) {
        const Explanation explanation = Explain(text);
        EXPECT_FALSE(explanation.isKnown) << text;
        EXPECT_TRUE(explanation.nearest.empty()) << text;
        EXPECT_FALSE(explanation.meaning.empty()) << text;
    }
}

// --- what is printed -------------------------------------------------------------------------

TEST(ExplanationDocuments, OfResultsHaveAFixedShape) {
    EXPECT_EQ(Json::parse(R"({"input": "E_OUTOFMEMORY", "kind": "result", "known": true,
        "code": "0x8007000e", "name": "E_OUTOFMEMORY", "meaning": "No memory.",
        "why": "The process could not get the memory for an object or a text.",
        "next": "Close what takes the memory, or restart the program."})"),
              DocumentOf(Explain("E_OUTOFMEMORY")));
}

TEST(ExplanationDocuments, OfLinesHaveAFixedShape) {
    EXPECT_EQ(Json::parse(R"({"input": "eVolumeLeveler set to 4", "kind": "line",
        "known": true, "code": null, "name": null,
        "meaning": "A client sets the amount of the volume leveler; it is within its limits.",
        "why": null, "next": null, "tag": null, "function": "CKORA4ASL::ValidatePatchField",
        "writer": "a method of the object that clients use",
        "message": "eVolumeLeveler set to %d", "categories": ["messages"],
        "values": [{"kind": "amount", "text": "4", "meaning": null}]})"),
              DocumentOf(Explain("eVolumeLeveler set to 4")));
}

TEST(ExplanationDocuments, OfTheUnknownSayWhatIsNear) {
    const Json document = DocumentOf(Explain("E_INVALDARG"));
    EXPECT_EQ(false, document["known"]);
    EXPECT_EQ("E_INVALIDARG", document["nearest"][0]);
    EXPECT_FALSE(DocumentOf(Explain("E_FAIL")).contains("nearest"));
}

TEST(ExplanationParts, NeverHaveABareNumber) {
    const std::vector<ExplainedPart> parts =
        Parts(Explain("KORA4ASL: 1 A::B:<< hr: 0x80004005"));
    const auto result = std::ranges::find(parts, "result", &ExplainedPart::heading);
    ASSERT_NE(parts.end(), result);
    EXPECT_TRUE(result->text.starts_with("80004005, that is E_FAIL (0x80004005): "))
        << result->text;
}

TEST(WrappedTexts, BreakAtBlanksAndLoseNothing) {
    EXPECT_EQ((std::vector<std::string>{"one two", "three", "a-word-too-long", "four"}),
              Wrapped("one two three a-word-too-long four", 8));
    EXPECT_EQ(std::vector<std::string>{"one two"}, Wrapped("one  two", std::string::npos));
    EXPECT_EQ(std::vector<std::string>{""}, Wrapped("", 8));
}

}  // namespace
}  // namespace kora4::tools
