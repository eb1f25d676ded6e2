// SPDX-License-Identifier: MIT
// The published tables and the sources they speak of.
#include <gtest/gtest.h>
#include <kora4/result_codes.hpp>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <regex>
#include <set>

#include "checks/documents_markdown.h"
#include "checks/documents_sources.h"
#include "contract/general_settings.h"
#include "contract/messages/trace_categories.h"
#include "contract/messages/trace_messages.h"
#include "contract/messages/trace_writers.h"
#include "faults/trace_line_table.h"
#include "kora4api_constants.h"

namespace kora4::test {
namespace {

using contract::TraceMatch;
using contract::TraceMessage;

// --- results and settings --------------------------------------------------------------------

TEST(PublishedResults, HaveEveryCodeOfThePublicHeader) {
    for (const char* prefix : {"APOERR_", "KORA4_S_"}) {
        for (const NamedNumber& code : MacrosOf("sdk/include/kora4api_codes.h", prefix)) {
            const ResultCode* const pResult = FindResult(code.number);
            ASSERT_NE(nullptr, pResult) << code.name;
            EXPECT_EQ(code.name, pResult->name);
        }
    }
}

template <typename Visit>
void ForEachResult(Visit visit) {
    std::ranges::for_each(cApiResults, visit);
    std::ranges::for_each(cPlatformResults, visit);
}

TEST(PublishedResults, AreEachPublishedOnceUnderOneName) {
    std::set<std::uint32_t> codes;
    std::set<std::string> names;
    ForEachResult([&](const ResultCode& result) {
        EXPECT_TRUE(codes.insert(result.code).second) << result.name;
        EXPECT_TRUE(names.insert(result.name).second) << result.name;
        EXPECT_EQ(&result, FindResult(result.code)) << result.name;
    });
    EXPECT_EQ(nullptr, FindResult(0x12345678));
}

// Words for people: a meaning that can stand inside a sentence, and whole sentences around it.
TEST(PublishedResults, SayWhatTheyMeanAndWhy) {
    ForEachResult([](const ResultCode& result) {
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

// The interface definitions cannot include the constants: their arrays have the same bounds.
TEST(PublishedConstants, AreTheBoundsOfTheInterfaces) {
    const std::string idl = ReadProjectFile("idl/veltokora4api.idl");
    for (const auto& [name, bound] : std::map<std::string, std::uint32_t>{
             {"m_freq", KORA4_GRAPHIC_EQ_MAX_BANDS},
             {"m_gain", KORA4_GRAPHIC_EQ_MAX_BANDS},
             {"pGain", KORA4_VISUALIZATION_BANDS},
             {"pExcitation", KORA4_VISUALIZATION_BANDS},
             {"pwProfileNames", KORA4_PROFILE_TABLE_ENTRIES}}) {
        std::smatch match;
        ASSERT_TRUE(std::regex_search(idl, match, std::regex(name + R"(\[(\d+)\])"))) << name;
        EXPECT_EQ(std::to_string(bound), match[1]) << name;
    }
}

// --- messages of the trace -------------------------------------------------------------------

std::vector<const TraceMessage*> Rows() {
    std::vector<const TraceMessage*> rows;
    for (const TraceMessage& row : msg::cTraceMessages)
        rows.push_back(&row);
    return rows;
}

std::string NameOf(const TraceMessage& row) {
    return std::string(row.function ? row.function : "any") + ":" + row.text;
}

// --- the rows and the sources ----------------------------------------------------------------

// The sources of the library but the catalogue and the trace itself.
const std::map<std::string, std::string>& TracingSources() {
    static const std::map<std::string, std::string> sources = [] {
        const std::filesystem::path root(KORA4_ROOT);
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root / "src")) {
            const std::string path =
                std::filesystem::relative(entry.path(), root).generic_string();
            if ((path.ends_with(".cpp") || path.ends_with(".h")) &&
                !path.starts_with("src/trace/") && !path.starts_with("src/contract/"))
                found[path] = ReadProjectFile(path);
        }
        return found;
    }();
    return sources;
}

// What the first group of a pattern has found in a text, each once.
std::set<std::string> Found(const std::string& text, const char* pPattern) {
    const std::regex pattern(pPattern);
    std::set<std::string> found;
    for (std::sregex_iterator i(text.begin(), text.end(), pattern), end; i != end; ++i)
        found.insert((*i)[1]);
    return found;
}

std::set<std::string> FoundInSources(const char* pPattern) {
    std::set<std::string> found;
    for (const auto& [path, text] : TracingSources())
        found.merge(Found(text, pPattern));
    return found;
}

const char* const cCatalogue[] = {"src/contract/messages/trace_messages_api.inc",
                                  "src/contract/messages/trace_messages_assertions.inc",
                                  "src/contract/messages/trace_messages_general.h",
                                  "src/contract/messages/trace_messages_store.inc"};

constexpr char cRowDefinition[] =
    R"((?:KORA4_ROW\(\s*\w+, |KORA4_ASSERTION\(|inline constexpr auto (?=c\w+ =\s+(?:Line|Message)))(c\w+))";

TEST(PublishedTrace, ListsEveryRow) {
    std::size_t named = 0;
    for (const char* path : cCatalogue)
        named += Found(ReadProjectFile(path), cRowDefinition).size();
    EXPECT_GT(named, 140u);
    std::set<std::string> rows;
    for (const TraceMessage* pRow : Rows())
        rows.insert(NameOf(*pRow));
    EXPECT_EQ(named, rows.size());
    EXPECT_EQ(Rows().size(), rows.size()) << "a row is listed twice";
}

// The rows that no statement names, by what the row is for.
TEST(PublishedTrace, HasNoMessageThatNobodyWrites) {
    std::set<std::string> written = FoundInSources(R"(\bmsg::(c\w+)\b)");
    // What the trace itself writes, and what other rows make more exact.
    for (const char* general : {"cEntry", "cExit", "cExitResult", "cAssertion", "cRefused"})
        written.insert(general);
    std::set<std::string> silent;
    for (const char* path : cCatalogue)
        std::ranges::set_difference(Found(ReadProjectFile(path), cRowDefinition), written,
                                    std::inserter(silent, silent.end()));
    const std::set<std::string> instances = {"cGetBadProfile", "cSetBadProfile",
                                             "cSetBadDemoProfile", "cWatchDenied",
                                             "cWatchedKeyDeleted"};
    EXPECT_EQ(instances, silent);
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

TEST(PublishedTrace, SaysWhatEachMessageMeans) {
    for (const TraceMessage* pRow : Rows())
        EXPECT_FALSE(std::string(pRow->meaning).empty()) << NameOf(*pRow);
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

// A function without a writer does not compile; here is that no writer is without a function.
TEST(PublishedWriters, AllWriteLines) {
    std::set<std::string> functions = FoundInSources(R"re("(~?\w+(?:::~?\w+)?)")re");
    for (const TraceMessage* pRow : Rows())
        if (pRow->function)
            functions.insert(pRow->function);
    std::set<std::string> writers;
    for (const std::string& function : functions)
        if (const contract::TraceWriter* const pWriter = contract::FindTraceWriter(function))
            writers.insert(pWriter->name);
    for (const contract::TraceWriter& writer : contract::cTraceWriters)
        EXPECT_TRUE(writers.contains(writer.name)) << writer.name;
    for (const contract::OddTraceFunction& odd : contract::cOddTraceFunctions)
        EXPECT_TRUE(functions.contains(odd.name)) << odd.name;
}

}  // namespace
}  // namespace kora4::test
