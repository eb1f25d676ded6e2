// SPDX-License-Identifier: MIT
// The values in a line of the trace in words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "contract/messages/trace_kind.h"

namespace kora4::tools {

// A whole text as a number. A negative decimal one keeps its 32 bits.
std::optional<std::uint32_t> NumberIn(std::string_view text, int base);

// What a value of that kind means; empty if there is nothing to say.
std::string MeaningOfValue(contract::TraceKind kind, std::string_view text);

}  // namespace kora4::tools
