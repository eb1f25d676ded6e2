// SPDX-License-Identifier: MIT
// The published tables and the sources they speak of.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <regex>
#include <set>

#include "checks/documents_sources.h"
#include "checks/trace_statements.h"
#include "contract/general_settings.h"
#include "contract/messages/trace_categories.h"
#include "contract/messages/trace_messages.h"
#include "contract/results.h"
#include "faults/trace_line_table.h"

namespace kora4::test {
namespace {

using contract::TraceMatch;
using contract::TraceMessage;

// --- results and settings --------------------------------------------------------------------

TEST(PublishedResults, HaveEveryCodeOfThePublicHeader) {
    for (const char* prefix : {"APOERR_", "KORA4_S_"}) {
        for (const NamedNumber& code : MacrosOf("sdk/include/kora4api_codes.h", prefix)) {
            const contract::Result* const pResult = contract::FindResult(code.number);
            ASSERT_NE(nullptr, pResult) << code.name;
            EXPECT_EQ(code.name, pResult->name);
        }
    }
}

template <typename Visit>
void ForEachResult(Visit visit) {
    std::ranges::for_each(contract::cApiResults, visit);
    std::ranges::for_each(contract::cPlatformResults, visit);
}

TEST(PublishedResults, AreEachPublishedOnceUnderOneName) {
    std::set<std::uint32_t> codes;
    std::set<std::string> names;
    ForEachResult([&](const contract::Result& result) {
        EXPECT_TRUE(codes.insert(result.code).second) << result.name;
        EXPECT_TRUE(names.insert(result.name).second) << result.name;
        EXPECT_EQ(&result, contract::FindResult(result.code)) << result.name;
    });
    EXPECT_EQ(nullptr, contract::FindResult(0x12345678));
}

// Words for people: a meaning that can stand inside a sentence, and whole sentences around it.
TEST(PublishedResults, SayWhatTheyMeanAndWhy) {
    ForEachResult([](const contract::Result& result) {
        const std::string meaning = result.meaning, why = result.why, next = result.next;
        EXPECT_FALSE(meaning.empty() || meaning.ends_with('.')) << result.name;
        EXPECT_TRUE(why.ends_with('.')) << result.name;
        EXPECT_TRUE(next.empty() || next.ends_with('.')) << result.name;
    });
}

TEST(PublishedSettings, HaveNamesAndAddressesOfTheirOwn) {
    for (const contract::GeneralSetting& setting : contract::cGeneralSettings) {
        EXPECT_EQ(&setting, contract::FindGeneralSetting(setting.name)) << setting.name;
        EXPECT_EQ(&setting, contract::FindGeneralSetting(setting.key)) << setting.name;
    }
    EXPECT_EQ(nullptr, contract::FindGeneralSetting("volume"));
}

// --- messages of the trace -------------------------------------------------------------------

std::vector<const TraceMessage*> Rows() {
    std::vector<const TraceMessage*> rows;
    contract::ForEachTraceMessage([&](const TraceMessage& row) { rows.push_back(&row); });
    return rows;
}

std::string NameOf(const TraceMessage& row) {
    return std::string(row.function ? row.function : "any") + ":" + row.text;
}

// The tables of technologies are asserted by a macro; one row speaks for all of them.
constexpr char cTablesFit[] = "KALASSERT failed: %s == %s[ (UINT) %s ]";
// The frame of the API object's methods; the reasons are statements of their own.
constexpr char cRefusal[] = "**** Error: %s";
// Rows for what the trace itself writes for any function.
const std::set<std::string> cOfAnyFunction = {">>", "<<", "<< hr: 0x%08x",
                                              "KALASSERT failed: %s"};

bool IsOf(const TraceMessage& row, const std::string& function) {
    return row.function == nullptr || row.function == function;
}

std::string NameOf(const TraceStatement& statement, const std::string& function) {
    return statement.place + ": " + function + ":" + statement.text;
}

// The lines, each with its function, that no row has to the letter.
std::vector<std::string> WithoutMeaning(const std::vector<TraceStatement>& statements) {
    std::vector<std::string> without;
    for (const TraceStatement& statement : statements) {
        if (statement.functions.empty())
            without.push_back(NameOf(statement, "nobody"));
        for (const std::string& function : statement.functions) {
            const bool isKnown = std::ranges::any_of(Rows(), [&](const TraceMessage* pRow) {
                return statement.text == pRow->text && IsOf(*pRow, function);
            });
            if (!isKnown && statement.text != cTablesFit)
                without.push_back(NameOf(statement, function));
        }
    }
    return without;
}

TEST(PublishedTrace, HasAMeaningForEveryLineOfEveryFunction) {
    const std::vector<TraceStatement> statements = AllTraceStatements();
    EXPECT_LT(140u, statements.size());
    EXPECT_EQ(std::vector<std::string>{}, WithoutMeaning(statements));
}

TEST(PublishedTrace, FindsOutALineWithoutAMeaning) {
    const auto findings = [](const std::string& source) {
        return WithoutMeaning(
            TraceStatementsIn({{"src/new.cpp",
                                "Site cSite{cTag, \"CKORA4ASL::GetActiveProfile\"}; "
                                "Method cMethod{\"CKORA4ASL::SetVeltoEnable\"};" +
                                    source}}));
    };
    const auto one = [](const std::string& finding) {
        return std::vector<std::string>{"src/new.cpp:" + finding};
    };
    EXPECT_EQ(
        one("2: CKORA4ASL::GetActiveProfile:something new %d"),
        findings("\nKALTRACE(trace::eMessages, cSite, \"something \" \"new %d\\n\", f(1));"));
    EXPECT_EQ(one("1: CKORA4ASL::GetActiveProfile:KALASSERT failed: a(b, c) != NULL"),
              findings("KALASSERT(cSite, a(b,\n  c) != NULL);"));
    EXPECT_EQ(one("1: CKORA4ASL::GetActiveProfile:KALASSERT failed: !\"New\""),
              findings(R"(KALASSERT_TEXT(cSite, a, "!\"New\"");)"));
    EXPECT_EQ(one("1: CKORA4ASL::SetVeltoEnable:**** Error: pNew is Null"),
              findings("{.badArgument = \"pNew is Null\"}"));
    EXPECT_EQ(one("1: CKORA4ASL::SetVeltoEnable:>> new: %d"),
              findings("{.entry = \"%s: %4d %s:>> new: %d\\n\"}"));
    EXPECT_TRUE(findings("KALTRACE(trace::eEntry, cSite, \">>\\n\");").empty());
    EXPECT_TRUE(findings("KALTRACE(trace::eMessages, cSite, \" is %s\\n\", a);").empty());
}

TEST(PublishedTrace, FindsOutALineOfAFunctionThatDoesNotWriteIt) {
    const auto findings = [](const std::string& source) {
        return WithoutMeaning(TraceStatementsIn({{"src/new.cpp", source}}));
    };
    const std::string helper =
        "void Tell(int a, const Site& site) { KALTRACE(m, site, \" is %s\\n\", a); }\n";
    const std::string profile = "Site cSite{cTag, \"CKORA4ASL::GetActiveProfile\"};\n";
    const std::string table = "Method cMethod{\"CKORA4ASL::GetProfileTable\"};\n";
    EXPECT_TRUE(findings(helper + profile + "Tell(1, cSite);").empty());
    EXPECT_EQ(
        std::vector<std::string>{"src/new.cpp:1: CKORA4ASL::GetProfileTable: is %s"},
        findings(helper + profile + "Tell(1, cSite);" + table + "Tell(2, cMethod.site);"));
    EXPECT_EQ(std::vector<std::string>{"src/new.cpp:1: nobody: is %s"}, findings(helper));
    EXPECT_EQ(std::vector<std::string>{"src/new.cpp:2: CKORA4ASL::GetProfileTable: is %s"},
              findings(table + "KALTRACE(m, cMethod.site, \" is %s\\n\", a);"));
}

// Whether a statement writes what a row says, in the row's function. A row of a function may
// be an instance of a more general statement; the frame's refusal is none, for what its text
// stands for are statements of their own.
bool Writes(const TraceStatement& statement, const TraceMessage& row) {
    if (row.function == nullptr)
        return statement.text == row.text;
    if (!statement.functions.contains(row.function))
        return false;
    if (statement.text == row.text)
        return true;
    const TraceMessage asWritten{nullptr, statement.text.c_str(), 0, "", "", "", ""};
    contract::TraceValues values;
    return statement.text != cRefusal &&
           contract::MatchTraceText(asWritten, row.text, &values) != 0;
}

bool IsWritten(const TraceMessage& row) {
    static const std::vector<TraceStatement> statements = AllTraceStatements();
    return std::ranges::any_of(
        statements, [&](const TraceStatement& statement) { return Writes(statement, row); });
}

TEST(PublishedTrace, HasNoMessageThatItsFunctionDoesNotWrite) {
    for (const TraceMessage* pRow : Rows()) {
        EXPECT_TRUE(IsWritten(*pRow) || cOfAnyFunction.contains(pRow->text)) << NameOf(*pRow);
    }
}

TEST(PublishedTrace, FindsOutAMessageThatItsFunctionDoesNotWrite) {
    const auto isWritten = [](const std::string& method, const char* text) {
        const std::string function = "CKORA4ASL::" + method;
        return IsWritten({function.c_str(), text, trace::eMessages, "", "", "", ""});
    };
    EXPECT_TRUE(isWritten("GetVeltoEnable", "**** Error: pVeltoEnable is Null"));
    EXPECT_FALSE(isWritten("ToggleVeltoEnable", "**** Error: pVeltoEnable is Null"));
    EXPECT_TRUE(isWritten("GetVeltoEnable", "**** Error: APOERR_NOT_INITIALIZED"));
    for (const char* silent : {"ToggleVeltoEnable", "GetTechnologyMasterEnables", "Initialize"})
        EXPECT_FALSE(isWritten(silent, "**** Error: APOERR_NOT_INITIALIZED")) << silent;
    EXPECT_TRUE(isWritten("GetVeltoDemoAppCommand", "**** Error: E_INVALIDARG"));
    EXPECT_FALSE(isWritten("GetSimplePatchValue", "**** Error: E_INVALIDARG"));
    EXPECT_TRUE(isWritten("GetActiveProfile", " is Movie"));
    EXPECT_FALSE(isWritten("SetActiveProfile", " is Movie"));
}

TEST(PublishedTrace, NamesTheCategoriesOfTheStatements) {
    const std::map<std::string, std::uint32_t> masks = {
        {"trace::eResults", trace::eResults},
        {"trace::eSecurity", trace::eSecurity},
        {"trace::eAssertions", trace::eAssertions},
        {"trace::eModuleEvents", trace::eModuleEvents},
        {"trace::eProcessTracking", trace::eProcessTracking},
        {"trace::eMessages", trace::eMessages},
        {"trace::eVisualizationDump", trace::eVisualizationDump},
        {"trace::eNotificationThreads", trace::eNotificationThreads},
        {"trace::eEntry", trace::eEntry},
        {"trace::eExitResult", trace::eExitResult},
        {"trace::eStoreEntry", trace::eStoreEntry},
        {"trace::eStoreExitResult", trace::eStoreExitResult},
        {"trace::eMonitorEntry", trace::eMonitorEntry},
        {"trace::eMonitorExitResult", trace::eMonitorExitResult},
        {"trace::eModuleEntry", trace::eModuleEntry},
        {"trace::eModuleExitResult", trace::eModuleExitResult},
        {"trace::eTrackerEntry", trace::eTrackerEntry},
        {"trace::eTrackerStartUp", trace::eTrackerStartUp},
        {"cThreadExit", trace::eAllEntryExit | trace::eResults},
    };
    for (const TraceStatement& statement : AllTraceStatements()) {
        ASSERT_TRUE(masks.contains(statement.mask)) << statement.place;
        for (const TraceMessage* pRow : Rows())
            if (Writes(statement, *pRow) && pRow->mask != 0) {
                EXPECT_EQ(masks.at(statement.mask), pRow->mask)
                    << statement.place << " " << NameOf(*pRow);
            }
    }
}

// Each side of the lock has a meaning of its own, and neither is the begin or end of a method.
TEST(PublishedTrace, TellsTheProcessTrackerFromTheMethods) {
    std::set<std::string> meanings;
    for (const char* function : {"ProcessTrack::Enter", "ProcessTrack::Leave"}) {
        const TraceMatch match = contract::FindTraceMessage(
            function, "processID: 0x00000010 threadID: 0x00000014 threadProcID: 0x00000010");
        ASSERT_NE(nullptr, match.pMessage);
        const std::string meaning = match.pMessage->meaning;
        EXPECT_NE(std::string::npos, meaning.find("lock of an object's callback")) << meaning;
        meanings.insert(meaning);
    }
    EXPECT_EQ(2u, meanings.size());
}

// What the formatter knows; anything else would be written as it stands.
TEST(TraceStatements, HandOverAValueForEachConversionThatTheTraceKnows) {
    const std::regex known(R"(%(?:0?\d*l?[dux]|0?\d*X|\d*s|ls|S|p|\d*f))");
    for (const TraceStatement& statement : AllTraceStatements()) {
        const auto begin =
            std::sregex_iterator(statement.text.begin(), statement.text.end(), known);
        const auto conversions =
            static_cast<std::size_t>(std::distance(begin, std::sregex_iterator()));
        EXPECT_EQ(std::ranges::count(statement.text, '%'),
                  static_cast<std::ptrdiff_t>(conversions))
            << statement.place << " " << statement.text;
        if (statement.values) {
            EXPECT_EQ(conversions, *statement.values) << statement.place;
        }
    }
}

TEST(PublishedTrace, NamesEachValueOfItsMessages) {
    for (const TraceMessage* pRow : Rows()) {
        const std::string kinds = pRow->values;
        const auto commas =
            static_cast<std::size_t>(std::count(kinds.begin(), kinds.end(), ','));
        EXPECT_EQ(contract::detail::ConversionsIn(pRow->text), kinds.empty() ? 0 : commas + 1)
            << NameOf(*pRow);
        EXPECT_EQ(std::string::npos, ("," + kinds + ",").find(",,", 1)) << NameOf(*pRow);
        EXPECT_FALSE(std::string(pRow->meaning).empty()) << NameOf(*pRow);
    }
}

// --- written lines ---------------------------------------------------------------------------

// The table's line with something in place of what differs from run to run.
std::string Written(const std::string& pattern) {
    std::string message;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '%') {
            message += pattern[i];
            continue;
        }
        switch (pattern[++i]) {
            case 'p':
                message += "00000000012A0F40";
                break;
            case 'x':
                message += "0x80004005";
                break;
            case 'h':
                message += "12a0f40";
                break;
            case 'k':
                message += "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},2";
                break;
            case 'd':
                message += "4711";
                break;
            default:
                message += "anything at all";
        }
    }
    return message;
}

TEST(WrittenTraceLines, HaveExactlyOneBestMeaning) {
    const std::vector<TableLine> table = TraceLineTable();
    ASSERT_FALSE(table.empty());
    for (const TableLine& line : table) {
        const std::string message = Written(line.text);
        const TraceMatch match = contract::FindTraceMessage(line.function, message);
        ASSERT_NE(nullptr, match.pMessage) << line.function << ":" << message;
        EXPECT_EQ(1u, match.equals) << line.function << ":" << message;
        if (match.pMessage->mask != 0) {
            EXPECT_EQ(line.mask, match.pMessage->mask) << line.function << ":" << message;
        }
    }
}

TEST(WrittenTraceLines, AreTakenApartWithTheirHeadAndWhateverStandsBeforeIt) {
    for (const TableLine& line : TraceLineTable()) {
        const std::string message = Written(line.text);
        for (const std::string before : {"", "[1234] ", "00000012\t0.4711\t[1234] "}) {
            contract::TraceHead head;
            const std::string whole =
                before + line.tag + ":   81 " + line.function + ":" + message;
            ASSERT_TRUE(contract::ParseTraceHead(whole, &head)) << whole;
            EXPECT_EQ(line.tag, head.tag);
            EXPECT_EQ("81", head.line);
            EXPECT_EQ(line.function, head.function);
            EXPECT_EQ(message, head.message);
        }
    }
}

TEST(WrittenTraceLines, WithoutAHeadAreNotTakenApart) {
    for (const char* text :
         {"", ":", "a: b c:d", "TAG: 12", "TAG: 12 ", "TAG: 12 F", "TAG: x F:m", "TAG: 12F:m",
          ": 12 F:m", "TAG: 12 F::", "TAG: 12 F:::m"}) {
        contract::TraceHead head;
        EXPECT_FALSE(contract::ParseTraceHead(text, &head)) << text;
        EXPECT_TRUE(head.tag.empty() && head.message.empty()) << text;
    }
}

TEST(WrittenTraceLines, AreFoundByTheirMessageAloneWhereItIsLikeNoOther) {
    const TraceMatch match = contract::FindTraceMessage(
        "", "Graphic EQ gain band 3 limited to 12.000000 (was nan).");
    ASSERT_NE(nullptr, match.pMessage);
    EXPECT_EQ(1u, match.equals);
    ASSERT_EQ(3u, match.values.count);
    EXPECT_EQ("band", match.values.kinds[0]);
    EXPECT_EQ("3", match.values.texts[0]);
    EXPECT_EQ("12.000000", match.values.texts[1]);
    EXPECT_EQ("nan", match.values.texts[2]);
}

TEST(WrittenTraceLines, OfSeveralFunctionsAreSaidToBe) {
    EXPECT_EQ(2u, contract::FindTraceMessage("", "(4)").equals);
    EXPECT_EQ(1u, contract::FindTraceMessage("CKORA4ASL::DeleteCustomProfile", "(4)").equals);
}

TEST(WrittenTraceLines, TellValuesOfOneKindFromThoseOfAnother) {
    const auto functionOf = [](const char* message) {
        const TraceMatch match = contract::FindTraceMessage("", message);
        EXPECT_EQ(1u, match.equals) << message;
        return std::string(match.pMessage->function);
    };
    EXPECT_EQ("CKORA4ASL::GetActiveProfile", functionOf(" is Music\t(1)\tProfile"));
    EXPECT_EQ("CKORA4ASL::GetVeltoEnable", functionOf("is Enabled"));
    EXPECT_EQ("CKORA4ASL::SetActiveProfile", functionOf(" to P2:   (4) "));
    EXPECT_EQ("CKORA4ASL::SetDemoProfileAndEnable",
              functionOf(" to Demo Games (0xF2) Profile"));
    EXPECT_EQ("CKORA4ASL::SetVeltoEnable", functionOf(" to Disabled"));
    EXPECT_EQ("CKORA4ASL::SetTechnologyOnElseOff", functionOf("eVirtualizerSpkr to Off"));
}

TEST(WrittenTraceLines, OfSeveralLinesAreFoundByEachOfThem) {
    for (const char* line :
         {"Process startup info:", "       processID: 0x000004d2", "    handle count: 41",
          "       lpDesktop: No DT", "         lpTitle: C:\\panel.exe"}) {
        const TraceMatch match = contract::FindTraceMessage("", line);
        ASSERT_NE(nullptr, match.pMessage) << line;
        EXPECT_STREQ("ProcessTrack::ProcessTrack", match.pMessage->function) << line;
    }
    const TraceMatch match = contract::FindTraceMessage("", "    handle count: 41");
    ASSERT_EQ(1u, match.values.count);
    EXPECT_EQ("count", match.values.kinds[0]);
    EXPECT_EQ("41", match.values.texts[0]);
}

TEST(WrittenTraceLines, ThatNobodyWroteAreNotFound) {
    for (const char* text : {
             "", "nonsense", "<< hr: 0x8000", "<< hr: 0xzzzzzzzz", "set to x",
             "= 4.5 milliseconds", "<< hr: 0x80004005 "  // a blank more is fine
         }) {
        const bool isKnown = contract::FindTraceMessage("", text).pMessage != nullptr;
        EXPECT_EQ(std::string(text).ends_with("80004005 "), isKnown) << text;
    }
}

// --- tags and writers ------------------------------------------------------------------------

TEST(PublishedTags, AreThoseOfTheLines) {
    std::set<std::string> written, published;
    for (const TableLine& line : TraceLineTable())
        written.insert(line.tag);
    for (const contract::TraceTag& tag : contract::cTraceTags)
        published.insert(tag.tag);
    EXPECT_EQ(written, published);
}

TEST(PublishedWriters, AreThoseOfTheSites) {
    const std::vector<std::string> functions = AllTracedFunctions();
    EXPECT_LT(100u, functions.size());
    std::set<std::string> used;
    for (const std::string& function : functions) {
        const contract::TraceWriter* const pWriter = contract::FindTraceWriter(function);
        ASSERT_NE(nullptr, pWriter) << function;
        used.insert(pWriter->name);
    }
    EXPECT_EQ(std::size(contract::cTraceWriters), used.size());
    for (const TraceMessage* pRow : Rows())
        if (pRow->function) {
            EXPECT_TRUE(std::ranges::count(functions, pRow->function)) << NameOf(*pRow);
        }
}

}  // namespace
}  // namespace kora4::test
