// SPDX-License-Identifier: MIT
// Settings that the methods of the API read and write.
#pragma once

#include <kora4.hpp>

#include <cstdint>
#include <optional>

#include "settings/content.h"
#include "settings/settings_table.h"

namespace kora4::tools {

// The number of the active profile; any that is stored.
std::uint32_t ActiveProfile(const Api& api);

// The value of a technology as a setting's: a number or a float.
Value ContentOf(const kora4::Value& value);

// `profile` matters to names alone; everything else is of the active profile. None: there is
// no such value. Failure as of Check, and eFailed for a setting that the API does not serve.
std::optional<Value> ReadThroughApi(const Setting& setting,
                                    std::optional<std::uint32_t> profile, Api& api);
// setting: one that the API writes.
void WriteThroughApi(const Setting& setting, std::optional<std::uint32_t> profile,
                     const Value& value, Api& api);

}  // namespace kora4::tools
