// SPDX-License-Identifier: MIT
// The names that the lines of the API object print for numbers. Blanks and tabs are part
// of the texts.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/patch_records.h"
#include "contract/profiles.h"
#include "store/clients/api_records.h"

namespace kora4::text {

// The two texts of a selectable profile: lines of reading and of setting differ.
struct ProfileName {
    const char* read;    // GetActiveProfile
    const char* chosen;  // SetActiveProfile
};

inline constexpr ProfileName cProfileNames[] = {
    {"Movie\t(0)\tProfile", "Movie (0) Profile"}, {"Music\t(1)\tProfile", "Music (1) Profile"},
    {"Games\t(2)\tProfile", "Games (2) Profile"}, {"P1: Custom Profile", "P1:   (3) "},
    {"P2: Custom Profile", "P2:   (4) "},         {"P3: Custom Profile", "P3:   (5) "},
    {"P4: Custom Profile", "P4:   (6) "},         {"P5: Custom Profile", "P5:   (7) "},
    {"P6: Custom Profile", "P6:   (8) "},
};
// The first text speaks of a technology where a profile is meant; log readers know it so.
inline constexpr ProfileName cBadProfileName = {"KORA4APITechnology bad index",
                                                "bad Profile index"};

inline constexpr const char* cDemoProfileNames[] = {
    "Demo Movie (0xF0) Profile", "Demo Music (0xF1) Profile", "Demo Games (0xF2) Profile"};

inline constexpr const char* cTechnologyNames[] = {"eVolumeLeveler", "eGraphicEQ",
                                                   "eIntelligentEQ", "eDialogEnhancer",
                                                   "eVirtualizerHP", "eVirtualizerSpkr"};

inline constexpr const char* cIntelligentEQNames[] = {"eBalanced", "eOpen", "eFocused",
                                                      "eBright",   "eRich", "eWarm"};

// The text at `index`, or `other` when there is none.
template <typename Text, std::size_t count>
constexpr const Text& Pick(const Text (&texts)[count], std::uint32_t index, const Text& other) {
    return index < count ? texts[index] : other;
}

inline constexpr const char* cBadDemoProfileName = "bad Demo Profile index";
inline constexpr const char* cBadTechnologyName = "KORA4APITechnology bad index";

// The texts of a number; those for a bad one when the number has no text.
constexpr const ProfileName& OfProfile(std::uint32_t profile) {
    return Pick(cProfileNames, profile, cBadProfileName);
}
constexpr const char* OfDemoProfile(std::uint32_t profile) {
    return Pick(cDemoProfileNames, profile - cDemoMovieProfile, cBadDemoProfileName);
}
constexpr const char* OfTechnology(std::uint32_t technology) {
    return Pick(cTechnologyNames, technology, cBadTechnologyName);
}
constexpr const char* OfEnable(bool enable) {
    return enable ? "Enabled" : "Disabled";
}
constexpr const char* OfSwitch(bool on) {
    return on ? "On" : "Off";
}

static_assert(sizeof cProfileNames / sizeof *cProfileNames == cSelectableProfileBound);
static_assert(sizeof cTechnologyNames / sizeof *cTechnologyNames ==
              static_cast<std::size_t>(ApiTechnology::eNumberKORA4APITechnologies));
static_assert(cDemoGamesProfile - cDemoMovieProfile + 1 ==
              sizeof cDemoProfileNames / sizeof *cDemoProfileNames);

}  // namespace kora4::text
