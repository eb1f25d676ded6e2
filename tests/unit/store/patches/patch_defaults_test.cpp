// SPDX-License-Identifier: MIT
// Every built-in value, against lists typed a second time as numbers.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "contract/profiles.h"
#include "store/patches/managed_patch_set.h"
#include "support/memory_key_access.h"
#include "support/store_traced.h"

namespace kora4 {
namespace {

using Floats = std::vector<float>;

Floats Taken(const float* pElements, std::uint32_t count) {
    return Floats(pElements, pElements + count);
}

Floats Divided(std::vector<int> numbers, float divisor) {
    Floats floats;
    for (const int number : numbers)
        floats.push_back(static_cast<float>(number) / divisor);
    return floats;
}

const Floats cRegulatorHertz = {47,   141,  234,  328,  469,  656,  844,  1031,  1313,  1688,
                                2250, 3000, 3750, 4688, 5813, 7125, 9000, 11250, 13875, 19688};

// The patch set after loading one profile's built-in values.
class Defaults : public testing::TestWithParam<std::uint32_t> {
  protected:
    Defaults() { m_patches.LoadPresetPatches(m_store, GetParam(), true); }
    ~Defaults() override { EXPECT_EQ(0u, m_store.Operations()) << "the store is not asked"; }

    // The row that applies to the profile.
    std::uint32_t Row() const {
        return IsPresetProfile(GetParam()) ? GetParam()
               : IsDemoProfile(GetParam()) ? GetParam() - cDemoMovieProfile
                                           : 0;
    }

    test::MemoryKeyAccess m_store;
    KORA4ManagedPatchSet m_patches;
};

TEST_P(Defaults, OfTheVolumeRecord) {
    const VolumePatch& volume = m_patches.m_records.volume;
    EXPECT_EQ(Row() == 0 ? 262151u : 0u, volume.amount);
    EXPECT_EQ(1u, volume.switch4);
    EXPECT_EQ(0u, volume.switch5);
    EXPECT_EQ(-20.0f, volume.level6);
    EXPECT_EQ(-20.0f, volume.level7);
    EXPECT_EQ(0.0f, volume.level8);
}

TEST_P(Defaults, OfTheEnhancementRecord) {
    EXPECT_EQ(0.33f, m_patches.m_records.enhancement.amount);
    EXPECT_EQ(0.0f, m_patches.m_records.enhancement.value4);
}

TEST_P(Defaults, OfTheDynamicEQRecord) {
    const DynamicEQPatch& eq = m_patches.m_records.dynamicEQ;
    EXPECT_EQ(0.6f, eq.level);
    EXPECT_EQ((Floats{65,   136,  223,  332,  467,  634,  841,  1098,  1416,  1812,
                      2302, 2909, 3663, 4598, 5756, 7194, 8976, 11186, 13927, 17326}),
              Taken(eq.freq, eq.freqCount));
    EXPECT_EQ(Row() == 1 ? 1u : 0u, eq.curveIndex);
}

TEST_P(Defaults, OfTheStandardEQRecordReadAcrossTheTab) {
    const StandardEQPatch& eq = m_patches.m_records.standardEQ;
    EXPECT_EQ((Floats{32, 64, 125, 250, 500, 1000, 2000, 4000, 8000, 16000}),
              Taken(eq.stdEqFreq, eq.freqCount));
    EXPECT_EQ(Floats(10, 0.0f), Taken(eq.stdEqGain, eq.gainCount));
}

TEST_P(Defaults, OfTheVirtualizers) {
    const float headphone[] = {6.0f, 3.0f, 0.0f};
    const float speakerValue4[] = {6.0f, 0.0f, 0.0f};
    EXPECT_EQ(headphone[Row()], m_patches.m_records.headphone.surroundBoost);
    EXPECT_EQ(0.0f, m_patches.m_records.headphone.value4);
    EXPECT_EQ(10.0f, m_patches.m_records.virtualSurround.surroundBoost);
    EXPECT_EQ(speakerValue4[Row()], m_patches.m_records.virtualSurround.value4);
}

TEST_P(Defaults, OfTheOnOffFlags) {
    // Movie, Music, Games by technology 1 to 7; custom profiles have everything on.
    const std::uint32_t flags[][3] = {{1, 1, 1}, {1, 0, 0}, {0, 1, 0}, {1, 1, 1},
                                      {1, 1, 1}, {1, 0, 1}, {1, 1, 1}};
    for (std::uint32_t t = 1; t < 8; ++t)
        EXPECT_EQ(IsCustomProfile(GetParam()) ? 1u : flags[t - 1][Row()],
                  m_patches.m_dwPresetOnElseOff[t])
            << t;
}

INSTANTIATE_TEST_SUITE_P(EveryProfile, Defaults,
                         testing::Values(0, 1, 2, 3, 4, 5, 6, 7, 8, cDemoMovieProfile,
                                         cDemoMusicProfile, cDemoGamesProfile));

TEST(DynamicEQCurves, AreTheSixBuiltInOnes) {
    const std::vector<int> curves[] = {
        {2398, 2240, 2964, 3489, 3031, 3123, 3246, 3174, 3448, 3686,
         3683, 3799, 3765, 3793, 3473, 2613, 1807, 816,  -399, -3468},
        {1879, 2132, 3002, 2810, 2252, 2385, 2795, 2956, 2956, 3194,
         3778, 3873, 3653, 3415, 2915, 2117, 1753, 1085, -427, -3840},
        {-6702, -1784, 1203, 1863, 1807, 2552,  2641, 1287,  980,   1267,
         1564,  1940,  1026, 1121, 704,  -1141, -522, -1602, -3814, -6574},
        {942,  1817, 3200, 3322, 2552, 2240, 1937, 2099, 2245, 2360,
         2624, 2936, 2634, 2595, 2734, 2534, 2196, 1379, 829,  -947},
        {1064, 1520, 2746, 2606, 2685, 3223, 3025, 3878, 3141, 3537,
         3079, 2969, 2688, 2219, 1630, 913,  555,  140,  -885, -3758},
        {2426, 2580, 3573, 3333, 2805, 2844, 2611, 2373,  2657,  2434,
         2700, 2805, 2511, 1881, 903,  94,   -611, -1584, -3415, -6295}};
    test::MemoryKeyAccess store;
    KORA4ManagedPatchSet patches;
    const DynamicEQPatch& eq = patches.m_records.dynamicEQ;
    for (std::uint32_t index = 0; index < 6; ++index) {
        store.Put(eKeySetStatic, pkey::PresetPatch(eDynamicEQTech, cMovieProfile, 5), index);
        patches.LoadPresetPatch(store, cMovieProfile, false, eDynamicEQTech);
        EXPECT_EQ(index, eq.curveIndex);
        EXPECT_EQ(Divided(curves[index], 256.0f), Taken(eq.curve, eq.curveCount)) << index;
    }
}

TEST(GlobalDefaults, AreTheBuiltInOnes) {
    test::MemoryKeyAccess store;
    KORA4ManagedPatchSet patches;
    patches.LoadGlobalPatches(store);
    const PatchRecords& records = patches.m_records;

    EXPECT_EQ(9.0f, records.peakLimiter.value3);

    const AudioRegulatorPatch& regulator = records.audioRegulator;
    EXPECT_EQ(0.0f, regulator.value3);
    EXPECT_EQ(1.0f, regulator.value4);
    EXPECT_EQ(cRegulatorHertz, Taken(regulator.freq, regulator.freqCount));
    EXPECT_EQ(Floats(20, -12.0f), Taken(regulator.threshold[0], regulator.thresholdCount[0]));
    EXPECT_EQ(Floats(20, 0.0f), Taken(regulator.threshold[1], regulator.thresholdCount[1]));
    EXPECT_EQ(20u, regulator.isolateCount);
    for (const std::uint32_t flag : regulator.isolate)
        EXPECT_EQ(0u, flag);

    const AudioOptimizerPatch& optimizer = records.audioOptimizer;
    EXPECT_EQ(2u, optimizer.value3);
    EXPECT_EQ(cRegulatorHertz, Taken(optimizer.freq, optimizer.freqCount));
    for (std::size_t channel = 0; channel < 8; ++channel)
        EXPECT_EQ(Floats(20, 0.0f),
                  Taken(optimizer.gain[channel], optimizer.gainCount[channel]));

    for (std::uint32_t t = 1; t < 4; ++t)
        EXPECT_EQ(1u, patches.m_dwGlobalOnElseOff[t]);
}

TEST(DefaultsIndex, IsTheProfilesOwnRowOrThatOfItsDemoOrMovies) {
    const struct {
        std::uint32_t profile, row;
    } rows[] = {{0, 0},
                {1, 1},
                {2, 2},
                {3, 0},
                {8, 0},
                {9, 0},
                {cDemoMovieProfile, 0},
                {cDemoMusicProfile, 1},
                {cDemoGamesProfile, 2},
                {243, 0},
                {239, 0},
                {999, 0},
                {0x7FFFFFFF, 0},
                {0xFFFFFFFF, 0}};
    const test::StoreTrace trace(trace::eAssertions);
    for (const auto& [profile, row] : rows)
        EXPECT_EQ(row, KORA4ManagedPatchSet::DefaultsIndexForProfile(profile)) << profile;
    EXPECT_EQ(0u, trace.NumberOfAssertions());
}

TEST(DefaultOnElseOff, IsOnForEverythingWithoutARow) {
    const test::StoreTrace trace(trace::eAssertions);
    for (const std::uint32_t profile : {3u, 8u, 9u, 239u, 243u, 999u})
        EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eDynamicEQTech, profile));
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(ePresetNoTech, 0));
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(KORA4PresetTechnology(8), 1));
    EXPECT_EQ(0u, trace.NumberOfAssertions());
}

TEST(DefaultOnElseOff, OfADemoProfileIsThatOfItsPresetProfile) {
    EXPECT_FALSE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eDynamicEQTech, cDemoMovieProfile));
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eDynamicEQTech, cDemoMusicProfile));
    EXPECT_FALSE(
        KORA4ManagedPatchSet::GetDefaultOnElseOff(eVirtualSurroundTech, cDemoMusicProfile));
}

TEST(DefaultOnElseOff, AssertsThatTheProfileIsNotNegativeAndIsOn) {
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eDynamicEQTech, 0x80000000));
    EXPECT_EQ(test::Texts{"!(profile < 0)"}, trace.FailedAssertions("KORA4PropKeyFields"));
}

TEST(DefaultOnElseOff, OfAGlobalTechnologyIsOnAndAssertsThatItIsOne) {
    const test::StoreTrace trace(trace::eAssertions);
    for (std::uint32_t t = 1; t < 4; ++t)
        EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(KORA4GlobalTechnology(t)));
    EXPECT_EQ(0u, trace.NumberOfAssertions());
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eGlobalNoTech));
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eNumberKORA4GlobalTechnologies));
    EXPECT_EQ((test::Texts{"!\"Invalid global tech\"", "!\"Invalid global tech\""}),
              trace.FailedAssertions("KORA4PropKeyFields"));
}

}  // namespace
}  // namespace kora4
