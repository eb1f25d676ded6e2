// SPDX-License-Identifier: MIT
// What this process says to a debugger, caught inside the process: each text passes as an
// exception that a first handler may take.
#ifndef KORA4_TESTS_FAULTS_DEBUG_OUTPUT_H
#define KORA4_TESTS_FAULTS_DEBUG_OUTPUT_H

#include <windows.h>

#include <mutex>
#include <string>
#include <vector>

namespace kora4::test {

// Collects from its construction on; one at a time. Any thread may speak.
class DebugOutput {
  public:
    DebugOutput();
    ~DebugOutput();
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;

    void Clear();
    // One text per call, in order.
    std::vector<std::string> Texts() const;
    // Everything as one log.
    std::string Log() const;

  private:
    static LONG CALLBACK Handle(EXCEPTION_POINTERS* pException);

    mutable std::mutex m_mutex;
    std::vector<std::string> m_texts;
    void* m_handler;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_DEBUG_OUTPUT_H
