// SPDX-License-Identifier: MIT
// A writer that is killed before and after each registry write of each method.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "faults/fault_injector.h"
#include "faults/store_reader.h"
#include "multiprocess/api_commands.h"
#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"
#include "multiprocess/watchdog.h"
#include "multiprocess/working_store.h"
#include "support/program_arguments.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;
using Values = std::map<std::wstring, StoredValue>;

struct Scenario {
    std::string call;
    std::vector<std::string> before = {"Initialize"};
};

// Every method that writes; Initialize creates keys.
std::vector<Scenario> Scenarios() {
    std::vector<Scenario> scenarios = {
        {"Initialize", {}},
        {"SetActiveProfile 2"},
        {"SetActiveProfile 3"},
        {"RevertActiveProfile"},
        {"SetDemoProfileAndEnable 241 0"},
        {"SetDemoProfileAndEnable 242 1", {"Initialize", "SetDemoProfileAndEnable 241 0"}},
        {"RevertFromDemoMode", {"Initialize", "SetDemoProfileAndEnable 241 0"}},
        {"ForceRevertFromDemoMode", {"Initialize", "SetDemoProfileAndEnable 241 0"}},
        {"SetVeltoEnable 0"},
        {"ToggleVeltoEnable"},
        {"SetVisualizationSamplingPeriod 40"},
        {"CreateCustomProfile 4 new"},
        {"SetCustomProfileName 3 other"},
        {"DeleteCustomProfile 3"},
        {"SetGraphicEQData 20 7"},
        // In a custom profile, whose values are a copy.
        {"SetGraphicEQData 20 7", {"Initialize", "SetActiveProfile 3"}},
    };
    for (const char technology : {'0', '1', '2', '3', '4', '5'})
        scenarios.push_back({std::string("SetTechnologyOnElseOff ") + technology + " 0"});
    for (const char technology : {'0', '2', '3', '4', '5'})
        scenarios.push_back({std::string("SetSimplePatchValue ") + technology + " 1"});
    return scenarios;
}

class KilledWriters : public testing::Test {
  protected:
    KilledWriters() {
        std::printf("every kill of %u, seed %u\n", m_each, m_seed);
        AllowSeconds(1800);
        m_owner.Run([this] {
            EXPECT_EQ(S_OK, m_client.Start(m_library));
            // Values of all kinds: set, as they were delivered, of a profile of one's own.
            for (const char* const command :
                 {"SetGraphicEQData 12 3", "SetSimplePatchValue 0 5",
                  "SetSimplePatchValue 3 0.5", "CreateCustomProfile 3 old",
                  "SetTechnologyOnElseOff 2 1"})
                EXPECT_EQ(S_OK, RunApiCommand(*m_client.spApi.Get(), command));
        });
        m_base = m_keys.Everything();
    }
    ~KilledWriters() override {
        m_owner.Run([this] { m_client = {}; });
    }

    bool IsSelected() { return ++m_considered % m_each == 0; }

    void Restore() {
        for (const auto& [name, value] : m_keys.Everything())
            if (!m_base.contains(name))
                m_keys.Delete(KeyOf(name), name.substr(1));
        for (const auto& [name, value] : m_base)
            m_keys.Write(KeyOf(name), name.substr(1), value.type, value.data);
    }

    // A writer on the restored store, ready for the call.
    std::unique_ptr<ChildProcess> Prepare(const Scenario& scenario) {
        // The next one starts while this one is looked at.
        std::unique_ptr<ChildProcess> upWriter =
            std::exchange(m_upNext, std::make_unique<ChildProcess>(cDoomedRole));
        EXPECT_EQ("ready", upWriter->Receive());
        Restore();
        for (const std::string& command : scenario.before)
            EXPECT_EQ("0x00000000", upWriter->Ask(command)) << command;
        return upWriter;
    }

    // How many writes the call makes, and what it makes of the store.
    std::size_t Count(const Scenario& scenario) {
        const std::unique_ptr<ChildProcess> upWriter = Prepare(scenario);
        m_old = m_keys.Everything();
        const std::size_t writes = std::stoul(upWriter->Ask("count " + scenario.call));
        m_new = m_keys.Everything();
        EXPECT_LT(0u, writes);
        return writes;
    }

    void Kill(const Scenario& scenario, std::size_t write, Death death) {
        const std::unique_ptr<ChildProcess> upWriter = Prepare(scenario);
        const StoreCounters before = StoreCounters::Now();
        upWriter->Send(std::string("die ") + (death == Death::eBefore ? "before " : "after ") +
                       std::to_string(write) + " " + scenario.call);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(upWriter->Process(), cBoundedWait));
        DWORD exitCode = 0;
        GetExitCodeProcess(upWriter->Process(), &exitCode);
        EXPECT_EQ(cKilled, exitCode);
        StoreCounters::Now().ExpectNoneFell(before);
        ExpectOldOrNew();
        ExpectWorking();
        ++m_killed;
    }

    void ExpectOldOrNew() const {
        Values all = m_old;
        all.insert(m_new.begin(), m_new.end());
        Values now = m_keys.Everything();
        for (const auto& [name, value] : all) {
            const auto at = [&](const Values& values) {
                const auto found = values.find(name);
                return found == values.end() ? StoredValue{} : found->second;
            };
            EXPECT_TRUE(at(now) == at(m_old) || at(now) == at(m_new))
                << std::string(name.begin(), name.end());
            now.erase(name);
        }
        EXPECT_TRUE(now.empty());
    }

    void ExpectWorking() {
        const bool isNewFirst = m_killed % 3 == 0;
        if (m_killed % 3 == 1)
            TakeTheStore();
        m_owner.Run([&] {
            const ComPtr<IVeltoKORA4API> spNew = m_library.Create();
            const ULONGLONG start = GetTickCount64();
            LONG profile = -1;
            EXPECT_EQ(S_OK, isNewFirst ? spNew->Initialize()
                                       : m_client.spApi->GetActiveProfile(&profile));
            EXPECT_GT(cAtOnce, GetTickCount64() - start);
            EXPECT_EQ(S_OK, spNew->Initialize());
            ExpectToldOfTheNextWrite(*spNew.Get(), *m_client.spRecorder.Get());
            ExpectEveryMethodToWork(isNewFirst ? *spNew.Get() : *m_client.spApi.Get(),
                                    m_killed);
        });
    }

    unsigned m_killed = 0;

  private:
    static StoreKeys::Key KeyOf(const std::wstring& name) {
        return static_cast<StoreKeys::Key>(name[0] - L'0');
    }

    const unsigned m_each = ProgramArgument(2, 1);
    const unsigned m_seed = SeedArgument(3);
    unsigned m_considered = std::mt19937(m_seed)() % m_each;
    RawStore m_store;
    StoreKeys m_keys;
    ApiLibrary m_library;
    ApartmentThread m_owner{OwnerKind::eStaPumping};
    WatchingClient m_client;
    Values m_base;
    Values m_old;
    Values m_new;
    std::unique_ptr<ChildProcess> m_upNext = std::make_unique<ChildProcess>(cDoomedRole);
};

TEST_F(KilledWriters, AtEachWriteLeaveOldOrNewValues) {
    std::size_t places = 0;
    for (const Scenario& scenario : Scenarios()) {
        SCOPED_TRACE(scenario.call);
        const std::size_t writes = Count(scenario);
        places += 2 * writes;
        for (std::size_t write = 0; write < writes; ++write)
            for (const Death death : {Death::eBefore, Death::eAfter}) {
                if (HasFailure() || !IsSelected())
                    continue;
                SCOPED_TRACE((death == Death::eBefore ? "before write " : "after write ") +
                             std::to_string(write));
                Kill(scenario, write, death);
            }
    }
    std::printf("%u kills at %zu places\n", m_killed, places);
    EXPECT_LT(0u, m_killed);
}

}  // namespace
}  // namespace kora4::test
