// SPDX-License-Identifier: MIT
// Written lines of the trace: their parts, and the rows that explain them.
#include "contract/messages/trace_messages.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "contract/messages/log_texts.h"
#include "faults/trace_line_table.h"

namespace kora4::test {
namespace {

using contract::TraceMatch;
using contract::TraceMessage;

// Whether a row is that of a general one with this text as its first value.
constexpr bool IsInstance(const TraceMessage& row, const TraceMessage& general,
                          std::string_view value) {
    std::string_view text = row.text, pattern = general.text;
    const std::size_t at = pattern.find('%');
    if (text.substr(0, at) != pattern.substr(0, at) || !text.substr(at).starts_with(value))
        return false;
    text.remove_prefix(at + value.size());
    pattern.remove_prefix(at + contract::ConversionAt(pattern.substr(at)).length);
    return text.starts_with(pattern.substr(0, pattern.find('%')));
}

// The rows that no statement names have the texts that the statements insert.
static_assert(IsInstance(msg::cGetBadProfile, msg::cGetActiveProfile,
                         text::cBadProfileName.read));
static_assert(IsInstance(msg::cSetBadProfile, msg::cSetActiveProfile,
                         text::cBadProfileName.chosen));
static_assert(IsInstance(msg::cSetBadDemoProfile, msg::cSetDemoProfile,
                         text::cBadDemoProfileName));
static_assert(IsInstance(msg::cWatchedKeyDeleted, msg::cArmingFailed, msg::cKeyDeleted));
static_assert(IsInstance(msg::cWatchDenied, msg::cArmingFailed, msg::cAccessDenied));
static_assert(!IsInstance(msg::cWatchDenied, msg::cArmingFailed, msg::cKeyDeleted));

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
    EXPECT_EQ(contract::TraceKind::eBand, match.values.kinds[0]);
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
    EXPECT_EQ(contract::TraceKind::eCount, match.values.kinds[0]);
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

}  // namespace
}  // namespace kora4::test
