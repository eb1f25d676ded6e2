// SPDX-License-Identifier: MIT
// The tools on thousands of damaged stores: hostile_tools_test [STORES [SEED]]. Every verb ends
// in time with a documented exit code, prints what a terminal and a reader of JSON can take,
// and a dump that is loaded brings back the store that it was made of.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "faults/damage.h"
#include "faults/standard_streams.h"
#include "kora4ctl/command_line/command_line.h"
#include "kora4sim/command_line.h"
#include "support/desktop_hold.h"
#include "support/program_arguments.h"
#include "support/raw_store.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

using tools::ExitCode;
using Words = std::vector<std::string>;

constexpr std::uint32_t cStores = 20;
constexpr std::uint32_t cFreshEvery = 10;    // a store forgets its damage then
constexpr std::uint32_t cProcessEvery = 10;  // with a tool in a process of its own
constexpr std::uint32_t cLoadEvery = 3;      // is dumped, damaged and loaded
constexpr std::size_t cReadingsOfAStore = 6;
constexpr int cWritesOfAStore = 3;
constexpr ULONGLONG cInTime = 20000;  // milliseconds, a busy machine's included

const std::uint32_t s_stores = ProgramArgument(1, cStores);
const std::uint32_t s_seed = SeedArgument(2);

// Changes nothing; --json is added to every second call.
const Words cReading[] = {
    {"list"},
    {"list", "--all"},
    {"list", "--profile", "p4"},
    {"get", "profile", "enable", "volume-leveler", "dialog-enhancer"},
    {"get", "volume-leveler", "--profile", "p2"},
    {"describe"},
    {"describe", "--all"},
    {"status"},
    {"profile", "list"},
    {"profile", "show"},
    {"profile", "show", "p3"},
    {"eq", "show"},
    {"eq", "export"},
    {"levels", "--count", "1", "--timeout", "0.05"},
    {"dump"},
    {"dump", "--all"},
    {"dump", "--profile", "music"},
    {"lint"},
    // The Wine server stops for a second or two while it saves a registry of many megabytes.
    {"doctor", "--dry-run", "--wait", "5"},
    {"trace", "show"},
    {"undo"},
    {"explain", "0x80004005"},
};

const Words cWriting[] = {
    {"set", "volume-leveler", "5"},
    {"set", "dialog-enhancer", "0.5"},
    {"set", "enable", "on"},
    {"toggle", "enable"},
    {"eq", "flat"},
    {"profile", "use", "music"},
    {"profile", "use", "p1"},
    {"profile", "create", "p1", "n"},
    {"profile", "rename", "p1", "m"},
    {"profile", "copy", "movie", "music"},
    {"profile", "delete", "p1"},
    {"profile", "revert"},
    {"demo", "enter", "movie"},
    {"demo", "force-leave"},
    {"lint", "--fix"},
    {"undo", "1"},
    {"reset", "volume-leveler"},
    {"reset", "--all"},
};

// The length of the UTF-8 sequence at `at` and the character that it stands for; 0 for a bad
// one.
std::size_t Decode(const std::string& text, std::size_t at, std::uint32_t* pCharacter) {
    const auto byte = [&](std::size_t i) {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0u;
    };
    const std::uint32_t first = byte(0);
    *pCharacter = first;
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xF5   ? 0
                               : first >= 0xF0 ? 4
                               : first >= 0xE0 ? 3
                               : first >= 0xC2 ? 2
                                               : 0;
    if (length == 0)
        return 0;
    std::uint32_t character = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
        character = character << 6 | (byte(i) & 0x3F);
    }
    *pCharacter = character;
    constexpr std::uint32_t cLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < cLeast[length] || character > 0x10FFFF || isSurrogate ? 0 : length;
}

bool ChangesDirection(std::uint32_t character) {
    return character == 0x061C || character == 0x200E || character == 0x200F ||
           (character >= 0x2028 && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

// Text that a terminal shows and does not obey.
testing::AssertionResult IsShowable(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        // Dumps have millions of these.
        if (text[at] >= ' ' && text[at] <= '~') {
            ++at;
            continue;
        }
        std::uint32_t character = 0;
        const std::size_t length = Decode(text, at, &character);
        if (length == 0)
            return testing::AssertionFailure() << "no UTF-8 at byte " << at;
        const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
        if ((isControl && character != '\n' && character != '\r' && character != '\t') ||
            ChangesDirection(character))
            return testing::AssertionFailure()
                   << "the control character " << character << " at byte " << at;
        at += length;
    }
    return testing::AssertionSuccess();
}

// One document, or one a line.
bool IsJson(const std::string& text) {
    using Json = nlohmann::ordered_json;
    if (Json::accept(text))
        return true;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        if (!Json::accept(text.substr(at, end - at)))
            return false;
        at = end + 1;
    }
    return true;
}

class HostileStore : public testing::Test {
  protected:
    void SetUp() override {
        std::printf("%u stores, seed %u\n", static_cast<unsigned>(s_stores),
                    static_cast<unsigned>(s_seed));
        std::fflush(stdout);
    }

    void DamageSome(unsigned count) {
        for (unsigned i = 0; i < count; ++i)
            m_damage.Apply(
                m_keys, m_schema[m_damage.Pick(static_cast<std::uint32_t>(m_schema.size()))]);
    }
    void Refresh();
    std::string Run(Words arguments, const std::string& input = {});
    std::string RunSimulator();
    std::string Ran(const std::string& tool, const Words& arguments, bool isJson, int code);
    void ExpectDumpIsIdentity();
    void RunProcess();

    const DesktopHold m_desktop;
    const RawStore m_store;
    const RegisteredLibrary m_registered;
    StoreKeys m_keys;
    Damage m_damage{s_seed};
    const std::vector<SchemaValue> m_schema = WholeSchema();
    StandardStreams m_streams;
    std::string m_checked;  // JSON that has been checked
    std::map<std::string, unsigned> m_outcomes;
    unsigned m_runs = 0;
    unsigned m_identities = 0;
};

void HostileStore::Refresh() {
    for (const SchemaValue& value : m_schema) {
        m_keys.Delete(value.key, value.name);
        if (m_damage.OneIn(3))
            m_damage.Apply(m_keys, value);
    }
}

// What it has printed, once that has been checked.
std::string HostileStore::Ran(const std::string& tool, const Words& arguments, bool isJson,
                              int code) {
    const std::string out = m_streams.Out();
    const std::string err = m_streams.Err();
    std::string line = tool;
    for (const std::string& argument : arguments)
        line += " " + argument;
    SCOPED_TRACE(line + "\n" + err.substr(0, 1000));
    EXPECT_TRUE(code >= 0 && code <= static_cast<int>(ExitCode::eFindings)) << code;
    EXPECT_NE(static_cast<int>(ExitCode::eUsage), code);
    EXPECT_TRUE(IsShowable(err));
    EXPECT_EQ(std::string::npos, err.find("Internal error"));
    EXPECT_EQ(
        code == 0 || code == static_cast<int>(ExitCode::eFindings) || isJson || !err.empty(),
        true)
        << "a failure without a word";
    // A dump has megabytes, and most are equal to the one before.
    if (out != m_checked) {
        EXPECT_TRUE(IsShowable(out));
        EXPECT_TRUE(!isJson || IsJson(out)) << out.substr(0, 2000);
        if (isJson)
            m_checked = out;
    }
    ++m_outcomes[line.substr(0, 28) + " -> " + std::to_string(code)];
    ++m_runs;
    return out;
}

std::string HostileStore::Run(Words arguments, const std::string& input) {
    const bool isDump = arguments[0] == "dump";
    const bool isJson = !isDump && arguments[0] != "load" && m_damage.OneIn(2);
    if (isJson)
        arguments.push_back("--json");
    m_streams.Begin(input);
    const ULONGLONG begin = GetTickCount64();
    const int code = tools::RunKora4Ctl(arguments);
    EXPECT_GT(cInTime, GetTickCount64() - begin) << arguments[0];
    return Ran("kora4ctl", arguments, isJson || isDump, code);
}

std::string HostileStore::RunSimulator() {
    constexpr const char* cScenes[] = {"music", "silence", "engine-full", "sweep"};
    Words arguments = {cScenes[m_damage.Pick(4)], "--for", "0.03", "--period", "10", "--json"};
    if (m_damage.OneIn(2))
        arguments.push_back("--clean");
    m_streams.Begin({});
    const ULONGLONG begin = GetTickCount64();
    const int code = tools::sim::RunKora4Sim(arguments);
    EXPECT_GT(cInTime, GetTickCount64() - begin);
    EXPECT_EQ(0, code);
    return Ran("kora4sim", arguments, true, code);
}

// What is damaged in between is put right, to the byte.
void HostileStore::ExpectDumpIsIdentity() {
    std::vector<std::optional<StoredValue>> before;
    std::vector<SchemaValue> covered;
    for (std::uint32_t profile = 0; profile < cProfileBound; ++profile) {
        const std::vector<SchemaValue> values = SchemaOfProfile(profile);
        covered.insert(covered.end(), values.begin(), values.end());
    }
    for (const SchemaValue& value : covered)
        before.push_back(m_keys.Read(value.key, value.name));
    const std::string document = Run({"dump", "--all"});
    DamageSome(20);
    Run({"load", "--stored", "-", "--quiet"}, document);
    for (std::size_t i = 0; i < covered.size(); ++i) {
        const auto now = m_keys.Read(covered[i].key, covered[i].name);
        EXPECT_EQ(before[i].has_value(), now.has_value());
        if (before[i] && now) {
            EXPECT_EQ(before[i]->type, now->type);
            EXPECT_TRUE(before[i]->data == now->data) << "a value of " << now->data.size();
        }
    }
    EXPECT_EQ(document, Run({"dump", "--all"}));
    ++m_identities;
}

// As a person runs it.
void HostileStore::RunProcess() {
    const Words& arguments = cReading[m_damage.Pick(std::size(cReading))];
    const ToolResult result = RunCtl(arguments);
    EXPECT_GE(static_cast<DWORD>(ExitCode::eFindings), result.exitCode) << result;
    EXPECT_NE(static_cast<DWORD>(ExitCode::eUsage), result.exitCode) << result;
    EXPECT_TRUE(IsShowable(result.out + result.err));
    EXPECT_EQ(0u, RunSim({"--for", "0.03", "--json"}).exitCode);
}

TEST_F(HostileStore, HarmsNoTool) {
    for (std::uint32_t i = 0; i < s_stores && !HasFailure(); ++i) {
        SCOPED_TRACE("seed " + std::to_string(s_seed) + ", store " + std::to_string(i));
        if (i % cFreshEvery == 0)
            Refresh();
        DamageSome(60);
        m_keys.WriteNumber(StoreKeys::eStatic, SettingName(cTraceWordPid), 0);
        for (std::size_t verb = 0; verb < cReadingsOfAStore; ++verb)
            Run(cReading[(i * cReadingsOfAStore + verb) % std::size(cReading)]);
        if (m_damage.OneIn(2))
            RunSimulator();
        if (i % cLoadEvery == 0)
            ExpectDumpIsIdentity();
        for (int writes = 0; writes < cWritesOfAStore; ++writes)
            Run(cWriting[m_damage.Pick(std::size(cWriting))]);
        if (i % cProcessEvery == 0)
            RunProcess();
    }
    std::printf("%u runs in this process, %u dumps loaded\n", m_runs, m_identities);
    for (const auto& [outcome, times] : m_outcomes)
        std::printf("%s  %u times\n", outcome.c_str(), times);
}

}  // namespace
}  // namespace kora4::test
