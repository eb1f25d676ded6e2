// SPDX-License-Identifier: MIT
// What a stored value says, as the library reads and writes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "registry/store_access.h"
#include "registry/stored_value.h"
#include "settings/schema.h"

namespace kora4::tools {

// The content of a value: the alternative follows from the kind.
using Value = std::variant<bool, std::uint32_t, float, std::string, std::vector<float>,
                           std::vector<bool>, Bytes>;

// As the library reads it; none when it counts as absent: another type, malformed, a curve
// that there is not.
std::optional<Value> Decode(const SchemaValue& value, const StoredValue& stored);
// What stands in for a value that is absent; none when absence means that there is nothing.
std::optional<Value> BuiltIn(const SchemaValue& value);
// What is in force: the stored value, or the default; none when there is neither.
std::optional<Value> Effective(const SchemaValue& value, StoreAccess& store);
// As the library writes it. `content` is of the alternative that the kind decodes to, or
// a number for a switch. Failure with eBadInput for what cannot be stored so that it reads
// back (too many elements, a text too long).
StoredValue Encode(const SchemaValue& value, const Value& content);

}  // namespace kora4::tools
