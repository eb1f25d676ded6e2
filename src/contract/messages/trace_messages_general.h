// SPDX-License-Identifier: MIT
// Messages that many functions write, and the failed assertions.
#pragma once

#include "contract/messages/trace_message.h"

namespace kora4::contract::msg {

inline constexpr auto cEntry = Line(nullptr, ">>", 0, {}, "The function begins.");
inline constexpr auto cExit = Line(nullptr, "<<", 0, {}, "The function ends.");
inline constexpr auto cExitResult =
    Line(nullptr, "<< hr: 0x%08x", 0, {eResult}, "The function ends with this result.");
inline constexpr auto cNotInitialized =
    Message(nullptr, "**** Error: APOERR_NOT_INITIALIZED", {},
            "The method was called before Initialize had succeeded.",
            "The call was refused with APOERR_NOT_INITIALIZED and did nothing.",
            "Call Initialize first and check its result; if it fails, run 'kora4ctl doctor'.");
// Matches a refusal that has no row of its own; no statement names it.
inline constexpr auto cRefused = Message(
    nullptr, "**** Error: %s", {eReason}, "The method refused an argument, for this reason.",
    "The call was refused with E_INVALIDARG and did nothing.", "Pass a valid argument.");

inline constexpr char cBrokenRule[] =
    "A rule inside the library was broken; the function handles this and continues.";
inline constexpr char cReport[] =
    "Report it to the developers of the library, with the surrounding lines.";
inline constexpr char cForeignProfile[] =
    "The active profile in the store is not a profile number: another program wrote it.";
inline constexpr char cRepairProfile[] =
    "Choose a profile: 'kora4ctl profile use music'; 'kora4ctl lint' finds such values.";

consteval TraceMessage Assertion(const char* text, const char* meaning,
                                 const char* why = cBrokenRule, const char* next = cReport) {
    return Line(nullptr, text, trace::eAssertions, {}, meaning, why, next);
}

inline constexpr auto cAssertion =
    Line(nullptr, "KALASSERT failed: %s", trace::eAssertions, {eCondition},
         "A condition that the library relies on did not hold.", cBrokenRule, cReport);

// Each row under its name.
#define KORA4_ASSERTION(name, condition, ...) \
    inline constexpr TraceMessage name = Assertion("KALASSERT failed: " condition, __VA_ARGS__);
#include "contract/messages/trace_messages_assertions.inc"
#undef KORA4_ASSERTION

}  // namespace kora4::contract::msg
