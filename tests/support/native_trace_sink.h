// SPDX-License-Identifier: MIT
// The trace of native test programs: statements are recorded instead of emitted.
#ifndef KORA4_TESTS_SUPPORT_NATIVE_TRACE_SINK_H
#define KORA4_TESTS_SUPPORT_NATIVE_TRACE_SINK_H

#include <cstdint>
#include <string>
#include <vector>

namespace kora4::test {

// A statement that the flag word let through; its mask is not known here.
struct TraceRecord {
    std::string tag;  // its base: what follows the last backslash
    std::string function;
    int line = 0;
    std::uint32_t flags = 0;  // the statement's copy of the flag word
    std::string format;       // the whole format, the three leading fields included
    std::string text;         // the whole line; the format itself when it prints wide strings
};

// All statements of this process since the last clearing, in order.
std::vector<TraceRecord>& TraceRecords();

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_NATIVE_TRACE_SINK_H
