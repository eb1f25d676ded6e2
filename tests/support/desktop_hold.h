// SPDX-License-Identifier: MIT
// A desktop for the processes that a test starts.
#ifndef KORA4_TESTS_SUPPORT_DESKTOP_HOLD_H
#define KORA4_TESTS_SUPPORT_DESKTOP_HOLD_H

#include <windows.h>

namespace kora4::test {

// Keeps the desktop there. Wine starts it with the first window that anybody makes; a
// process that makes one meanwhile goes without, also for the calls into its apartment. A
// program that starts others holds the desktop first.
class DesktopHold {
  public:
    DesktopHold()
        : m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                   nullptr, nullptr)) {}
    ~DesktopHold() { DestroyWindow(m_window); }
    DesktopHold(const DesktopHold&) = delete;
    DesktopHold& operator=(const DesktopHold&) = delete;

    bool IsHeld() const { return m_window != nullptr; }

  private:
    const HWND m_window;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_DESKTOP_HOLD_H
