// SPDX-License-Identifier: MIT
// The limits of what clients may set.
#ifndef KORA4_CONTRACT_PATCH_LIMITS_H
#define KORA4_CONTRACT_PATCH_LIMITS_H

#include <cstdint>

namespace kora4 {

inline constexpr std::uint32_t cVeltoVolumeLevelerAmountMax = 10;
inline constexpr float cDialogEnhancerAmountMin = 0.0f;
inline constexpr float cDialogEnhancerAmountMax = 1.0f;
inline constexpr float cSurroundCompBoostMin = 0.0f;
inline constexpr float cSurroundCompBoostMax = 6.0f;
inline constexpr float cGraphicEQGainMin = -12.0f;  // dB
inline constexpr float cGraphicEQGainMax = 12.0f;   // dB

}  // namespace kora4

#endif  // KORA4_CONTRACT_PATCH_LIMITS_H
