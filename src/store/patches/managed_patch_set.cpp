// SPDX-License-Identifier: MIT
// Loads and writes records, switches and trigger words, technology by technology.
#include "store/patches/managed_patch_set.h"

#include "contract/profiles.h"
#include "contract/property_key.h"
#include "store/access/profile_key.h"
#include "store/access/prop_key_store_access.h"
#include "store/patches/field_access.h"
#include "store/patches/own_write.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

// Loads a record field by field; the first field that fails ends it.
template <typename IsWanted>
HRESULT LoadFields(KORA4KeyAccess& access, const PropertyKey& key, std::uint32_t defaultsIndex,
                   bool defaultsOnly, const TechnologyFields& fields, IsWanted&& isWanted) {
    HRESULT hr = result::cOk;
    for (std::uint32_t i = 0; i < fields.numberFields && result::Succeeded(hr); ++i) {
        if (isWanted(fields.pFields[i]))
            hr = LoadField(fields.pFields[i], access, key, defaultsIndex, defaultsOnly,
                           fields.pRecord);
    }
    return hr;
}

}  // namespace

KORA4ManagedPatchSet::KORA4ManagedPatchSet() {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::KORA4ManagedPatchSet");
    Reset();
}

void KORA4ManagedPatchSet::Reset() {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::Reset");
    m_records = {};
    static_cast<TechnologyWords&>(*this) = {};
}

HRESULT KORA4ManagedPatchSet::LoadPresetPatch(KORA4KeyAccess& access, std::uint32_t profile,
                                              bool defaultsOnly,
                                              KORA4PresetTechnology technology) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::LoadPresetPatch");
    KALASSERT(cSite, msg::cAssertProfile, IsAllowableProfile(profile));
    KALASSERT(cSite, msg::cAssertTechnology, IsValidTechnology(technology));
    hr = LoadPresetPatchEnable(access, profile, defaultsOnly, technology);
    if (result::Succeeded(hr))
        hr = LoadPresetPatchData(access, profile, defaultsOnly, technology);
    return hr;
}

HRESULT KORA4ManagedPatchSet::LoadPresetPatchEnable(KORA4KeyAccess& access,
                                                    std::uint32_t profile, bool defaultsOnly,
                                                    KORA4PresetTechnology technology) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::LoadPresetPatchEnable");
    if (technology >= eNumberKORA4PresetTechnologies)
        return hr = result::cInvalidArg;
    m_dwPresetOnElseOff[technology] = defaultsOnly
                                          ? GetDefaultOnElseOff(technology, profile)
                                          : ReadPresetOnElseOff(access, profile, technology);
    return hr;
}

HRESULT KORA4ManagedPatchSet::LoadPresetPatchData(KORA4KeyAccess& access, std::uint32_t profile,
                                                  bool defaultsOnly,
                                                  KORA4PresetTechnology technology,
                                                  const RecordPart& except) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::LoadPresetPatchData");
    TechnologyFields fields;
    hr = GetTechnologyFields(technology, &fields);
    if (result::Failed(hr))
        return hr;
    const auto record = static_cast<std::size_t>(static_cast<const char*>(fields.pRecord) -
                                                 reinterpret_cast<const char*>(&m_records));
    return hr = LoadFields(access, PresetPatchKey(technology, profile, pkey::cSwitchPid),
                           DefaultsIndexForProfile(profile), defaultsOnly, fields,
                           [&](const KORA4FieldDef& field) {
                               // Unsigned: what lies before the part is far behind it.
                               return record + field.StoredMember() - except.begin >=
                                      except.size;
                           });
}

void KORA4ManagedPatchSet::LoadPresetPatches(KORA4KeyAccess& access, std::uint32_t profile,
                                             bool defaultsOnly) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::LoadPresetPatches");
    for (const KORA4PresetTechnology technology : cPresetTechnologies)
        LoadPresetPatch(access, profile, defaultsOnly, technology);
}

HRESULT KORA4ManagedPatchSet::LoadGlobalPatch(KORA4KeyAccess& access,
                                              KORA4GlobalTechnology technology) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::LoadGlobalPatch");
    KALASSERT(cSite, msg::cAssertGlobalTech, IsValidTechnology(technology));
    hr = LoadGlobalPatchEnable(access, technology);
    if (result::Succeeded(hr))
        hr = LoadGlobalPatchData(access, technology);
    return hr;
}

HRESULT KORA4ManagedPatchSet::LoadGlobalPatchEnable(KORA4KeyAccess& access,
                                                    KORA4GlobalTechnology technology) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::LoadGlobalPatchEnable");
    if (technology >= eNumberKORA4GlobalTechnologies)
        return hr = result::cInvalidArg;
    m_dwGlobalOnElseOff[technology] = ReadGlobalOnElseOff(access, technology);
    return hr;
}

HRESULT KORA4ManagedPatchSet::LoadGlobalPatchData(KORA4KeyAccess& access,
                                                  KORA4GlobalTechnology technology) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::LoadGlobalPatchData");
    TechnologyFields fields;
    hr = GetTechnologyFields(technology, &fields);
    // The version word is the first member of every record.
    const void* pStructVersion = fields.pRecord;
    KALASSERT(cSite, msg::cAssertRecord,
              fields.numberFields == 0 || (fields.pRecord && fields.pFields));
    KALASSERT(cSite, msg::cAssertVersion, pStructVersion);
    constexpr std::uint32_t cGlobalDefaultsIndex = 0;
    if (result::Succeeded(hr))
        hr = LoadFields(access, GlobalPatchKey(technology, pkey::cSwitchPid),
                        cGlobalDefaultsIndex, false, fields,
                        [](const KORA4FieldDef&) { return true; });
    return hr;
}

void KORA4ManagedPatchSet::LoadGlobalPatches(KORA4KeyAccess& access) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::LoadGlobalPatches");
    for (const KORA4GlobalTechnology technology : cGlobalTechnologies)
        LoadGlobalPatch(access, technology);
}

HRESULT KORA4ManagedPatchSet::WritePresetPatch(KORA4KeyAccess& access, std::uint32_t profile,
                                               KORA4PresetTechnology technology,
                                               bool bumpTrigger, const KnownWords& known) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::WritePresetPatch");
    KALASSERT(cSite, msg::cAssertPresetTech, IsValidTechnology(technology));
    KALASSERT(cSite, msg::cAssertProfile, IsAllowableProfile(profile));
    if (!IsSelectableProfile(profile))
        return hr;
    hr = WritePresetPatchEnable(access, profile, technology, known);
    if (result::Succeeded(hr))
        hr = WritePresetTechPatchData(access, profile, technology);
    if (result::Succeeded(hr) && bumpTrigger)
        BumpPresetTrigger(access, technology, known.pTrigger);
    return hr;
}

HRESULT KORA4ManagedPatchSet::WritePresetPatchEnable(KORA4KeyAccess& access,
                                                     std::uint32_t profile,
                                                     KORA4PresetTechnology technology,
                                                     const KnownWords& known) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::WritePresetPatchEnable");
    // No technology has the GUID offset of the volume: it would write that one's switch.
    if (!IsValidTechnology(technology))
        return hr = result::cInvalidArg;
    if (!IsSelectableProfile(profile))
        return hr;
    const Change<std::uint32_t> change{known.onElseOffBefore, m_dwPresetOnElseOff[technology]};
    hr = KORA4PropKeyStoreAccess(access).WriteBool(
        eKeySetDynamic, PresetPatchKey(technology, profile, pkey::cSwitchPid),
        change.after != 0);
    return MoveOwn(hr, change, known.pOnElseOff);
}

HRESULT KORA4ManagedPatchSet::WritePresetTechPatchData(KORA4KeyAccess& access,
                                                       std::uint32_t profile,
                                                       KORA4PresetTechnology technology) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4ManagedPatchSet::WritePresetTechPatchData");
    TechnologyFields fields;
    hr = GetTechnologyFields(technology, &fields);
    const PropertyKey key = PresetPatchKey(technology, profile, pkey::cSwitchPid);
    for (std::uint32_t i = 0; i < fields.numberFields && result::Succeeded(hr); ++i)
        hr = WriteField(fields.pFields[i], access, key, fields.pRecord);
    return hr;
}

void KORA4ManagedPatchSet::BumpPresetTrigger(KORA4KeyAccess& access,
                                             KORA4PresetTechnology technology,
                                             std::uint32_t* pKnownTrigger) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::BumpPresetTrigger");
    const PropertyKey key = PresetTriggerKey(technology);
    KORA4PropKeyStoreAccess values(access);
    const std::uint32_t before = values.UINTOr(eKeySetDynamic, key, 0);
    // It may wrap: readers compare for equality only.
    const Change<std::uint32_t> change{before, before + 1};
    m_dwPresetTriggers[technology] = change.after;
    // The patch is stored already; a trigger that is not only delays its readers.
    MoveOwn(values.WriteUINT(eKeySetDynamic, key, change.after), change, pKnownTrigger);
}

bool KORA4ManagedPatchSet::ReadPresetOnElseOff(KORA4KeyAccess& access, std::uint32_t profile,
                                               KORA4PresetTechnology technology) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::ReadPresetOnElseOff");
    return KORA4PropKeyStoreAccess(access).BoolOr(
        eKeySetDynamic, PresetPatchKey(technology, profile, pkey::cSwitchPid),
        GetDefaultOnElseOff(technology, profile));
}

bool KORA4ManagedPatchSet::ReadGlobalOnElseOff(KORA4KeyAccess& access,
                                               KORA4GlobalTechnology technology) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::ReadGlobalOnElseOff");
    return KORA4PropKeyStoreAccess(access).BoolOr(eKeySetDynamic,
                                                  GlobalPatchKey(technology, pkey::cSwitchPid),
                                                  GetDefaultOnElseOff(technology));
}

void KORA4ManagedPatchSet::LoadTriggers(KORA4KeyAccess& access) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::LoadTriggers");
    KORA4PropKeyStoreAccess values(access);
    for (const KORA4PresetTechnology technology : cPresetTechnologies)
        m_dwPresetTriggers[technology] =
            values.UINTOr(eKeySetDynamic, PresetTriggerKey(technology), 0);
    for (const KORA4GlobalTechnology technology : cGlobalTechnologies)
        m_dwGlobalTriggers[technology] =
            values.UINTOr(eKeySetDynamic, GlobalTriggerKey(technology), 0);
}

void KORA4ManagedPatchSet::LoadPresetOnElseOff(KORA4KeyAccess& access, std::uint32_t profile) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::LoadPresetOnElseOff");
    for (const KORA4PresetTechnology technology : cPresetTechnologies)
        m_dwPresetOnElseOff[technology] = ReadPresetOnElseOff(access, profile, technology);
}

void KORA4ManagedPatchSet::LoadGlobalOnElseOff(KORA4KeyAccess& access) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::LoadGlobalOnElseOff");
    for (const KORA4GlobalTechnology technology : cGlobalTechnologies)
        m_dwGlobalOnElseOff[technology] = ReadGlobalOnElseOff(access, technology);
}

void KORA4ManagedPatchSet::Refresh(const RefreshSwitches& switches) {
    KALTRACE_SCOPE("KORA4ManagedPatchSet::Refresh");
    m_refreshSwitches = switches;
}

}  // namespace kora4
