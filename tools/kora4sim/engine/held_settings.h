// SPDX-License-Identifier: MIT
// The engine's copy of the settings: loaded at the start, and then only what is announced.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/output.h"
#include "kora4sim/engine/processing.h"
#include "registry/store_access.h"
#include "settings/content.h"
#include "settings/schema.h"

namespace kora4::tools::sim {

// A value that the engine reloaded, with its name in the settings table.
struct Change {
    std::string name;
    Json from, to;
    std::string fromText, toText;
};

// Something that the engine found in the store, and why it looked.
struct Seen {
    std::string event;  // "reload", "profile", "enable", "switch", "setting", "table"
    std::string cause;  // "trigger 4 -> 5"
    std::string words;  // "reload volume-leveler: trigger 4 -> 5: volume-leveler 3 -> 7"
    Json details = Json::object();
};

// The caller holds the store's mutex, except for MakeProcessing and Document.
class HeldSettings {
  public:
    // Everything: all technologies of the active profile.
    void Load(StoreAccess& store);
    // What was announced since the last time, in the order in which a client is told: the
    // enable, the profile, switches, reloads, the table. Fields whose trigger did not move
    // are not looked at.
    std::vector<Seen> Look(StoreAccess& store);

    std::uint32_t Profile() const { return m_dynamic.profile; }
    bool IsEnabled() const { return m_dynamic.isEnabled; }
    // Empty while the master enable is off; a technology that is off adds nothing.
    Processing MakeProcessing() const;
    // Every value that is held, by the names of the settings table.
    Json Document() const;

  private:
    // What the dynamic keys say; read each time something moved there.
    struct Dynamic {
        std::uint32_t profile = 0;
        bool isEnabled = true;
        bool isSwitchOn = true;  // settings, id 6
        std::uint32_t tableCounter = 0;
        std::vector<bool> switches;           // by technology, as AllTechnologies
        std::vector<std::uint32_t> triggers;  // the same
    };
    struct Field {
        SchemaValue value;
        Value content;
    };

    static Dynamic ReadDynamic(StoreAccess& store);
    static std::vector<Field> ReadFields(Technology technology, std::uint32_t profile,
                                         StoreAccess& store);
    std::vector<Change> Reload(std::size_t technology, StoreAccess& store);
    void SeeProfile(const Dynamic& now, StoreAccess& store, std::vector<Seen>& seen);
    void SeeSwitches(const Dynamic& now, std::vector<Seen>& seen) const;
    void SeeTriggers(const Dynamic& now, StoreAccess& store, std::vector<Seen>& seen);
    void SeeTable(const Dynamic& now, StoreAccess& store, std::vector<Seen>& seen) const;
    // A field that is held; none when the technology is not effective.
    const Value* Find(Technology technology, std::uint32_t pid) const;
    // Its content; zero or empty when there is none of that type.
    template <typename Content>
    Content Held(KORA4PresetTechnology technology, std::uint32_t pid) const;

    Dynamic m_dynamic;
    std::vector<std::vector<Field>> m_fields;  // by technology, as AllTechnologies
};

}  // namespace kora4::tools::sim
