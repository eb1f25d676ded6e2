// SPDX-License-Identifier: MIT
// The icon of the panel, drawn at the size that is asked for, and its place in the notification
// area.
#ifndef KORA4_PANEL_WINDOW_TRAY_ICON_H
#define KORA4_PANEL_WINDOW_TRAY_ICON_H

#include <windows.h>

#include <string>

namespace panel {

// Three sliders. The caller destroys it.
HICON DrawIcon(int size);

// Posted to the window: lParam says what the mouse does at the icon.
inline constexpr UINT cTrayMessage = WM_APP + 2;

class TrayIcon {
  public:
    TrayIcon() = default;
    ~TrayIcon() { Remove(); }
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;

    // Also when the notification area was made anew. There may be none, or not yet: then the
    // icon is wanted, and not shown.
    void Show(HWND window, const std::wstring& tip);
    void Remove();
    bool IsWanted() const { return m_icon != nullptr; }
    bool IsShown() const { return m_isShown; }

  private:
    HWND m_window = nullptr;
    HICON m_icon = nullptr;
    bool m_isShown = false;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_TRAY_ICON_H
