// SPDX-License-Identifier: MIT
// One program of the kit: run for a limited time, and what its output says of its tests.
#ifndef KORA4_TESTS_SELFTEST_PROGRAM_RUN_H
#define KORA4_TESTS_SELFTEST_PROGRAM_RUN_H

#include <windows.h>

#include <string>
#include <vector>

namespace kora4::selftest {

struct ProgramRun {
    DWORD exitCode = 0;
    bool isOverdue = false;  // it was ended
    ULONGLONG milliseconds = 0;
    // Of a program that reports no tests: its whole output; empty otherwise.
    std::string output;
    int tests = 0;
    std::vector<std::string> failed;
    std::vector<std::string> skipped;

    bool HasPassed() const { return exitCode == 0 && !isOverdue && failed.empty(); }
    // What Ctrl-C leaves on Windows.
    bool IsInterrupted() const { return exitCode == 0xC000013A; }
};

// "passed, 23 tests, 1.2 s", "FAILED (exit code 1), 2 of 23 tests, 1.2 s"
std::string InWords(const ProgramRun& run);

// What the framework's lines in the text say.
void ReadTests(const std::string& text, ProgramRun& run);

// In a working folder of its own; everything it prints goes to the log.
ProgramRun RunProgram(const std::wstring& path, const std::wstring& arguments,
                      const std::wstring& folder, const std::wstring& log, DWORD seconds);

}  // namespace kora4::selftest

#endif  // KORA4_TESTS_SELFTEST_PROGRAM_RUN_H
