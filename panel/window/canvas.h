// SPDX-License-Identifier: MIT
// A picture that is drawn out of sight and shown at once, so that nothing flickers.
#ifndef KORA4_PANEL_WINDOW_CANVAS_H
#define KORA4_PANEL_WINDOW_CANVAS_H

#include <windows.h>

#include <string>

#include "panel/model/curve.h"
#include "panel/window/theme.h"

namespace panel {

class Canvas {
  public:
    // Between BeginPaint and EndPaint of that window.
    Canvas(HWND window, const Theme& theme, HFONT font);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    const Area& Whole() const { return m_whole; }
    void Fill(const Area& area, COLORREF color);
    void Frame(const Area& area, COLORREF color, int width = 1);
    void Line(Point from, Point to, COLORREF color, int width = 1);
    void Dot(Point middle, int radius, COLORREF color);
    // `flags` as DrawText has them.
    void Write(const std::wstring& text, const Area& area, COLORREF color, UINT flags);
    // The same with the letter marked that '&' stands before.
    void WriteLabel(const std::wstring& text, const Area& area, COLORREF color, UINT flags);
    void FocusFrame(const Area& area);

  private:
    const HWND m_window;
    PAINTSTRUCT m_paint{};
    Area m_whole;
    HDC m_dc = nullptr;
    HBITMAP m_bitmap = nullptr;
    HGDIOBJ m_oldBitmap = nullptr;
    HGDIOBJ m_oldFont = nullptr;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_CANVAS_H
