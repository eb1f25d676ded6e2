// SPDX-License-Identifier: MIT
// Colours, light or dark, and the fonts and lengths of a resolution.
#ifndef KORA4_PANEL_WINDOW_THEME_H
#define KORA4_PANEL_WINDOW_THEME_H

#include <windows.h>

#include <string>

namespace panel {

enum class ColorChoice { eSystem, eLight, eDark };

struct Palette {
    COLORREF window;  // behind everything
    COLORREF text;
    COLORREF muted;  // of text and lines that matter less
    COLORREF field;  // behind what is entered, and of pictures
    COLORREF line;   // of borders
    COLORREF grid;
    COLORREF accent;
    COLORREF warning;
    COLORREF button;
};

// High contrast always wins: then all colours are those of the system.
class Theme {
  public:
    Theme() { Choose(ColorChoice::eSystem); }
    ~Theme();
    Theme(const Theme&) = delete;
    Theme& operator=(const Theme&) = delete;

    // Also when the system's colours have changed.
    void Choose(ColorChoice choice);
    ColorChoice Choice() const { return m_choice; }
    bool IsDark() const { return m_isDark; }
    const Palette& Colors() const { return m_palette; }
    HBRUSH WindowBrush() const { return m_window; }
    HBRUSH FieldBrush() const { return m_field; }

    // A control of this window: its frame and scroll bars. Buttons and check boxes paint
    // themselves in dark colours, because the platform has no documented dark ones.
    void Dress(HWND control) const;
    // The title bar, where the platform has dark ones.
    void DressFrame(HWND window) const;

  private:
    ColorChoice m_choice = ColorChoice::eSystem;
    bool m_isDark = false;
    Palette m_palette{};
    HBRUSH m_window = nullptr;
    HBRUSH m_field = nullptr;
};

// What depends on the resolution of the monitor.
class Scale {
  public:
    Scale() = default;
    ~Scale();
    Scale(const Scale&) = delete;
    Scale& operator=(const Scale&) = delete;

    void Use(int dpi);
    int Dpi() const { return m_dpi; }
    // Pixels for a length in pixels at 96 dpi.
    int operator()(int length) const { return MulDiv(length, m_dpi, USER_DEFAULT_SCREEN_DPI); }
    HFONT Font() const { return m_font; }
    int LineHeight() const { return m_lineHeight; }
    // Of one line of a text, in which '&' marks a letter as in labels.
    int WidthOf(const std::wstring& text) const;
    // Of a text that is broken into lines.
    int HeightOf(const std::wstring& text, int width) const;

  private:
    SIZE Measured(const std::wstring& text, int width, UINT flags) const;

    int m_dpi = USER_DEFAULT_SCREEN_DPI;
    // Holds the font: texts are measured often, and a device context of the display costs more
    // than the measuring.
    const HDC m_dc = CreateCompatibleDC(nullptr);
    HFONT m_font = nullptr;
    int m_lineHeight = 0;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_THEME_H
