// SPDX-License-Identifier: MIT
// Writers that are killed at any moment leave a store that every method works with.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <random>
#include <string>

#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"
#include "multiprocess/watchdog.h"
#include "multiprocess/working_store.h"
#include "support/program_arguments.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr DWORD cLongestLife = 12;  // milliseconds of writing

class DyingWriters : public testing::Test {
  protected:
    DyingWriters() {
        std::printf("%u kills, seed %u\n", m_kills, m_seed);
        AllowSeconds(60 + m_kills * 2);
        // A client that survives them all.
        m_owner.Run([this] { EXPECT_EQ(S_OK, m_client.Start(m_library)); });
    }
    ~DyingWriters() override {
        m_owner.Run([this] { m_client = {}; });
    }

    // Kills a writer after a random time of writing.
    void KillOne() {
        // The next one starts while this one's traces are looked at.
        const std::unique_ptr<ChildProcess> upWriter =
            std::exchange(m_upNext, std::make_unique<ChildProcess>(cRestlessRole));
        EXPECT_EQ("ready", upWriter->Receive());
        const StoreCounters before = StoreCounters::Now();
        upWriter->Send(std::to_string(m_random()));
        const DWORD life = static_cast<DWORD>(m_random() % (cLongestLife + 1));
        EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(upWriter->Process(), life));
        upWriter->Kill();
        StoreCounters::Now().ExpectNoneFell(before);
    }

    const unsigned m_kills = ProgramArgument(1, 200);
    const unsigned m_seed = SeedArgument(3);
    RawStore m_store;
    ApiLibrary m_library;
    ApartmentThread m_owner{OwnerKind::eStaPumping};
    WatchingClient m_client;
    std::mt19937 m_random{m_seed};
    std::unique_ptr<ChildProcess> m_upNext = std::make_unique<ChildProcess>(cRestlessRole);
};

TEST_F(DyingWriters, LeaveAStoreThatEveryMethodWorksWith) {
    unsigned lookedAt = 0;
    unsigned cutOff = 0;
    for (unsigned kill = 0; kill < m_kills && !HasFailure(); ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        KillOne();
        // By turns the first to come is a bare waiter, the survivor, and a new object.
        if (kill % 2 == 0) {
            ++lookedAt;
            cutOff += TakeTheStore() == WAIT_ABANDONED;
        }
        m_owner.Run([&] {
            const ComPtr<IVeltoKORA4API> spNew = m_library.Create();
            const bool isNewFirst = kill % 4 < 2;
            const ULONGLONG start = GetTickCount64();
            LONG profile = -1;
            EXPECT_EQ(S_OK, isNewFirst ? spNew->Initialize()
                                       : m_client.spApi->GetActiveProfile(&profile));
            EXPECT_GT(cAtOnce, GetTickCount64() - start);
            EXPECT_EQ(S_OK, spNew->Initialize());
            ExpectToldOfTheNextWrite(*spNew.Get(), *m_client.spRecorder.Get());
            ExpectEveryMethodToWork(isNewFirst ? *spNew.Get() : *m_client.spApi.Get(), kill);
        });
    }
    // Without any the test would have shown nothing. Half of the kills are looked at.
    EXPECT_LT(0u, cutOff);
    std::printf("%u of %u looked at were cut off in an operation\n", cutOff, lookedAt);
}

}  // namespace
}  // namespace kora4::test
