// SPDX-License-Identifier: MIT
// The names that trace lines of the API object print for numbers. Blanks and tabs are part of
// the texts.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/patch_records.h"
#include "contract/profiles.h"
#include "kora4api_constants.h"

namespace kora4::text {

// The two texts of a selectable profile: getters and setters print different ones.
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
// The first text says technology, but the profile is meant; log readers depend on it.
inline constexpr ProfileName cBadProfileName = {"KORA4APITechnology bad index",
                                                "bad Profile index"};

inline constexpr const char* cDemoProfileNames[] = {
    "Demo Movie (0xF0) Profile", "Demo Music (0xF1) Profile", "Demo Games (0xF2) Profile"};

inline constexpr const char* cTechnologyNames[] = {"eVolumeLeveler", "eGraphicEQ",
                                                   "eIntelligentEQ", "eDialogEnhancer",
                                                   "eVirtualizerHP", "eVirtualizerSpkr"};

inline constexpr const char* cIntelligentEQNames[] = {"eBalanced", "eOpen", "eFocused",
                                                      "eBright",   "eRich", "eWarm"};

inline constexpr const char* cEnableWords[] = {"Disabled", "Enabled"};
inline constexpr const char* cSwitchWords[] = {"Off", "On"};

// The text at `index`, or `other` if there is none.
template <typename Text, std::size_t count>
constexpr const Text& Pick(const Text (&texts)[count], std::uint32_t index, const Text& other) {
    return index < count ? texts[index] : other;
}

inline constexpr const char* cBadDemoProfileName = "bad Demo Profile index";
inline constexpr const char* cBadTechnologyName = "KORA4APITechnology bad index";

// The texts of a number; those for a bad number if it has none.
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
    return cEnableWords[enable];
}
constexpr const char* OfSwitch(bool on) {
    return cSwitchWords[on];
}

static_assert(sizeof cProfileNames / sizeof *cProfileNames == cSelectableProfileBound);
static_assert(sizeof cTechnologyNames / sizeof *cTechnologyNames == KORA4_TECHNOLOGIES);
static_assert(sizeof cIntelligentEQNames / sizeof *cIntelligentEQNames == eNumberIEQPatches);
static_assert(cDemoGamesProfile - cDemoMovieProfile + 1 ==
              sizeof cDemoProfileNames / sizeof *cDemoProfileNames);

}  // namespace kora4::text
