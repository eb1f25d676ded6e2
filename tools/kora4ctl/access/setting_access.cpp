// SPDX-License-Identifier: MIT
// Chooses between the library and the store for each setting, and refuses what neither would
// keep.
#include "kora4ctl/access/setting_access.h"

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/field_ids.h"
#include "contract/profiles.h"
#include "kora4ctl/access/api_settings.h"
#include "kora4ctl/access/profile_names.h"
#include "registry/journal.h"
#include "settings/band_rule.h"
#include "settings/document.h"

namespace kora4::tools {

namespace {

// A demo profile uses the built-in values, whatever is stored.
bool IsDemoInForce(const Setting& setting, std::uint32_t profile, bool isNamed) {
    return setting.role == Role::eField && !isNamed && IsDemoProfile(profile);
}

// The value that is the opposite of a switch's present one.
constexpr char cToggle[] = "toggle";

const char* NameOfWay(Way way) {
    return way == Way::eApi ? "api" : "store";
}

// A setting that the API only reads can still be written in the store, with --stored.
void CheckWritable(const Setting& setting, Limits limits) {
    if (setting.perProfile && !setting.isStored)
        throw BadInput("'" + setting.name + "' has more than one value.",
                       "Set it with 'kora4ctl eq set', 'eq flat' or 'eq import'.");
    if (!setting.isStored)
        throw BadInput("'" + setting.name + "' belongs to the library and cannot be set.");
    if (setting.access == Access::eReadOnly && limits == Limits::eApi)
        throw BadInput("The library has no method that sets '" + setting.name + "'.",
                       "Write it to the store with --stored; programs read it when they "
                       "start.");
}

// The rule for bands: frequencies ascend, and the graphic equalizer keeps their number.
void CheckBandRule(const Setting& setting, std::uint32_t profile, const Value& wanted,
                   StoreAccess& store) {
    const auto* const array = std::get_if<std::vector<float>>(&wanted);
    if (array == nullptr)
        return;
    std::vector<float> frequencies = setting.unit == "Hz" ? *array : std::vector<float>();
    if (setting.methods == ApiMethods::eFrequencies || setting.methods == ApiMethods::eGains) {
        const bool isGains = setting.methods == ApiMethods::eGains;
        const std::vector<float> stored =
            GraphicEqArray(pkey::cStandardEQFreqPid, profile, store);
        CheckCount(stored.size(), array->size(), isGains ? "gains" : "frequencies");
        if (isGains)
            frequencies = stored;
    }
    CheckFrequencies(BandsOf(frequencies));
}

// Where a setting is stored; for the bands as a whole, where their gains are.
const Setting* PlaceOf(const Setting& setting) {
    if (setting.isStored)
        return &setting;
    return setting.perProfile ? FindSetting(setting.name + ".gains") : nullptr;
}

}  // namespace

bool Reading::IsInRange() const {
    return !value || tools::IsInRange(*setting, *value);
}

std::string Reading::Text(bool withUnit) const {
    return value ? FormatValue(*setting, *value, withUnit) : std::string();
}

Json Reading::Document() const {
    Json json;
    json["name"] = setting->name;
    json["value"] = value ? ToJson(*setting, *value) : Json();
    json["unit"] = OrNull(setting->unit);
    json["profile"] = profile ? Json(ProfileName(*profile)) : Json();
    json["stored"] = stored;
    json["inRange"] = IsInRange();
    json["source"] = NameOfWay(way);
    return json;
}

std::uint32_t StoredActiveProfile(StoreAccess& store) {
    const SchemaValue active = SettingValue(pkey::cActivePresetPid);
    return store.Number(active.keySet, active.key, cMovieProfile);
}

void CheckSettable(std::uint32_t activeProfile) {
    if (IsSelectableProfile(activeProfile))
        return;
    const std::string name = ProfileName(activeProfile);
    if (IsDemoProfile(activeProfile))
        throw Failure(
            ExitCode::eRefused,
            "Nothing was stored: the demo profile " + name +
                " is active, and values cannot be changed in a demo.",
            "Leave the demo with 'kora4ctl demo force-leave', or choose another profile "
            "with --profile.");
    throw Failure(ExitCode::eRefused,
                  "Nothing was stored: profile number " + name +
                      " is active, but there is no such profile.",
                  "Select another: kora4ctl profile use music");
}

bool IsFrozenInDemo(const Setting& setting) {
    return setting.perProfile && setting.technology.family == Family::ePreset;
}

void CheckNotFactory(const Setting& setting, std::optional<std::uint32_t> profile,
                     Limits limits) {
    if (limits == Limits::eStore || !profile || !IsDemoProfile(*profile) ||
        !IsFrozenInDemo(setting))
        return;
    throw Failure(ExitCode::eRefused,
                  "Nothing was stored: " + ProfileName(*profile) +
                      " holds the factory values of " + ProfileName(WithoutDemo(*profile)) +
                      ".",
                  "To change them anyway, use 'set' or 'eq' with --stored.");
}

void CheckWasSet(std::uint32_t activeProfile, std::optional<std::uint32_t> named) {
    CheckSettable(activeProfile);
    if (named && *named != activeProfile)
        throw Failure(ExitCode::eFailed,
                      "Another program made " + ProfileName(activeProfile) +
                          " the active profile meanwhile, and the value may have gone there "
                          "instead of " +
                          ProfileName(*named) + ".",
                      "Check both with 'kora4ctl profile show'.");
}

Api& SettingAccess::Api() {
    if (!m_api) {
        LookAtStore();
        m_api.emplace();
    }
    return **m_api;
}

// A journal that is there while the mutex is free is that of a program that is gone.
void SettingAccess::LookAtStore() {
    const bool isKnown = m_wasInterrupted.has_value();
    {
        const StoreLock lock = LockStore(m_context);
        if (!isKnown)
            m_wasInterrupted = JournalFile(DefaultJournalPath()).IsThere();
    }
    if (!isKnown && *m_wasInterrupted)
        m_context.output.Say(
            "A change of the settings was interrupted half-way. Run 'kora4ctl doctor' to undo "
            "or finish it.");
}

HeldStore SettingAccess::Store(OpenMode mode) {
    if (!m_wasInterrupted)
        LookAtStore();
    return HeldStore(m_context, mode);
}

std::vector<const Setting*> SettingAccess::Unreadable(
    const std::vector<const Setting*>& settings, std::optional<std::uint32_t> profile) {
    const HeldStore store = Store(OpenMode::eRead);
    const std::uint32_t number = profile ? *profile : StoredActiveProfile(*store);
    std::vector<const Setting*> unreadable;
    for (const Setting* const setting : settings) {
        const Setting* const place = PlaceOf(*setting);
        if (place == nullptr || (place->role == Role::eName && !IsCustomProfile(number)))
            continue;
        const SchemaValue value = place->Stored(number);
        const std::optional<StoredValue> stored = store->Read(value.keySet, value.key);
        if (stored && !Decode(value, *stored))
            unreadable.push_back(setting);
    }
    return unreadable;
}

std::uint32_t SettingAccess::ActiveProfile() {
    return tools::ActiveProfile(Api());
}

Way SettingAccess::WayOf(const Setting& setting, std::optional<std::uint32_t> profile) {
    if (setting.access == Access::eStoreOnly)
        return Way::eStore;
    // The table of names has those of all profiles.
    if (!setting.perProfile || !profile || setting.role == Role::eName)
        return Way::eApi;
    return IsSelectableProfile(*profile) && *profile == ActiveProfile() ? Way::eApi
                                                                        : Way::eStore;
}

Reading SettingAccess::Read(const Setting& setting, std::optional<std::uint32_t> profile,
                            Detail detail) {
    return Read(std::vector{&setting}, profile, detail).front();
}

std::vector<Reading> SettingAccess::Read(const std::vector<const Setting*>& settings,
                                         std::optional<std::uint32_t> profile, Detail detail) {
    std::vector<Reading> readings;
    bool needsStore = false;
    for (const Setting* setting : settings) {
        Reading reading{setting, {}, {}, WayOf(*setting, profile), {}};
        if (setting->perProfile)
            reading.profile = profile;
        if (reading.way == Way::eApi) {
            reading.value = ReadThroughApi(*setting, profile, Api());
            // Only a document says which profile that was.
            if (setting->perProfile && !profile && detail == Detail::eStored)
                reading.profile = ActiveProfile();
        }
        needsStore |= reading.way == Way::eStore ||
                      (detail == Detail::eStored && PlaceOf(*setting) != nullptr);
        readings.push_back(reading);
    }
    if (!needsStore)
        return readings;
    const HeldStore store = Store(OpenMode::eRead);
    for (Reading& reading : readings)
        ReadFromStore(reading, profile.has_value(), detail, *store);
    return readings;
}

void SettingAccess::ReadFromStore(Reading& reading, bool isNamed, Detail detail,
                                  StoreAccess& store) const {
    const Setting& setting = *reading.setting;
    if (setting.perProfile && !reading.profile)
        reading.profile = StoredActiveProfile(store);
    const Setting* const place = PlaceOf(setting);
    if (place == nullptr || (reading.way == Way::eApi && detail == Detail::eValue))
        return;
    const std::uint32_t profile = reading.profile.value_or(0);
    if (setting.role == Role::eName && !IsCustomProfile(profile))
        return;
    const SchemaValue value = place->Stored(profile);
    if (reading.way == Way::eStore)
        reading.value =
            IsDemoInForce(setting, profile, isNamed) ? BuiltIn(value) : Effective(value, store);
    if (detail != Detail::eStored)
        return;
    if (const std::optional<StoredValue> stored = store.Read(value.keySet, value.key))
        reading.stored = StoredToJson(*place, *stored);
}

StoreLock SettingAccess::Hold() {
    // Its start waits for a thread that may want the mutex.
    Api();
    return LockStore(m_context);
}

Change SettingAccess::Set(const Setting& setting, std::optional<std::uint32_t> profile,
                          const std::string& text, Limits limits, Detail detail) {
    CheckWritable(setting, limits);
    if (setting.methods == ApiMethods::eEnable && limits == Limits::eApi &&
        Lower(text) == cToggle)
        return Toggle(setting, profile, detail);
    CheckNotFactory(setting, profile, limits);
    if (limits == Limits::eStore || WayOf(setting, profile) == Way::eStore)
        return SetThroughStore(setting, profile, text, limits, detail);
    Change change;
    const StoreLock lock = Hold();
    change.old = ReadThroughApi(setting, profile, Api());
    WriteThroughApi(setting, profile, ParseValue(setting, text, change.old, limits), Api());
    if (IsFrozenInDemo(setting))
        CheckWasSet(ActiveProfile(), profile);
    change.now = Read(setting, profile, detail);
    return change;
}

Change SettingAccess::SetThroughStore(const Setting& setting,
                                      std::optional<std::uint32_t> profile,
                                      const std::string& text, Limits limits, Detail detail) {
    Change change;
    const HeldStore store = Store(OpenMode::eReadWrite);
    std::uint32_t target = 0;
    if (setting.perProfile) {
        target = profile ? *profile : StoredActiveProfile(*store);
        if (!profile && IsFrozenInDemo(setting))
            CheckSettable(target);
        if (setting.role == Role::eName)
            CheckIsCustom(target);
    }
    const SchemaValue value = setting.Stored(target);
    change.old = Effective(value, *store);
    const Value wanted = ParseValue(setting, text, change.old, limits);
    if (limits == Limits::eApi)
        CheckBandRule(setting, target, wanted, *store);
    store->Write(value.keySet, value.key, Encode(value, wanted));
    // Also for a profile that is not active: a writer in another session, which the mutex
    // does not hold back, may be making it active at this moment.
    if (const std::optional<PropertyKey> counter = value.Announcement())
        store->Bump(*counter);
    change.now = Reading{&setting, {}, {}, Way::eStore, {}};
    if (setting.perProfile)
        change.now.profile = target;
    ReadFromStore(change.now, profile.has_value(), detail, *store);
    return change;
}

Change SettingAccess::Toggle(const Setting& setting, std::optional<std::uint32_t> profile,
                             Detail detail) {
    // One step for the library, however many clients toggle at a time.
    if (setting.methods == ApiMethods::eEnable) {
        const bool isOn = Check(Api().ToggleVeltoEnable(), "Toggling the master enable");
        return {Value(!isOn), Read(setting, profile, detail)};
    }
    return Set(setting, profile, cToggle, Limits::eApi, detail);
}

}  // namespace kora4::tools
