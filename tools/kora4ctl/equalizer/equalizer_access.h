// SPDX-License-Identifier: MIT
// The graphic equalizer of a profile, read and written as a whole.
#pragma once

#include <cstdint>
#include <optional>

#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/equalizer/bands.h"

namespace kora4::tools {

// The graphic equalizer of one profile.
struct Equalizer {
    std::uint32_t profile = 0;
    bool isOn = false;
    Bands bands;
};

// No profile: the active one.
Equalizer ReadEqualizer(SettingAccess& access, std::optional<std::uint32_t> profile);

// Gains are within the limits of the library, frequencies can be stored. Limits::eStore goes
// past the interface. Failure with eRefused when nothing was stored because a demo profile is
// active, or is meant without Limits::eStore.
void WriteEqualizer(SettingAccess& access, std::optional<std::uint32_t> profile,
                    const Bands& bands, Limits limits);

}  // namespace kora4::tools
