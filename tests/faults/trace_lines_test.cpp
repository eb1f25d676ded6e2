// SPDX-License-Identifier: MIT
// The lines of the built library, held against a table: each comes out to the letter when its
// categories are on, and stays away when they are off.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <string>

#include "faults/debug_output.h"
#include "faults/trace_line_table.h"
#include "faults/trace_scenario.h"
#include "support/com_client.h"
#include "support/trace_capture.h"

namespace kora4::test {
namespace {

constexpr std::uint32_t cEveryCategory = 0x00018F35;
constexpr std::uint32_t cDefaultWord = 0x00000400;
constexpr std::uint32_t cLogFiles = 0x01000000;
constexpr std::uint32_t cSwitchOff = 0x04000000;  // of the two-bit field ...
constexpr std::uint32_t cSwitchField = 0x06000000;

std::string NameOf(const TableLine& line) {
    return line.tag + " " + line.function + ": " + line.text;
}

class TraceLines : public testing::Test {
  protected:
    void SetUp() override { ASSERT_FALSE(m_table.empty()); }

    // The lines of the table that came out under a flag word. A line that is not in the table,
    // or that is not a whole line, fails the test.
    std::set<std::string> LinesUnder(std::uint32_t word) {
        DriveEveryLine(word, m_output);
        std::set<std::string> names;
        for (const std::string& text : m_output.Texts()) {
            const std::vector<TraceLine> parsed = ParseTrace(text);
            if (parsed.size() != 1 || !text.ends_with('\n'))
                ADD_FAILURE() << "no whole line: " << text;
            else
                names.insert(NameInTable(parsed.front()));
        }
        return names;
    }

    std::set<std::string> LinesWithMask(std::uint32_t flags) {
        std::set<std::string> names;
        for (const TableLine& line : m_table) {
            if ((line.mask & flags) != 0)
                names.insert(NameOf(line));
        }
        return names;
    }

    const std::vector<TableLine> m_table = TraceLineTable();
    const Apartment m_apartment{COINIT_APARTMENTTHREADED};
    DebugOutput m_output;

  private:
    std::string NameInTable(const TraceLine& written) {
        for (const TableLine& line : m_table) {
            if (line.tag == written.tag && line.function == written.function &&
                MatchesText(line.text, written.message))
                return NameOf(line);
        }
        ADD_FAILURE() << "not in the table: " << written.tag << " " << written.function << ":"
                      << written.message;
        return "";
    }
};

TEST_F(TraceLines, WithEveryCategoryOnEachComesOutToTheLetter) {
    EXPECT_EQ(LinesWithMask(cEveryCategory), LinesUnder(cEveryCategory));
}

TEST_F(TraceLines, WithTheDefaultWordOnlyMessagesComeOutAndNoFileIsWritten) {
    const TraceLog log;
    EXPECT_EQ(LinesWithMask(0x400), LinesUnder(cDefaultWord));
    EXPECT_TRUE(log.ReadShared().empty());
}

TEST_F(TraceLines, WithoutACategoryNothingComesOut) {
    EXPECT_EQ(std::set<std::string>{}, LinesUnder(0));
}

TEST_F(TraceLines, BitsThatAreNoCategoryLetNothingThrough) {
    EXPECT_EQ(std::set<std::string>{},
              LinesUnder(~(cEveryCategory | cLogFiles | cSwitchField)));
}

TEST_F(TraceLines, TheMasterSwitchIsOneValueOfItsTwoBits) {
    EXPECT_EQ(std::set<std::string>{}, LinesUnder(cEveryCategory | cSwitchOff));
    EXPECT_EQ(LinesWithMask(cEveryCategory), LinesUnder(cEveryCategory | cSwitchField));
}

class TraceCategory : public TraceLines, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(TraceCategory, LetsItsOwnLinesThroughAndNoOthers) {
    const std::set<std::string> expected = LinesWithMask(GetParam());
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(expected, LinesUnder(GetParam()));
}

std::string BitName(const testing::TestParamInfo<std::uint32_t>& bit) {
    char name[16];
    std::snprintf(name, sizeof name, "Bit%08x", static_cast<unsigned>(bit.param));
    return name;
}

INSTANTIATE_TEST_SUITE_P(Single, TraceCategory,
                         testing::Values(0x1, 0x4, 0x10, 0x20, 0x100, 0x200, 0x400, 0x800,
                                         0x8000, 0x10000),
                         BitName);

// --- line numbers
// -----------------------------------------------------------------------------

// A reader of the log finds the method that refused a call, and not the frame of all methods.
TEST_F(TraceLines, OfRefusalsCarryTheLineOfTheirMethod) {
    DriveEveryLine(cEveryCategory, m_output);
    std::map<std::string, int> methods;
    std::vector<TraceLine> refusals;
    for (const TraceLine& line : ParseTrace(m_output.Log())) {
        if (line.function.starts_with("CKORA4ASL::") && line.message.starts_with(">>"))
            methods[line.function] = line.line;
        if (line.message.starts_with("**** Error: "))
            refusals.push_back(line);
    }
    std::set<std::string> refused;
    for (const TraceLine& line : refusals) {
        if (line.function == "CKORA4ASL::ValidatePatchField")
            continue;  // has no entry line
        EXPECT_EQ(methods[line.function], line.line) << line.function << ":" << line.message;
        refused.insert(line.function + line.message);
    }
    const auto isRefusal = [](const TableLine& line) {
        return line.text.starts_with("**** Error: ") &&
               line.function != "CKORA4ASL::ValidatePatchField";
    };
    EXPECT_EQ(std::ranges::count_if(m_table, isRefusal),
              static_cast<std::ptrdiff_t>(refused.size()));
}

// --- the process tracker
// ----------------------------------------------------------------------

// It stands at the lock of the callback: reading and setting values does not take it.
TEST_F(TraceLines, OfTheProcessTrackerStandAroundRegistrationAndNotificationAlone) {
    constexpr std::uint32_t cEntry = 0x10, cTracking = 0x200, cDelivery = 0x10000;
    DriveEveryLine(cEntry | cTracking | cDelivery, m_output);
    std::string method;
    std::set<std::string> holders;
    for (const TraceLine& line : ParseTrace(m_output.Log())) {
        if (line.function.starts_with("CKORA4ASL::") && line.message != "<<" &&
            !line.message.starts_with("<< "))
            method = line.function;
        if (line.function == "ProcessTrack::Enter" || line.function == "ProcessTrack::Leave")
            holders.insert(method);
    }
    EXPECT_EQ((std::set<std::string>{"CKORA4ASL::OnKeyChangeNotify",
                                     "CKORA4ASL::RegisterChangeNotifications",
                                     "CKORA4ASL::UnregisterChangeNotifications"}),
              holders);
}

// --- the files
// --------------------------------------------------------------------------------

bool operator==(const TraceLine& a, const TraceLine& b) {
    return a.tag == b.tag && a.line == b.line && a.function == b.function &&
           a.message == b.message;
}

// The lines of a file, and those of the debugger's output that belong there.
void ExpectSame(const std::vector<TraceLine>& told, const std::vector<TraceLine>& filed,
                const std::string& what) {
    ASSERT_EQ(told.size(), filed.size()) << what;
    for (std::size_t i = 0; i < told.size(); ++i)
        EXPECT_TRUE(told[i] == filed[i]) << what << " " << i << ": " << told[i].message;
}

// The categories in which other threads of the process write.
constexpr std::uint32_t cOfOtherThreads = 0x00010900;
constexpr std::uint32_t cQuietWord = (cEveryCategory & ~cOfOtherThreads) | cLogFiles;

bool Contains(const std::vector<TraceLine>& lines, const std::string& function) {
    return std::any_of(lines.begin(), lines.end(),
                       [&](const TraceLine& line) { return line.function == function; });
}

TEST_F(TraceLines, WhatComesOutGoesToTheFileOfItsTagAndToTheSharedOne) {
    TraceLog log;
    const auto untilMonitorIsSilent = [&] {
        EXPECT_TRUE(PumpUntil(
            [&] { return Contains(log.ReadShared(), "RegKeyMonitor::RegMonitorLoop"); }));
        log.Clear();
    };
    const auto compareFiles = [&] {
        std::vector<TraceLine> told;
        std::map<std::string, std::vector<TraceLine>> byTag;
        for (const std::string& text : m_output.Texts()) {
            const std::vector<TraceLine> parsed = ParseTrace(text);
            ASSERT_EQ(1u, parsed.size()) << text;
            told.push_back(parsed.front());
            byTag[parsed.front().tag].push_back(parsed.front());
        }
        ExpectSame(told, log.ReadShared(), "all");
        std::set<std::string> tags;
        for (const TableLine& line : m_table)
            tags.insert(line.tag);
        tags.erase("RegKeyMonitor");
        EXPECT_EQ(9u, tags.size());
        for (const std::string& tag : tags) {
            EXPECT_FALSE(byTag[tag].empty()) << tag;
            ExpectSame(byTag[tag], log.Read(tag), tag);
        }
        log.Clear();
    };
    DriveFromOneThread(cQuietWord, m_output, untilMonitorIsSilent, compareFiles);
    // The end of the monitor: two threads write, so only the one that is left at the end is
    // looked for.
    EXPECT_TRUE(Contains(log.Read("RegKeyMonitor"), "RegKeyMonitor::TerminateRegMonitor"));
    EXPECT_TRUE(Contains(log.ReadShared(), "RegKeyMonitor::TerminateRegMonitor"));
}

}  // namespace
}  // namespace kora4::test
