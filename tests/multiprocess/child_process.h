// SPDX-License-Identifier: MIT
// The test program started again in a role, see roles.h.
#ifndef KORA4_TESTS_MULTIPROCESS_CHILD_PROCESS_H
#define KORA4_TESTS_MULTIPROCESS_CHILD_PROCESS_H

#include <windows.h>

#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "platform/handles.h"

namespace kora4::test {

// One child. The test fails when the child does not answer in cBoundedWait. Used by one
// thread at a time.
class ChildProcess {
  public:
    explicit ChildProcess(const std::string& role);
    // Ends the child's input and waits for its end.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void Send(const std::string& line);
    // The next line; empty, and a failure of the test, when none comes.
    std::string Receive();
    std::string Ask(const std::string& line) {
        Send(line);
        return Receive();
    }

    // Set when there is something to receive; for waits for several children.
    HANDLE AnswerEvent() const { return m_answered.Get(); }

    // Ends it in the middle of whatever it does; returns when it is gone.
    void Kill();
    HANDLE Process() const { return m_process.Get(); }

  private:
    void ReadLines();
    void AddText(const char* text, std::size_t length);

    UniqueHandle m_process;
    UniqueHandle m_input;
    UniqueHandle m_output;
    UniqueHandle m_answered;
    std::mutex m_mutex;
    std::string m_partial;            // the reader's
    std::deque<std::string> m_lines;  // guarded by m_mutex
    bool m_ended = false;             // guarded by m_mutex
    std::thread m_reader;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_CHILD_PROCESS_H
