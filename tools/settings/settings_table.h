// SPDX-License-Identifier: MIT
// The table of settings: the one place that says what a setting is called, what it may be,
// who may change it and how it is stored. `get`, `set`, `describe`, `--help`, completion,
// the settings document and the manual are made from it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings/schema.h"

namespace kora4::tools {

// Who can change a setting.
enum class Access {
    eReadWrite,  // through the API (of the active profile)
    eReadOnly,   // the API reads it and has no setter
    eStoreOnly,  // not in the API: through the store
};

// Which methods of the API serve a setting: one that reads it, and mostly one that sets it.
enum class ApiMethods {
    eNone,
    eActiveProfile,
    eEnable,
    eSamplingPeriod,
    eEngineMask,
    eEditorCommand,
    eSelectorCommand,
    eDemoCommand,
    eVersion,
    eProfileName,
    eSwitch,
    ePatchValue,
    eFrequencies,
    eGains,
    eBands,  // both of these, which are read together and set one by one
};

// Their names, empty where there is none.
const char* ReaderName(ApiMethods methods);
const char* WriterName(ApiMethods methods);

// What a value is called, besides its number.
struct ValueWord {
    std::string word;
    std::uint32_t number;
};

// One row of the table: a value of the store (that of Movie, when each profile has its own) and
// what is to be known about it.
struct Setting : SchemaValue {
    std::string name = {};     // "volume-leveler", "volume-leveler.on"
    std::string summary = {};  // one line without a full stop
    std::string unit = {};     // "ms", "dB", "Hz", or empty
    // What the API lets a client set, both ends included; none: any number.
    std::optional<double> lowest = {};
    std::optional<double> highest = {};
    std::vector<ValueWord> words = {};  // of numbers; switches have on and off besides
    bool perProfile = false;
    Access access = Access::eStoreOnly;
    ApiMethods methods = ApiMethods::eNone;

    // Not stored: the version, which only the library knows.
    bool isStored = true;
    // Kept for the engine; nothing else depends on it. Listings leave it out.
    bool isCarried = false;

    // How it is stored. `number`, a profile, matters to per-profile settings only.
    SchemaValue Stored(std::uint32_t number = 0) const;

    // "on or off", "0 to 10", "0 to 1", "balanced, open, ... or 0 to 5", "a text".
    std::string Allowed() const;
    bool IsSwitch() const { return kind == Kind::eSwitch; }
    bool IsArray() const { return kind == Kind::eNumericArray || kind == Kind::eFlagArray; }
    // A change by +N, -N, +N% or -N% is understood: numbers that cannot be negative.
    bool TakesRelative() const;
};

// All rows in the order of `list`.
const std::vector<Setting>& SettingsTable();

// By name in any case, by an alias (`volume`, `surround`, "X.switch") and, for the technologies
// of the API, by number. Null when there is none.
const Setting* FindSetting(std::string_view name);
// The same, and a technology without a value of its own is its switch. Failure with eBadInput
// and the nearest names.
const Setting& SettingNamed(std::string_view name);
// "volume-leveler" and "volume-leveler.on" both give "volume-leveler.on"; null when the
// setting is not a switch and has none.
const Setting* SwitchOf(const Setting& setting);
// The setting that a value of the store belongs to; null for triggers and the like.
const Setting* SettingOf(const SchemaValue& value);

// What a value of the store is called: the setting's name, or, for a value that is not a
// setting, "levels", "table-counter", "volume-leveler trigger"; with the profile in front:
// "music: volume-leveler".
std::string NameOf(const SchemaValue& value);
std::string PlaceOf(const SchemaValue& value);

// All names, in the order of `list`.
std::vector<std::string> SettingNames();
// For completion: on and off, words, profiles; empty for plain numbers.
std::vector<std::string> CompletionWords(const Setting& setting);

}  // namespace kora4::tools
