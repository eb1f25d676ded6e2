// SPDX-License-Identifier: MIT
// The trace statements of the sources, read as text.
#ifndef KORA4_TESTS_CHECKS_TRACE_STATEMENTS_H
#define KORA4_TESTS_CHECKS_TRACE_STATEMENTS_H

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kora4::test {

// A statement that writes a trace line, as it stands in a source.
struct TraceStatement {
    std::string place;  // "src/api/switches.cpp:28"
    // The format behind the head, without one newline at its end. Conditions that the
    // preprocessor puts in are a %s.
    std::string text;
    std::string mask;  // as it stands in the source, or what the macro or the frame takes
    // The functions whose lines it writes: that of its site, or, where the site is handed in,
    // those of the callers.
    std::set<std::string> functions;
    // How many values it hands over; none where another statement writes the text.
    std::optional<std::size_t> values;
};

// A source file with its path below the project.
struct TraceSource {
    std::string path;
    std::string text;
};

// The statements of some sources: KALTRACE, KALASSERT and KALASSERT_TEXT, and the texts that
// a method of the API object hands to its frame.
std::vector<TraceStatement> TraceStatementsIn(const std::vector<TraceSource>& sources);

// Those of all files below src/.
std::vector<TraceStatement> AllTraceStatements();

// The functions that the sites below src/ name.
std::vector<std::string> AllTracedFunctions();

}  // namespace kora4::test

#endif  // KORA4_TESTS_CHECKS_TRACE_STATEMENTS_H
