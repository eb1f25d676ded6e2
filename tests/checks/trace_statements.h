// The trace statements of the sources, read as text.
#ifndef KORA4_TESTS_CHECKS_TRACE_STATEMENTS_H
#define KORA4_TESTS_CHECKS_TRACE_STATEMENTS_H

#include <string>
#include <vector>

namespace kora4::test {

struct TraceStatement {
    std::string place;  // "src/api/switches.cpp:28"
    // The format behind the head, without one newline at its end. Conditions that the
    // preprocessor puts in are a %s.
    std::string text;
    std::string mask;  // as it stands in the source; empty where there is none
};

// The statements of one source: KALTRACE, KALASSERT and KALASSERT_TEXT, and the texts that a
// method of the API object hands to its frame.
std::vector<TraceStatement> TraceStatementsIn(const std::string& path,
                                              const std::string& source);

// Those of all files below src/.
std::vector<TraceStatement> AllTraceStatements();

// The functions that the sites below src/ name.
std::vector<std::string> AllTracedFunctions();

}  // namespace kora4::test

#endif  // KORA4_TESTS_CHECKS_TRACE_STATEMENTS_H
