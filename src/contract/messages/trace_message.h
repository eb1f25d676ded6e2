// SPDX-License-Identifier: MIT
// What a row of the catalogue of trace messages looks like. A statement of the library names
// its row and takes function, text and mask from there; the tools explain written lines with
// the rest.
#pragma once

#include <cstdint>

#include "contract/trace_flags.h"

namespace kora4::contract {

// What every line begins with: the tag, the source line, the function.
inline constexpr char cTraceHead[] = "%s: %4d %s:";

// One message that the trace can write, and what is to be known about it.
struct TraceMessage {
    const char* function;  // null: of any function
    // The message behind the head, without the newline at its end: each conversion stands for
    // one value. Rows for one value of a more general message have it in place.
    const char* text;
    // The categories that let the line through; 0 where that depends on the function.
    std::uint32_t mask;
    // What the values are, separated by commas: kinds such as "result", "profile".
    const char* values;
    const char* meaning;    // in one sentence
    const char* why = "";   // how it comes about, in sentences; may be empty
    const char* next = "";  // what to do, in sentences; empty when there is nothing to do
};

// The rows; a statement names one as msg::cSetVeltoEnable.
namespace msg {

// What the API object reports.
constexpr TraceMessage Message(const char* function, const char* text, const char* values,
                               const char* meaning, const char* why = "",
                               const char* next = "") {
    return {function, text, trace::eMessages, values, meaning, why, next};
}

// A line of another category.
constexpr TraceMessage Line(const char* function, const char* text, std::uint32_t mask,
                            const char* values, const char* meaning, const char* why = "",
                            const char* next = "") {
    return {function, text, mask, values, meaning, why, next};
}

}  // namespace msg

}  // namespace kora4::contract

namespace kora4 {

namespace msg = contract::msg;

}  // namespace kora4
