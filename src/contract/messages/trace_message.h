// SPDX-License-Identifier: MIT
// What a row of the tables of trace messages looks like.
#ifndef KORA4_CONTRACT_MESSAGES_TRACE_MESSAGE_H
#define KORA4_CONTRACT_MESSAGES_TRACE_MESSAGE_H

#include <cstdint>

#include "contract/trace_flags.h"

namespace kora4::contract {

// One message that the trace can write, and what is to be known about it.
struct TraceMessage {
    const char* function;  // null: of any function
    // The message as the statement has it, without the newline at its end: each conversion
    // stands for one value. Rows for one value of a more general message have it in place.
    const char* text;
    // The categories that let the line through; 0 where that depends on the function.
    std::uint32_t mask;
    // What the values are, separated by commas: kinds such as "result", "profile".
    const char* values;
    const char* meaning;  // in one sentence
    const char* why;      // how it comes about, in sentences; may be empty
    const char* next;     // what to do, in sentences; empty when there is nothing to do
};

// What a class whose functions trace is there for.
struct TraceWriter {
    const char* name;  // the part of a function's name before "::", or the whole of it
    const char* meaning;
};

}  // namespace kora4::contract

#endif  // KORA4_CONTRACT_MESSAGES_TRACE_MESSAGE_H
