// SPDX-License-Identifier: MIT
// What a screen reader is told of a control that draws itself, through Microsoft Active
// Accessibility.
#ifndef KORA4_PANEL_WINDOW_ACCESSIBLE_H
#define KORA4_PANEL_WINDOW_ACCESSIBLE_H

#include <windows.h>

#include <oleacc.h>

#include <optional>
#include <string>

#include "panel/model/curve.h"

namespace panel {

// A control as a screen reader sees it: itself (part 0) and its parts, counted from 1.
class AccessibleControl {
  public:
    virtual long PartCount() const = 0;
    virtual std::wstring Name(long part) const = 0;
    virtual std::wstring Value(long part) const = 0;
    virtual std::wstring Help(long part) const = 0;
    virtual long Role(long part) const = 0;   // ROLE_SYSTEM_...
    virtual long State(long part) const = 0;  // STATE_SYSTEM_...
    virtual Area Place(long part) const = 0;  // in pixels of the control
    virtual long FocusedPart() const = 0;     // meaningful when the control has the focus
    virtual void Select(long part) = 0;
    virtual bool SetValue(long part, const std::wstring& text) = 0;

  protected:
    ~AccessibleControl() = default;
};

// Hands out the object of one control, and outlives it empty: a screen reader may hold it
// longer.
class AccessibleHost {
  public:
    AccessibleHost(HWND window, AccessibleControl& control);
    ~AccessibleHost();
    AccessibleHost(const AccessibleHost&) = delete;
    AccessibleHost& operator=(const AccessibleHost&) = delete;

    // The answer to WM_GETOBJECT; none when the platform's own is wanted.
    std::optional<LRESULT> Answer(WPARAM wParam, LPARAM lParam);
    // EVENT_OBJECT_...
    void Tell(DWORD event, long part) const;

  private:
    class Object;

    const HWND m_window;
    Object* const m_object;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_ACCESSIBLE_H
