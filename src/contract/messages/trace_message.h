// SPDX-License-Identifier: MIT
// A row of the catalogue of trace messages. A statement of the library names its row and takes
// function, text and mask from it; the tools explain written lines with the rest.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "contract/messages/conversion.h"
#include "contract/messages/trace_kind.h"
#include "contract/trace_flags.h"

namespace kora4::contract {

// What every line begins with: the tag, the source line, the function.
inline constexpr char cTraceHead[] = "%s: %4d %s:";

// One message that the trace can write, and what it means.
struct TraceMessage {
    const char* function;  // null: of any function
    // The message after the head, without the newline at its end: each conversion stands for
    // one value. A row for one particular value of a more general message contains that value.
    const char* text;
    // The categories that let the line through; 0 where that depends on the function.
    std::uint32_t mask;
    TraceKinds kinds;       // one for each conversion of the text
    const char* meaning;    // in one sentence
    const char* why = "";   // how it comes about, in sentences; may be empty
    const char* next = "";  // what to do, in sentences; empty when there is nothing to do
};

// The rows; a statement names one as msg::cSetVeltoEnable.
namespace msg {

using enum TraceKind;

// Not defined: a call during constant evaluation stops the compilation.
void KindsDoNotFitTheText();

// A line of any category.
consteval TraceMessage Line(const char* function, const char* text, std::uint32_t mask,
                            const TraceKinds& kinds, const char* meaning, const char* why = "",
                            const char* next = "") {
    const std::size_t conversions = PartsOf(text).conversions;
    if (std::ranges::find(kinds, eNone) != kinds.begin() + conversions)
        KindsDoNotFitTheText();
    return {function, text, mask, kinds, meaning, why, next};
}

// What the API object reports.
consteval TraceMessage Message(const char* function, const char* text, const TraceKinds& kinds,
                               const char* meaning, const char* why = "",
                               const char* next = "") {
    return Line(function, text, trace::eMessages, kinds, meaning, why, next);
}

}  // namespace msg

}  // namespace kora4::contract

namespace kora4 {

namespace msg = contract::msg;

}  // namespace kora4
