// SPDX-License-Identifier: MIT
// Drawing the icon, and the notification area.
#include "panel/window/tray_icon.h"

#include <shellapi.h>

#include <cwchar>

namespace panel {

HICON DrawIcon(int size) {
    const HDC screen = GetDC(nullptr);
    const HDC dc = CreateCompatibleDC(screen);
    const HBITMAP color = CreateCompatibleBitmap(screen, size, size);
    const HBITMAP mask = CreateBitmap(size, size, 1, 1, nullptr);
    ReleaseDC(nullptr, screen);
    const auto fill = [&](int left, int top, int right, int bottom, COLORREF paint) {
        const RECT rect{size * left / 16, size * top / 16, size * right / 16,
                        size * bottom / 16};
        SetDCBrushColor(dc, paint);
        FillRect(dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    };
    const HGDIOBJ before = SelectObject(dc, mask);
    fill(0, 0, 16, 16, RGB(0, 0, 0));  // all of it shows
    SelectObject(dc, color);
    fill(0, 0, 16, 16, RGB(0x20, 0x3A, 0x5C));
    constexpr int cKnobs[] = {9, 4, 7};
    for (int i = 0; i < 3; ++i) {
        const int left = 3 + 4 * i;
        fill(left, 2, left + 1, 14, RGB(0x90, 0xA8, 0xC8));
        fill(left - 1, cKnobs[i], left + 2, cKnobs[i] + 3, RGB(0xFF, 0xFF, 0xFF));
    }
    SelectObject(dc, before);
    DeleteDC(dc);
    ICONINFO info{TRUE, 0, 0, mask, color};
    const HICON icon = CreateIconIndirect(&info);
    DeleteObject(color);
    DeleteObject(mask);
    return icon;
}

void TrayIcon::Show(HWND window, const std::wstring& tip) {
    Remove();
    m_window = window;
    m_icon = DrawIcon(GetSystemMetrics(SM_CXSMICON));
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof data;
    data.hWnd = window;
    data.uID = 1;
    data.uFlags = NIF_ICON | NIF_MESSAGE | NIF_TIP;
    data.uCallbackMessage = cTrayMessage;
    data.hIcon = m_icon;
    std::wcsncpy(data.szTip, tip.c_str(), std::size(data.szTip) - 1);
    m_isShown = Shell_NotifyIconW(NIM_ADD, &data) != FALSE;
}

void TrayIcon::Remove() {
    if (!m_icon)
        return;
    NOTIFYICONDATAW data{};
    data.cbSize = sizeof data;
    data.hWnd = m_window;
    data.uID = 1;
    Shell_NotifyIconW(NIM_DELETE, &data);
    DestroyIcon(m_icon);
    m_icon = nullptr;
    m_isShown = false;
}

}  // namespace panel
