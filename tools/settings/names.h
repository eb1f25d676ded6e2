// SPDX-License-Identifier: MIT
// Words for numbers: profiles and technologies.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/technologies.h"

namespace kora4::tools {

// ---- Profiles: movie music games p1 ... p6 demo-movie demo-music demo-games ----------------

// A profile as users write it.
struct ProfileWord {
    const char* word;
    std::uint32_t number;
};

// All twelve, in the order of their numbers; the first nine can be selected.
const std::vector<ProfileWord>& Profiles();

// The word; for a number that is not a profile, the number itself.
std::string ProfileName(std::uint32_t profile);
// A word in any case, or a profile's number. Failure with eBadInput and the nearest words.
std::uint32_t ParseProfile(std::string_view word);

// A word in any case, or a profile's number; none when it is neither.
std::optional<std::uint32_t> FindProfile(std::string_view word);

// The words of all twelve, for messages and completion.
std::vector<std::string> ProfileNames();
// "p1 to p6"
std::string CustomProfiles();

// ---- Technologies -----------------------------------------------------------------------

// The two families of the store, and none for values of no technology.
enum class Family { eNone, ePreset, eGlobal };

// Number as in KORA4PresetTechnology or KORA4GlobalTechnology.
struct Technology {
    Family family = Family::eNone;
    std::uint32_t number = 0;

    friend bool operator==(const Technology&, const Technology&) = default;
};

constexpr Technology Preset(KORA4PresetTechnology number) {
    return {Family::ePreset, number};
}
constexpr Technology Global(KORA4GlobalTechnology number) {
    return {Family::eGlobal, number};
}

// A technology as users write it, and as sentences name it.
struct TechnologyWord {
    const char* word;
    const char* title;  // "volume leveler", as in sentences
    Technology technology;
    std::optional<std::uint32_t> apiNumber;  // KORA4APITechnology
};

// All ten: the six of the API in the API's order, next-gen-surround, the global ones.
const std::vector<TechnologyWord>& AllTechnologies();

// The row of a technology that exists.
const TechnologyWord& WordOf(Technology technology);

// By word in any case or by number of the API; null when there is none.
const TechnologyWord* FindTechnology(std::string_view word);

// "Open" of the intelligent EQ's curves: balanced open focused bright rich warm.
const std::vector<std::string>& CurveNames();

}  // namespace kora4::tools
