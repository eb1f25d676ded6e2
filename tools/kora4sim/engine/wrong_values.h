// SPDX-License-Identifier: MIT
// Settings as a bad writer would leave them, and what they were before.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "kora4sim/engine/faults.h"
#include "kora4sim/signal/noise.h"
#include "registry/store_access.h"
#include "settings/schema.h"

namespace kora4::tools::sim {

// The kinds of `wrong-types`; without one it is mixed.
std::vector<FaultArgument> WrongFieldKinds();
// The kinds of `profile-garbage`; without one it is number.
std::vector<FaultArgument> WrongProfileKinds();
// The kind of `die`.
inline constexpr char cHalfWay[] = "half-way";

// A field spoilt in a way. `right` is what is in force, in the form in which it is stored.
// None when the way does not touch a field of this kind.
std::optional<StoredValue> WrongField(const SchemaValue& field, std::string_view kind,
                                      const StoredValue& right, Noise noise);

// The value that a way to spoil profiles writes.
struct WrongProfileValue {
    SchemaValue value;
    StoredValue wrong;
};
WrongProfileValue WrongProfile(std::string_view kind);

// Values of the store that were spoilt on purpose, and what they were before.
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
