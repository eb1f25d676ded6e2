// SPDX-License-Identifier: MIT
// Every line that the library can be made to write, and the categories that let it through.
#ifndef KORA4_TESTS_FAULTS_TRACE_LINE_TABLE_H
#define KORA4_TESTS_FAULTS_TRACE_LINE_TABLE_H

#include <cstdint>
#include <string>
#include <vector>

namespace kora4::test {

// `text` is exact but for what differs from run to run:
//   %p a pointer, 16 digits   %x "0x" and 8 digits: a result, a thread, a handle
//   %h 1 to 8 hexadecimal digits   %k the name of a value   %d a decimal number
//   %s the rest of the line, whatever it is
struct TableLine {
    std::string tag;
    std::string function;
    std::uint32_t mask;
    std::string text;
};

std::vector<TableLine> TraceLineTable();

// Whether a message is a line's.
bool MatchesText(const std::string& pattern, const std::string& message);

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_TRACE_LINE_TABLE_H
