// SPDX-License-Identifier: MIT
// Thousands of damaged stores under the built library: random_store_test [STORES [SEED]].
#include <gtest/gtest.h>

#include <cstdio>

#include "faults/damage.h"
#include "faults/store_trial.h"
#include "support/com_client.h"
#include "support/program_arguments.h"
#include "support/raw_store.h"

namespace kora4::test {
namespace {

constexpr std::uint32_t cStores = 1000;
constexpr std::uint32_t cNotifiedEvery = 8;
// A store forgets its damage after so many rounds: values that are absent come back.
constexpr std::uint32_t cFreshEvery = 100;

const std::uint32_t s_stores = ProgramArgument(1, cStores);
const std::uint32_t s_seed = SeedArgument(2);

// No line leaves the library, except now and then through every category. The word itself
// may be damaged, but never asks for files.
void SetTraceWord(StoreKeys& keys, Damage& damage) {
    constexpr std::uint32_t cFiles = 0x01000000;
    constexpr std::uint32_t cEveryEntryAndExit = 0x00000800;
    const std::wstring name = SettingName(cTraceWordPid);
    if (damage.OneIn(20))
        keys.Write(StoreKeys::eStatic, name, REG_DWORD, {1, 2, 3});
    else if (damage.OneIn(50))
        keys.WriteNumber(StoreKeys::eStatic, name,
                         damage.Number() & ~(cFiles | cEveryEntryAndExit));
    else
        keys.WriteNumber(StoreKeys::eStatic, name, 0);
}

TEST(RandomStore, EveryMethodCopesWithAnyStore) {
    const std::uint32_t seed = s_seed;
    const std::uint32_t stores = s_stores;
    std::printf("%u stores, seed %u\n", static_cast<unsigned>(stores),
                static_cast<unsigned>(seed));
    std::fflush(stdout);

    const Apartment apartment(COINIT_APARTMENTTHREADED);
    const ApiLibrary library;
    ASSERT_TRUE(library.IsLoaded());
    RawStore store;
    StoreKeys keys;
    Damage damage(seed);
    const std::vector<SchemaValue> schema = WholeSchema();
    for (std::uint32_t i = 0; i < stores && !HasFailure(); ++i) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", store " + std::to_string(i));
        if (i % cFreshEvery == 0) {
            for (const SchemaValue& value : schema) {
                keys.Delete(value.key, value.name);
                if (damage.OneIn(3))
                    damage.Apply(keys, value);
            }
        }
        SetTraceWord(keys, damage);
        StoreTrial trial(keys, damage);
        trial.Run(library.Create());
        if (i % cNotifiedEvery == 0 && !HasFailure())
            trial.RunNotification();
    }
    for (const auto& [outcome, times] : StoreTrial::Outcomes())
        std::printf("%s  %u times\n", outcome.c_str(), times);
}

}  // namespace
}  // namespace kora4::test
