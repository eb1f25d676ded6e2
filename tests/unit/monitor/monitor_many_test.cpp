// SPDX-License-Identifier: MIT
// Many monitors in one process, which share apartments and the registrations there.
#include <objbase.h>

#include <memory>
#include <vector>

#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

constexpr int cMonitors = 50;

// Starts a monitor, awaits its notification of one write, stops it; again and again.
void StartNotifyStop(Apartment kind, int rounds, std::atomic<int>& done) {
    TestKey key;
    for (int round = 0; round < rounds; ++round) {
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client)) << "round " << round;
        key.Write();
        ASSERT_TRUE(client.AwaitCall(kind)) << "round " << round;
        monitor->TerminateRegMonitor();
        ASSERT_EQ(1u, monitor.References());
        ++done;
    }
}

// The threads are the program's: no more than 63 apartments may come to be.
class ManyMonitors : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        for (int i = 0; i < cMonitors; ++i) {
            s_single.push_back(std::make_unique<ApartmentThread>(Apartment::eSingle));
            s_multi.push_back(std::make_unique<ApartmentThread>(Apartment::eMulti));
        }
    }
    static void TearDownTestSuite() {
        s_single.clear();
        s_multi.clear();
    }

    void Run(const std::function<Apartment(int)>& kindOf) {
        constexpr int cRounds = 20;
        std::atomic<int> done{0};
        const auto threadOf = [&](int i) -> ApartmentThread& {
            auto& threads = kindOf(i) == Apartment::eSingle ? s_single : s_multi;
            return *threads[static_cast<std::size_t>(i)];
        };
        for (int i = 0; i < cMonitors; ++i)
            threadOf(i).Begin([&, i] { StartNotifyStop(kindOf(i), cRounds, done); });
        for (int i = 0; i < cMonitors; ++i)
            threadOf(i).Await();
        EXPECT_EQ(cMonitors * cRounds, done);
        EXPECT_FALSE(Module::IsLocked());
    }

    static inline std::vector<std::unique_ptr<ApartmentThread>> s_single;
    static inline std::vector<std::unique_ptr<ApartmentThread>> s_multi;
};

TEST_F(ManyMonitors, StartAndStopAtOnceInTheMultithreadedApartment) {
    Run([](int) { return Apartment::eMulti; });
}

TEST_F(ManyMonitors, StartAndStopAtOnceInSingleThreadedApartments) {
    Run([](int) { return Apartment::eSingle; });
}

TEST_F(ManyMonitors, StartAndStopAtOnceInBothKindsOfApartment) {
    Run([](int i) { return i % 2 ? Apartment::eMulti : Apartment::eSingle; });
}

class MonitorsOfOneApartment : public InApartment {};

TEST_P(MonitorsOfOneApartment, AllHearOfAWriteAndStopInAnyOrder) {
    Run([] {
        TestKey key;
        std::vector<std::unique_ptr<RecordingClient>> clients;
        std::vector<std::unique_ptr<MonitorOwner>> monitors;
        for (int i = 0; i < cMonitors; ++i) {
            clients.push_back(std::make_unique<RecordingClient>());
            monitors.push_back(std::make_unique<MonitorOwner>());
            ASSERT_EQ(S_OK, monitors.back()->Spawn(key, *clients.back()));
        }
        key.Write();
        for (const auto& client : clients)
            ASSERT_TRUE(client->AwaitCall(GetParam()));
        // The first registered goes first, and the rest still hear.
        for (std::size_t i = 0; i < cMonitors; i += 2)
            monitors[i].reset();
        key.Write();
        for (std::size_t i = 1; i < cMonitors; i += 2)
            ASSERT_TRUE(clients[i]->AwaitCall(GetParam()));
        MonitorOwner late;
        RecordingClient lateClient;
        ASSERT_EQ(S_OK, late.Spawn(key, lateClient));
        key.Write();
        EXPECT_TRUE(lateClient.AwaitCall(GetParam()));
    });
    EXPECT_FALSE(Module::IsLocked());
}

KORA4_IN_APARTMENTS(MonitorsOfOneApartment, Apartment::eSingle, Apartment::eMulti);

// A thread that leaves its apartment without a stop and enters a new one has the same
// apartment id there, but nothing registered any more.
TEST(MonitorsOfOneThread, StartInEachNewApartment) {
    TestKey key;
    RecordingClient client;
    std::vector<ComObject<OpenMonitor>*> abandoned;
    RunInNewThread(Apartment::eNone, [&] {
        for (int i = 0; i < 3; ++i) {
            ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
            ComObject<OpenMonitor>* pMonitor = nullptr;
            ASSERT_EQ(S_OK, ComObject<OpenMonitor>::Create(&pMonitor));
            abandoned.push_back(pMonitor);
            ASSERT_EQ(S_OK, pMonitor->SpawnRegMonitor(HKEY_CURRENT_USER, key.Path(), &client));
            CoUninitialize();
        }
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        // The shares of the old apartment must not take away the new one's registration.
        for (auto* const pMonitor : abandoned) {
            pMonitor->TerminateRegMonitor();
            EXPECT_EQ(0u, pMonitor->Release());
        }
        {
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            key.Write();
            EXPECT_TRUE(client.AwaitCall(true));
        }
        CoUninitialize();
    });
    EXPECT_FALSE(Module::IsLocked());
}

}  // namespace
}  // namespace kora4::test
