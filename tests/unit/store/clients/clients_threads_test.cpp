// SPDX-License-Identifier: MIT
// Clients from several threads: the mutex alone keeps them apart. The thread sanitizer sees
// here what a function does without it.
#include <thread>

#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

constexpr std::uint32_t cRounds = 100;

// Sets a value of its own to 0 and 1 in turn, and reads it each time.
template <typename Value>
void SetAndRead(TestClient& client, ApiTechnology technology) {
    for (std::uint32_t round = 0; round < cRounds; ++round) {
        const Value value = round % 2 == 0 ? Value{0} : Value{1};
        EXPECT_EQ(result::cOk, client->SetPatchValue(technology, sizeof value, &value));
        Value read{2};
        EXPECT_EQ(result::cOk, client->GetPatchValue(technology, sizeof read, &read));
        EXPECT_EQ(value, read) << round;
    }
}

TEST(ClientThreads, LoseNoValueAndNoAnnouncement) {
    TestStore store;
    TestClient one(store);
    TestClient other(store);
    ASSERT_EQ(result::cOk, one.Start());
    ASSERT_EQ(result::cOk, other.Start());
    {
        const std::jthread leveler(
            [&] { SetAndRead<std::uint32_t>(one, ApiTechnology::eVolumeLeveler); });
        const std::jthread dialog(
            [&] { SetAndRead<float>(one, ApiTechnology::eDialogEnhancer); });
        const std::jthread curve(
            [&] { SetAndRead<std::uint32_t>(other, ApiTechnology::eIntelligentEQ); });
        // The monitor's part.
        const std::jthread passes([&] {
            for (std::uint32_t round = 0; round < cRounds; ++round)
                for (const TestClient::Found& found : one.Analyse())
                    static_cast<void>(one->Overtaken().Contains(found.item));
        });
    }
    for (const auto technology : {eVolumeTech, eEnhancementTech, eDynamicEQTech})
        EXPECT_EQ(cRounds,
                  store.m_access.NumberAt(eKeySetDynamic, PresetTriggerKey(technology)));
}

}  // namespace
}  // namespace kora4
