// SPDX-License-Identifier: MIT
// The property ids of the fields that have a meaning outside the engine; the field tables
// contain the others. For a field with several arrays it is the id of the first one.
#pragma once

#include <cstdint>

namespace kora4::pkey {

inline constexpr std::uint16_t cVolumeAmountPid = 3;
inline constexpr std::uint16_t cEnhancementAmountPid = 3;
inline constexpr std::uint16_t cDynamicEQLevelPid = 3;
inline constexpr std::uint16_t cDynamicEQFreqPid = 4;
inline constexpr std::uint16_t cDynamicEQCurvePid = 5;
inline constexpr std::uint16_t cStandardEQFreqPid = 3;
inline constexpr std::uint16_t cStandardEQGainPid = 4;
inline constexpr std::uint16_t cHeadphoneSurroundBoostPid = 3;
inline constexpr std::uint16_t cVirtualSurroundBoostPid = 3;
inline constexpr std::uint16_t cRegulatorFreqPid = 5;
inline constexpr std::uint16_t cRegulatorThresholdPid = 6;
inline constexpr std::uint16_t cRegulatorIsolatePid = 8;
inline constexpr std::uint16_t cOptimizerFreqPid = 4;
inline constexpr std::uint16_t cOptimizerGainPid = 5;

}  // namespace kora4::pkey
