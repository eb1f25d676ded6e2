// SPDX-License-Identifier: MIT
// Messages of the object that clients use, with their meaning.
#pragma once

#include "contract/messages/range_texts.h"
#include "contract/messages/trace_message.h"

namespace kora4::contract::msg {

inline constexpr char cExitLineDecides[] =
    "The line is written regardless of the result, which the function's exit line shows "
    "('kora4ctl trace on results').";
inline constexpr char cNullPointer[] =
    "The client passed a null pointer; the method returned E_INVALIDARG and did nothing.";
inline constexpr char cRefusedValue[] =
    "The value was refused with E_INVALIDARG and nothing was stored.";
inline constexpr char cPassPointer[] = "Pass a valid pointer.";
inline constexpr char cSeeLimits[] = "See the limits with 'kora4ctl describe'.";
inline constexpr char cMasterMaskOrigin[] =
    "The mask is stored in the static keys by the installer of the engine; Initialize read it.";

inline constexpr char cLockLine[] = "processID: 0x%08x threadID: 0x%08x threadProcID: 0x%08x";
inline constexpr char cLockUse[] =
    "It is held while a callback is registered or unregistered, and while the client is "
    "notified of changes; no other method takes it.";

// The refusal of a null pointer.
consteval TraceMessage NullPointer(const char* function, const char* text, const char* meaning,
                                   const char* next = cPassPointer) {
    return Message(function, text, {}, meaning, cNullPointer, next);
}

// Each row under its name.
#define KORA4_ROW(make, name, ...) inline constexpr TraceMessage name = make(__VA_ARGS__);
#include "contract/messages/trace_messages_api.inc"
#undef KORA4_ROW

}  // namespace kora4::contract::msg
