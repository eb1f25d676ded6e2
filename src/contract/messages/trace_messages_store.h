// SPDX-License-Identifier: MIT
// Messages of the store, its monitor and the module, with their meaning.
#pragma once

#include "contract/messages/trace_message.h"

namespace kora4::contract::msg {

inline constexpr char cRegistryErrors[] =
    "0 is success, 2 means that it does not exist, 5 that access was denied, 1018 that the key "
    "was deleted while it was open.";
inline constexpr char cSeeDoctor[] = "For a number other than 0 or 2 run 'kora4ctl doctor'.";
inline constexpr char cAdministratorNeeded[] =
    "Register the library as an administrator: 'kora4ctl register'.";

// What keeps the monitor from watching a key.
inline constexpr char cKeyDeleted[] = "key deleted";
inline constexpr char cAccessDenied[] = "access denied";

// Each row under its name.
#define KORA4_ROW(make, name, ...) inline constexpr TraceMessage name = make(__VA_ARGS__);
#include "contract/messages/trace_messages_store.inc"
#undef KORA4_ROW

}  // namespace kora4::contract::msg
