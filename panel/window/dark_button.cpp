// SPDX-License-Identifier: MIT
// Painting buttons in dark colours.
#include "panel/window/dark_button.h"

#include <commctrl.h>

#include <string>

#include "panel/window/canvas.h"

namespace panel {

namespace {

std::wstring TextOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)), L'\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1)));
    return text;
}

bool IsCheckBox(HWND button) {
    return (GetWindowLongW(button, GWL_STYLE) & BS_TYPEMASK) == BS_AUTOCHECKBOX;
}

void PaintBox(Canvas& canvas, HWND button, const ButtonLook& look, COLORREF text) {
    const Palette& colors = look.theme.Colors();
    const int size = look.scale(13);
    const int top = (canvas.Whole().Height() - size) / 2;
    const Area box{0, top, size, top + size};
    canvas.Fill(box, colors.field);
    canvas.Frame(box, text);
    if (SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED) {
        const int edge = look.scale(3);
        canvas.Fill({box.left + edge, box.top + edge, box.right - edge, box.bottom - edge},
                    colors.accent);
    }
}

void Paint(HWND button, const ButtonLook& look) {
    const Palette& colors = look.theme.Colors();
    const bool isEnabled = IsWindowEnabled(button);
    const COLORREF text = isEnabled ? colors.text : colors.line;
    const LRESULT state = SendMessageW(button, BM_GETSTATE, 0, 0);
    Canvas canvas(button, look.theme, look.scale.Font());
    const Area& whole = canvas.Whole();
    Area inside = whole;
    UINT flags = DT_SINGLELINE | DT_VCENTER;
    canvas.Fill(whole, colors.window);
    if (IsCheckBox(button)) {
        PaintBox(canvas, button, look, text);
        inside.left = look.scale(18);
    } else {
        canvas.Fill(whole, (state & BST_PUSHED) != 0 ? colors.field : colors.button);
        canvas.Frame(whole, (state & BST_FOCUS) != 0 ? colors.accent : colors.line);
        flags |= DT_CENTER;
    }
    const bool showsLetters =
        (SendMessageW(button, WM_QUERYUISTATE, 0, 0) & UISF_HIDEACCEL) == 0;
    canvas.WriteLabel(TextOf(button), inside, text, flags | (showsLetters ? 0 : DT_HIDEPREFIX));
    if ((state & BST_FOCUS) != 0) {
        const int edge = look.scale(2);
        canvas.FocusFrame({inside.left - (IsCheckBox(button) ? edge : -edge), edge,
                           whole.right - edge, whole.bottom - edge});
    }
}

LRESULT CALLBACK OnMessage(HWND button, UINT message, WPARAM wParam, LPARAM lParam,
                           UINT_PTR subclass, DWORD_PTR pLook) {
    const auto& look = *reinterpret_cast<const ButtonLook*>(pLook);
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(button, OnMessage, subclass);
    if (!look.theme.IsDark())
        return DefSubclassProc(button, message, wParam, lParam);
    switch (message) {
        case WM_PAINT:
            Paint(button, look);
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case BM_SETSTATE:
        case BM_SETCHECK:
        case BM_SETSTYLE:
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_ENABLE:
        case WM_SETTEXT:
        case WM_UPDATEUISTATE: {
            // The platform draws some of these at once, in its own colours.
            const bool isVisible = IsWindowVisible(button);
            if (isVisible)
                DefSubclassProc(button, WM_SETREDRAW, FALSE, 0);
            const LRESULT result = DefSubclassProc(button, message, wParam, lParam);
            if (isVisible)
                DefSubclassProc(button, WM_SETREDRAW, TRUE, 0);
            InvalidateRect(button, nullptr, FALSE);
            return result;
        }
        default:
            return DefSubclassProc(button, message, wParam, lParam);
    }
}

}  // namespace

void LetPaintDark(HWND button, const ButtonLook& look) {
    SetWindowSubclass(button, OnMessage, 1, reinterpret_cast<DWORD_PTR>(&look));
}

}  // namespace panel
