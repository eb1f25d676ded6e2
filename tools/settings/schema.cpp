// SPDX-License-Identifier: MIT
// Builds the list of all values of the store from the contract's tables.
#include "settings/schema.h"

#include <algorithm>
#include <map>
#include <span>
#include <tuple>

#include "base/failure.h"
#include "contract/field_tables.h"
#include "contract/general_settings.h"
#include "contract/profiles.h"
#include "settings/texts.h"

namespace kora4::tools {
namespace {

using contract::GeneralSetting;

// ---- Keys -------------------------------------------------------------------------------

KORA4PresetTechnology PresetNumber(Technology technology) {
    return static_cast<KORA4PresetTechnology>(technology.number);
}
KORA4GlobalTechnology GlobalNumber(Technology technology) {
    return static_cast<KORA4GlobalTechnology>(technology.number);
}

// Of a switch, with pid 0, or of a field.
PropertyKey PatchKey(Technology technology, std::uint32_t profile, std::uint32_t pid) {
    return technology.family == Family::ePreset
               ? pkey::PresetPatch(PresetNumber(technology), profile, pid)
               : GlobalPatchKey(GlobalNumber(technology), pid);
}

PropertyKey TriggerKey(Technology technology) {
    return technology.family == Family::ePreset ? PresetTriggerKey(PresetNumber(technology))
                                                : GlobalTriggerKey(GlobalNumber(technology));
}

std::span<const KORA4FieldDef> FieldsOf(Technology technology) {
    const fields::RecordDef& record = technology.family == Family::ePreset
                                          ? fields::cPresetRecords[technology.number]
                                          : fields::cGlobalRecords[technology.number];
    return {record.pFields, record.numberFields};
}

// ---- Defaults ---------------------------------------------------------------------------

StoredValue FieldDefault(const KORA4FieldDef& field, unsigned array, std::uint32_t row) {
    switch (field.typeCode) {
        case cUnsignedField:
        case cBooleanField:
            return StoredValue::FromDword(
                static_cast<const std::uint32_t*>(field.pDefaults)[row]);
        case cFloatField:
            return StoredValue::FromText(
                FormatFloatText(static_cast<const float*>(field.pDefaults)[row]));
        case cSelectedArrayField:
            return StoredValue::FromDword(
                static_cast<const EnumFieldDef*>(field.pDefaults)->pEnumDefaults[row]);
        default:
            return StoredValue::FromText(
                static_cast<const defaults::TextList*>(field.pDefaults)[row][array]);
    }
}

bool FlagDefault(Technology technology, std::uint32_t profile) {
    return technology.family == Family::ePreset
               ? defaults::IsOn(PresetNumber(technology), profile)
               : defaults::IsOn(GlobalNumber(technology));
}

// ---- The walk ---------------------------------------------------------------------------

Role RoleOf(const GeneralSetting& setting) {
    if (setting.key.fmtid == pkey::cMasterEnablesGuid)
        return Role::eEngineMask;
    switch (setting.key.pid) {
        case pkey::cActivePresetPid:
            return Role::eActiveProfile;
        case pkey::cVisualizationDataPid:
            return Role::eVisualization;
        case pkey::cProfileTableCounterPid:
            return Role::eTableCounter;
        case pkey::cSavedEnablePid:
        case pkey::cSavedProfilePid:
            return Role::eSavedDemoState;
        case pkey::cTraceFlagsPid:
            return Role::eTraceWord;
        default:
            return Role::eSetting;
    }
}

SchemaValue FromGeneral(const GeneralSetting& setting) {
    SchemaValue value;
    value.keySet = setting.keySet;
    value.key = setting.key;
    value.kind = setting.kind;
    value.role = RoleOf(setting);
    if (setting.HasDefault())
        value.defaultNumber = setting.defaultNumber;
    return value;
}

SchemaValue OfTechnology(Technology technology, std::uint32_t profile) {
    SchemaValue value;
    value.technology = technology;
    if (technology.family == Family::ePreset)
        value.profile = profile;
    return value;
}

SchemaValue FromField(Technology technology, std::uint32_t profile, const KORA4FieldDef& field,
                      unsigned array) {
    SchemaValue value = OfTechnology(technology, profile);
    value.key = PatchKey(technology, profile, field.pid + array);
    value.kind = static_cast<Kind>(field.typeCode);
    value.role = Role::eField;
    value.array = array;
    value.scale = field.scale;
    value.field = &field;
    return value;
}

void AddTechnology(std::vector<SchemaValue>& values, Technology technology,
                   std::uint32_t profile) {
    values.push_back(SwitchValue(technology, profile));
    for (SchemaValue& value : FieldValues(technology, profile))
        values.push_back(std::move(value));
}

std::vector<SchemaValue> Walk() {
    std::vector<SchemaValue> values;
    for (const GeneralSetting& setting : contract::cGeneralSettings)
        values.push_back(FromGeneral(setting));
    for (const ProfileWord& profile : Profiles()) {
        if (IsCustomProfile(profile.number))
            values.push_back(NameValue(profile.number));
        for (const TechnologyWord& technology : AllTechnologies())
            if (technology.technology.family == Family::ePreset)
                AddTechnology(values, technology.technology, profile.number);
    }
    for (const TechnologyWord& technology : AllTechnologies()) {
        if (technology.technology.family == Family::eGlobal)
            AddTechnology(values, technology.technology, 0);
        values.push_back(TriggerValue(technology.technology));
    }
    return values;
}

}  // namespace

std::optional<StoredValue> SchemaValue::Default() const {
    if (field)
        return FieldDefault(*field, array, DefaultsRowOf(profile.value_or(cMovieProfile)));
    if (defaultNumber)
        return StoredValue::FromDword(*defaultNumber);
    return {};
}

std::vector<StoredValue> SchemaValue::Defaults() const {
    std::vector<StoredValue> all;
    const std::uint32_t rows =
        field && technology.family == Family::ePreset ? cDefaultedProfileBound : 1;
    for (std::uint32_t row = 0; field && row < rows; ++row)
        all.push_back(FieldDefault(*field, array, row));
    if (!field && defaultNumber)
        all.push_back(StoredValue::FromDword(*defaultNumber));
    return all;
}

std::optional<PropertyKey> SchemaValue::Announcement() const {
    if (role == Role::eField)
        return TriggerKey(technology);
    if (role == Role::eName)
        return pkey::Setting(pkey::cProfileTableCounterPid);
    return {};
}

void AddAnnouncement(std::vector<PropertyKey>& counters, const SchemaValue& value) {
    const std::optional<PropertyKey> counter = value.Announcement();
    if (counter && std::find(counters.begin(), counters.end(), *counter) == counters.end())
        counters.push_back(*counter);
}

const std::vector<SchemaValue>& Schema() {
    static const std::vector<SchemaValue> schema = Walk();
    return schema;
}

const SchemaValue* FindInSchema(KORA4KeySet keySet, const PropertyKey& key) {
    // Families differ in the first field of their GUIDs already.
    using Place = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>;
    const auto placeOf = [](KORA4KeySet set, const PropertyKey& of) {
        return Place(set, of.fmtid.data1, of.pid);
    };
    static const std::map<Place, const SchemaValue*> places = [&placeOf] {
        std::map<Place, const SchemaValue*> all;
        for (const SchemaValue& value : Schema())
            all.emplace(placeOf(value.keySet, value.key), &value);
        return all;
    }();
    const auto found = places.find(placeOf(keySet, key));
    return found != places.end() && found->second->key == key ? found->second : nullptr;
}

SchemaValue SettingValue(std::uint32_t pid) {
    const GeneralSetting* const setting = contract::FindGeneralSetting(pkey::Setting(pid));
    if (!setting)
        throw Failure(ExitCode::eFailed,
                      "The store has no setting of property id " + std::to_string(pid) + ".");
    return FromGeneral(*setting);
}

SchemaValue EngineMaskValue() {
    return FromGeneral(*contract::FindGeneralSetting(
        PropertyKey{pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid}));
}

SchemaValue SwitchValue(Technology technology, std::uint32_t profile) {
    SchemaValue value = OfTechnology(technology, profile);
    value.keySet = eKeySetDynamic;
    value.key = PatchKey(technology, profile, pkey::cSwitchPid);
    value.kind = Kind::eSwitch;
    value.role = Role::eSwitch;
    value.defaultNumber = FlagDefault(technology, profile);
    return value;
}

SchemaValue FieldValue(Technology technology, std::uint32_t profile, std::uint32_t pid) {
    for (const SchemaValue& value : FieldValues(technology, profile))
        if (value.key.pid == pid)
            return value;
    throw Failure(ExitCode::eFailed, "A " + std::string(WordOf(technology).title) +
                                         " has no field of property id " + std::to_string(pid) +
                                         ".");
}

std::vector<SchemaValue> FieldValues(Technology technology, std::uint32_t profile) {
    std::vector<SchemaValue> values;
    for (const KORA4FieldDef& field : FieldsOf(technology)) {
        // A scalar is one value, and so is a selected curve: only its index is stored.
        const unsigned count = std::max<unsigned>(1, field.m_numArrays);
        for (unsigned array = 0; array < count; ++array)
            values.push_back(FromField(technology, profile, field, array));
    }
    return values;
}

SchemaValue NameValue(std::uint32_t customProfile) {
    SchemaValue value;
    value.key = pkey::ProfileName(customProfile);
    value.kind = Kind::eText;
    value.role = Role::eName;
    value.profile = customProfile;
    return value;
}

SchemaValue TriggerValue(Technology technology) {
    SchemaValue value;
    value.keySet = eKeySetDynamic;
    value.key = TriggerKey(technology);
    value.kind = Kind::eNumber;
    value.role = Role::eTrigger;
    value.technology = technology;
    value.defaultNumber = 0;
    return value;
}

}  // namespace kora4::tools
