// SPDX-License-Identifier: MIT
// Profile numbers and the predicates over them.
#ifndef KORA4_CONTRACT_PROFILES_H
#define KORA4_CONTRACT_PROFILES_H

#include <cstdint>

namespace kora4 {

// The preset profiles. They always exist and can be reverted to their factory values.
inline constexpr std::uint32_t cMovieProfile = 0;
inline constexpr std::uint32_t cMusicProfile = 1;
inline constexpr std::uint32_t cGamesProfile = 2;

// The custom profiles P1 to P6 are the numbers 3 to 8. One exists while it has a name.
inline constexpr std::uint32_t cFirstCustomProfile = 3;  // P1

// Every number below can be made the active profile.
inline constexpr std::uint32_t cSelectableProfileBound = 9;

// The demo profiles, entered and left by the demo methods only.
inline constexpr std::uint32_t cDemoMovieProfile = 0xF0;
inline constexpr std::uint32_t cDemoMusicProfile = 0xF1;
inline constexpr std::uint32_t cDemoGamesProfile = 0xF2;

// Stands for "not known yet"; never stored.
inline constexpr std::uint32_t cNoProfile = 0xFFFFFFFF;

// Only the preset profiles have a row of their own in the tables of defaults.
inline constexpr std::uint32_t cDefaultedProfileBound = 3;

// Movie, Music or Games.
constexpr bool IsPresetProfile(std::uint32_t profile) {
    return profile < cDefaultedProfileBound;
}

// A number that a custom profile may have, whether it exists or not.
constexpr bool IsCustomProfile(std::uint32_t profile) {
    return profile >= cFirstCustomProfile && profile < cSelectableProfileBound;
}

// A profile that a user can be in: preset or custom.
constexpr bool IsSelectableProfile(std::uint32_t profile) {
    return profile < cSelectableProfileBound;
}

// One of the three demo profiles.
constexpr bool IsDemoProfile(std::uint32_t profile) {
    return profile >= cDemoMovieProfile && profile <= cDemoGamesProfile;
}

// Any number that may stand in the store as the active profile.
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

// The row of the tables of defaults for a profile; that of Movie serves all without one.
constexpr std::uint32_t DefaultsRowOf(std::uint32_t profile) {
    const std::uint32_t row = WithoutDemo(profile);
    return IsPresetProfile(row) ? row : cMovieProfile;
}

}  // namespace kora4

#endif  // KORA4_CONTRACT_PROFILES_H
