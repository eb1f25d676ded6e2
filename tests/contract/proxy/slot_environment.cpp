// SPDX-License-Identifier: MIT
// The frame of the slot programs: makes the shared apartments, says at the end which slots
// calls through a proxy have reached, and fails a full run that left one out.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "contract/proxy/border.h"

namespace kora4::test {
namespace {

// The remotable slots, first and last. A program without the private proxies (the SDK's)
// knows the public interfaces only.
struct SlotRange {
    const char* interfaceName;
    int first;
    int last;
};
const SlotRange cPublicSlots[] = {{"IVeltoKORA4API", 3, 32}, {"IVeltoKORA4APICallback", 3, 8}};
#ifdef KORA4_TEST_PRIVATE_PROXIES
const SlotRange cPrivateSlots[] = {{"ICOMCallbackGate", 3, 3},
                                   {"IKaltrixAudioProcessor", 3, 6},
                                   {"IKaltrixVersion", 3, 3},
                                   {"IKaltrixVeltoKORA4", 7, 15}};
#endif

void Report(const SlotRange& range, bool fullRun) {
    const auto& reached = ReachedSlots()[range.interfaceName];
    for (int slot = range.first; slot <= range.last; ++slot) {
        const auto found = reached.find(slot);
        const bool covered = found != reached.end();
        std::printf("%-24s slot %2d  %s\n", range.interfaceName, slot,
                    covered ? found->second.c_str() : "NOT REACHED");
        EXPECT_TRUE(covered || !fullRun) << range.interfaceName << " slot " << slot;
    }
    for (const auto& [slot, name] : reached)
        EXPECT_TRUE(slot >= range.first && slot <= range.last)
            << name << " was reached through a proxy";
}

std::unique_ptr<SharedApartments> g_apartments;

class SlotTests : public testing::Environment {
  public:
    void SetUp() override { g_apartments = std::make_unique<SharedApartments>(); }
    void TearDown() override {
        g_apartments.reset();
        const auto* unit = testing::UnitTest::GetInstance();
        const bool fullRun = unit->test_to_run_count() == unit->total_test_count();
        for (const SlotRange& range : cPublicSlots)
            Report(range, fullRun);
#ifdef KORA4_TEST_PRIVATE_PROXIES
        for (const SlotRange& range : cPrivateSlots)
            Report(range, fullRun);
#endif
    }
};

const auto* const g_environment = testing::AddGlobalTestEnvironment(new SlotTests);

}  // namespace

SharedApartments& Apartments() {
    return *g_apartments;
}

}  // namespace kora4::test
