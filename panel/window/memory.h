// SPDX-License-Identifier: MIT
// What the panel remembers for its user, in a key of its own. Reading what is not there gives
// the value for a first start; what cannot be written is forgotten.
#ifndef KORA4_PANEL_WINDOW_MEMORY_H
#define KORA4_PANEL_WINDOW_MEMORY_H

#include <windows.h>

#include <string>

namespace panel {

class Memory {
  public:
    DWORD Number(const wchar_t* name, DWORD first) const;
    void SetNumber(const wchar_t* name, DWORD number) const;
    std::wstring Text(const std::wstring& name) const;
    void SetText(const std::wstring& name, const std::wstring& text) const;

    // The window's place on the monitor on which it was last.
    void SavePlace(HWND window) const;
    // Where it is to be, in pixels; one in the middle of the primary monitor at first. `least`
    // gives the smallest size, and `usual` the first, for a resolution.
    template <typename Least, typename Usual>
    RECT Place(Least least, Usual usual) const {
        const Monitor monitor = LastMonitor();
        return PlaceOn(monitor, least(monitor.dpi), usual(monitor.dpi));
    }

  private:
    struct Monitor {
        std::wstring name;
        RECT workArea{};
        int dpi = USER_DEFAULT_SCREEN_DPI;
    };
    static Monitor About(HMONITOR monitor);
    Monitor LastMonitor() const;
    RECT PlaceOn(const Monitor& monitor, SIZE least, SIZE usual) const;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_MEMORY_H
