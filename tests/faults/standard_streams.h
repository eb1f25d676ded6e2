// SPDX-License-Identifier: MIT
// The standard streams of this process, for a tool that runs inside it.
#ifndef KORA4_TESTS_FAULTS_STANDARD_STREAMS_H
#define KORA4_TESTS_FAULTS_STANDARD_STREAMS_H

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/handles.h"

namespace kora4::test {

// As long as it lives, the handles of the standard streams are files of its own.
class StandardStreams {
  public:
    StandardStreams();
    ~StandardStreams();
    StandardStreams(const StandardStreams&) = delete;
    StandardStreams& operator=(const StandardStreams&) = delete;

    // Empties all three and puts that into the input.
    void Begin(std::string_view input);
    // What has been written since.
    std::string Out() const { return ContentOf(m_out.Get()); }
    std::string Err() const { return ContentOf(m_err.Get()); }

  private:
    static UniqueHandle MakeFile();
    static std::string ContentOf(HANDLE file);

    const UniqueHandle m_in;
    const UniqueHandle m_out;
    const UniqueHandle m_err;
    HANDLE m_before[3];
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_FAULTS_STANDARD_STREAMS_H
