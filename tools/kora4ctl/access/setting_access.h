// SPDX-License-Identifier: MIT
// Reading and changing settings: through the library where its interface serves them, and
// through the store where it does not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kora4ctl/access/held_store.h"
#include "process/api_session.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"

namespace kora4::tools {

// Where a value comes from and goes to.
enum class Way {
    eApi,
    eStore,
};

// One setting as it was read.
struct Reading {
    const Setting* setting = nullptr;
    // What is in force; none when there is nothing, as for a command that is not stored.
    std::optional<Value> value;
    std::optional<std::uint32_t> profile;  // of per-profile settings
    Way way = Way::eApi;
    // What the store holds, in the form of the settings document; null when nothing or when
    // nobody asked.
    Json stored;

    // Whether the value is within the limits of the API; a stored one need not be.
    bool IsInRange() const;
    // "7", "off", "none"
    std::string Text(bool withUnit = false) const;
    // {"name", "value", "unit", "profile", "stored", "inRange", "source"}
    Json Document() const;
};

// A setting before and after it was changed.
struct Change {
    std::optional<Value> old;
    Reading now;
};

// How much of the store a reading looks at.
enum class Detail {
    eValue,
    eStored,  // what the store holds, too
};

// Reads and changes settings through the library where it can and through the store where it
// must. Opens either one on first use. Single-threaded.
class SettingAccess {
  public:
    explicit SettingAccess(const Context& context) : m_context(context) {}
    SettingAccess(const SettingAccess&) = delete;
    SettingAccess& operator=(const SettingAccess&) = delete;

    // No profile: the active one. A demo profile that is named is what the store holds for it,
    // the factory values; one that is active without being named is what clients see.
    std::vector<Reading> Read(const std::vector<const Setting*>& settings,
                              std::optional<std::uint32_t> profile, Detail detail);
    Reading Read(const Setting& setting, std::optional<std::uint32_t> profile, Detail detail);

    // As long as it lives, no other program changes a setting, so that what is written depends
    // on what was read. The library's own calls from this thread go on.
    StoreLock Hold();

    // The value as it was typed. Limits::eStore goes past the interface. Failure with eRefused
    // when nothing was stored because a demo profile is active.
    Change Set(const Setting& setting, std::optional<std::uint32_t> profile,
               const std::string& text, Limits limits, Detail detail);
    // Sets a switch to its opposite, in one step.
    Change Toggle(const Setting& setting, std::optional<std::uint32_t> profile, Detail detail);

    // Whether the interface serves this setting of this profile.
    Way WayOf(const Setting& setting, std::optional<std::uint32_t> profile);

    // The object, made on first use. Failure with eNotReady when that is not possible.
    kora4::Api& Api();
    // Asked of the library; any number that is stored.
    std::uint32_t ActiveProfile();
    HeldStore Store(OpenMode mode);

    // The settings that are stored, but not so that anybody can read them: their defaults are
    // in force.
    std::vector<const Setting*> Unreadable(const std::vector<const Setting*>& settings,
                                           std::optional<std::uint32_t> profile);

    // Whether a change of many settings was broken off. Known, and told, when the library or
    // the store was first opened.
    bool WasInterrupted() const { return m_wasInterrupted.value_or(false); }

  private:
    Change SetThroughStore(const Setting& setting, std::optional<std::uint32_t> profile,
                           const std::string& text, Limits limits, Detail detail);
    void ReadFromStore(Reading& reading, bool isNamed, Detail detail, StoreAccess& store) const;

    // Returns when nobody holds the store.
    void LookAtStore();

    const Context& m_context;
    std::optional<bool> m_wasInterrupted;
    std::optional<ApiSession> m_api;
};

// As ActiveProfile, from the store; the caller holds its mutex.
std::uint32_t StoredActiveProfile(StoreAccess& store);

// Failure with eRefused when setters store nothing: the active profile is a demo profile, or
// none of those that there are.
void CheckSettable(std::uint32_t activeProfile);
// The same after a setter, and Failure with eFailed when the profile that was meant is no
// longer the active one.
void CheckWasSet(std::uint32_t activeProfile, std::optional<std::uint32_t> named);

// Whether setters leave a demo profile alone: what belongs to a technology.
bool IsFrozenInDemo(const Setting& setting);

// Failure with eRefused for what a demo profile holds: factory values change with
// Limits::eStore only.
void CheckNotFactory(const Setting& setting, std::optional<std::uint32_t> profile,
                     Limits limits);

}  // namespace kora4::tools
