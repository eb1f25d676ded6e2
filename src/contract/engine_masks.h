// SPDX-License-Identifier: MIT
// The engine mask: which technologies the installed engine carries, bit n for technology
// number n + 1 of the engine, and the masks that are known by name.
#ifndef KORA4_CONTRACT_ENGINE_MASKS_H
#define KORA4_CONTRACT_ENGINE_MASKS_H

#include <cstdint>

namespace kora4 {

// The bits in use.
inline constexpr std::uint32_t cEngineTechnologies = 0x03FF;

// An engine that is installed in the field, with the mask that its installer writes.
struct EngineConfiguration {
    std::uint32_t mask;
    const char* name;
};

inline constexpr EngineConfiguration cEngineConfigurations[] = {
    {cEngineTechnologies, "full engine"},
    {0x021F, "standard engine"},
    {0x0140, "basic engine"},
};

// Null for a mask that nobody knows by name, 0 among them.
constexpr const char* NameOfEngine(std::uint32_t mask) {
    for (const EngineConfiguration& configuration : cEngineConfigurations)
        if (configuration.mask == mask)
            return configuration.name;
    return nullptr;
}

}  // namespace kora4

#endif  // KORA4_CONTRACT_ENGINE_MASKS_H
