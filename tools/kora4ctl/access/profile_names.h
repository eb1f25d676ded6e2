// SPDX-License-Identifier: MIT
// The names of the custom profiles: through the library, and as words of the command line.
#pragma once

#include <kora4.hpp>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "process/program.h"

namespace kora4::tools {

// By profile number. Preset profiles have none, and neither do custom profiles that do not
// exist.
using ProfileTable = std::array<std::optional<std::string>, KORA4_PROFILE_TABLE_ENTRIES>;

// The names of all custom profiles that exist. Failure with eFailed when one cannot be read.
ProfileTable ReadProfileNames(const Api& api);

// The profile that a word stands for: its own word or number, or else the name of a custom
// profile, as it is or, when none is just that, in another case of its letters. None when there
// is none; Failure with eBadInput when several have the name.
std::optional<std::uint32_t> FindProfileNamed(const Context& context, const std::string& word);
// The same; Failure with eBadInput and the nearest words.
std::uint32_t ProfileNamed(const Context& context, const std::string& word);

// Says when a profile can never be meant by its name, because that means another one.
void TellIfHidden(const Context& context, std::uint32_t profile, const std::string& name);

// Failure with eBadInput for a profile other than p1 to p6.
void CheckIsCustom(std::uint32_t profile);

// The first only fails where the second would. Each of the others does what the library's
// method of that name does, and explains its E_FAIL by the state
// of the profile. Failure with eBadInput for a name that is too long to be read back.
void CheckIsFree(std::uint32_t profile, const std::string& name, const Api& api);
void CreateProfile(std::uint32_t profile, const std::string& name, Api& api);
void RenameProfile(std::uint32_t profile, const std::string& name, Api& api);
void DeleteProfile(std::uint32_t profile, Api& api);

}  // namespace kora4::tools
