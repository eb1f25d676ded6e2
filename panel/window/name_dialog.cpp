// SPDX-License-Identifier: MIT
// A dialog with a question, a field, OK and Cancel, as large as its texts need.
#include "panel/window/name_dialog.h"

#include <windowsx.h>

#include <algorithm>

#include "kora4api_constants.h"

namespace panel {

namespace {

constexpr int cQuestion = 100;
constexpr int cName = 101;

class NameDialog {
  public:
    NameDialog(const Strings& strings, const ButtonLook& look, UINT question,
               std::wstring proposal)
        : m_strings(strings),
          m_theme(look.theme),
          m_question(question),
          m_name(std::move(proposal)) {
        m_scale.Use(look.scale.Dpi());
    }

    std::optional<std::wstring> Ask(HWND owner) {
        // A dialog without controls: they are made when it is known how large their texts are.
        struct {
            DLGTEMPLATE head;
            WORD menu, windowClass, title;
        } resource{
            {WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, 0, 0, 0, 0, 0, 0}, 0, 0, 0};
        if (GetWindowLongPtrW(owner, GWL_EXSTYLE) & WS_EX_LAYOUTRTL)
            resource.head.dwExtendedStyle = WS_EX_LAYOUTRTL;
        const INT_PTR result =
            DialogBoxIndirectParamW(GetModuleHandleW(nullptr), &resource.head, owner, OnMessage,
                                    reinterpret_cast<LPARAM>(this));
        return result == IDOK ? std::optional(m_name) : std::nullopt;
    }

  private:
    static INT_PTR CALLBACK OnMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SetWindowLongPtrW(dialog, DWLP_USER, lParam);
            reinterpret_cast<NameDialog*>(lParam)->Make(dialog);
            return FALSE;
        }
        auto* const pDialog =
            reinterpret_cast<NameDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
        return pDialog ? pDialog->Handle(dialog, message, wParam) : FALSE;
    }

    INT_PTR Handle(HWND dialog, UINT message, WPARAM wParam) {
        const Palette& colors = m_theme.Colors();
        switch (message) {
            case WM_CTLCOLORDLG:
            case WM_CTLCOLORSTATIC:
            case WM_CTLCOLOREDIT: {
                const bool isField = message == WM_CTLCOLOREDIT;
                SetTextColor(reinterpret_cast<HDC>(wParam), colors.text);
                SetBkColor(reinterpret_cast<HDC>(wParam),
                           isField ? colors.field : colors.window);
                return reinterpret_cast<INT_PTR>(isField ? m_theme.FieldBrush()
                                                         : m_theme.WindowBrush());
            }
            case WM_COMMAND:
                break;
            default:
                return FALSE;
        }
        if (LOWORD(wParam) == cName && HIWORD(wParam) == EN_CHANGE)
            EnableWindow(GetDlgItem(dialog, IDOK), !Entered(dialog).empty());
        if (LOWORD(wParam) == IDOK && !Entered(dialog).empty()) {
            m_name = Entered(dialog);
            EndDialog(dialog, IDOK);
        }
        if (LOWORD(wParam) == IDCANCEL)
            EndDialog(dialog, IDCANCEL);
        return TRUE;
    }

    static std::wstring Entered(HWND dialog) {
        const HWND field = GetDlgItem(dialog, cName);
        std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(field)), L'\0');
        GetWindowTextW(field, text.data(), static_cast<int>(text.size()) + 1);
        const std::size_t begin = text.find_first_not_of(L' ');
        if (begin == std::wstring::npos)
            return {};
        return text.substr(begin, text.find_last_not_of(L' ') - begin + 1);
    }

    HWND Add(HWND dialog, const wchar_t* windowClass, const std::wstring& text, DWORD style,
             int id, const RECT& place) const {
        const DWORD edge = id == cName ? WS_EX_CLIENTEDGE : 0;
        const HWND control = CreateWindowExW(
            edge, windowClass, text.c_str(), WS_CHILD | WS_VISIBLE | style, place.left,
            place.top, place.right - place.left, place.bottom - place.top, dialog,
            reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
        SetWindowFont(control, m_scale.Font(), FALSE);
        m_theme.Dress(control);
        return control;
    }

    void Make(HWND dialog) {
        const Scale& scale = m_scale;
        const std::wstring question = m_strings.Text(m_question);
        const std::wstring buttons[] = {m_strings.Text(IDS_OK), m_strings.Text(IDS_CANCEL)};
        const int gap = scale(11);
        const int line = scale.LineHeight();
        const int width = std::max(scale(320), scale.WidthOf(question));
        int y = gap;
        Add(dialog, L"STATIC", question, SS_LEFT | SS_NOPREFIX, cQuestion,
            {gap, y, gap + width, y + line});
        y += line + scale(6);
        const HWND field = Add(dialog, L"EDIT", m_name, WS_TABSTOP | ES_AUTOHSCROLL, cName,
                               {gap, y, gap + width, y + line + scale(10)});
        SendMessageW(field, EM_LIMITTEXT, KORA4_CUSTOM_NAME_MAX_LENGTH, 0);
        y += line + scale(10) + gap;
        const int button = std::max({scale(75), scale.WidthOf(buttons[0]) + 2 * gap,
                                     scale.WidthOf(buttons[1]) + 2 * gap});
        const int height = line + scale(12);
        int x = gap + width - 2 * button - scale(7);
        for (int i = 0; i < 2; ++i, x += button + scale(7)) {
            const HWND made = Add(dialog, L"BUTTON", buttons[i],
                                  WS_TABSTOP | (i == 0 ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON),
                                  i == 0 ? IDOK : IDCANCEL, {x, y, x + button, y + height});
            LetPaintDark(made, m_look);
        }
        Place(dialog, 2 * gap + width, y + height + gap);
        SetWindowTextW(dialog, m_strings.Text(IDS_TITLE).c_str());
        m_theme.DressFrame(dialog);
        SendMessageW(field, EM_SETSEL, 0, -1);
        SetFocus(field);
    }

    // In the middle of its owner.
    void Place(HWND dialog, int width, int height) const {
        RECT frame{0, 0, width, height};
        AdjustWindowRectExForDpi(&frame, static_cast<DWORD>(GetWindowLongW(dialog, GWL_STYLE)),
                                 FALSE, static_cast<DWORD>(GetWindowLongW(dialog, GWL_EXSTYLE)),
                                 static_cast<UINT>(m_scale.Dpi()));
        RECT owner{};
        GetWindowRect(GetWindow(dialog, GW_OWNER), &owner);
        const int outerWidth = frame.right - frame.left;
        const int outerHeight = frame.bottom - frame.top;
        SetWindowPos(dialog, nullptr, (owner.left + owner.right - outerWidth) / 2,
                     (owner.top + owner.bottom - outerHeight) / 2, outerWidth, outerHeight,
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }

    const Strings& m_strings;
    const Theme& m_theme;
    // Of its own: the window's font changes with the settings and with the monitor.
    Scale m_scale;
    const ButtonLook m_look{m_theme, m_scale};
    const UINT m_question;
    std::wstring m_name;
};

}  // namespace

std::optional<std::wstring> AskName(HWND owner, const Strings& strings, const ButtonLook& look,
                                    UINT question, const std::wstring& proposal) {
    return NameDialog(strings, look, question, proposal).Ask(owner);
}

}  // namespace panel
