// SPDX-License-Identifier: MIT
// What the panel shows, as plain values: the settings of the active profile and what surrounds
// them, single items of them, and what differs between two.
#ifndef KORA4_PANEL_MODEL_SETTINGS_H
#define KORA4_PANEL_MODEL_SETTINGS_H

#include <kora4/equalizer.hpp>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "kora4api_constants.h"

namespace panel {

// By the numbers of the API.
enum class Technology {
    eVolumeLeveler,
    eGraphicEq,
    eIntelligentEq,
    eDialogEnhancer,
    eHeadphoneVirtualizer,
    eSpeakerVirtualizer
};
constexpr std::size_t IndexOf(Technology technology) {
    return static_cast<std::size_t>(technology);
}
inline constexpr Technology cTechnologies[KORA4_TECHNOLOGIES] = {
    Technology::eVolumeLeveler,        Technology::eGraphicEq,
    Technology::eIntelligentEq,        Technology::eDialogEnhancer,
    Technology::eHeadphoneVirtualizer, Technology::eSpeakerVirtualizer};

constexpr bool IsPreset(long profile) {
    return profile >= 0 && profile < KORA4_PRESET_PROFILES;
}
constexpr bool IsCustom(long profile) {
    return profile >= KORA4_PROFILE_FIRST_CUSTOM && profile <= KORA4_PROFILE_LAST_CUSTOM;
}
constexpr bool IsDemo(long profile) {
    return profile >= KORA4_PROFILE_DEMO_MOVIE && profile <= KORA4_PROFILE_DEMO_GAMES;
}

// What one change can be about.
enum class Subject {
    eProfile,  // which one is active
    eEnable,   // the master enable
    eSwitch,   // of a technology
    eValue,    // of a technology other than the graphic equalizer
    eBands,    // the graphic equalizer
    eBand,     // the gain of one of its bands, in `bands`; none when that band does not exist
    eName      // of a custom profile; none when it does not exist
};

// One item with a content; which of its members counts depends on the subject.
struct Item {
    Subject subject = Subject::eProfile;
    std::size_t index = 0;  // the technology, for eName the profile, for eBand the band
    double number = 0;      // profile, value; 0 or 1 for enable and switches
    kora4::Bands bands;
    std::optional<std::wstring> name;

    friend bool operator==(const Item&, const Item&) = default;
    // Whether both are about the same thing, whatever its content.
    bool IsAboutSame(const Item& other) const {
        return subject == other.subject && index == other.index;
    }
};
using Items = std::vector<Item>;

// Whether each profile has an item of its own of that subject.
constexpr bool BelongsToProfile(Subject subject) {
    return subject == Subject::eSwitch || subject == Subject::eValue ||
           subject == Subject::eBands || subject == Subject::eBand;
}

// Everything that is announced when it changes.
struct Settings {
    long profile = KORA4_PROFILE_MOVIE;
    bool isEnabled = false;
    std::array<bool, KORA4_TECHNOLOGIES> switches{};
    std::array<double, KORA4_TECHNOLOGIES> values{};  // that of the graphic equalizer is unused
    kora4::Bands bands;
    std::array<std::optional<std::wstring>, KORA4_PROFILE_TABLE_ENTRIES> names;

    friend bool operator==(const Settings&, const Settings&) = default;
};

// The item of that subject as it is in the settings.
Item Get(const Settings& settings, Subject subject, std::size_t index = 0);
// Whether the bands have that one: the same frequency in the same place.
bool Fits(const Item& band, const kora4::Bands& bands);
// Puts the item into the settings; a band that they do not have changes nothing.
void Put(Settings& settings, const Item& item);

// Every item there is, in an order in which they can be set: the profile before its values.
Items All(const Settings& settings);
// The items of `to` that are other ones in `from`; single bands where only gains differ.
Items Difference(const Settings& from, const Settings& to);

// The bands with the gains of single ones among the items: the API sets bands together only.
// None when there is one that they do not have.
std::optional<kora4::Bands> Together(const Items& items, kora4::Bands bands);

// Whether the profile can be made the active one outside of a demo.
bool Exists(long profile, const Settings& settings);
// The first custom profile that does not exist, or none.
std::optional<long> FreeCustomProfile(const Settings& settings);

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_SETTINGS_H
