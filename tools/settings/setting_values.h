// SPDX-License-Identifier: MIT
// The values of settings as people and programs write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/output.h"
#include "settings/content.h"
#include "settings/settings_table.h"

namespace kora4::tools {

// Whether a value may be larger than what the API takes.
enum class Limits {
    eApi,    // what the API lets a client set
    eStore,  // whatever can be stored
};

// What a user typed: `on`, `toggle`, `7`, `0.5`, `50%`, `open`, `+1`, `-10%`, `=-5`; arrays as
// numbers between commas or blanks. A relative value starts from `current` and stops at the
// ends of the range; per cent are of the range. Behind `=` a number is never relative. Failure
// with eBadInput says what is allowed.
Value ParseValue(const Setting& setting, std::string_view text,
                 const std::optional<Value>& current = {}, Limits limits = Limits::eApi);

// Whether the value is within the limits of the API.
bool IsInRange(const Setting& setting, const Value& value);

// For people: "on", "7", "0.33", "open", "32 64 125"; with the unit: "50 ms".
std::string FormatValue(const Setting& setting, const Value& value, bool withUnit = false);
// true, 7, 0.33, "open", [32, 64]. Numbers without a word are numbers.
Json ToJson(const Setting& setting, const Value& value);

}  // namespace kora4::tools
