// SPDX-License-Identifier: MIT
// The frame of a control that draws itself: its window, its painting, its accessibility.
#ifndef KORA4_PANEL_WINDOW_VIEW_H
#define KORA4_PANEL_WINDOW_VIEW_H

#include <windows.h>

#include <memory>

#include "panel/window/accessible.h"
#include "panel/window/canvas.h"
#include "panel/window/strings.h"
#include "panel/window/theme.h"

namespace panel {

class View : public AccessibleControl {
  public:
    View(const Theme& theme, const Scale& scale, const Strings& strings)
        : m_theme(theme), m_scale(scale), m_strings(strings) {}
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    HWND Window() const { return m_window; }
    void Redraw() const { InvalidateRect(m_window, nullptr, FALSE); }

  protected:
    ~View() = default;

    // `className` is registered by the first call.
    void Make(HWND parent, const wchar_t* className, int id, DWORD style);
    virtual void Draw(Canvas& canvas) = 0;
    // Nothing when the platform's own handling is wanted.
    virtual std::optional<LRESULT> On(UINT message, WPARAM wParam, LPARAM lParam) = 0;
    void Tell(DWORD event, long part) const;
    Area Client() const;

    const Theme& m_theme;
    const Scale& m_scale;
    const Strings& m_strings;

  private:
    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_window = nullptr;
    std::unique_ptr<AccessibleHost> m_accessible;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_VIEW_H
