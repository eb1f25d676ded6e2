// SPDX-License-Identifier: MIT
#include "settings/schema.h"

#include <gtest/gtest.h>

#include <set>

#include "base/failure.h"
#include "contract/profiles.h"
#include "faults/damage.h"
#include "settings/content.h"
#include "settings/settings_table.h"
#include "unit/tools/memory_store.h"

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
        EXPECT_EQ(walked.count(name), 1u) << name;
    for (const std::string& name : walked)
        EXPECT_EQ(documented.count(name), 1u) << name;
}

TEST(Schema, PutsEachValueIntoItsKeySet) {
    std::map<std::string, KORA4KeySet> walked;
    for (const SchemaValue& value : Schema())
        walked[value.Name()] = value.keySet;
    constexpr KORA4KeySet cKeySets[] = {eKeySetStatic, eKeySetDynamic, eKeySetApp};
    for (const test::SchemaValue& value : test::WholeSchema())
        EXPECT_EQ(walked[NameOf(value)], cKeySets[value.key]) << NameOf(value);
}

TEST(Schema, MakesTheLibrarysKeys) {
    for (std::uint32_t profile : {0u, 1u, 4u, 8u, 240u, 242u}) {
        EXPECT_EQ(SwitchValue(cLeveler, profile).key, PresetPatchKey(eVolumeTech, profile, 0));
        EXPECT_EQ(FieldValue(cLeveler, profile, 3).key,
                  PresetPatchKey(eVolumeTech, profile, 3));
        EXPECT_EQ(NameValue(profile).key, ProfileNameKey(profile));
    }
    EXPECT_EQ(TriggerValue(cLeveler).key, PresetTriggerKey(eVolumeTech));
    const Technology optimizer{Family::eGlobal, eAudioOptimizerTech};
    EXPECT_EQ(FieldValue(optimizer, 0, 12).key, GlobalPatchKey(eAudioOptimizerTech, 12));
    EXPECT_EQ(TriggerValue(optimizer).key, GlobalTriggerKey(eAudioOptimizerTech));
}

TEST(Schema, ValueNamesReadBack) {
    for (const SchemaValue& value : Schema())
        EXPECT_EQ(ParseValueName(value.Name()), value.key);
    for (const char* const other :
         {"", "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60}",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},", "{5c2e8a47-91D3-4B6F-A0E2-3F7C19B84D60},2",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},02",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},2x",
          "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},9999999999"})
        EXPECT_EQ(ParseValueName(other), std::nullopt) << other;
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
    EXPECT_EQ(amount(cMovieProfile), 0x40007u);
    EXPECT_EQ(amount(cMusicProfile), 0u);
    EXPECT_EQ(amount(cFirstCustomProfile), 0x40007u);
    EXPECT_EQ(amount(cDemoMovieProfile), 0x40007u);
    EXPECT_EQ(amount(cDemoMusicProfile), 0u);
    const Technology dialog{Family::ePreset, eEnhancementTech};
    EXPECT_EQ(SwitchValue(dialog, cMusicProfile).defaultNumber, 0u);
    EXPECT_EQ(SwitchValue(dialog, cDemoMusicProfile).defaultNumber, 0u);
    EXPECT_EQ(SwitchValue(dialog, cFirstCustomProfile).defaultNumber, 1u);
}

TEST(Schema, AnEffectiveValueIsTheStoredOneOrTheDefault) {
    MemoryStore store;
    const SchemaValue value = FieldValue(cLeveler, cMusicProfile, 3);
    EXPECT_EQ(Effective(value, store), Value(std::uint32_t{0}));
    store.Write(value.keySet, value.key, StoredValue::FromDword(11));
    EXPECT_EQ(Effective(value, store), Value(std::uint32_t{11}));
    store.Write(value.keySet, value.key, StoredValue::FromText(u"11"));
    EXPECT_EQ(Effective(value, store), Value(std::uint32_t{0}));
    EXPECT_EQ(Effective(NameValue(3), store), std::nullopt);
}

TEST(Schema, EncodedValuesReadBack) {
    RandomStore random(5);
    for (int round = 0; round < 20; ++round) {
        for (const SchemaValue& value : Schema()) {
            const StoredValue stored = random.Right(value, true);
            const std::optional<Value> content = Decode(value, stored);
            ASSERT_TRUE(content) << value.Name() << ": " << Describe(stored);
            EXPECT_EQ(Encode(value, *content), stored);
        }
    }
}

TEST(Schema, RefusesToStoreWhatNoReaderTakes) {
    EXPECT_THROW(Encode(NameValue(3), std::string(2048, 'x')), Failure);
    EXPECT_NO_THROW(Encode(NameValue(3), std::string(2047, 'x')));
    EXPECT_THROW(Encode(NameValue(3), std::string("a\0b", 3)), Failure);
    const SchemaValue gains = FieldValue({Family::ePreset, eStandardEQTech}, 0, 4);
    EXPECT_NO_THROW(Encode(gains, std::vector<float>(40)));
    EXPECT_THROW(Encode(gains, std::vector<float>(41)), Failure);
    const SchemaValue curve = FieldValue({Family::ePreset, eDynamicEQTech}, 0, 5);
    EXPECT_THROW(Encode(curve, std::uint32_t{6}), Failure);
    const SchemaValue boost = FieldValue({Family::ePreset, eHeadphoneTech}, 0, 3);
    EXPECT_THROW(Encode(boost, std::numeric_limits<float>::infinity()), Failure);
}

TEST(Schema, FieldsAndNamesAreAnnouncedAndNothingElse) {
    EXPECT_EQ(FieldValue(cLeveler, 4, 3).Announcement(), PresetTriggerKey(eVolumeTech));
    EXPECT_EQ(NameValue(3).Announcement(), pkey::Setting(pkey::cProfileTableCounterPid));
    EXPECT_EQ(SwitchValue(cLeveler, 4).Announcement(), std::nullopt);
    EXPECT_EQ(SettingValue(pkey::cSamplingPeriodPid).Announcement(), std::nullopt);
}

}  // namespace
}  // namespace kora4::tools
