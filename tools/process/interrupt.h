// SPDX-License-Identifier: MIT
// Ctrl-C, Ctrl-Break and the closing of the console, as an event to wait for: a tool ends
// what it is doing instead of being ended.
#pragma once

#include <windows.h>

namespace kora4::tools {

// Handles Ctrl-C for the process while it lives. One at a time; its methods may be called on
// any thread.
class Interrupt {
  public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // Manual-reset: signalled from the first Ctrl-C on.
    HANDLE Event() const;

    // Whether Ctrl-C has come.
    bool IsRequested() const;

    // Waits that long or until interrupted; true: interrupted.
    bool WaitFor(DWORD milliseconds) const;
};

}  // namespace kora4::tools
