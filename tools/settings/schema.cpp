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

StoredValue FieldDefault(const SchemaValue& value, std::uint32_t row) {
    const kora4::FieldDefault builtIn = DefaultOf(*value.field, row, value.Array());
    if (builtIn.pwText)
        return StoredValue::FromText(builtIn.pwText);
    return value.kind == Kind::eFloat ? StoredValue::FromText(FormatFloatText(builtIn.real))
                                      : StoredValue::FromDword(builtIn.number);
}

bool FlagDefault(Technology technology, std::uint32_t profile) {
    return technology.family == Family::ePreset
               ? defaults::IsOn(PresetNumber(technology), profile)
               : defaults::IsOn(GlobalNumber(technology));
}

// ---- The walk ---------------------------------------------------------------------------

// The general settings that are not only that.
constexpr std::pair<std::uint32_t, Role> cRoles[] = {
    {pkey::cActivePresetPid, Role::eActiveProfile},
    {pkey::cVisualizationDataPid, Role::eVisualization},
    {pkey::cProfileTableCounterPid, Role::eTableCounter},
    {pkey::cSavedEnablePid, Role::eSavedDemoState},
    {pkey::cSavedProfilePid, Role::eSavedDemoState},
    {pkey::cTraceFlagsPid, Role::eTraceWord},
    {pkey::cMasterEnablesPid, Role::eEngineMask},
};

SchemaValue FromGeneral(const GeneralSetting& setting) {
    SchemaValue value{setting.keySet, setting.key, setting.kind};
    for (const auto& [pid, role] : cRoles)
        if (setting.key.pid == pid)
            value.role = role;
    if (setting.HasDefault())
        value.defaultNumber = setting.defaultNumber;
    return value;
}

// A switch or a field.
SchemaValue OfTechnology(KORA4KeySet keySet, Technology technology, std::uint32_t profile,
                         std::uint32_t pid, Kind kind, Role role) {
    SchemaValue value{keySet, PatchKey(technology, profile, pid), kind, role};
    value.technology = technology;
    if (technology.family == Family::ePreset)
        value.profile = profile;
    return value;
}

void AddTechnology(std::vector<SchemaValue>& values, Technology technology,
                   std::uint32_t profile) {
    values.push_back(SwitchValue(technology, profile));
    for (const SchemaValue& value : FieldValues(technology, profile))
        values.push_back(value);
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

std::uint32_t SchemaValue::Array() const {
    return field ? key.pid - field->pid : 0;
}

SchemaValue SchemaValue::InProfile(std::uint32_t number) const {
    if (!profile)
        return *this;
    if (role == Role::eName)
        return NameValue(number);
    if (role == Role::eSwitch)
        return SwitchValue(technology, number);
    SchemaValue moved = *this;
    moved.profile = number;
    moved.key = PatchKey(technology, number, key.pid);
    return moved;
}

std::optional<StoredValue> SchemaValue::Default() const {
    if (field)
        return FieldDefault(*this, DefaultsRowOf(profile.value_or(cMovieProfile)));
    return defaultNumber ? std::optional(StoredValue::FromDword(*defaultNumber)) : std::nullopt;
}

std::vector<StoredValue> SchemaValue::Defaults() const {
    std::vector<StoredValue> all;
    for (std::uint32_t row = 0; field && row < (profile ? cDefaultedProfileBound : 1); ++row)
        all.push_back(FieldDefault(*this, row));
    if (!field && defaultNumber)
        all.push_back(*Default());
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

SchemaValue SettingValue(const PropertyKey& key) {
    if (const GeneralSetting* const setting = contract::FindGeneralSetting(key))
        return FromGeneral(*setting);
    throw Failure(ExitCode::eFailed, "The store has no setting with the property id " +
                                         std::to_string(key.pid) + ".");
}

SchemaValue SwitchValue(Technology technology, std::uint32_t profile) {
    SchemaValue value = OfTechnology(eKeySetDynamic, technology, profile, pkey::cSwitchPid,
                                     Kind::eSwitch, Role::eSwitch);
    value.defaultNumber = FlagDefault(technology, profile);
    return value;
}

SchemaValue FieldValue(Technology technology, std::uint32_t profile, std::uint32_t pid) {
    for (const SchemaValue& value : FieldValues(technology, profile))
        if (value.key.pid == pid)
            return value;
    throw Failure(ExitCode::eFailed, "A " + std::string(WordOf(technology).title) +
                                         " has no field with the property id " +
                                         std::to_string(pid) + ".");
}

std::vector<SchemaValue> FieldValues(Technology technology, std::uint32_t profile) {
    std::vector<SchemaValue> values;
    for (const KORA4FieldDef& field : FieldsOf(technology)) {
        // A scalar is one value, and so is a selected curve: only its index is stored.
        const unsigned count = std::max<unsigned>(1, field.m_numArrays);
        for (unsigned array = 0; array < count; ++array) {
            values.push_back(OfTechnology(eKeySetStatic, technology, profile, field.pid + array,
                                          static_cast<Kind>(field.typeCode), Role::eField));
            values.back().field = &field;
        }
    }
    return values;
}

SchemaValue NameValue(std::uint32_t customProfile) {
    return {eKeySetStatic, pkey::ProfileName(customProfile), Kind::eText, Role::eName,
            customProfile};
}

SchemaValue TriggerValue(Technology technology) {
    SchemaValue value{eKeySetDynamic, TriggerKey(technology), Kind::eNumber, Role::eTrigger};
    value.technology = technology;
    value.defaultNumber = 0;
    return value;
}

}  // namespace kora4::tools
