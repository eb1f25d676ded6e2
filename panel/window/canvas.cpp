// SPDX-License-Identifier: MIT
// Drawing into memory, and from there into the window.
#include "panel/window/canvas.h"

namespace panel {

namespace {

RECT ToRect(const Area& area) {
    return {area.left, area.top, area.right, area.bottom};
}

}  // namespace

Canvas::Canvas(HWND window, const Theme& theme, HFONT font) : m_window(window) {
    BeginPaint(window, &m_paint);
    RECT client{};
    GetClientRect(window, &client);
    m_whole = {0, 0, static_cast<int>(client.right), static_cast<int>(client.bottom)};
    m_dc = CreateCompatibleDC(m_paint.hdc);
    m_bitmap = CreateCompatibleBitmap(m_paint.hdc, client.right, client.bottom);
    m_oldBitmap = SelectObject(m_dc, m_bitmap);
    // Between two layouts, copying would turn the letters round.
    SetLayout(m_dc, GetLayout(m_paint.hdc));
    m_oldFont = SelectObject(m_dc, font);
    SetBkMode(m_dc, TRANSPARENT);
    Fill(m_whole, theme.Colors().field);
}

Canvas::~Canvas() {
    BitBlt(m_paint.hdc, 0, 0, m_whole.right, m_whole.bottom, m_dc, 0, 0, SRCCOPY);
    SelectObject(m_dc, m_oldFont);
    SelectObject(m_dc, m_oldBitmap);
    DeleteObject(m_bitmap);
    DeleteDC(m_dc);
    EndPaint(m_window, &m_paint);
}

void Canvas::Fill(const Area& area, COLORREF color) {
    const RECT rect = ToRect(area);
    SetDCBrushColor(m_dc, color);
    FillRect(m_dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void Canvas::Frame(const Area& area, COLORREF color, int width) {
    Fill({area.left, area.top, area.right, area.top + width}, color);
    Fill({area.left, area.bottom - width, area.right, area.bottom}, color);
    Fill({area.left, area.top, area.left + width, area.bottom}, color);
    Fill({area.right - width, area.top, area.right, area.bottom}, color);
}

void Canvas::Line(Point from, Point to, COLORREF color, int width) {
    const HPEN pen = CreatePen(PS_SOLID, width, color);
    const HGDIOBJ before = SelectObject(m_dc, pen);
    MoveToEx(m_dc, from.x, from.y, nullptr);
    LineTo(m_dc, to.x, to.y);
    SelectObject(m_dc, before);
    DeleteObject(pen);
}

void Canvas::Dot(Point middle, int radius, COLORREF color) {
    const HGDIOBJ pen = SelectObject(m_dc, GetStockObject(DC_PEN));
    const HGDIOBJ brush = SelectObject(m_dc, GetStockObject(DC_BRUSH));
    SetDCPenColor(m_dc, color);
    SetDCBrushColor(m_dc, color);
    Ellipse(m_dc, middle.x - radius, middle.y - radius, middle.x + radius + 1,
            middle.y + radius + 1);
    SelectObject(m_dc, brush);
    SelectObject(m_dc, pen);
}

void Canvas::Write(const std::wstring& text, const Area& area, COLORREF color, UINT flags) {
    WriteLabel(text, area, color, flags | DT_NOPREFIX);
}

void Canvas::WriteLabel(const std::wstring& text, const Area& area, COLORREF color,
                        UINT flags) {
    RECT rect = ToRect(area);
    SetTextColor(m_dc, color);
    DrawTextW(m_dc, text.c_str(), static_cast<int>(text.size()), &rect, flags);
}

void Canvas::FocusFrame(const Area& area) {
    const RECT rect = ToRect(area);
    SetTextColor(m_dc, RGB(0, 0, 0));
    SetBkColor(m_dc, RGB(0xFF, 0xFF, 0xFF));
    DrawFocusRect(m_dc, &rect);
}

}  // namespace panel
