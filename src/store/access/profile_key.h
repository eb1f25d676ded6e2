// SPDX-License-Identifier: MIT
// The keys of a profile, with the trace lines that the store leaves when it makes them.
#pragma once

#include <cstdint>

#include "contract/property_key.h"

namespace kora4 {

// KORA4PropKeyBase::PlaceProfile; asserts that the profile is not negative.
void SetPresetField(KORA4PropKeyBase& key, std::int32_t profile);

// pkey::PresetPatch and pkey::ProfileName.
PropertyKey PresetPatchKey(KORA4PresetTechnology technology, std::uint32_t profile,
                           std::uint32_t pid);
PropertyKey ProfileNameKey(std::uint32_t profile);

}  // namespace kora4
