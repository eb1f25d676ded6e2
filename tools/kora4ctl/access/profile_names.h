// SPDX-License-Identifier: MIT
// The names of the custom profiles, through the library.
#ifndef KORA4_KORA4CTL_ACCESS_PROFILE_NAMES_H
#define KORA4_KORA4CTL_ACCESS_PROFILE_NAMES_H

#include <kora4api.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace kora4::tools {

// By profile number. Preset profiles have none, and neither do custom profiles that do not
// exist.
using ProfileTable = std::array<std::optional<std::string>, KORA4_PROFILE_TABLE_ENTRIES>;

ProfileTable ReadProfileNames(IVeltoKORA4API& api);

// Failure with eBadInput for a profile that has no name.
void RefuseUnlessCustom(std::uint32_t profile);

// What the library answers, E_FAIL explained by what is the matter with the profile. Failure
// with eBadInput for a name that could not be read again.
void CreateProfile(std::uint32_t profile, const std::string& name, IVeltoKORA4API& api);
void RenameProfile(std::uint32_t profile, const std::string& name, IVeltoKORA4API& api);
void DeleteProfile(std::uint32_t profile, IVeltoKORA4API& api);

// A text that the library hands out, to be given back by the caller. Null: none.
std::optional<std::string> TakeText(LPWSTR text);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_ACCESS_PROFILE_NAMES_H
