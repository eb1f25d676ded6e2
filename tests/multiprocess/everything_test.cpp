// SPDX-License-Identifier: MIT
// Everything at once, again and again: clients in all kinds of apartments that come and go, a
// writer that dies, the tools on the same store, the library loaded and unloaded. Whenever all
// of it is over, nothing of it may be left in the process.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <thread>

#include "multiprocess/api_commands.h"
#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/process_counts.h"
#include "multiprocess/roles.h"
#include "multiprocess/watchdog.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

// Milliseconds.
constexpr ULONGLONG cRunTime = 5000;  // of a run of the usual length
constexpr ULONGLONG cRoundTime = 700;
constexpr ULONGLONG cReportTime = 60000;
// What the platform may keep back for calls that were on their way.
constexpr std::size_t cPlatformHandles = 6;
constexpr std::size_t cPlatformBytes = 16384;
constexpr unsigned cWarmUp = 3;  // rounds
constexpr DWORD cMostToolCodes = 8;

constexpr char cBarrier[] = "OnCustomProfileTableChange()";

// The library as installers register it; it is not kept loaded.
class Registration {
  public:
    Registration() { EXPECT_EQ(S_OK, LoadedLibrary().RegisterServer()); }
    ~Registration() { EXPECT_EQ(S_OK, LoadedLibrary().UnregisterServer()); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
};

// kora4ctl, one process after the other until it is told to stop.
class ToolUser {
  public:
    explicit ToolUser(std::map<std::string, unsigned>& outcomes)
        : m_outcomes(outcomes), m_thread([this] { Work(); }) {}
    ~ToolUser() {
        m_stop = true;
        m_thread.join();
    }
    ToolUser(const ToolUser&) = delete;
    ToolUser& operator=(const ToolUser&) = delete;

  private:
    void Work() {
        while (!m_stop) {
            const std::string document = Use({"dump"}, {}).out;
            if (!document.empty())
                Use({"load", "-"}, document);
            for (const char* verb : {"status", "lint", "doctor", "list"}) {
                if (!m_stop)
                    Use({verb, "--json"}, {});
            }
        }
    }

    ToolResult Use(const std::vector<std::string>& arguments, const std::string& input) {
        const ToolResult result = RunCtl(arguments, input);
        // The documented ones; a tool that has crashed has another.
        EXPECT_GT(cMostToolCodes, result.exitCode) << arguments[0] << "\n" << result;
        ++m_outcomes["kora4ctl " + arguments[0] + " " + std::to_string(result.exitCode)];
        return result;
    }

    std::map<std::string, unsigned>& m_outcomes;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class Everything : public testing::Test {
  protected:
    Everything() {
        std::printf("seed %u\n", m_seed);
        for (std::size_t i = 0; i < m_owners.size(); ++i)
            m_owners[i] = std::make_unique<ApartmentThread>(cEveryOwnerKind[i]);
    }

    void Round();

    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_random()) % bound; }
    void CallFrom(std::size_t owner, WatchingClient& client);
    void Pass(std::size_t owner, const ApiLibrary& library);
    void EndOfDemo();

    const unsigned m_seed = static_cast<unsigned>(GetTickCount64());
    std::mt19937 m_random{m_seed};
    RawStore m_store;
    Registration m_registration;
    std::array<std::unique_ptr<ApartmentThread>, std::size(cEveryOwnerKind)> m_owners;
    std::map<std::string, unsigned> m_outcomes;
    unsigned m_calls = 0;
    unsigned m_told = 0;
    unsigned m_objects = 0;
    unsigned m_kills = 0;
};

// A call or two of the owner's own.
void Everything::CallFrom(std::size_t owner, WatchingClient& client) {
    const std::string command = RandomCommand(m_random);
    m_owners[owner]->Run([&] {
        RunApiCommand(*client.spApi.Get(), command);
        LONG profile = -1;
        EXPECT_EQ(S_OK, client.spApi->GetActiveProfile(&profile));
    });
    m_calls += 2;
}

// An object that comes and goes.
void Everything::Pass(std::size_t owner, const ApiLibrary& library) {
    m_owners[owner]->Run([&] {
        WatchingClient passing;
        EXPECT_EQ(S_OK, passing.Start(library));
        passing.spApi.Reset();
    });
    ++m_objects;
}

// The writer that was killed may have been in one.
void Everything::EndOfDemo() {
    const RawTransaction transaction;
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 0);
    RawStore::Bump(SettingName(cTablePid));
}

void Everything::Round() {
    const ApiLibrary library;
    std::array<WatchingClient, std::size(cEveryOwnerKind)> clients;
    for (std::size_t i = 0; i < clients.size(); ++i)
        m_owners[i]->Run([&] { ASSERT_EQ(S_OK, clients[i].Start(library)); });
    m_objects += static_cast<unsigned>(clients.size());
    {
        const ToolUser tools(m_outcomes);
        ChildProcess writer(cRestlessRole);
        EXPECT_EQ("ready", writer.Receive());
        writer.Send(std::to_string(m_random()));
        const ULONGLONG end = GetTickCount64() + cRoundTime / 2 + Below(cRoundTime);
        while (GetTickCount64() < end && !HasFailure()) {
            const unsigned owner = Below(std::size(cEveryOwnerKind));
            if (Below(8) == 0)
                Pass(owner, library);
            else
                CallFrom(owner, clients[owner]);
        }
        writer.Kill();
        ++m_kills;
    }
    EndOfDemo();
    for (std::size_t i = 0; i < clients.size(); ++i) {
        m_owners[i]->SetPumping(true);
        EXPECT_TRUE(clients[i].spRecorder->WaitForLine(cBarrier)) << NameOf(cEveryOwnerKind[i]);
        m_owners[i]->SetPumping(cEveryOwnerKind[i] == OwnerKind::eStaPumping);
        m_told += static_cast<unsigned>(clients[i].spRecorder->Log().size());
        m_owners[i]->Run([&] { clients[i].spApi.Reset(); });
        EXPECT_EQ(1u, clients[i].spRecorder->References());
    }
    EXPECT_TRUE(PumpUntil([&] { return library.CanUnloadNow() == S_OK; }, nullptr, 1000));
}

TEST_F(Everything, AtOnceLeavesNothingBehind) {
    const ULONGLONG runTime = cRunTime * Times();
    AllowSeconds(60);
    // It publishes levels all the time, and looks at every change.
    RunningTool sim("kora4sim", {"--quiet"});
    sim.LineWith("ready");
    const ULONGLONG begin = GetTickCount64();
    ULONGLONG report = begin + cReportTime;
    ProcessCounts before{};
    ProcessCounts simBefore{};
    std::size_t bytes = 0;
    unsigned round = 0;
    for (; (GetTickCount64() - begin < runTime || round <= cWarmUp) && !HasFailure(); ++round) {
        if (round == cWarmUp) {
            before = ProcessCounts::Now();
            simBefore = ProcessCounts::Of(sim.ProcessId());
            bytes = HeapBytes();
            for (const std::size_t seen :
                 {before.handles, before.threads, simBefore.handles, simBefore.threads, bytes})
                EXPECT_LT(0u, seen) << "counting does not work";
        }
        Round();
        EXPECT_EQ(nullptr, GetModuleHandleW(L"QXA64T.dll"));
        if (GetTickCount64() >= report) {
            report += cReportTime;
            std::cout << (GetTickCount64() - begin) / 60000 << " min: " << ProcessCounts::Now()
                      << ", " << HeapBytes() << " bytes" << std::endl;
        }
    }
    const ProcessCounts after = ProcessCounts::AtMost(before);
    EXPECT_GE(before.handles + cPlatformHandles, after.handles);
    EXPECT_GE(before.threads, after.threads);
    EXPECT_EQ(before.nextTlsIndex, after.nextTlsIndex);
    if (MustGiveMemoryBack()) {
        EXPECT_GE(bytes + cPlatformBytes, HeapBytes());
    }
    const ProcessCounts simAfter = ProcessCounts::Of(sim.ProcessId());
    EXPECT_TRUE(sim.IsRunning());
    EXPECT_GE(simBefore.handles, simAfter.handles);
    EXPECT_GE(simBefore.threads, simAfter.threads);
    sim.PressCtrlC();
    EXPECT_EQ(0u, sim.WaitForEnd().exitCode);

    std::cout << (GetTickCount64() - begin) / 1000 << " s, " << round << " rounds, " << m_calls
              << " calls, " << m_told << " told, " << m_objects << " objects, " << m_kills
              << " writers killed\n"
              << before << ", " << bytes << " bytes at first; " << after << ", " << HeapBytes()
              << " bytes at last\nkora4sim: " << simBefore << " at first; " << simAfter
              << " at last\n";
    for (const auto& [outcome, times] : m_outcomes)
        std::cout << outcome << ": " << times << " times\n";
    EXPECT_NE(0u, m_outcomes["kora4ctl dump 0"]);
    EXPECT_NE(0u, m_outcomes["kora4ctl load 0"]);
}

}  // namespace
}  // namespace kora4::test
