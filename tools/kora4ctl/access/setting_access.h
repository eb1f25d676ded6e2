// SPDX-License-Identifier: MIT
// Reading and changing settings: through the library where its interface serves them, and
// through the store where it does not.
#ifndef KORA4_KORA4CTL_ACCESS_SETTING_ACCESS_H
#define KORA4_KORA4CTL_ACCESS_SETTING_ACCESS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "process/api_session.h"
#include "process/program.h"
#include "registry/registry_store.h"
#include "registry/store_lock.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"

namespace kora4::tools {

// Milliseconds until a tool gives up waiting for the store's mutex.
inline constexpr DWORD cLockPatience = 30000;

// Where a value comes from and goes to.
enum class Way {
    eApi,
    eStore,
};

struct Reading {
    const Setting* setting = nullptr;
    // What is in force; none when there is nothing, as for a command that is not stored.
    std::optional<Value> value;
    std::optional<std::uint32_t> profile;  // of per-profile settings
    Way way = Way::eApi;
    // What the store holds, in the form of the settings document; null when nothing or when
    // nobody asked.
    Json stored;

    bool IsInRange() const;
    // "7", "off", "none"
    std::string Text(bool withUnit = false) const;
    // {"name", "value", "unit", "profile", "stored", "inRange", "source"}
    Json Document() const;
};

struct Change {
    std::optional<Value> old;
    Reading now;
};

enum class Detail {
    eValue,
    eStored,  // what the store holds, too
};

// Opens what it needs when it needs it. Single-threaded.
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

    // The value as it was typed. Limits::eStore goes past the interface. Failure with eRefused
    // when nothing was stored because a demo profile is active.
    Change Set(const Setting& setting, std::optional<std::uint32_t> profile,
               const std::string& text, Limits limits, Detail detail);
    // setting: a switch.
    Change Toggle(const Setting& setting, std::optional<std::uint32_t> profile, Detail detail);

    // Whether the interface serves this setting of this profile.
    Way WayOf(const Setting& setting, std::optional<std::uint32_t> profile);

    ApiSession& Api();
    // Asked of the library; any number that is stored.
    std::uint32_t ActiveProfile();
    std::unique_ptr<StoreAccess> Store(OpenMode mode) const { return OpenStore(mode); }
    StoreLock Lock() const { return StoreLock(cLockPatience, m_context.interrupt.Event()); }

  private:
    Change SetThroughStore(const Setting& setting, std::optional<std::uint32_t> profile,
                           const std::string& text, Limits limits, Detail detail);
    void ReadFromStore(Reading& reading, bool isNamed, Detail detail, StoreAccess& store) const;

    const Context& m_context;
    std::optional<ApiSession> m_api;
};

// Returns when nobody holds the store; what StoreLock throws otherwise. The library itself
// waits for it without end, so this comes before it is started.
void WaitForStore(const Context& context);

// As ActiveProfile, from the store; the caller holds its mutex.
std::uint32_t StoredActiveProfile(StoreAccess& store);

// Failure with eRefused when setters store nothing: the active profile is a demo profile, or
// none of those that there are.
void RefuseUnlessSettable(std::uint32_t activeProfile);
// The same after a setter, and Failure with eFailed when the profile that was meant is no
// longer the active one.
void RefuseUnlessSet(std::uint32_t activeProfile, std::optional<std::uint32_t> named);

// Whether setters leave a demo profile alone: what belongs to a technology.
bool IsFrozenInDemo(const Setting& setting);

// The methods of the interface by the names in the table of settings. `profile` matters to
// names alone; everything else is of the active profile.
std::optional<Value> ReadThroughApi(const Setting& setting,
                                    std::optional<std::uint32_t> profile,
                                    const ApiSession& api);
void WriteThroughApi(const Setting& setting, std::optional<std::uint32_t> profile,
                     const Value& value, const ApiSession& api);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_ACCESS_SETTING_ACCESS_H
