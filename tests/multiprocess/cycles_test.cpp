// SPDX-License-Identifier: MIT
// Objects and the library come and go a great many times and leave nothing behind.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "multiprocess/owner_parameter.h"
#include "multiprocess/process_counts.h"
#include "multiprocess/watchdog.h"

namespace kora4::test {
namespace {

constexpr int cWarmUp = 10;
constexpr int cRounds = 3;
constexpr std::size_t cPlatformHandles = 2;
constexpr std::size_t cPlatformBytes = 4096;
constexpr int cObjectCycles = 500;
constexpr int cPendingCycles = 100;
constexpr int cLoadCycles = 2000;
constexpr int cLoadsToAnObject = 8;  // every so many loads an object is brought up

class Cycles : public testing::TestWithParam<OwnerKind> {
  protected:
    // Runs the cycle on the owner's thread.
    void ExpectNothingLeft(int cycles, const std::function<void(int)>& cycle) {
        cycles *= static_cast<int>(Times());
        const auto run = [&](int count) {
            for (int i = 0; i < count && !HasFailure(); ++i)
                m_owner.Run([&] { cycle(i); });
        };
        run(cWarmUp);
        const std::size_t bytes = HeapBytes();
        const ProcessCounts before = ProcessCounts::Now();
        ASSERT_NE(0u, bytes);
        ASSERT_NE(0u, before.handles);
        ASSERT_NE(0u, before.threads);
        // The platform keeps a handle or two for calls that are on their way and gives them
        // back when it likes: the number moves, and does not grow. What the library left
        // would grow from cycle to cycle, so after all rounds even one in a hundred shows.
        ProcessCounts after{};
        for (int round = 0; round < cRounds; ++round) {
            run(cycles);
            after = ProcessCounts::AtMost(before);
            if (after.handles <= before.handles && after.threads <= before.threads)
                break;
        }
        EXPECT_LE(after.handles, before.handles + cPlatformHandles);
        EXPECT_LE(after.threads, before.threads);
        EXPECT_EQ(after.nextTlsIndex, before.nextTlsIndex);
        // A byte in each cycle shows in a long run, sixteen of them in a short one.
        if (MustGiveMemoryBack()) {
            EXPECT_LE(HeapBytes(), bytes + cPlatformBytes);
        }
    }

    RawStore m_store;
    ApartmentThread m_owner{GetParam()};
};

TEST_P(Cycles, OfObjectsLeaveNothingBehind) {
    AllowSeconds(120);
    const ApiLibrary library;
    ExpectNothingLeft(cObjectCycles, [&](int) {
        WatchingClient client;
        EXPECT_EQ(S_OK, client.Start(library));
        client.spApi.Reset();
        EXPECT_EQ(1u, client.spRecorder->References());
        EXPECT_EQ(S_OK, library.CanUnloadNow());
    });
}

TEST_P(Cycles, OfObjectsWithNotificationsOnTheirWayLeaveNothingBehind) {
    const ApiLibrary library;
    ExpectNothingLeft(cPendingCycles, [&](int cycle) {
        WatchingClient client;
        EXPECT_EQ(S_OK, client.Start(library));
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid),
                            static_cast<DWORD>(cycle) % 2 + 1);
        client.spApi.Reset();
        PumpUntil([&] { return library.CanUnloadNow() == S_OK; }, nullptr, 1000);
        EXPECT_EQ(S_OK, library.CanUnloadNow());
        EXPECT_EQ(1u, client.spRecorder->References());
    });
}

TEST_P(Cycles, OfTheLibraryLeaveNothingBehind) {
    AllowSeconds(120);
    // Single-threaded apartments take more than twice as long.
    const int cycles = GetParam() == OwnerKind::eMta ? cLoadCycles : cLoadCycles / 4;
    ExpectNothingLeft(cycles, [&](int cycle) {
        {
            const ApiLibrary library;
            WatchingClient client;
            if (cycle % cLoadsToAnObject == 0) {
                EXPECT_EQ(S_OK, client.Start(library));
            }
        }
        EXPECT_EQ(nullptr, GetModuleHandleW(L"QXA64T.dll"));
    });
}

INSTANTIATE_TEST_SUITE_P(Owner, Cycles, testing::ValuesIn(cEveryOwnerKind), NameOfOwner);

}  // namespace
}  // namespace kora4::test
