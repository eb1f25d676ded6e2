// SPDX-License-Identifier: MIT
// Settings as a bad writer would leave them.
#ifndef KORA4_KORA4SIM_ENGINE_WRONG_VALUES_H
#define KORA4_KORA4SIM_ENGINE_WRONG_VALUES_H

#include <optional>
#include <string_view>
#include <vector>

#include "kora4sim/engine/faults.h"
#include "kora4sim/signal/noise.h"
#include "registry/stored_value.h"
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

}  // namespace kora4::tools::sim

#endif  // KORA4_KORA4SIM_ENGINE_WRONG_VALUES_H
