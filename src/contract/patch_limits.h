// SPDX-License-Identifier: MIT
// The limits of what clients may set.
#pragma once

#include <cstdint>

#include "kora4api_constants.h"

namespace kora4 {

// The volume leveler's amount is a whole number from 0 to this.
inline constexpr std::uint32_t cVeltoVolumeLevelerAmountMax = KORA4_VOLUME_LEVELER_MAX;
inline constexpr float cDialogEnhancerAmountMin = KORA4_DIALOG_ENHANCER_MIN;
inline constexpr float cDialogEnhancerAmountMax = KORA4_DIALOG_ENHANCER_MAX;
inline constexpr float cSurroundCompBoostMin = KORA4_VIRTUALIZER_MIN;
inline constexpr float cSurroundCompBoostMax = KORA4_VIRTUALIZER_MAX;
inline constexpr float cGraphicEQGainMin = KORA4_GRAPHIC_EQ_MIN_GAIN;  // dB
inline constexpr float cGraphicEQGainMax = KORA4_GRAPHIC_EQ_MAX_GAIN;  // dB

}  // namespace kora4
