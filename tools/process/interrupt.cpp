// SPDX-License-Identifier: MIT
// The handler for Ctrl-C: the first one asks, and a tool that does not end in time is ended.
#include "process/interrupt.h"

namespace kora4::tools {

namespace {

// What a process that Ctrl-C ends leaves as its exit code on Windows. Wine's own handler
// leaves another one, and runs the process's clean-up, which may wait for what was
// interrupted.
constexpr UINT cEndedByCtrlC = 0xC000013A;

// How long a tool may go on after the console is closed, or the session ends. Windows ends the
// process when the handler returns, or a little later than this.
constexpr DWORD cLastMoment = 4000;

// How long a tool may take to end by itself: it can be inside a call of the library that waits
// for a mutex that is never released.
constexpr DWORD cPatience = 10000;

HANDLE g_event = nullptr;
HANDLE g_ended = nullptr;

// On a thread that the console makes for it.
BOOL WINAPI OnControl(DWORD control) {
    const bool isFirst = WaitForSingleObject(g_event, 0) != WAIT_OBJECT_0;
    SetEvent(g_event);
    if (control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) {
        Sleep(cLastMoment);
        return TRUE;
    }
    // A second Ctrl-C ends the process at once.
    if (!isFirst || WaitForSingleObject(g_ended, cPatience) != WAIT_OBJECT_0)
        TerminateProcess(GetCurrentProcess(), cEndedByCtrlC);
    return TRUE;
}

}  // namespace

// The events are never closed: a call of the handler may still be under way when it is
// removed.
Interrupt::Interrupt() {
    if (g_event == nullptr)
        g_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (g_ended == nullptr)
        g_ended = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ResetEvent(g_event);
    ResetEvent(g_ended);
    SetConsoleCtrlHandler(OnControl, TRUE);
}

Interrupt::~Interrupt() {
    SetEvent(g_ended);
    SetConsoleCtrlHandler(OnControl, FALSE);
}

HANDLE Interrupt::Event() const {
    return g_event;
}

bool Interrupt::IsRequested() const {
    return WaitFor(0);
}

bool Interrupt::WaitFor(DWORD milliseconds) const {
    return WaitForSingleObject(g_event, milliseconds) == WAIT_OBJECT_0;
}

}  // namespace kora4::tools
