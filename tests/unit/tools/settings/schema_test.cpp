// SPDX-License-Identifier: MIT
// The list of all values held against the library's keys, defaults and codec.
#include "settings/schema.h"

#include <gtest/gtest.h>

#include <set>

#include "base/failure.h"
#include "contract/patch_records.h"
#include "contract/profiles.h"
#include "contract/value_kind.h"
#include "faults/damage.h"
#include "settings/content.h"
#include "settings/settings_table.h"
#include "tools/support/memory_store.h"

namespace kora4::tools {
namespace {

std::string NameOf(const test::SchemaValue& value) {
    return ToUtf8(std::u16string(value.name.begin(), value.name.end()));
}

constexpr Technology cLeveler{Family::ePreset, eVolumeTech};

TEST(Schema, HasEveryValueThatTheLibraryReadsAndTheTraceWord) {
    std::set<std::string> documented = {"{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},404"};
    for (const test::SchemaValue& value : test::WholeSchema())
        documented.insert(NameOf(value));
    std::set<std::string> walked;
    for (const SchemaValue& value : Schema())
        EXPECT_TRUE(walked.insert(value.Name()).second) << "twice: " << value.Name();
    // The library has no use for a trigger of a technology without fields.
    for (const std::string& name : documented)
        EXPECT_EQ(1u, walked.count(name)) << name;
    for (const std::string& name : walked)
        EXPECT_EQ(1u, documented.count(name)) << name;
}

TEST(Schema, PutsEachValueIntoItsKeySet) {
    std::map<std::string, KORA4KeySet> walked;
    for (const SchemaValue& value : Schema())
        walked[value.Name()] = value.keySet;
    constexpr KORA4KeySet cKeySets[] = {eKeySetStatic, eKeySetDynamic, eKeySetApp};
    for (const test::SchemaValue& value : test::WholeSchema())
        EXPECT_EQ(cKeySets[value.key], walked[NameOf(value)]) << NameOf(value);
}

TEST(Schema, MakesTheLibrarysKeys) {
    for (std::uint32_t profile :
         {cMovieProfile, cMusicProfile, 4u, 8u, cDemoMovieProfile, cDemoGamesProfile}) {
        EXPECT_EQ(pkey::PresetPatch(eVolumeTech, profile, 0),
                  SwitchValue(cLeveler, profile).key);
        EXPECT_EQ(pkey::PresetPatch(eVolumeTech, profile, 3),
                  FieldValue(cLeveler, profile, 3).key);
        EXPECT_EQ(pkey::ProfileName(profile), NameValue(profile).key);
    }
    EXPECT_EQ(PresetTriggerKey(eVolumeTech), TriggerValue(cLeveler).key);
    const Technology optimizer{Family::eGlobal, eAudioOptimizerTech};
    EXPECT_EQ(GlobalPatchKey(eAudioOptimizerTech, 12), FieldValue(optimizer, 0, 12).key);
    EXPECT_EQ(GlobalTriggerKey(eAudioOptimizerTech), TriggerValue(optimizer).key);
}

TEST(Schema, ValueNamesReadBack) {
    for (const SchemaValue& value : Schema())
        EXPECT_EQ(value.key, ParseValueName(value.Name()));
    for (const char* const other :
         {"", "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60}",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},", "{5c2e8a47-91D3-4B6F-A0E2-3F7C19B84D60},2",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},02",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},2x",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},9999999999"})
        EXPECT_EQ(std::nullopt, ParseValueName(other)) << other;
}

TEST(Schema, DefaultsCanBeReadAndAreThoseOfTheRows) {
    for (const SchemaValue& value : Schema())
        if (const auto builtIn = value.Default()) {
            EXPECT_TRUE(Decode(value, *builtIn)) << value.Name();
        }
    const auto amount = [](std::uint32_t profile) {
        return std::get<std::uint32_t>(*Decode(FieldValue(cLeveler, profile, 3),
                                               *FieldValue(cLeveler, profile, 3).Default()));
    };
    EXPECT_EQ(test::cMovieVolume, amount(cMovieProfile));
    EXPECT_EQ(0u, amount(cMusicProfile));
    EXPECT_EQ(test::cMovieVolume, amount(cFirstCustomProfile));
    EXPECT_EQ(test::cMovieVolume, amount(cDemoMovieProfile));
    EXPECT_EQ(0u, amount(cDemoMusicProfile));
    const Technology dialog{Family::ePreset, eEnhancementTech};
    EXPECT_EQ(0u, SwitchValue(dialog, cMusicProfile).defaultNumber);
    EXPECT_EQ(0u, SwitchValue(dialog, cDemoMusicProfile).defaultNumber);
    EXPECT_EQ(1u, SwitchValue(dialog, cFirstCustomProfile).defaultNumber);
}

TEST(Schema, AnEffectiveValueIsTheStoredOneOrTheDefault) {
    MemoryStore store;
    const SchemaValue value = FieldValue(cLeveler, cMusicProfile, 3);
    EXPECT_EQ(Value(std::uint32_t{0}), Effective(value, store));
    store.Write(value.keySet, value.key, StoredValue::FromDword(11));
    EXPECT_EQ(Value(std::uint32_t{11}), Effective(value, store));
    store.Write(value.keySet, value.key, StoredValue::FromText(u"11"));
    EXPECT_EQ(Value(std::uint32_t{0}), Effective(value, store));
    EXPECT_EQ(std::nullopt, Effective(NameValue(3), store));
}

TEST(Schema, EncodedValuesReadBack) {
    RandomStore random(5);
    for (int round = 0; round < 20; ++round) {
        for (const SchemaValue& value : Schema()) {
            const StoredValue stored = random.Right(value, true);
            const std::optional<Value> content = Decode(value, stored);
            ASSERT_TRUE(content) << value.Name() << ": " << Describe(stored);
            EXPECT_EQ(stored, Encode(value, *content));
        }
    }
}

TEST(Schema, RefusesToStoreWhatNoReaderTakes) {
    EXPECT_THROW(Encode(NameValue(3), std::string(cMaxTextChars + 1, 'x')), Failure);
    EXPECT_NO_THROW(Encode(NameValue(3), std::string(cMaxTextChars, 'x')));
    EXPECT_THROW(Encode(NameValue(3), std::string("a\0b", 3)), Failure);
    const SchemaValue gains = FieldValue({Family::ePreset, eStandardEQTech}, 0, 4);
    EXPECT_NO_THROW(Encode(gains, std::vector<float>(cMaxArrayElements)));
    EXPECT_THROW(Encode(gains, std::vector<float>(41)), Failure);
    const SchemaValue curve = FieldValue({Family::ePreset, eDynamicEQTech}, 0, 5);
    EXPECT_THROW(Encode(curve, std::uint32_t{6}), Failure);
    const SchemaValue boost = FieldValue({Family::ePreset, eHeadphoneTech}, 0, 3);
    EXPECT_THROW(Encode(boost, std::numeric_limits<float>::infinity()), Failure);
}

TEST(Schema, FieldsAndNamesAreAnnouncedAndNothingElse) {
    EXPECT_EQ(PresetTriggerKey(eVolumeTech), FieldValue(cLeveler, 4, 3).Announcement());
    EXPECT_EQ(pkey::Setting(pkey::cProfileTableCounterPid), NameValue(3).Announcement());
    EXPECT_EQ(std::nullopt, SwitchValue(cLeveler, 4).Announcement());
    EXPECT_EQ(std::nullopt, SettingValue(pkey::cSamplingPeriodPid).Announcement());
}

}  // namespace
}  // namespace kora4::tools
