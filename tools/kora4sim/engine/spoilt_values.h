// SPDX-License-Identifier: MIT
// Values of the store that were spoilt on purpose, and what they were before.
#ifndef KORA4_KORA4SIM_ENGINE_SPOILT_VALUES_H
#define KORA4_KORA4SIM_ENGINE_SPOILT_VALUES_H

#include <cstddef>
#include <optional>
#include <vector>

#include "registry/store_access.h"
#include "settings/schema.h"

namespace kora4::tools::sim {

// Whoever calls it holds the store's mutex, but for IsEmpty.
class SpoiltValues {
  public:
    explicit SpoiltValues(StoreAccess& store) : m_store(store) {}

    bool IsEmpty() const { return m_spoilt.empty(); }
    // Writes the values, and one step of each counter that announces one of them.
    struct Wrong {
        SchemaValue value;
        StoredValue stored;
    };
    void Spoil(const std::vector<Wrong>& values);
    // Puts back what is still as it was spoilt, and announces it; how many values that are.
    std::size_t Restore();

  private:
    struct Spoilt {
        Wrong wrong;
        std::optional<StoredValue> before;
    };

    void Announce(const std::vector<SchemaValue>& values);

    StoreAccess& m_store;
    std::vector<Spoilt> m_spoilt;
};

}  // namespace kora4::tools::sim

#endif  // KORA4_KORA4SIM_ENGINE_SPOILT_VALUES_H
