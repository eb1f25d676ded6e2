// SPDX-License-Identifier: MIT
// What the patch set knows about every technology: its field table and its defaults.
#include "contract/defaults.h"
#include "contract/field_tables.h"
#include "contract/profiles.h"
#include "store/patches/managed_patch_set.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

// E_INVALIDARG, and `fields` stays clear, when there is no such technology.
HRESULT FieldsOf(const fields::RecordDef* pRecords, std::uint32_t technology, bool isValid,
                 PatchRecords& records, TechnologyFields* pOut) {
    *pOut = {};
    if (!isValid)
        return result::cInvalidArg;
    const fields::RecordDef& record = pRecords[technology];
    pOut->pRecord = reinterpret_cast<std::byte*>(&records) + record.position;
    pOut->pFields = record.pFields;
    pOut->numberFields = record.numberFields;
    return result::cOk;
}

}  // namespace

std::uint32_t KORA4ManagedPatchSet::DefaultsIndexForProfile(std::uint32_t profile) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::DefaultsIndexForProfile");
    const std::uint32_t defaultsIndex = DefaultsRowOf(profile);
    KALASSERT(cSite, msg::cAssertDefaultsRow, defaultsIndex < 3);
    return defaultsIndex;
}

bool KORA4ManagedPatchSet::GetDefaultOnElseOff(KORA4PresetTechnology technology,
                                               std::uint32_t profileNumber) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::GetDefaultOnElseOff");
    const auto profile = static_cast<std::int32_t>(WithoutDemo(profileNumber));
    KALASSERT(cSite, msg::cAssertNotNegative, !(profile < 0));
    return defaults::IsOn(technology, profileNumber);
}

bool KORA4ManagedPatchSet::GetDefaultOnElseOff(KORA4GlobalTechnology technology) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::GetDefaultOnElseOff");
    KALASSERT(cSite, msg::cAssertKnownSwitch, IsValidTechnology(technology));
    return defaults::IsOn(technology);
}

HRESULT KORA4ManagedPatchSet::GetTechnologyFields(KORA4PresetTechnology technology,
                                                  TechnologyFields* pOut) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::GetTechnologyFields");
    const bool isValid = IsValidTechnology(technology);
    KALASSERT(cSite, msg::cAssertKnownFields, isValid);
    return hr = FieldsOf(fields::cPresetRecords, technology, isValid, m_records, pOut);
}

HRESULT KORA4ManagedPatchSet::GetTechnologyFields(KORA4GlobalTechnology technology,
                                                  TechnologyFields* pOut) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::GetTechnologyFields");
    const bool isValid = IsValidTechnology(technology);
    KALASSERT(cSite, msg::cAssertKnownFields, isValid);
    return hr = FieldsOf(fields::cGlobalRecords, technology, isValid, m_records, pOut);
}

}  // namespace kora4
