// SPDX-License-Identifier: MIT
// An end of a pipe to a child process, with reads and writes that need not be waited for.
#ifndef KORA4_TESTS_TOOLS_SUPPORT_CHILD_PIPE_H
#define KORA4_TESTS_TOOLS_SUPPORT_CHILD_PIPE_H

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/handles.h"

namespace kora4::test {

// Used by one thread. Its address is the platform's while a read or a write is under way.
class ChildPipe {
  public:
    enum class Direction { eFromChild, eToChild };

    explicit ChildPipe(Direction direction);
    ~ChildPipe() { Close(); }
    ChildPipe(const ChildPipe&) = delete;
    ChildPipe& operator=(const ChildPipe&) = delete;

    // The child's end, inheritable; to be closed when the child has it.
    UniqueHandle& ChildEnd() { return m_childEnd; }

    // From the child: what came so far. Grows in Advance.
    const std::string& Text() const { return m_text; }
    // To the child: is written from now on, behind what is still waiting.
    void Write(std::string_view text);
    // The child's input ends when everything is written.
    void CloseWhenWritten();

    // Nothing comes or goes any more.
    bool IsOver() const { return !m_end; }
    // Signalled when Advance has something to do.
    HANDLE Event() const { return m_event.Get(); }
    bool IsBusy() const { return m_isPending; }
    // Starts what can be started, takes what is done; never waits.
    void Advance();
    void Close();

  private:
    void Begin();
    void Finish(DWORD moved);

    const Direction m_direction;
    UniqueHandle m_end;
    UniqueHandle m_childEnd;
    UniqueHandle m_event;
    OVERLAPPED m_overlapped{};
    bool m_isPending = false;
    bool m_closeWhenWritten = false;
    char m_buffer[4096];
    std::string m_text;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_SUPPORT_CHILD_PIPE_H
