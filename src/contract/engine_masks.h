// SPDX-License-Identifier: MIT
// The engine mask: which technologies the installed engine supports, bit n for technology
// number n + 1 of the engine, and the names of known masks.
#pragma once

#include <cstdint>

#include "kora4api_constants.h"

namespace kora4 {

// The bits in use.
inline constexpr std::uint32_t cEngineTechnologies = KORA4_ENGINE_FULL;
static_assert(cEngineTechnologies + 1 ==
              KORA4_ENGINE_TECHNOLOGY_BIT(KORA4_ENGINE_TECHNOLOGIES + 1));

// A known engine, with the mask that its installer writes.
struct EngineConfiguration {
    std::uint32_t mask;
    const char* name;
};

inline constexpr EngineConfiguration cEngineConfigurations[] = {
    {cEngineTechnologies, "full engine"},
    {KORA4_ENGINE_STANDARD, "standard engine"},
    {KORA4_ENGINE_BASIC, "basic engine"},
};

// Null for an unknown mask, including 0.
constexpr const char* NameOfEngine(std::uint32_t mask) {
    for (const EngineConfiguration& configuration : cEngineConfigurations)
        if (configuration.mask == mask)
            return configuration.name;
    return nullptr;
}

}  // namespace kora4
