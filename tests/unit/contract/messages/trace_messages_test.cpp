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
    // The desktop of a process may have an empty name, and copies lose the blank at the end.
    for (const char* line : {"       lpDesktop: ", "lpDesktop:"}) {
        const TraceMatch match = contract::FindTraceMessage("", line);
        ASSERT_NE(nullptr, match.pMessage) << line;
        ASSERT_EQ(1u, match.values.count);
        EXPECT_EQ("", match.values.texts[0]);
    }
    EXPECT_EQ(nullptr, contract::FindTraceMessage("", "lpDesktop").pMessage);
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

TEST(WrittenTraceLines, HaveHeadsOfNamesNumbersAndFunctions) {
    // What stands right before the tag is no part of it: the neighbours of the letters and
    // digits.
    for (const std::string before : {"", "`", "{", "@", "[", "/", "-", "}"}) {
        for (const std::string tag : {"azAZ09_~", "a", "9"}) {
            contract::TraceHead head;
            const std::string whole = before + tag + ": 0189 a::~Z_9::z:";
            ASSERT_TRUE(contract::ParseTraceHead(whole, &head)) << whole;
            EXPECT_EQ(tag, head.tag) << whole;
            EXPECT_EQ("0189", head.line) << whole;
            EXPECT_EQ("a::~Z_9::z", head.function) << whole;
            EXPECT_EQ("", head.message) << whole;
        }
    }
    contract::TraceHead head;
    ASSERT_TRUE(contract::ParseTraceHead("x: y: \t\r\n 7 f:m: 8 g:n", &head));
    EXPECT_EQ("y", head.tag);
    EXPECT_EQ("m: 8 g:n", head.message);
}

struct ValueCase {
    const char* conversion;
    contract::TraceKind kind;
    std::vector<std::string> good;
    std::vector<std::string> bad;
};

TEST(TraceValues, HaveTheFormOfTheirConversionAndKind) {
    using enum contract::TraceKind;
    const ValueCase cases[] = {
        {"%d", eIndex, {"0", "9", "-1", "0123456789"}, {"", "-", "/", ":", "1-", "--1", "a"}},
        {"%u", eIndex, {"0", "9", "0123456789"}, {"", "-1", "/", ":", "a"}},
        {"%4d", eIndex, {"7", "   7", "\t7", "   -7", "12345"}, {"", "    "}},
        {"%04d", eIndex, {"0007", "-007", "7"}, {""}},
        {"%x",
         eMask,
         {"0", "af09AF", "12345678"},
         {"", "123456789", "g", "G", "`", "@", "/", ":"}},
        {"%08X", eMask, {"0123ABcd"}, {"", "1234567", "123456789", "0x12345678"}},
        {"%lx", eMask, {"0", "af09AF"}, {""}},
        {"%p",
         ePointer,
         {"12345678", "0x12345678", "0123456789abcdEF", "0x0123456789abcdef"},
         {"", "0x", "1234567", "0x1234567", "0123456789abcdef0", "0x0123456789abcdef0"}},
        {"%f",
         eGain,
         {"0.5", "-9.25", "nan", "-inf", "NAN", "INF", "1.#INF", "1.a", "1.z", "1.A", "1.Z"},
         {"", "1", "1.", ".5", "-", "n", "none", "x", "1.`", "1.{", "1.@", "1.[", "1.,"}},
        {"%s",
         eSwitch,
         {"0", "9", "1 (On)", "Off", "On", "Disabled", "Enabled"},
         {"", "/", ":", "off", "x"}},
        {"%s",
         eProfileName,
         {"Movie", "Games (2) Profile", "P1:", "P6:   (8)"},
         {"", "P7:", "movie"}},
        {"%s", eDemoProfileName, {"Demo Music (0xF1) Profile"}, {"", "Movie", "demo"}},
        {"%s",
         eTechnologyName,
         {"eGraphicEQ", "eVirtualizerSpkr", "KORA4APITechnology bad index"},
         {"", "eNone"}},
        {"%s", eValueName, {"{", "{5C2E8A47},2"}, {"", "5C2E8A47"}},
        {"%S", eName, {"", "anything at all"}, {}},
    };
    for (const ValueCase& valueCase : cases) {
        const std::string pattern = std::string("<") + valueCase.conversion + ">";
        const TraceMessage row = {nullptr, pattern.c_str(), 0, {valueCase.kind}, ""};
        for (const std::string& text : valueCase.good) {
            const std::string message = "\n <" + text + "> \r";
            contract::TraceValues values;
            EXPECT_EQ(2u, contract::MatchTraceText(row, message, &values)) << pattern << text;
            EXPECT_EQ(1u, values.count) << pattern << text;
            EXPECT_EQ(valueCase.kind, values.kinds[0]) << pattern << text;
            EXPECT_TRUE(std::string_view(text).ends_with(values.texts[0])) << pattern << text;
        }
        for (const std::string& text : valueCase.bad) {
            contract::TraceValues values;
            EXPECT_EQ(0u, contract::MatchTraceText(row, "<" + text + ">", &values))
                << pattern << text;
        }
    }
}

TEST(TraceValues, EndWithTheMessage) {
    const std::string_view whole = "<12345";
    contract::TraceValues values;
    EXPECT_EQ(1u,
              contract::MatchTraceText({nullptr, "<%u", 0, {contract::TraceKind::eIndex}, ""},
                                       whole.substr(0, 3), &values));
    EXPECT_EQ("12", values.texts[0]);
}

TEST(TraceValues, AreAtMostFourInTheOrderOfTheConversions) {
    using enum contract::TraceKind;
    const contract::TraceKinds kinds = {eIndex, eMask, eBand, eCount};
    contract::TraceValues values;
    EXPECT_EQ(4u, contract::MatchTraceText({nullptr, "%u,%x,%u,%u.", 0, kinds, ""}, "1,a,3,4.",
                                           &values));
    ASSERT_EQ(4u, values.count);
    EXPECT_EQ(kinds, values.kinds);
    const std::vector<std::string_view> texts(values.texts, values.texts + values.count);
    EXPECT_EQ((std::vector<std::string_view>{"1", "a", "3", "4"}), texts);
    EXPECT_EQ(0u, contract::MatchTraceText({nullptr, "%u,%u,%u,%u,%u", 0, kinds, ""},
                                           "1,2,3,4,5", &values));
}

TEST(TraceValues, OfOneOfSeveralLinesHaveTheKindsOfThatLine) {
    using enum contract::TraceKind;
    const TraceMessage row = {
        nullptr, " a%u\n  bb%ub%u \nccc\ndddd%u", 0, {eIndex, eMask, eBand, eCount}, ""};
    contract::TraceValues values;
    EXPECT_EQ(1u, contract::MatchTraceText(row, "a1", &values));
    EXPECT_EQ(eIndex, values.kinds[0]);
    EXPECT_EQ(3u, contract::MatchTraceText(row, "bb2b3", &values));
    EXPECT_EQ(2u, values.count);
    EXPECT_EQ(eMask, values.kinds[0]);
    EXPECT_EQ(eBand, values.kinds[1]);
    EXPECT_EQ(3u, contract::MatchTraceText(row, "ccc", &values));
    EXPECT_EQ(0u, values.count);
    EXPECT_EQ(4u, contract::MatchTraceText(row, "dddd4", &values));
    EXPECT_EQ(eCount, values.kinds[0]);
    EXPECT_EQ(0u, contract::MatchTraceText(row, "ddd4", &values));
}

}  // namespace
}  // namespace kora4::test
