// SPDX-License-Identifier: MIT
// Profile numbers and the predicates over them.
#pragma once

#include <cstdint>

#include "kora4api_constants.h"

namespace kora4 {

// The preset profiles. They always exist and can be reverted to their factory values.
inline constexpr std::uint32_t cMovieProfile = KORA4_PROFILE_MOVIE;
inline constexpr std::uint32_t cMusicProfile = KORA4_PROFILE_MUSIC;
inline constexpr std::uint32_t cGamesProfile = KORA4_PROFILE_GAMES;

// The custom profiles P1 to P6 are the numbers 3 to 8. One exists while it has a name.
inline constexpr std::uint32_t cFirstCustomProfile = KORA4_PROFILE_FIRST_CUSTOM;

// Every number below this bound can be made the active profile.
inline constexpr std::uint32_t cSelectableProfileBound = KORA4_PROFILE_TABLE_ENTRIES;

// The demo profiles, entered and left by the demo methods only.
inline constexpr std::uint32_t cDemoMovieProfile = KORA4_PROFILE_DEMO_MOVIE;
inline constexpr std::uint32_t cDemoMusicProfile = KORA4_PROFILE_DEMO_MUSIC;
inline constexpr std::uint32_t cDemoGamesProfile = KORA4_PROFILE_DEMO_GAMES;

// Stands for "not known yet"; never stored.
inline constexpr std::uint32_t cNoProfile = 0xFFFFFFFF;

// Only the preset profiles have a row of their own in the tables of defaults.
inline constexpr std::uint32_t cDefaultedProfileBound = KORA4_PRESET_PROFILES;

static_assert(cFirstCustomProfile + KORA4_CUSTOM_PROFILES == cSelectableProfileBound);
static_assert(KORA4_PROFILE_LAST_CUSTOM + 1 == cSelectableProfileBound);

// Movie, Music or Games.
constexpr bool IsPresetProfile(std::uint32_t profile) {
    return profile < cDefaultedProfileBound;
}

// A number that a custom profile may have, whether the profile exists or not.
constexpr bool IsCustomProfile(std::uint32_t profile) {
    return profile >= cFirstCustomProfile && profile < cSelectableProfileBound;
}

// A profile that a user can select: preset or custom.
constexpr bool IsSelectableProfile(std::uint32_t profile) {
    return profile < cSelectableProfileBound;
}

// One of the three demo profiles.
constexpr bool IsDemoProfile(std::uint32_t profile) {
    return profile >= cDemoMovieProfile && profile <= cDemoGamesProfile;
}

// Any number that may be stored as the active profile.
constexpr bool IsAllowableProfile(std::uint32_t profile) {
    return IsSelectableProfile(profile) || IsDemoProfile(profile);
}

// The demo profile that holds the factory values of a preset profile.
constexpr std::uint32_t DemoProfileOf(std::uint32_t presetProfile) {
    return cDemoMovieProfile + presetProfile;
}

// The profile itself, or the preset profile whose factory values a demo profile shows.
constexpr std::uint32_t WithoutDemo(std::uint32_t profile) {
    return IsDemoProfile(profile) ? profile - cDemoMovieProfile : profile;
}

// The row of the tables of defaults for a profile; profiles without one use that of Movie.
constexpr std::uint32_t DefaultsRowOf(std::uint32_t profile) {
    const std::uint32_t row = WithoutDemo(profile);
    return IsPresetProfile(row) ? row : cMovieProfile;
}

}  // namespace kora4
