// SPDX-License-Identifier: MIT
// The working copy of the records, and the exact calls with which it is loaded and stored.
#include "store/patches/managed_patch_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "contract/defaults.h"
#include "contract/profiles.h"
#include "store/patches/field_access.h"
#include "support/memory_key_access.h"
#include "support/store_traced.h"

namespace kora4 {
namespace {

using test::LogEntry;
using test::Operation;
using test::ReadEntry;
using test::Texts;
using test::WriteEntry;

constexpr std::uint32_t cDemoProfiles[] = {cDemoMovieProfile, cDemoMusicProfile,
                                           cDemoGamesProfile};

class PatchSet : public testing::Test {
  protected:
    static PropertyKey Patch(KORA4PresetTechnology technology, std::uint32_t profile,
                             std::uint32_t pid) {
        return pkey::PresetPatch(technology, profile, pid);
    }
    void StoreFlag(KORA4PresetTechnology technology, std::uint32_t profile,
                   std::uint32_t flag) {
        m_store.Put(eKeySetDynamic, Patch(technology, profile, 0), flag);
    }
    void StoreField(KORA4PresetTechnology technology, std::uint32_t profile, std::uint32_t pid,
                    test::StoredValue value) {
        m_store.Put(eKeySetStatic, Patch(technology, profile, pid), std::move(value));
    }
    std::optional<std::uint32_t> Trigger(KORA4PresetTechnology technology) const {
        return m_store.NumberAt(eKeySetDynamic, PresetTriggerKey(technology));
    }

    test::MemoryKeyAccess m_store;
    KORA4ManagedPatchSet m_patches;
};

template <typename T, std::size_t Count>
bool IsClear(const T (&values)[Count]) {
    return std::all_of(std::begin(values), std::end(values), [](T v) { return v == T{}; });
}

bool IsClear(const KORA4ManagedPatchSet& patches) {
    const auto* pBytes = reinterpret_cast<const unsigned char*>(&patches.m_records);
    return std::all_of(pBytes, pBytes + sizeof patches.m_records,
                       [](unsigned char b) { return b == 0; }) &&
           IsClear(patches.m_dwPresetOnElseOff) && IsClear(patches.m_dwGlobalOnElseOff) &&
           IsClear(patches.m_dwPresetTriggers) && IsClear(patches.m_dwGlobalTriggers);
}

// --- construction and reset --------------------------------------------------------------

TEST_F(PatchSet, IsClearAfterConstructionAndFailsNoAssertion) {
    const test::StoreTrace trace(trace::eAssertions);
    const KORA4ManagedPatchSet patches;
    EXPECT_TRUE(IsClear(patches));
    EXPECT_EQ(0u, trace.NumberOfAssertions());
}

TEST_F(PatchSet, IsClearAfterAReset) {
    m_store.Put(eKeySetDynamic, PresetTriggerKey(eVolumeTech), 5u);
    m_patches.LoadPresetPatches(m_store, cMovieProfile, false);
    m_patches.LoadGlobalPatches(m_store);
    m_patches.LoadTriggers(m_store);
    EXPECT_FALSE(IsClear(m_patches));
    m_patches.Reset();
    EXPECT_TRUE(IsClear(m_patches));
}

// --- loading -----------------------------------------------------------------------------

TEST_F(PatchSet, LoadsTheFlagFirstAndThenTheFieldsInTableOrder) {
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 5, false, eDynamicEQTech));
    EXPECT_EQ((Texts{ReadEntry(eKeySetDynamic, Patch(eDynamicEQTech, 5, 0)),
                     LogEntry(Operation::eReadText, eKeySetStatic, Patch(eDynamicEQTech, 5, 3)),
                     LogEntry(Operation::eReadText, eKeySetStatic, Patch(eDynamicEQTech, 5, 4)),
                     ReadEntry(eKeySetStatic, Patch(eDynamicEQTech, 5, 5))}),
              m_store.Log());
}

TEST_F(PatchSet, LoadsTheFlagOnlyOfATechnologyWithoutFields) {
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 0, false, eNGSurroundTech));
    EXPECT_EQ(Texts{ReadEntry(eKeySetDynamic, Patch(eNGSurroundTech, 0, 0))}, m_store.Log());
}

TEST_F(PatchSet, AsksTheStoreForNothingWhenOnlyDefaultsAreWanted) {
    StoreFlag(eVolumeTech, cDemoMovieProfile, 0);
    StoreField(eVolumeTech, cDemoMovieProfile, 3, 5u);
    EXPECT_EQ(result::cOk,
              m_patches.LoadPresetPatch(m_store, cDemoMovieProfile, true, eVolumeTech));
    EXPECT_EQ(0u, m_store.Operations());
    EXPECT_EQ(1u, m_patches.m_dwPresetOnElseOff[eVolumeTech]);
    EXPECT_EQ(defaults::cVolumeAmount[cMovieProfile], m_patches.m_records.volume.amount);
}

TEST_F(PatchSet, LoadsWhatIsStoredUnderADemoProfileWhenAskedTo) {
    StoreField(eVolumeTech, cDemoMusicProfile, 3, 5u);
    EXPECT_EQ(result::cOk,
              m_patches.LoadPresetPatch(m_store, cDemoMusicProfile, false, eVolumeTech));
    EXPECT_EQ(5u, m_patches.m_records.volume.amount);
}

TEST_F(PatchSet, TakesStoredFlagsAsZeroOrOneAndTheDefaultForUnreadableOnes) {
    StoreFlag(eVolumeTech, 1, 0);
    StoreFlag(eEnhancementTech, 1, 7);
    m_store.Put(eKeySetDynamic, Patch(eDynamicEQTech, 1, 0), u"0");
    for (const auto technology : {eVolumeTech, eEnhancementTech, eDynamicEQTech})
        m_patches.LoadPresetPatchEnable(m_store, 1, false, technology);
    EXPECT_EQ(0u, m_patches.m_dwPresetOnElseOff[eVolumeTech]);
    EXPECT_EQ(1u, m_patches.m_dwPresetOnElseOff[eEnhancementTech]);
    EXPECT_EQ(1u, m_patches.m_dwPresetOnElseOff[eDynamicEQTech]);
    EXPECT_FALSE(KORA4ManagedPatchSet::ReadPresetOnElseOff(m_store, 1, eVolumeTech));
    EXPECT_FALSE(KORA4ManagedPatchSet::ReadPresetOnElseOff(m_store, 2, eDynamicEQTech));
}

TEST_F(PatchSet, KeepsCustomProfilesApartAndTakesTheirMissingValuesFromMovie) {
    StoreField(eHeadphoneTech, 5, 3, u"1.5");
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 5, false, eHeadphoneTech));
    EXPECT_EQ(1.5f, m_patches.m_records.headphone.surroundBoost);
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 6, false, eHeadphoneTech));
    EXPECT_EQ(6.0f, m_patches.m_records.headphone.surroundBoost);
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 6, false, eDynamicEQTech));
    EXPECT_EQ(0u, m_patches.m_records.dynamicEQ.curveIndex);
    EXPECT_EQ(1u, m_patches.m_dwPresetOnElseOff[eDynamicEQTech]) << "flags default to on";
}

TEST_F(PatchSet, TakesTheDefaultsOfADemoProfilesOwnRow) {
    m_patches.LoadPresetPatch(m_store, cDemoMusicProfile, false, eDynamicEQTech);
    EXPECT_EQ(1u, m_patches.m_records.dynamicEQ.curveIndex);
    EXPECT_EQ(1u, m_patches.m_dwPresetOnElseOff[eDynamicEQTech]);
}

TEST_F(PatchSet, ReturnsStoredValuesOutsideTheLimitsOfTheAPIAsTheyAre) {
    StoreField(eVolumeTech, 0, 3, 0xFFFFFFFFu);
    StoreField(eHeadphoneTech, 0, 3, u"-1000000.0");
    m_patches.LoadPresetPatches(m_store, 0, false);
    EXPECT_EQ(0xFFFFFFFFu, m_patches.m_records.volume.amount);
    EXPECT_EQ(-1000000.0f, m_patches.m_records.headphone.surroundBoost);
}

TEST_F(PatchSet, TakesTheDefaultForABrokenArrayAndGoesOn) {
    StoreField(eStandardEQTech, 0, 3, u"0001,0014,0001,0002");
    StoreField(eStandardEQTech, 0, 4, u"0100,0001,0100");
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 0, false, eStandardEQTech));
    EXPECT_EQ(10u, m_patches.m_records.standardEQ.freqCount);
    EXPECT_EQ(1u, m_patches.m_records.standardEQ.gainCount);
    EXPECT_EQ(1.0f, m_patches.m_records.standardEQ.stdEqGain[0]);
}

TEST_F(PatchSet, IgnoresAStoredCurveIndexOfSixOrMore) {
    StoreField(eDynamicEQTech, 1, 5, 6u);
    m_patches.LoadPresetPatch(m_store, 1, false, eDynamicEQTech);
    EXPECT_EQ(1u, m_patches.m_records.dynamicEQ.curveIndex);
    StoreField(eDynamicEQTech, 1, 5, 5u);
    m_patches.LoadPresetPatch(m_store, 1, false, eDynamicEQTech);
    EXPECT_EQ(5u, m_patches.m_records.dynamicEQ.curveIndex);
}

TEST_F(PatchSet, LoadsTechnologiesOneToSevenOfAHealthyStoreWithoutAFailedAssertion) {
    const test::StoreTrace trace(trace::eAssertions);
    m_patches.LoadPresetPatches(m_store, 2, false);
    m_patches.LoadGlobalPatches(m_store);
    m_patches.LoadTriggers(m_store);
    m_patches.LoadPresetOnElseOff(m_store, 2);
    m_patches.LoadGlobalOnElseOff(m_store);
    EXPECT_EQ(0u, trace.NumberOfAssertions());
    for (std::uint32_t t = 1; t < 8; ++t) {
        const auto technology = static_cast<KORA4PresetTechnology>(t);
        const std::string entry = ReadEntry(eKeySetDynamic, Patch(technology, 2, 0));
        EXPECT_EQ(2, std::count(m_store.Log().begin(), m_store.Log().end(), entry)) << t;
    }
}

TEST_F(PatchSet, AssertsTheProfileThatIsNoneAndLoadsItAllTheSame) {
    const test::StoreTrace trace(trace::eAssertions);
    StoreField(eVolumeTech, 999, 3, 5u);
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 999, false, eVolumeTech));
    EXPECT_EQ(5u, m_patches.m_records.volume.amount);
    EXPECT_EQ(-20.0f, m_patches.m_records.volume.level6);
    EXPECT_EQ(Texts{"KORA4KeysClient::IsAllowableProfile( profile )"},
              trace.FailedAssertions("KORA4PropKey"));
}

TEST_F(PatchSet, AssertsAndRefusesATechnologyThatIsNone) {
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_EQ(result::cInvalidArg, m_patches.LoadPresetPatch(m_store, 0, false, ePresetNoTech));
    EXPECT_EQ(Texts{"IsValidTechnology( technology )"}, trace.FailedAssertions("KORA4PropKey"));
    EXPECT_EQ(Texts{"!\"Invalid technology\""}, trace.FailedAssertions("KORA4PropKeyFields"));
    EXPECT_EQ(result::cInvalidArg,
              m_patches.LoadPresetPatch(m_store, 0, false, eNumberKORA4PresetTechnologies));
    EXPECT_EQ(result::cInvalidArg,
              m_patches.LoadPresetPatch(m_store, 0, false, KORA4PresetTechnology(0xFFFFFFFF)));
}

TEST_F(PatchSet, LoadsEnableAndFieldsOfAGlobalTechnology) {
    m_store.Put(eKeySetDynamic, GlobalPatchKey(eAudioRegulatorTech, 0), 0u);
    m_store.Put(eKeySetStatic, GlobalPatchKey(eAudioRegulatorTech, 7), u"0001,0001,0007");
    EXPECT_EQ(result::cOk, m_patches.LoadGlobalPatch(m_store, eAudioRegulatorTech));
    EXPECT_EQ(0u, m_patches.m_dwGlobalOnElseOff[eAudioRegulatorTech]);
    EXPECT_EQ(20u, m_patches.m_records.audioRegulator.thresholdCount[0]);
    EXPECT_EQ(1u, m_patches.m_records.audioRegulator.thresholdCount[1]);
    EXPECT_EQ(7.0f, m_patches.m_records.audioRegulator.threshold[1][0]);
    const auto key = [](std::uint32_t pid) { return GlobalPatchKey(eAudioRegulatorTech, pid); };
    Texts expected{ReadEntry(eKeySetDynamic, key(0))};
    for (std::uint32_t pid = 3; pid <= 8; ++pid)
        expected.push_back(LogEntry(Operation::eReadText, eKeySetStatic, key(pid)));
    EXPECT_EQ(expected, m_store.Log());
}

TEST_F(PatchSet, ReadsTheEightGainArraysOfTheOptimizerFromPids5To12) {
    for (std::uint32_t pid = 5; pid <= 12; ++pid)
        m_store.Put(eKeySetStatic, GlobalPatchKey(eAudioOptimizerTech, pid),
                    std::u16string(u"0001,0001,000") + u"0123456789abc"[pid]);
    EXPECT_EQ(result::cOk, m_patches.LoadGlobalPatch(m_store, eAudioOptimizerTech));
    for (std::uint32_t channel = 0; channel < 8; ++channel)
        EXPECT_EQ(static_cast<float>(channel + 5),
                  m_patches.m_records.audioOptimizer.gain[channel][0]);
}

TEST_F(PatchSet, AssertsAndRefusesAGlobalTechnologyThatIsNone) {
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_EQ(result::cInvalidArg, m_patches.LoadGlobalPatch(m_store, eGlobalNoTech));
    EXPECT_EQ((Texts{"IsValidTechnology( globalTech )", "pStructVersion != NULL"}),
              trace.FailedAssertions("KORA4PropKey"));
    EXPECT_EQ((Texts{"!\"Invalid global tech\"", "!\"Invalid technology\""}),
              trace.FailedAssertions("KORA4PropKeyFields"));
    EXPECT_EQ(result::cInvalidArg,
              m_patches.LoadGlobalPatch(m_store, eNumberKORA4GlobalTechnologies));
}

// --- field tables ------------------------------------------------------------------------

TEST_F(PatchSet, KnowsRecordAndFieldsOfEveryTechnology) {
    const std::uint32_t presetFields[] = {6, 2, 3, 2, 2, 2, 0};
    const void* const presetRecords[] = {
        &m_patches.m_records.volume,    &m_patches.m_records.enhancement,
        &m_patches.m_records.dynamicEQ, &m_patches.m_records.standardEQ,
        &m_patches.m_records.headphone, &m_patches.m_records.virtualSurround,
        &m_patches.m_records.ngSurround};
    TechnologyFields fields;
    for (std::uint32_t t = 1; t < 8; ++t) {
        EXPECT_EQ(result::cOk,
                  m_patches.GetTechnologyFields(KORA4PresetTechnology(t), &fields));
        EXPECT_EQ(presetRecords[t - 1], fields.pRecord);
        EXPECT_EQ(presetFields[t - 1], fields.numberFields);
        EXPECT_EQ(t == eNGSurroundTech, fields.pFields == nullptr);
    }
    const std::uint32_t globalFields[] = {1, 5, 3};
    for (std::uint32_t t = 1; t < 4; ++t) {
        EXPECT_EQ(result::cOk,
                  m_patches.GetTechnologyFields(KORA4GlobalTechnology(t), &fields));
        EXPECT_EQ(globalFields[t - 1], fields.numberFields);
    }
}

TEST_F(PatchSet, GivesNoFieldsOfWhatIsNoTechnology) {
    const test::StoreTrace trace(trace::eAssertions);
    TechnologyFields fields;
    fields.numberFields = 5;
    EXPECT_EQ(result::cInvalidArg, m_patches.GetTechnologyFields(ePresetNoTech, &fields));
    EXPECT_EQ(0u, fields.numberFields);
    EXPECT_EQ(nullptr, fields.pRecord);
    EXPECT_EQ(result::cInvalidArg,
              m_patches.GetTechnologyFields(eNumberKORA4PresetTechnologies, &fields));
    EXPECT_EQ(result::cInvalidArg, m_patches.GetTechnologyFields(eGlobalNoTech, &fields));
    EXPECT_EQ(result::cInvalidArg,
              m_patches.GetTechnologyFields(eNumberKORA4GlobalTechnologies, &fields));
    EXPECT_EQ(Texts(4, "!\"Invalid technology\""),
              trace.FailedAssertions("KORA4PropKeyFields"));
}

// --- writing -----------------------------------------------------------------------------

TEST_F(PatchSet, WritesFlagThenFieldsThenTheTrigger) {
    m_patches.LoadPresetPatch(m_store, 5, true, eVolumeTech);
    EXPECT_EQ(result::cOk, m_patches.WritePresetPatch(m_store, 5, eVolumeTech, true));
    const auto key = [](std::uint32_t pid) { return Patch(eVolumeTech, 5, pid); };
    EXPECT_EQ((Texts{WriteEntry(eKeySetDynamic, key(0), 1),
                     WriteEntry(eKeySetStatic, key(3), defaults::cVolumeAmount[cMovieProfile]),
                     WriteEntry(eKeySetStatic, key(4), 1), WriteEntry(eKeySetStatic, key(5), 0),
                     LogEntry(Operation::eWriteText, eKeySetStatic, key(6), "-20.000000"),
                     LogEntry(Operation::eWriteText, eKeySetStatic, key(7), "-20.000000"),
                     LogEntry(Operation::eWriteText, eKeySetStatic, key(8), "0.000000"),
                     ReadEntry(eKeySetDynamic, PresetTriggerKey(eVolumeTech)),
                     WriteEntry(eKeySetDynamic, PresetTriggerKey(eVolumeTech), 1)}),
              m_store.Log());
}

TEST_F(PatchSet, WritesATechnologyWithoutFieldsAsFlagAndTrigger) {
    EXPECT_EQ(result::cOk, m_patches.WritePresetPatch(m_store, 0, eNGSurroundTech, true));
    EXPECT_EQ((Texts{WriteEntry(eKeySetDynamic, Patch(eNGSurroundTech, 0, 0), 0),
                     WriteEntry(eKeySetDynamic, PresetTriggerKey(eNGSurroundTech), 1)}),
              m_store.WriteLog());
}

TEST_F(PatchSet, LeavesTheTriggerAloneUnlessAskedTo) {
    EXPECT_EQ(result::cOk, m_patches.WritePresetPatch(m_store, 0, eHeadphoneTech, false));
    EXPECT_EQ(std::nullopt, Trigger(eHeadphoneTech));
}

TEST_F(PatchSet, ReadsBackEveryRecordThatItWrote) {
    m_patches.LoadPresetPatches(m_store, 1, true);
    m_patches.m_records.standardEQ.stdEqGain[9] = -12.5f;
    m_patches.m_records.dynamicEQ.level = 0.25f;
    m_patches.m_records.volume.switch5 = 1;
    for (std::uint32_t t = 1; t < 8; ++t)
        EXPECT_EQ(result::cOk,
                  m_patches.WritePresetPatch(m_store, 7, KORA4PresetTechnology(t), false));
    KORA4ManagedPatchSet other;
    other.LoadPresetPatches(m_store, 7, false);
    EXPECT_EQ(0, std::memcmp(&m_patches.m_records, &other.m_records, sizeof other.m_records));
    EXPECT_TRUE(std::ranges::equal(m_patches.m_dwPresetOnElseOff, other.m_dwPresetOnElseOff));
}

TEST_F(PatchSet, NeverWritesADemoProfile) {
    const test::StoreTrace trace(trace::eAssertions);
    std::uint32_t flag = 1;
    std::uint32_t trigger = 0;
    const KnownWords known{&flag, 1, &trigger};
    for (const std::uint32_t profile : cDemoProfiles) {
        EXPECT_EQ(result::cOk,
                  m_patches.WritePresetPatch(m_store, profile, eVolumeTech, true, known));
        EXPECT_EQ(result::cOk,
                  m_patches.WritePresetPatchEnable(m_store, profile, eVolumeTech, known));
    }
    EXPECT_EQ(1u, flag);
    EXPECT_EQ(0u, trigger);
    EXPECT_EQ(0u, m_store.Operations());
    EXPECT_EQ(0u, trace.NumberOfAssertions());
}

TEST_F(PatchSet, AssertsTheProfileThatIsNoneAndWritesNothing) {
    const test::StoreTrace trace(trace::eAssertions);
    for (const std::uint32_t profile : {9u, 239u, 243u, 999u, 0xFFFFFFFFu})
        EXPECT_EQ(result::cOk, m_patches.WritePresetPatch(m_store, profile, eVolumeTech, true));
    EXPECT_EQ(0u, m_store.Operations());
    EXPECT_EQ(Texts(5, "KORA4KeysClient::IsAllowableProfile( profile )"),
              trace.FailedAssertions("KORA4PropKey"));
}

TEST_F(PatchSet, AssertsAndRefusesToWriteATechnologyThatIsNone) {
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_EQ(result::cInvalidArg, m_patches.WritePresetPatch(m_store, 0, ePresetNoTech, true));
    EXPECT_EQ(result::cInvalidArg,
              m_patches.WritePresetPatch(m_store, 0, eNumberKORA4PresetTechnologies, true));
    EXPECT_EQ(0u, m_store.Operations());
    EXPECT_EQ(Texts(2, "IsValidTechnology( presetTech )"),
              trace.FailedAssertions("KORA4PropKey"));
}

TEST_F(PatchSet, StopsAtTheFirstWriteThatFailsAndDoesNotBump) {
    // Flag and six fields: whichever fails, what comes after it is not tried.
    for (unsigned n = 1; n <= 7; ++n) {
        m_store.ClearLog();
        m_store.FailWrite(n, result::cOutOfMemory);
        std::uint32_t flag = 1;
        std::uint32_t trigger = 0;
        EXPECT_EQ(result::cOutOfMemory, m_patches.WritePresetPatch(m_store, 0, eVolumeTech,
                                                                   true, {&flag, 1, &trigger}));
        EXPECT_EQ(n, m_store.Operations());
        EXPECT_EQ(n > 1 ? 0u : 1u, flag) << "the flag that was written is known";
        EXPECT_EQ(0u, trigger);
    }
    EXPECT_EQ(std::nullopt, Trigger(eVolumeTech));
}

// --- triggers ----------------------------------------------------------------------------

TEST_F(PatchSet, BumpsATriggerThatWasNeverWrittenToOne) {
    std::uint32_t known = 0;
    EXPECT_EQ(result::cOk, m_patches.WritePresetPatch(m_store, 0, eHeadphoneTech, true,
                                                      {.pTrigger = &known}));
    EXPECT_EQ(1u, Trigger(eHeadphoneTech));
    EXPECT_EQ(1u, m_patches.m_dwPresetTriggers[eHeadphoneTech]);
    EXPECT_EQ(1u, known);
}

TEST_F(PatchSet, BumpsTheStoredTriggerNotTheOneThatItSawLast) {
    m_patches.m_dwPresetTriggers[eHeadphoneTech] = 3;
    m_store.Put(eKeySetDynamic, PresetTriggerKey(eHeadphoneTech), 41u);
    std::uint32_t known = 41;
    std::uint32_t older = 40;
    m_patches.WritePresetPatch(m_store, 0, eHeadphoneTech, true, {.pTrigger = &known});
    EXPECT_EQ(42u, Trigger(eHeadphoneTech));
    EXPECT_EQ(42u, m_patches.m_dwPresetTriggers[eHeadphoneTech]);
    EXPECT_EQ(42u, known);
    m_patches.WritePresetPatch(m_store, 0, eHeadphoneTech, true, {.pTrigger = &older});
    EXPECT_EQ(40u, older) << "a foreign bump is still to be told";
}

TEST_F(PatchSet, WrapsATriggerAtTwoToTheThirtyTwo) {
    m_store.Put(eKeySetDynamic, PresetTriggerKey(eHeadphoneTech), 0xFFFFFFFFu);
    m_patches.WritePresetPatch(m_store, 0, eHeadphoneTech, true);
    EXPECT_EQ(0u, Trigger(eHeadphoneTech));
}

TEST_F(PatchSet, CountsAnUnreadableTriggerAsZero) {
    m_store.Put(eKeySetDynamic, PresetTriggerKey(eHeadphoneTech), u"12");
    m_patches.WritePresetPatch(m_store, 0, eHeadphoneTech, true);
    EXPECT_EQ(1u, Trigger(eHeadphoneTech));
}

TEST_F(PatchSet, IgnoresTheResultOfWritingATriggerButDoesNotTakeItForKnown) {
    m_store.StopWritingAfter(3);  // flag and the two fields
    std::uint32_t flag = 1;
    std::uint32_t trigger = 0;
    EXPECT_EQ(result::cOk, m_patches.WritePresetPatch(m_store, 0, eHeadphoneTech, true,
                                                      {&flag, 1, &trigger}));
    EXPECT_EQ(0u, flag);
    EXPECT_EQ(0u, trigger);
    EXPECT_EQ(1u, m_patches.m_dwPresetTriggers[eHeadphoneTech]);
}

TEST_F(PatchSet, LoadsAllTriggerWordsAndTakesZeroForUnreadableOnes) {
    Texts expected;
    for (std::uint32_t t = 1; t < 8; ++t)
        expected.push_back(
            ReadEntry(eKeySetDynamic, PresetTriggerKey(KORA4PresetTechnology(t))));
    for (std::uint32_t t = 1; t < 4; ++t)
        expected.push_back(
            ReadEntry(eKeySetDynamic, GlobalTriggerKey(KORA4GlobalTechnology(t))));
    for (std::uint32_t t = 1; t < 8; ++t)
        m_store.Put(eKeySetDynamic, PresetTriggerKey(KORA4PresetTechnology(t)), 100 + t);
    m_store.Put(eKeySetDynamic, PresetTriggerKey(eNGSurroundTech), test::Unreadable{});
    m_store.Put(eKeySetDynamic, GlobalTriggerKey(ePeakLimiterTech), 202u);
    m_patches.m_dwPresetTriggers[eNGSurroundTech] = 9;
    m_patches.LoadTriggers(m_store);
    EXPECT_EQ(expected, m_store.Log());
    EXPECT_EQ(102u, m_patches.m_dwPresetTriggers[eEnhancementTech]);
    EXPECT_EQ(0u, m_patches.m_dwPresetTriggers[ePresetNoTech]) << "has no key of its own";
    EXPECT_EQ(0u, m_patches.m_dwPresetTriggers[eNGSurroundTech]);
    EXPECT_EQ(202u, m_patches.m_dwGlobalTriggers[ePeakLimiterTech]);
    EXPECT_EQ(0u, m_patches.m_dwGlobalTriggers[eAudioRegulatorTech]);
}

// --- flags -------------------------------------------------------------------------------

TEST_F(PatchSet, LoadsTheFlagsOfAProfileAndTheGlobalEnables) {
    StoreFlag(eHeadphoneTech, 2, 0);
    m_store.Put(eKeySetDynamic, GlobalPatchKey(ePeakLimiterTech, 0), 0u);
    m_patches.LoadPresetOnElseOff(m_store, 2);
    m_patches.LoadGlobalOnElseOff(m_store);
    EXPECT_EQ(7u + 3u, m_store.Reads());
    const std::uint32_t games[] = {0, 1, 0, 0, 1, 0, 1, 1};
    EXPECT_TRUE(std::ranges::equal(games, m_patches.m_dwPresetOnElseOff));
    const std::uint32_t globals[] = {0, 0, 1, 1};
    EXPECT_TRUE(std::ranges::equal(globals, m_patches.m_dwGlobalOnElseOff));
}

// --- trace -------------------------------------------------------------------------------

TEST_F(PatchSet, TracesEntriesWithBit0x800AndResultsWithBit1) {
    {
        const test::StoreTrace trace(trace::eAllEntryExit);
        m_patches.LoadPresetPatch(m_store, 0, true, eNGSurroundTech);
        EXPECT_EQ(
            (Texts{">>", "<< hr: 0x00000000"}),
            MessagesOf(trace.Read("KORA4PropKey"), "KORA4ManagedPatchSet::LoadPresetPatch"));
        EXPECT_EQ((Texts{">>", "<< hr: 0x00000000"}),
                  MessagesOf(trace.Read("KORA4PropKeyFields"),
                             "KORA4ManagedPatchSet::GetTechnologyFields"));
    }
    const test::StoreTrace trace(trace::eResults);
    m_patches.LoadPresetPatch(m_store, 0, true, eNGSurroundTech);
    EXPECT_EQ(Texts{"<< hr: 0x00000000"},
              MessagesOf(trace.Read("KORA4PropKey"), "KORA4ManagedPatchSet::LoadPresetPatch"));
}

TEST_F(PatchSet, TracesARefresh) {
    const test::StoreTrace trace(trace::eAllEntryExit);
    m_patches.Refresh({});
    EXPECT_EQ((Texts{">>", "<<"}),
              MessagesOf(trace.Read("KORA4PropKey"), "KORA4ManagedPatchSet::Refresh"));
}

TEST_F(PatchSet, TracesNothingWithTheDefaultFlagWord) {
    const test::StoreTrace trace(trace::cDefaultFlags);
    m_patches.LoadPresetPatches(m_store, 999, false);
    m_patches.WritePresetPatch(m_store, 0, eVolumeTech, true);
    EXPECT_TRUE(trace.Read("KORA4PropKey").empty());
    EXPECT_TRUE(trace.Read("KORA4PropKeyFields").empty());
    EXPECT_TRUE(trace.Read("KORA4UIKeysClient").empty());
}

}  // namespace
}  // namespace kora4
