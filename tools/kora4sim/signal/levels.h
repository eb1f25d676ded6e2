// SPDX-License-Identifier: MIT
// What the engine publishes at one moment.
#pragma once

#include <cstdint>
#include <vector>

#include "contract/display_levels.h"

namespace kora4::tools::sim {

// The levels of one processing object: as many gains as excitations, in dB, the lowest band
// first.
struct Record {
    std::vector<float> gains;
    std::vector<float> excitations;
};

using Picture = std::vector<Record>;

// Levels below are silence.
inline constexpr float cLowestLevel = cLevelFloor;
// Bands that a display shows; processing objects may have more.
inline constexpr unsigned cMostBands = 64;
inline constexpr unsigned cMostRecords = 64;

}  // namespace kora4::tools::sim
