// SPDX-License-Identifier: MIT
// Stores full of rubbish: every load must give usable records.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "contract/defaults.h"
#include "contract/patch_records.h"
#include "contract/profiles.h"
#include "store/patches/managed_patch_set.h"
#include "support/memory_key_access.h"

namespace kora4 {
namespace {

constexpr unsigned cStores = 3000;
constexpr std::uint32_t cLastPid = 13;

class RandomStore {
  public:
    explicit RandomStore(unsigned seed) : m_random(seed) {}

    // Every value of a profile and of the global technologies, each present or not.
    void Fill(test::MemoryKeyAccess& store, std::uint32_t profile) {
        for (std::uint32_t pid = 0; pid <= cLastPid; ++pid) {
            for (std::uint32_t t = 1; t < 8; ++t)
                Maybe(store, pkey::PresetPatch(KORA4PresetTechnology(t), profile, pid));
            for (std::uint32_t t = 1; t < 4; ++t)
                Maybe(store, GlobalPatchKey(KORA4GlobalTechnology(t), pid));
        }
        for (std::uint32_t t = 0; t < 8; ++t)
            Maybe(store, PresetTriggerKey(KORA4PresetTechnology(t)));
        for (std::uint32_t t = 0; t < 4; ++t)
            Maybe(store, GlobalTriggerKey(KORA4GlobalTechnology(t)));
    }

    std::uint32_t Below(std::uint32_t bound) {
        return std::uniform_int_distribution<std::uint32_t>(0, bound - 1)(m_random);
    }

  private:
    void Maybe(test::MemoryKeyAccess& store, const PropertyKey& key) {
        if (Below(5) != 0)
            store.Put(key.pid == 0 ? eKeySetDynamic : eKeySetStatic, key, Value());
    }

    test::StoredValue Value() {
        switch (Below(8)) {
            case 0:
                return Below(0xFFFFFFFF);
            case 1:
                return Below(8);
            case 2:
                return test::Unreadable{};
            case 3:
                return test::Blob(Below(64), 0x30);
            case 4:
                return Noise(Below(2200));
            case 5:
                return Damaged(Array());
            default:
                return Array();
        }
    }

    std::u16string Noise(std::uint32_t length) {
        constexpr char16_t cAlphabet[] =
            u"0123456789abcdefABCDEFxX,, \t\r\n-+.einfnag\u00e9\xd800";
        std::u16string text;
        for (std::uint32_t i = 0; i < length; ++i)
            text += cAlphabet[Below(std::size(cAlphabet) - 1)];
        return text;
    }

    std::u16string Array() {
        constexpr const char16_t* cScales[] = {u"0100", u"0001",  u"0",
                                               u"ffff", u"10000", u"100000000"};
        constexpr const char16_t* cElements[] = {u"f400", u"0",     u"8000",
                                                 u"ffff", u"10000", u"0x7F"};
        const std::uint32_t count = Below(44);
        std::u16string text = cScales[Below(Below(3) == 0 ? 6 : 2)];
        text += u',';
        text += u"0123456789abcdef"[count >> 4];
        text += u"0123456789abcdef"[count & 15];
        for (std::uint32_t i = 0; i < count; ++i) {
            text += u",\t "[Below(3)];
            text += cElements[Below(Below(40) == 0 ? 6 : 4)];
        }
        return text;
    }

    std::u16string Damaged(std::u16string text) {
        const auto place = Below(static_cast<std::uint32_t>(text.size()));
        switch (Below(3)) {
            case 0:
                text.resize(place);
                break;
            case 1:
                text[place] = static_cast<char16_t>(Below(0x10000));
                break;
            default:
                text.insert(place, Noise(1 + Below(300)));
        }
        return text;
    }

    std::mt19937 m_random;
};

bool AreFinite(const float* pElements, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!std::isfinite(pElements[i]))
            return false;
    }
    return true;
}

void ExpectUsable(const KORA4ManagedPatchSet& patches) {
    const PatchRecords& r = patches.m_records;
    const struct {
        std::uint32_t count;
        const float* pElements;
    } arrays[] = {
        {r.dynamicEQ.freqCount, r.dynamicEQ.freq},
        {r.dynamicEQ.curveCount, r.dynamicEQ.curve},
        {r.standardEQ.freqCount, r.standardEQ.stdEqFreq},
        {r.standardEQ.gainCount, r.standardEQ.stdEqGain},
        {r.audioRegulator.freqCount, r.audioRegulator.freq},
        {r.audioRegulator.thresholdCount[0], r.audioRegulator.threshold[0]},
        {r.audioRegulator.thresholdCount[1], r.audioRegulator.threshold[1]},
        {r.audioOptimizer.freqCount, r.audioOptimizer.freq},
        {r.audioOptimizer.gainCount[0], r.audioOptimizer.gain[0]},
        {r.audioOptimizer.gainCount[7], r.audioOptimizer.gain[7]},
    };
    for (const auto& [count, pElements] : arrays) {
        ASSERT_GE(cMaxArrayElements, count);
        ASSERT_TRUE(AreFinite(pElements, count));
    }
    ASSERT_GE(cMaxArrayElements, r.audioRegulator.isolateCount);
    for (const std::uint32_t flag : r.audioRegulator.isolate)
        ASSERT_GE(1u, flag);
    ASSERT_EQ(20u, r.dynamicEQ.curveCount);
    ASSERT_GT(6u, r.dynamicEQ.curveIndex);
    ASSERT_GE(1u, r.volume.switch4);
    ASSERT_GE(1u, r.volume.switch5);
    ASSERT_TRUE(std::isfinite(r.headphone.surroundBoost));
    ASSERT_TRUE(std::isfinite(r.enhancement.amount));
    for (const std::uint32_t flag : patches.m_dwPresetOnElseOff)
        ASSERT_GE(1u, flag);
    for (const std::uint32_t flag : patches.m_dwGlobalOnElseOff)
        ASSERT_GE(1u, flag);
}

TEST(RandomStores, LoadWithoutAFailureAndGiveUsableRecords) {
    RandomStore random(20240607);
    for (unsigned i = 0; i < cStores; ++i) {
        SCOPED_TRACE(i);
        constexpr std::uint32_t cProfiles[] = {
            0, 1, 2, 3, 8, cDemoMovieProfile, cDemoMusicProfile, cDemoGamesProfile};
        const std::uint32_t profile = cProfiles[random.Below(std::size(cProfiles))];
        test::MemoryKeyAccess store;
        random.Fill(store, profile);
        KORA4ManagedPatchSet patches;
        patches.LoadTriggers(store);
        for (std::uint32_t t = 1; t < 8; ++t)
            ASSERT_EQ(result::cOk,
                      patches.LoadPresetPatch(store, profile, false, KORA4PresetTechnology(t)));
        for (std::uint32_t t = 1; t < 4; ++t)
            ASSERT_EQ(result::cOk, patches.LoadGlobalPatch(store, KORA4GlobalTechnology(t)));
        ExpectUsable(patches);
    }
}

TEST(RandomStores, SurviveBeingWrittenBackAndReadAgain) {
    RandomStore random(7);
    for (unsigned i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        test::MemoryKeyAccess store;
        random.Fill(store, 4);
        KORA4ManagedPatchSet patches;
        patches.LoadPresetPatches(store, 4, false);
        for (std::uint32_t t = 1; t < 8; ++t)
            ASSERT_EQ(result::cOk,
                      patches.WritePresetPatch(store, 4, KORA4PresetTechnology(t), true));
        const VolumePatch volume = patches.m_records.volume;
        const std::uint32_t bands = patches.m_records.standardEQ.freqCount;
        patches.Reset();
        patches.LoadPresetPatches(store, 4, false);
        ASSERT_EQ(volume.amount, patches.m_records.volume.amount);
        ASSERT_EQ(bands, patches.m_records.standardEQ.freqCount);
        ExpectUsable(patches);
    }
}

}  // namespace
}  // namespace kora4
