// SPDX-License-Identifier: MIT
// Everything that the store may hold: one walk over every value, with what it is and what
// stands in for it when it is absent.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "contract/value_kind.h"
#include "registry/store_access.h"
#include "registry/stored_value.h"
#include "settings/names.h"

namespace kora4 {
struct KORA4FieldDef;
}

namespace kora4::tools {

using Kind = ValueKind;

// What a value is for.
enum class Role {
    eSetting,  // a setting that belongs to no technology: master enable, sampling period...
    eActiveProfile,
    eSwitch,  // a technology is on
    eField,   // a value of a technology
    eName,    // of a custom profile
    eTrigger,
    eTableCounter,
    eSavedDemoState,
    eVisualization,
    eEngineMask,
    eTraceWord,
};

// One value that the store may hold.
struct SchemaValue {
    KORA4KeySet keySet = eKeySetStatic;
    PropertyKey key{};
    Kind kind = Kind::eNumber;
    Role role = Role::eSetting;
    // Fields, switches and names of a profile.
    std::optional<std::uint32_t> profile = {};
    // Fields, switches and triggers.
    Technology technology = {};
    // Fields: the row of the field table. Others: none.
    const KORA4FieldDef* field = nullptr;
    // Switches and numbers other than fields: what stands in for them when absent.
    std::optional<std::uint32_t> defaultNumber = {};

    // The same value of another profile; itself when it belongs to none.
    SchemaValue InProfile(std::uint32_t number) const;

    // The built-in value, in the form in which it would be stored; none when absence means
    // that there is nothing (names, commands, levels).
    std::optional<StoredValue> Default() const;
    // That of every row of the table of defaults: Movie, Music, Games, or the one row.
    std::vector<StoredValue> Defaults() const;
    // The counter that announces a change; none when the value announces itself or is
    // announced by nothing.
    std::optional<PropertyKey> Announcement() const;

    // Which one of a field with several arrays it is, from 0 on.
    std::uint32_t Array() const;

    // The name under which the registry has the value.
    std::string Name() const { return ValueName(key); }
};

// Adds the counter that announces a change of the value, each once.
void AddAnnouncement(std::vector<PropertyKey>& counters, const SchemaValue& value);

// Every value: settings, engine mask, commands, trace word, names of the custom profiles,
// global technologies with their triggers, preset technologies of the twelve profiles with
// their triggers.
const std::vector<SchemaValue>& Schema();

// None for a key that the store does not know.
const SchemaValue* FindInSchema(KORA4KeySet keySet, const PropertyKey& key);

// One value without the walk: a general setting, the switch (pid 0) or a field of a technology.
// `profile` is not looked at for global technologies.
SchemaValue SettingValue(const PropertyKey& key);
inline SchemaValue SettingValue(std::uint32_t pid) {
    return SettingValue(pkey::Setting(pid));
}
// The engine mask, which only the installer writes.
inline SchemaValue EngineMaskValue() {
    return SettingValue({pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid});
}
SchemaValue SwitchValue(Technology technology, std::uint32_t profile);
SchemaValue FieldValue(Technology technology, std::uint32_t profile, std::uint32_t pid);
// All fields of a technology, each array for itself.
std::vector<SchemaValue> FieldValues(Technology technology, std::uint32_t profile);

// The name of a custom profile, 3 to 8.
SchemaValue NameValue(std::uint32_t customProfile);

// The trigger word of a technology.
SchemaValue TriggerValue(Technology technology);

}  // namespace kora4::tools
