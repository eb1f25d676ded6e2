// SPDX-License-Identifier: MIT
// Runs a part of this test program as a child under this process as its debugger.
#ifndef KORA4_TESTS_UNIT_TRACE_DEBUGGEE_H
#define KORA4_TESTS_UNIT_TRACE_DEBUGGEE_H

#include <optional>
#include <string>
#include <vector>

namespace kora4::test {

// What the debugger saw between the beginning and the end of a scenario.
struct DebugRun {
    std::vector<std::string> output;  // one text per call
    int breakpoints = 0;
    bool ended = false;  // the scenario ran to its end
    unsigned long exitCode = 0;
};

// Starts this program with "--scenario NAME" and debugs it, for at most 30 seconds.
DebugRun RunUnderDebugger(const std::string& scenario);

// A part of the program that runs as the child.
struct Scenario {
    const char* name;
    void (*run)();
};

// In main: runs the scenario that the command line names, if it names one, between the two
// markers, and gives the exit code.
std::optional<int> RunScenario(int argc, char** argv, const std::vector<Scenario>& scenarios);

}  // namespace kora4::test

#endif  // KORA4_TESTS_UNIT_TRACE_DEBUGGEE_H
