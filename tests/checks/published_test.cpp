// The published tables and the sources they speak of.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "checks/documents_sources.h"
#include "checks/trace_statements.h"
#include "faults/trace_line_table.h"
#include "published/general_settings.h"
#include "published/results.h"
#include "published/trace_categories.h"
#include "published/trace_messages.h"

namespace kora4::test {
namespace {

using published::TraceMatch;
using published::TraceMessage;

// --- results and settings --------------------------------------------------------------------

TEST(PublishedResults, HaveEveryCodeOfThePublicHeader) {
    for (const char* prefix : {"APOERR_", "KORA4_S_"}) {
        for (const NamedNumber& code : MacrosOf("sdk/include/kora4api_codes.h", prefix)) {
            const published::Result* const pResult = published::FindResult(code.number);
            ASSERT_NE(nullptr, pResult) << code.name;
            EXPECT_EQ(code.name, pResult->name);
        }
    }
}

template <typename Visit>
void ForEachResult(Visit visit) {
    std::ranges::for_each(published::cApiResults, visit);
    std::ranges::for_each(published::cPlatformResults, visit);
}

TEST(PublishedResults, AreEachPublishedOnceUnderOneName) {
    std::set<std::uint32_t> codes;
    std::set<std::string> names;
    ForEachResult([&](const published::Result& result) {
        EXPECT_TRUE(codes.insert(result.code).second) << result.name;
        EXPECT_TRUE(names.insert(result.name).second) << result.name;
        EXPECT_EQ(&result, published::FindResult(result.code)) << result.name;
    });
    EXPECT_EQ(nullptr, published::FindResult(0x12345678));
}

// Words for people: a meaning that can stand inside a sentence, and whole sentences around it.
TEST(PublishedResults, SayWhatTheyMeanAndWhy) {
    ForEachResult([](const published::Result& result) {
        const std::string meaning = result.meaning, why = result.why, next = result.next;
        EXPECT_FALSE(meaning.empty() || meaning.ends_with('.')) << result.name;
        EXPECT_TRUE(why.ends_with('.')) << result.name;
        EXPECT_TRUE(next.empty() || next.ends_with('.')) << result.name;
    });
}

TEST(PublishedSettings, HaveNamesAndAddressesOfTheirOwn) {
    for (const published::GeneralSetting& setting : published::cGeneralSettings) {
        EXPECT_EQ(&setting, published::FindGeneralSetting(setting.name)) << setting.name;
        EXPECT_EQ(&setting, published::FindGeneralSetting(setting.key)) << setting.name;
    }
    EXPECT_EQ(nullptr, published::FindGeneralSetting("volume"));
}

// --- messages of the trace -------------------------------------------------------------------

std::vector<const TraceMessage*> Rows() {
    std::vector<const TraceMessage*> rows;
    published::ForEachTraceMessage([&](const TraceMessage& row) { rows.push_back(&row); });
    return rows;
}

std::string NameOf(const TraceMessage& row) {
    return std::string(row.function ? row.function : "any") + ":" + row.text;
}

// The statements that no row has, to the letter.
std::vector<std::string> WithoutMeaning(const std::vector<TraceStatement>& statements) {
    std::set<std::string> known;
    for (const TraceMessage* pRow : Rows())
        known.insert(pRow->text);
    std::vector<std::string> without;
    for (const TraceStatement& statement : statements)
        if (!known.contains(statement.text))
            without.push_back(statement.place + ": " + statement.text);
    return without;
}

TEST(PublishedTrace, HasAMeaningForEveryLineOfTheSources) {
    const std::vector<TraceStatement> statements = AllTraceStatements();
    EXPECT_GT(statements.size(), 140u);
    EXPECT_EQ(std::vector<std::string>{}, WithoutMeaning(statements));
}

TEST(PublishedTrace, FindsOutALineWithoutAMeaning) {
    const auto findings = [](const std::string& source) {
        return WithoutMeaning(TraceStatementsIn("src/new.cpp", source));
    };
    EXPECT_EQ(
        std::vector<std::string>{"src/new.cpp:2: something new %d"},
        findings("\nKALTRACE(trace::eMessages, cSite, \"something \" \"new %d\\n\", f(1));"));
    EXPECT_EQ(std::vector<std::string>{"src/new.cpp:1: KALASSERT failed: a(b, c) != NULL"},
              findings("KALASSERT(cSite, a(b,\n  c) != NULL);"));
    EXPECT_EQ(std::vector<std::string>{"src/new.cpp:1: KALASSERT failed: !\"New\""},
              findings(R"(KALASSERT_TEXT(cSite, a, "!\"New\"");)"));
    EXPECT_EQ(std::vector<std::string>{"src/new.cpp:1: **** Error: pNew is Null"},
              findings("{.badArgument = \"pNew is Null\"}"));
    EXPECT_EQ(std::vector<std::string>{"src/new.cpp:1: >> new: %d"},
              findings("{.entry = \"%s: %4d %s:>> new: %d\\n\"}"));
    EXPECT_TRUE(findings("KALTRACE(trace::eEntry, cSite, \">>\\n\");").empty());
}

TEST(PublishedTrace, HasNoMessageThatNobodyWrites) {
    const std::vector<TraceStatement> statements = AllTraceStatements();
    const std::set<std::string> general = {">>", "<<", "<< hr: 0x%08x", "KALASSERT failed: %s"};
    for (const TraceMessage* pRow : Rows()) {
        // Rows may be instances of a more general statement.
        const bool isWritten = std::ranges::any_of(statements, [&](const auto& statement) {
            const TraceMessage asWritten{nullptr, statement.text.c_str(), 0, "", "", "", ""};
            published::TraceValues values;
            return statement.text == pRow->text ||
                   published::MatchTraceText(asWritten, pRow->text, &values) != 0;
        });
        EXPECT_TRUE(isWritten || general.contains(pRow->text)) << NameOf(*pRow);
    }
}

TEST(PublishedTrace, NamesTheCategoriesOfTheStatements) {
    const std::map<std::string, std::uint32_t> masks = {
        {"trace::eResults", trace::eResults},
        {"trace::eSecurity", trace::eSecurity},
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
        if (statement.mask.empty())
            continue;
        ASSERT_TRUE(masks.contains(statement.mask)) << statement.place;
        for (const TraceMessage* pRow : Rows())
            if (statement.text == pRow->text && pRow->mask != 0) {
                EXPECT_EQ(masks.at(statement.mask), pRow->mask) << statement.place;
            }
    }
}

TEST(PublishedTrace, NamesEachValueOfItsMessages) {
    for (const TraceMessage* pRow : Rows()) {
        const std::string kinds = pRow->values;
        const auto commas =
            static_cast<std::size_t>(std::count(kinds.begin(), kinds.end(), ','));
        EXPECT_EQ(published::detail::ConversionsIn(pRow->text), kinds.empty() ? 0 : commas + 1)
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
        const TraceMatch match = published::FindTraceMessage(line.function, message);
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
            published::TraceHead head;
            const std::string whole =
                before + line.tag + ":   81 " + line.function + ":" + message;
            ASSERT_TRUE(published::ParseTraceHead(whole, &head)) << whole;
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
        published::TraceHead head;
        EXPECT_FALSE(published::ParseTraceHead(text, &head)) << text;
        EXPECT_TRUE(head.tag.empty() && head.message.empty()) << text;
    }
}

TEST(WrittenTraceLines, AreFoundByTheirMessageAloneWhereItIsLikeNoOther) {
    const TraceMatch match = published::FindTraceMessage(
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
    EXPECT_EQ(2u, published::FindTraceMessage("", "(4)").equals);
    EXPECT_EQ(1u, published::FindTraceMessage("CKORA4ASL::DeleteCustomProfile", "(4)").equals);
}

TEST(WrittenTraceLines, TellValuesOfOneKindFromThoseOfAnother) {
    const auto functionOf = [](const char* message) {
        const TraceMatch match = published::FindTraceMessage("", message);
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
        const TraceMatch match = published::FindTraceMessage("", line);
        ASSERT_NE(nullptr, match.pMessage) << line;
        EXPECT_STREQ("ProcessTrack::ProcessTrack", match.pMessage->function) << line;
    }
    const TraceMatch match = published::FindTraceMessage("", "    handle count: 41");
    ASSERT_EQ(1u, match.values.count);
    EXPECT_EQ("count", match.values.kinds[0]);
    EXPECT_EQ("41", match.values.texts[0]);
}

TEST(WrittenTraceLines, ThatNobodyWroteAreNotFound) {
    for (const char* text : {
             "", "nonsense", "<< hr: 0x8000", "<< hr: 0xzzzzzzzz", "set to x",
             "= 4.5 milliseconds", "<< hr: 0x80004005 "  // a blank more is fine
         }) {
        const bool isKnown = published::FindTraceMessage("", text).pMessage != nullptr;
        EXPECT_EQ(std::string(text).ends_with("80004005 "), isKnown) << text;
    }
}

// --- tags and writers ------------------------------------------------------------------------

TEST(PublishedTags, AreThoseOfTheLines) {
    std::set<std::string> written, published;
    for (const TableLine& line : TraceLineTable())
        written.insert(line.tag);
    for (const published::TraceTag& tag : published::cTraceTags)
        published.insert(tag.tag);
    EXPECT_EQ(written, published);
}

TEST(PublishedWriters, AreThoseOfTheSites) {
    const std::vector<std::string> functions = AllTracedFunctions();
    EXPECT_GT(functions.size(), 100u);
    std::set<std::string> used;
    for (const std::string& function : functions) {
        const published::TraceWriter* const pWriter = published::FindTraceWriter(function);
        ASSERT_NE(nullptr, pWriter) << function;
        used.insert(pWriter->name);
    }
    EXPECT_EQ(std::size(published::cTraceWriters), used.size());
    for (const TraceMessage* pRow : Rows())
        if (pRow->function) {
            EXPECT_TRUE(std::ranges::count(functions, pRow->function)) << NameOf(*pRow);
        }
}

}  // namespace
}  // namespace kora4::test
