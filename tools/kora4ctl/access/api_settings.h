// SPDX-License-Identifier: MIT
// Settings that the methods of the API read and write.
#ifndef KORA4_KORA4CTL_ACCESS_API_SETTINGS_H
#define KORA4_KORA4CTL_ACCESS_API_SETTINGS_H

#include <cstdint>
#include <optional>

#include "process/api_session.h"
#include "settings/content.h"
#include "settings/settings_table.h"

namespace kora4::tools {

// `profile` matters to names alone; everything else is of the active profile. None: there is
// no such value. Failure as of Check, and eFailed for a setting that the API does not serve.
std::optional<Value> ReadThroughApi(const Setting& setting,
                                    std::optional<std::uint32_t> profile,
                                    const ApiSession& api);
// setting: one that the API writes.
void WriteThroughApi(const Setting& setting, std::optional<std::uint32_t> profile,
                     const Value& value, const ApiSession& api);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_ACCESS_API_SETTINGS_H
