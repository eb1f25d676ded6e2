// SPDX-License-Identifier: MIT
// The names of the custom profiles, through the library.
#pragma once

#include <kora4.hpp>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace kora4::tools {

// By profile number. Preset profiles have none, and neither do custom profiles that do not
// exist.
using ProfileTable = std::array<std::optional<std::string>, KORA4_PROFILE_TABLE_ENTRIES>;

// The names of all custom profiles that exist. Failure with eFailed when one cannot be read.
ProfileTable ReadProfileNames(const Api& api);

// Failure with eBadInput for a profile other than p1 to p6.
void CheckIsCustom(std::uint32_t profile);

// Each does what the library's method of that name does, and explains its E_FAIL by the state
// of the profile. Failure with eBadInput for a name that is too long to be read back.
void CreateProfile(std::uint32_t profile, const std::string& name, Api& api);
void RenameProfile(std::uint32_t profile, const std::string& name, Api& api);
void DeleteProfile(std::uint32_t profile, Api& api);

}  // namespace kora4::tools
