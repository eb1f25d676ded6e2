// SPDX-License-Identifier: MIT
// Property keys: the families of keys and the value names under which they are stored.
#include "contract/property_key.h"
#include "store/access/profile_key.h"

#include <gtest/gtest.h>

#include <string>

#include "contract/profiles.h"
#include "support/store_traced.h"

namespace kora4 {
namespace {

std::string NameOf(const PropertyKey& key) {
    char16_t name[cValueNameCapacity];
    for (char16_t& c : name)
        c = u'#';
    const std::size_t length = FormatValueName(key, name);
    EXPECT_EQ(u'\0', name[length]) << "the name ends where its length says";
    return std::string(name, name + length);
}

TEST(ValueName, IsTheBracedGuidInUpperCaseACommaAndTheDecimalPid) {
    EXPECT_EQ("{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},5", NameOf(pkey::Setting(5)));
    EXPECT_EQ("{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},404", NameOf(pkey::Setting(404)));
    EXPECT_EQ("{2B7E1F93-6C40-4D85-A1F7-93D0C5E8B426},0",
              NameOf({pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid}));
}

TEST(ValueName, KeepsLeadingZerosOfTheGuidAndNoneOfThePid) {
    const KeyGuid guid{0x0000000A, 0x0001, 0x0B00, {0x00, 0x0C, 0, 0, 0, 0, 0x0D, 0xE0}};
    EXPECT_EQ("{0000000A-0001-0B00-000C-000000000DE0},0", NameOf({guid, 0}));
    EXPECT_EQ("{0000000A-0001-0B00-000C-000000000DE0},10", NameOf({guid, 10}));
}

TEST(ValueName, HoldsTheLargestPid) {
    const KeyGuid guid{0xFFFFFFFF, 0xFFFF, 0xFFFF, {255, 255, 255, 255, 255, 255, 255, 255}};
    EXPECT_EQ("{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF},4294967295", NameOf({guid, 0xFFFFFFFF}));
}

TEST(PresetPatchKey, CarriesOffsetOfTheTechnologyAndNumberOfTheProfile) {
    EXPECT_EQ("{5E0A0000-2C71-4B9E-8F36-D41A07C9B2E5},3",
              NameOf(PresetPatchKey(eVolumeTech, cMovieProfile, 3)));
    EXPECT_EQ("{5E0A0501-2C71-4B9E-8F36-D41A07C9B2E5},4",
              NameOf(PresetPatchKey(eStandardEQTech, 5, 4)));
    EXPECT_EQ("{5E0AF206-2C71-4B9E-8F36-D41A07C9B2E5},0",
              NameOf(PresetPatchKey(eNGSurroundTech, cDemoGamesProfile, 0)));
}

TEST(PresetPatchKey, HasTheOffsetsOfTheStoreNotOfTheEnumeration) {
    const struct {
        KORA4PresetTechnology technology;
        std::uint32_t offset;
    } offsets[] = {{ePresetNoTech, 0},        {eVolumeTech, 0},     {eEnhancementTech, 3},
                   {eDynamicEQTech, 2},       {eStandardEQTech, 1}, {eHeadphoneTech, 4},
                   {eVirtualSurroundTech, 5}, {eNGSurroundTech, 6}};
    for (const auto& [technology, offset] : offsets) {
        EXPECT_EQ(0x5E0A0000u + offset, PresetPatchKey(technology, 0, 0).fmtid.data1);
        EXPECT_EQ(0x3D95E200u + offset, PresetTriggerKey(technology).fmtid.data1);
    }
}

TEST(PresetPatchKey, GivesEachCustomProfileKeysOfItsOwn) {
    for (std::uint32_t profile = cFirstCustomProfile; profile < cSelectableProfileBound;
         ++profile)
        EXPECT_EQ(0x5E0A0004u | profile << 8,
                  PresetPatchKey(eHeadphoneTech, profile, 3).fmtid.data1);
}

TEST(PresetPatchKey, PlacesTheLowEightBitsOfAProfile) {
    EXPECT_EQ(0x5E0AE700u, PresetPatchKey(eVolumeTech, 999, 0).fmtid.data1);
}

TEST(PresetPatchKey, LeavesTheProfileBitsOfANegativeProfileAndAssertsNothing) {
    const test::StoreTrace trace(trace::eAssertions);
    EXPECT_EQ(0x5E0A0003u, PresetPatchKey(eEnhancementTech, cNoProfile, 0).fmtid.data1);
    EXPECT_EQ(0u, trace.NumberOfAssertions());
}

TEST(PresetPatchKey, GivesOffsetZeroToWhatIsNoTechnology) {
    EXPECT_EQ(0x5E0A0000u, PresetPatchKey(KORA4PresetTechnology(8), 0, 0).fmtid.data1);
    EXPECT_EQ(0x3D95E200u, PresetTriggerKey(KORA4PresetTechnology(0xFFFFFFFF)).fmtid.data1);
}

TEST(GlobalKeys, HaveTheOffsetsOfTheStoreNotOfTheEnumeration) {
    const struct {
        KORA4GlobalTechnology technology;
        std::uint32_t offset;
    } offsets[] = {{eGlobalNoTech, 0},
                   {ePeakLimiterTech, 2},
                   {eAudioRegulatorTech, 1},
                   {eAudioOptimizerTech, 0},
                   {KORA4GlobalTechnology(4), 0}};
    for (const auto& [technology, offset] : offsets) {
        EXPECT_EQ(0x8F3B6A00u + offset, GlobalPatchKey(technology, 0).fmtid.data1);
        EXPECT_EQ(0xC6417F00u + offset, GlobalTriggerKey(technology).fmtid.data1);
    }
}

TEST(TriggerAndGlobalKeys, KeepBitsEightToFifteenOfTheirGuids) {
    EXPECT_EQ("{3D95E203-7A1C-4F08-9B64-C2E8510FA93D},0",
              NameOf(PresetTriggerKey(eEnhancementTech)));
    EXPECT_EQ("{C6417F02-0B5E-4A2D-8E93-6F21D4B7A058},0",
              NameOf(GlobalTriggerKey(ePeakLimiterTech)));
    EXPECT_EQ("{8F3B6A01-D24C-4E71-9C05-B7E2164A3D98},8",
              NameOf(GlobalPatchKey(eAudioRegulatorTech, 8)));
}

TEST(ProfileNameKey, CarriesTheProfileAndLeavesTheLowByteZero) {
    for (std::uint32_t profile = cFirstCustomProfile; profile < cSelectableProfileBound;
         ++profile) {
        const PropertyKey key = ProfileNameKey(profile);
        EXPECT_EQ(profile << 8, key.fmtid.data1 & 0xFFFF);
        EXPECT_EQ(pkey::cProfileNameGuid.data1, key.fmtid.data1 & 0xFFFF0000);
    }
}

TEST(PlainKeys, AreThoseOfTheStoreAndLeaveNoLine) {
    const test::StoreTrace trace(trace::eAllEntryExit);
    const PropertyKey patch = pkey::PresetPatch(eHeadphoneTech, 5, 4);
    const PropertyKey patchOfNoProfile = pkey::PresetPatch(eHeadphoneTech, cNoProfile, 4);
    const PropertyKey name = pkey::ProfileName(5);
    EXPECT_TRUE(trace.Read("KORA4UIKeysClient").empty());
    EXPECT_EQ(patch, PresetPatchKey(eHeadphoneTech, 5, 4));
    EXPECT_EQ(patchOfNoProfile, PresetPatchKey(eHeadphoneTech, cNoProfile, 4));
    EXPECT_EQ(name, ProfileNameKey(5));
    EXPECT_EQ(4u, trace.Read("KORA4UIKeysClient").size());
}

TEST(PropKeyBase, PlacingANumberClearsWhatWasThere) {
    KORA4PropKeyBase key(pkey::cPresetPatchGuid, 7);
    key.SetTechField(0xFF);
    SetPresetField(key, 0xFF);
    key.SetTechField(0x105);
    SetPresetField(key, 0x102);
    EXPECT_EQ((PropertyKey{{0x5E0A0205,
                            pkey::cPresetPatchGuid.data2,
                            pkey::cPresetPatchGuid.data3,
                            {0x8F, 0x36, 0xD4, 0x1A, 0x07, 0xC9, 0xB2, 0xE5}},
                           7}),
              key.Key());
}

TEST(PropKeyBase, AssertsThatAProfileIsNotNegativeAndPlacesItAllTheSame) {
    const test::StoreTrace trace(trace::eAssertions);
    KORA4PropKeyBase key(pkey::cProfileNameGuid, 0);
    SetPresetField(key, -1);
    EXPECT_EQ(test::Texts{"profile >= 0"}, trace.FailedAssertions("KORA4UIKeysClient"));
    EXPECT_EQ(0x71C4FF00u, key.Key().fmtid.data1);
}

}  // namespace
}  // namespace kora4
