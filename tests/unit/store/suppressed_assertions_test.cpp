// SPDX-License-Identifier: MIT
// Assertions whose category is off: nothing is traced, and the calls do the same as when it
// is on.
#include <gtest/gtest.h>

#include "contract/profiles.h"
#include "store/access/prop_key_store_access.h"
#include "store/patches/field_def.h"
#include "store/patches/managed_patch_set.h"
#include "support/memory_key_access.h"
#include "support/store_traced.h"

namespace kora4 {
namespace {

class SuppressedAssertions : public testing::Test {
  protected:
    ~SuppressedAssertions() override { EXPECT_EQ(0u, m_trace.NumberOfAssertions()); }

    test::StoreTrace m_trace{trace::eMessages};
    test::MemoryKeyAccess m_store;
    KORA4ManagedPatchSet m_patches;
};

TEST_F(SuppressedAssertions, ANegativeProfileIsPlacedInAKeyAllTheSame) {
    KORA4PropKeyBase key(pkey::cProfileNameGuid, 0);
    key.SetPresetField(-1);
    EXPECT_EQ(0x71C4FF00u, key.Key().fmtid.data1);
}

TEST_F(SuppressedAssertions, ANumberThatIsTooWideIsWrittenWithItsLowHalf) {
    KORA4PropKeyStoreAccess values(m_store);
    EXPECT_EQ(result::cOk,
              values.WriteUINT(eKeySetStatic, pkey::Setting(pkey::cSamplingPeriodPid),
                               0x1'0000'0007u));
    EXPECT_EQ(7u, m_store.NumberAt(eKeySetStatic, pkey::Setting(pkey::cSamplingPeriodPid)));
}

TEST_F(SuppressedAssertions, TheDefaultFlagOfWhatDoesNotExistIsOn) {
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eDynamicEQTech, 0x80000000));
    EXPECT_TRUE(KORA4ManagedPatchSet::GetDefaultOnElseOff(eGlobalNoTech));
}

TEST_F(SuppressedAssertions, AProfileThatIsNoneIsLoadedButNotWritten) {
    m_store.Put(eKeySetStatic, PresetPatchKey(eVolumeTech, 999, 3), 5u);
    EXPECT_EQ(result::cOk, m_patches.LoadPresetPatch(m_store, 999, false, eVolumeTech));
    EXPECT_EQ(5u, m_patches.m_records.volume.amount);
    const std::size_t operations = m_store.Operations();
    EXPECT_EQ(result::cOk, m_patches.WritePresetPatch(m_store, 999, eVolumeTech, true));
    EXPECT_EQ(operations, m_store.Operations());
}

TEST_F(SuppressedAssertions, ATechnologyThatIsNoneIsRefused) {
    TechnologyFields fields;
    EXPECT_EQ(result::cInvalidArg, m_patches.GetTechnologyFields(ePresetNoTech, &fields));
    EXPECT_EQ(result::cInvalidArg, m_patches.GetTechnologyFields(eGlobalNoTech, &fields));
    EXPECT_EQ(result::cInvalidArg, m_patches.LoadPresetPatch(m_store, 0, false, ePresetNoTech));
    EXPECT_EQ(result::cInvalidArg, m_patches.LoadGlobalPatch(m_store, eGlobalNoTech));
    EXPECT_EQ(result::cInvalidArg, m_patches.WritePresetPatch(m_store, 0, ePresetNoTech, true));
    EXPECT_EQ(0u, m_store.Writes());
}

}  // namespace
}  // namespace kora4
