// SPDX-License-Identifier: MIT
// Waiting in a single-threaded apartment: COM calls come in meanwhile.
#pragma once

#include <windows.h>

#include <functional>
#include <limits>

namespace kora4::tools {

// A point in time to wait for; without a limit it never comes.
class Deadline {
  public:
    Deadline() = default;
    explicit Deadline(double seconds);

    // Milliseconds, rounded up; INFINITE without a limit.
    DWORD Left() const;
    bool IsOver() const { return Left() == 0; }
    bool IsLimited() const { return m_end != cNever; }

  private:
    static constexpr ULONGLONG cNever = std::numeric_limits<ULONGLONG>::max();
    ULONGLONG m_end = cNever;
};

// How a wait ended.
enum class Wake {
    eDone,
    eInterrupted,
    eTimedOut,
};

// Lets messages and calls in until `isDone` says so, which is asked at first and after each
// of them, and when `awaited`, a handle or null, is signalled. `interrupt` is an event.
Wake WaitWithMessages(HANDLE interrupt, const Deadline& deadline,
                      const std::function<bool()>& isDone, HANDLE awaited = nullptr);

}  // namespace kora4::tools
