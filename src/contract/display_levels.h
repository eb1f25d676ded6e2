// SPDX-License-Identifier: MIT
// What the engine's levels become for a display.
#pragma once

#include <cstdint>

#include "kora4api_constants.h"

namespace kora4 {

// Bands that a display gets, whatever number the engine publishes.
inline constexpr std::uint32_t cDisplayBands = KORA4_VISUALIZATION_BANDS;

// The level of silence, which a band has that is in no record; and what a display adds to every
// excitation.
inline constexpr float cLevelFloor = KORA4_SILENT_GAIN;              // dB
inline constexpr float cExcitationOffset = KORA4_EXCITATION_OFFSET;  // dB; the gains get none

}  // namespace kora4
