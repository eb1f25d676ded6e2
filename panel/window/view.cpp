// SPDX-License-Identifier: MIT
// The window of a control that draws itself.
#include "panel/window/view.h"

namespace panel {

void View::Make(HWND parent, const wchar_t* className, int id, DWORD style) {
    WNDCLASSW windowClass{};
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = OnMessage;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass);
    CreateWindowExW(0, className, Name(CHILDID_SELF).c_str(), WS_CHILD | WS_VISIBLE | style, 0,
                    0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                    windowClass.hInstance, this);
    // Frequencies rise to the right in every language.
    SetWindowLongPtrW(m_window, GWL_EXSTYLE,
                      GetWindowLongPtrW(m_window, GWL_EXSTYLE) & ~LONG_PTR{WS_EX_LAYOUTRTL});
}

LRESULT CALLBACK View::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* const pView =
            static_cast<View*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        pView->m_window = window;
        pView->m_accessible = std::make_unique<AccessibleHost>(window, *pView);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(pView));
    }
    auto* const pView = reinterpret_cast<View*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (pView && message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        pView->m_accessible.reset();
        pView->m_window = nullptr;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return pView ? pView->Handle(message, wParam, lParam)
                 : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT View::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND window = m_window;
    switch (message) {
        case WM_ERASEBKGND:
            return 1;
        case WM_PAINT: {
            Canvas canvas(window, m_theme, m_scale.Font());
            Draw(canvas);
            return 0;
        }
        case WM_ENABLE:
            Redraw();
            return 0;
        case WM_GETOBJECT:
            if (const auto answer = m_accessible->Answer(wParam, lParam))
                return *answer;
            break;
        default:
            if (const auto answer = On(message, wParam, lParam))
                return *answer;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void View::Tell(DWORD event, long part) const {
    if (m_accessible)
        m_accessible->Tell(event, part);
}

Area View::Client() const {
    RECT client{};
    GetClientRect(m_window, &client);
    return {0, 0, static_cast<int>(client.right), static_cast<int>(client.bottom)};
}

}  // namespace panel
