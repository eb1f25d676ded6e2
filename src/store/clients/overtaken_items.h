// SPDX-License-Identifier: MIT
// What own writes have replaced since the last change analysis.
#pragma once

#include <atomic>
#include <cstdint>

#include "contract/technologies.h"

namespace kora4 {

// A notification must not tell a state that the object itself has already replaced: between
// the analysis and the call, a client's own call may have written the same item, from within
// an earlier call of the pass or from another thread of the multithreaded apartment. Such an
// item is dropped, and the client keeps what it wrote.
//
// Cleared and added to under the store's named mutex; asked without it, from any thread. There
// is one analysis to keep this for: the monitor waits for the end of a pass before it asks for
// the next.
class OvertakenItems {
  public:
    // A set of items, one bit each.
    using Items = std::uint32_t;

    static constexpr Items cEnable = 1;
    static constexpr Items cProfile = 2;

    // The switch, or the value, of one technology.
    static constexpr Items Switch(std::uint32_t presetTechnology) {
        return Items{1} << (8 + presetTechnology);
    }
    static constexpr Items Value(std::uint32_t presetTechnology) {
        return Items{1} << (16 + presetTechnology);
    }
    // The switches and values of every technology.
    static constexpr Items cTechnologies = 0x00FFFF00;

    // A new analysis has begun: nothing is overtaken yet.
    void Clear() { m_items = 0; }
    void Add(Items items) { m_items |= items; }
    bool Contains(Items item) const { return (m_items & item) != 0; }

  private:
    static_assert(eNumberKORA4PresetTechnologies <= 8, "eight bits for each kind of item");

    std::atomic<Items> m_items{0};
};

}  // namespace kora4
