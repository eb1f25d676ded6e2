// SPDX-License-Identifier: MIT
// Ctrl-C, Ctrl-Break and the closing of the console, as an event to wait for: a tool ends
// what it is doing instead of being ended.
#ifndef KORA4_PROCESS_INTERRUPT_H
#define KORA4_PROCESS_INTERRUPT_H

#include <windows.h>

namespace kora4::tools {

// One at a time in a process.
class Interrupt {
  public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // Manual-reset: signalled from the first Ctrl-C on.
    HANDLE Event() const;
    bool IsRequested() const;

    // Waits that long or until interrupted; true: interrupted.
    bool WaitFor(DWORD milliseconds) const;
};

}  // namespace kora4::tools

#endif  // KORA4_PROCESS_INTERRUPT_H
