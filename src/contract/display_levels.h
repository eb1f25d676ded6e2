// SPDX-License-Identifier: MIT
// What the engine's levels become for a display.
#ifndef KORA4_CONTRACT_DISPLAY_LEVELS_H
#define KORA4_CONTRACT_DISPLAY_LEVELS_H

#include <cstdint>

namespace kora4 {

// Bands that a display gets, whatever number the engine publishes.
inline constexpr std::uint32_t cDisplayBands = 20;

// The level of silence, which a band has that is in no record; and what a display adds to every
// excitation.
inline constexpr float cLevelFloor = -144.0f;      // dB
inline constexpr float cExcitationOffset = 36.0f;  // dB; the gains get none

}  // namespace kora4

#endif  // KORA4_CONTRACT_DISPLAY_LEVELS_H
