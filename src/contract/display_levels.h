// SPDX-License-Identifier: MIT
// How the engine's levels are converted for a display.
#pragma once

#include <cstdint>

#include "kora4api_constants.h"

namespace kora4 {

// The number of bands of a display, whatever number the engine publishes.
inline constexpr std::uint32_t cDisplayBands = KORA4_VISUALIZATION_BANDS;

// The level shown for a band that no record has, and the offset added to every excitation.
inline constexpr float cLevelFloor = KORA4_SILENT_GAIN;              // dB
inline constexpr float cExcitationOffset = KORA4_EXCITATION_OFFSET;  // dB; the gains get none

}  // namespace kora4
