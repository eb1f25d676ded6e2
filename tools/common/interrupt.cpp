#include "common/interrupt.h"

namespace kora4::tools {

namespace {

HANDLE g_event = nullptr;

// On a thread of the platform's own.
BOOL WINAPI OnControl(DWORD) {
    // Whoever asks twice does not want to wait for the tool's own end.
    if (WaitForSingleObject(g_event, 0) == WAIT_OBJECT_0)
        return FALSE;
    SetEvent(g_event);
    return TRUE;
}

}  // namespace

Interrupt::Interrupt() {
    g_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler(OnControl, TRUE);
}

Interrupt::~Interrupt() {
    SetConsoleCtrlHandler(OnControl, FALSE);
    CloseHandle(g_event);
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
