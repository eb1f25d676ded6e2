// SPDX-License-Identifier: MIT
// Life of the window, and its messages.
#include "panel/window/main_window.h"

#include <commctrl.h>

#include <utility>

#include "panel/model/limits.h"

namespace panel {

namespace {

// Milliseconds after which work that is not done is shown as waiting.
constexpr UINT cPatience = 100;
constexpr UINT_PTR cPatienceTimer = 1;
constexpr DWORD cStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;

const ACCEL cAccelerators[] = {
    {FVIRTKEY | FCONTROL, 'Z', eUndoOwnButton},
    {FVIRTKEY | FCONTROL | FSHIFT, 'Z', eUndoForeignButton},
    {FVIRTKEY, VK_F9, eCompareButton},
    {FVIRTKEY, VK_F2, eRenameButton},
    {FVIRTKEY | FCONTROL, 'N', eNewButton},
    {FVIRTKEY | FCONTROL, 'O', eImportButton},
    {FVIRTKEY | FCONTROL, 'S', eExportButton},
};

// Of a key that is held.
bool IsRepeat(const MSG& message) {
    switch (message.message) {
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN:
        case WM_CHAR:
        case WM_SYSCHAR:
            return (HIWORD(message.lParam) & KF_REPEAT) != 0;
        default:
            return false;
    }
}

}  // namespace

MainWindow::MainWindow(const PanelOptions& options)
    : m_strings(options.language), m_isRightToLeft(options.isRightToLeft) {
    const DWORD remembered = m_memory.Number(L"Colors", 0);
    m_theme.Choose(options.colors.value_or(remembered <= static_cast<DWORD>(ColorChoice::eDark)
                                               ? static_cast<ColorChoice>(remembered)
                                               : ColorChoice::eSystem));
    m_equalizer.onSelect = [this] { ShowGain(); };
    m_equalizer.onMove = [this](std::size_t band, double gain, bool isDrag) {
        MoveBand(band, gain, isDrag);
    };
    m_equalizer.onRelease = [this] {
        ++m_gesture;
        ShowAll();
    };
    Create();
}

MainWindow::~MainWindow() {
    m_worker.reset();
    DestroyIcon(m_icon);
}

void MainWindow::Create() {
    m_trayMade = RegisterWindowMessageW(L"TaskbarCreated");
    m_icon = DrawIcon(GetSystemMetrics(SM_CXICON));
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = OnMessage;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hIcon = m_icon;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = cPanelClass;
    RegisterClassW(&windowClass);
    const RECT place = m_memory.Place([this](int dpi) { return Least(dpi); },
                                      [this](int dpi) {
                                          constexpr SIZE cUsual{920, 540};
                                          m_scale.Use(dpi);
                                          return SIZE{m_scale(cUsual.cx), m_scale(cUsual.cy)};
                                      });
    CreateWindowExW(WS_EX_CONTROLPARENT | (m_isRightToLeft ? WS_EX_LAYOUTRTL : 0u), cPanelClass,
                    m_strings.Text(IDS_TITLE).c_str(), cStyle, place.left, place.top,
                    place.right - place.left, place.bottom - place.top, nullptr, nullptr,
                    windowClass.hInstance, this);
}

int MainWindow::Run(int show) {
    if (!m_window)
        return 1;
    ShowWindow(m_window, show);
    const HACCEL accelerators =
        CreateAcceleratorTableW(const_cast<ACCEL*>(cAccelerators), std::size(cAccelerators));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        // A field takes back its own typing.
        const HWND field = Control(eGainField);
        const bool isTyping = GetFocus() == field && SendMessageW(field, EM_GETMODIFY, 0, 0);
        m_isKeyHeld = IsRepeat(message);
        if (!(isTyping && message.wParam == 'Z') &&
            TranslateAcceleratorW(m_window, accelerators, &message))
            continue;
        if (IsDialogMessageW(m_window, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    DestroyAcceleratorTable(accelerators);
    return 0;
}

LRESULT CALLBACK MainWindow::OnMessage(HWND window, UINT message, WPARAM wParam,
                                       LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* const pThis =
            static_cast<MainWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        pThis->m_window = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(pThis));
    }
    auto* const pThis = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return pThis ? pThis->Handle(message, wParam, lParam)
                 : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT MainWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case cReportMessage:
            OnReport(std::unique_ptr<Report>(reinterpret_cast<Report*>(lParam)));
            return 0;
        case cBusyMessage:
            OnBusy(wParam != 0);
            return 0;
        case cTrayMessage:
            OnTray(LOWORD(lParam));
            return 0;
        case WM_TIMER:
            KillTimer(m_window, cPatienceTimer);
            // One that was on its way when the work was done.
            if (m_isBusy && !std::exchange(m_isWaiting, true))
                ShowAll();
            return 0;
        case WM_COMMAND:
            OnCommand(LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_HSCROLL:
            OnScroll(reinterpret_cast<HWND>(lParam), LOWORD(wParam));
            return 0;
        case WM_NEXTDLGCTL:
            // Alt with the letter of a label: the control behind it, as in a dialog.
            SetFocus(LOWORD(lParam) != 0
                         ? reinterpret_cast<HWND>(wParam)
                         : GetNextDlgTabItem(m_window, GetFocus(), wParam != 0));
            return 0;
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN:
            return OnColor(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam),
                           false);
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
            return OnColor(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam), true);
        default:
            break;
    }
    if (message == m_trayMade && m_tray.IsWanted())
        ShowTray();
    if (const auto answer = HandleFrame(message, wParam, lParam))
        return *answer;
    return DefWindowProcW(m_window, message, wParam, lParam);
}

// What concerns the window as a whole.
std::optional<LRESULT> MainWindow::HandleFrame(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            m_scale.Use(static_cast<int>(GetDpiForWindow(m_window)));
            MakeControls();
            m_worker = std::make_unique<Worker>(m_window);
            if (m_memory.Number(L"Tray", 0) != 0)
                ShowTray();
            ShowAll();
            return 0;
        case WM_ERASEBKGND: {
            RECT client{};
            GetClientRect(m_window, &client);
            FillRect(reinterpret_cast<HDC>(wParam), &client, m_theme.WindowBrush());
            return 1;
        }
        case WM_ACTIVATE:
            // Answered by the platform, which gives the window the keyboard.
            if (LOWORD(wParam) == WA_INACTIVE)
                KeepFocus();
            return std::nullopt;
        case WM_ENABLE:
            // A dialog disables the window before it is active itself.
            if (wParam == FALSE)
                KeepFocus();
            return std::nullopt;
        case WM_SETFOCUS:
            TakeFocus();
            return 0;
        case WM_CLOSE:
            m_memory.SavePlace(m_window);
            if (m_tray.IsShown())
                ShowWindow(m_window, SW_HIDE);
            else
                DestroyWindow(m_window);
            return 0;
        case WM_QUERYENDSESSION:
            m_memory.SavePlace(m_window);
            return TRUE;
        case WM_DESTROY:
            m_tray.Remove();
            // What is in the field counts as when it is left.
            CommitGain();
            m_worker.reset();
            PostQuitMessage(0);
            return 0;
        default:
            return HandlePlace(message, wParam, lParam);
    }
}

// What changes its size, its resolution or its colours.
std::optional<LRESULT> MainWindow::HandlePlace(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SIZE:
            Arrange();
            UpdateLevels();
            return 0;
        case WM_WINDOWPOSCHANGED:
            // Hidden and shown; the platform's handling sends WM_SIZE.
            UpdateLevels();
            return std::nullopt;
        case WM_GETMINMAXINFO: {
            const SIZE least = Least(m_scale.Dpi());
            reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {least.cx, least.cy};
            return 0;
        }
        case WM_DPICHANGED: {
            m_scale.Use(LOWORD(wParam));
            UseFont();
            const RECT& place = *reinterpret_cast<const RECT*>(lParam);
            SetWindowPos(m_window, nullptr, place.left, place.top, place.right - place.left,
                         place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
            Arrange();
            return 0;
        }
        case WM_SETTINGCHANGE:
        case WM_SYSCOLORCHANGE:
        case WM_THEMECHANGED:
            m_scale.Use(m_scale.Dpi());
            UseFont();
            m_theme.Choose(m_theme.Choice());
            UseColors();
            KeepLeast();
            Arrange();
            return std::nullopt;
        case WM_EXITSIZEMOVE:
            m_memory.SavePlace(m_window);
            return 0;
        default:
            return std::nullopt;
    }
}

// Larger texts may need more than there is: the platform asks for the least size when one is
// set.
void MainWindow::KeepLeast() const {
    RECT place{};
    GetWindowRect(m_window, &place);
    if (!IsIconic(m_window))
        SetWindowPos(m_window, nullptr, 0, 0, place.right - place.left,
                     place.bottom - place.top, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

namespace {

// Whether the store does not take changes; not, whether there was something else in the way.
bool IsRefusal(const Report& report) {
    const Answer& answer = *report.answer;
    switch (answer.action) {
        case Action::eSet:
        case Action::eUndo:
        case Action::eCompare:
            return FAILED(answer.code) && answer.code != E_INVALIDARG;
        case Action::eRename:
            // Somebody has deleted it.
            return answer.code == E_FAIL && report.settings &&
                   report.settings->names[static_cast<std::size_t>(answer.profile)];
        case Action::eCreate:
        case Action::eDelete:
        case Action::eRevert:
        case Action::eLeaveDemo:
        case Action::eImport:
            // Files fail with codes of their own.
            return answer.code == E_FAIL;
        case Action::eExport:
        case Action::eTryAgain:
            break;
    }
    return false;
}

}  // namespace

LRESULT MainWindow::OnColor(HDC dc, HWND control, bool isField) const {
    const Palette& colors = m_theme.Colors();
    const int id = GetDlgCtrlID(control);
    COLORREF text = colors.text;
    const auto technology = static_cast<std::size_t>(id - eValueText);
    if (technology < KORA4_TECHNOLOGIES) {
        const double value = m_session.Shown().values[technology];
        if (!IsInside(static_cast<Technology>(technology), value))
            text = colors.warning;
    } else if (id == eBannerText) {
        text = colors.warning;
    }
    SetTextColor(dc, text);
    SetBkColor(dc, isField ? colors.field : colors.window);
    return reinterpret_cast<LRESULT>(isField ? m_theme.FieldBrush() : m_theme.WindowBrush());
}

void MainWindow::OnReport(std::unique_ptr<Report> pReport) {
    if (pReport->levels) {
        m_levels = pReport->levels;
        if (m_worker && SendMessageW(Control(eLevelBox), BM_GETCHECK, 0, 0) == BST_CHECKED)
            m_levelView.Show(m_levels);
        return;
    }
    if (pReport->answer) {
        const Answer& answer = *pReport->answer;
        m_session.Answered(answer.number);
        if (m_pending && m_pending->number <= answer.number)
            m_pending.reset();
        NoteRefusal(answer, IsRefusal(*pReport));
        m_status = AnswerText(answer);
    }
    if (pReport->connection) {
        m_connection = pReport->connection;
        m_levels.reset();
        m_refused.clear();
        m_session.Disconnected();
        m_status = IsConnected() ? m_strings.Text(IDS_READY) : std::wstring();
    }
    if (pReport->settings) {
        m_session.Became(*pReport->settings);
        m_past = pReport->past;
        if (!pReport->connection && !pReport->answer)
            m_status = m_strings.Text(IDS_FOREIGN);
    }
    ShowAll();
}

void MainWindow::NoteRefusal(const Command& command, bool isRefused) {
    std::erase_if(m_refused, [&](const Command& refused) { return Covers(command, refused); });
    if (isRefused)
        m_refused.push_back(command);
}

// Whatever the worker begins has its own time.
void MainWindow::OnBusy(bool isBusy) {
    m_isBusy = isBusy;
    if (isBusy)
        SetTimer(m_window, cPatienceTimer, cPatience, nullptr);
    else
        KillTimer(m_window, cPatienceTimer);
    if (std::exchange(m_isWaiting, false))
        ShowAll();
}

void MainWindow::OnTray(UINT message) {
    if (message == WM_LBUTTONUP)
        Activate();
    if (message != WM_RBUTTONUP && message != WM_CONTEXTMENU)
        return;
    const HMENU menu = CreatePopupMenu();
    const LRESULT count = SendMessageW(Control(eProfileList), CB_GETCOUNT, 0, 0);
    const Settings shown = m_session.Shown();
    constexpr UINT cFirst = 1;
    for (WPARAM i = 0; IsConnected() && i < static_cast<WPARAM>(count); ++i) {
        const auto profile =
            static_cast<long>(SendMessageW(Control(eProfileList), CB_GETITEMDATA, i, 0));
        if (!IsDemo(profile))
            AppendMenuW(menu, profile == shown.profile ? MF_CHECKED : 0,
                        cFirst + static_cast<UINT>(profile),
                        Strings::Marked(ProfileName(shown, profile)).c_str());
    }
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, 0, IDS_MENU_OPEN, m_strings.Text(IDS_MENU_OPEN).c_str());
    AppendMenuW(menu, 0, IDS_MENU_EXIT, m_strings.Text(IDS_MENU_EXIT).c_str());
    POINT point{};
    GetCursorPos(&point);
    // Without being in front, a menu would not close when another window is clicked.
    SetForegroundWindow(m_window);
    const UINT chosen = static_cast<UINT>(TrackPopupMenu(
        menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, point.x, point.y, 0, m_window, nullptr));
    DestroyMenu(menu);
    if (chosen == IDS_MENU_OPEN) {
        Activate();
    } else if (chosen == IDS_MENU_EXIT) {
        DestroyWindow(m_window);
    } else if (chosen >= cFirst) {
        ChooseProfile(static_cast<long>(chosen - cFirst));
    }
}

// What has the keyboard, for when the window is active again.
void MainWindow::KeepFocus() {
    if (const HWND focus = GetFocus(); IsChild(m_window, focus))
        m_lastFocus = focus;
}

void MainWindow::TakeFocus() {
    const bool canTake = IsChild(m_window, m_lastFocus) && IsWindowVisible(m_lastFocus) &&
                         IsWindowEnabled(m_lastFocus);
    SetFocus(canTake ? m_lastFocus : Control(eEnableBox));
}

void MainWindow::ShowTray() {
    m_tray.Show(m_window, m_strings.Text(IDS_TITLE));
    // A window that was closed to an icon which is not there could not be found again.
    if (!m_tray.IsShown() && m_worker && !IsWindowVisible(m_window))
        Activate();
}

void MainWindow::Activate() {
    ShowWindow(m_window, IsIconic(m_window) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(m_window);
}

HWND MainWindow::Control(int id) const {
    const auto index = static_cast<std::size_t>(id - eEnableBox);
    if (index >= m_controls.size())
        return nullptr;
    if (!m_controls[index])
        m_controls[index] = GetDlgItem(m_window, id);
    return m_controls[index];
}

void MainWindow::UpdateLevels() {
    if (!m_worker)
        return;
    const bool isWanted = SendMessageW(Control(eLevelBox), BM_GETCHECK, 0, 0) == BST_CHECKED;
    m_worker->ShowLevels(isWanted && IsWindowVisible(m_window) && !IsIconic(m_window));
}

}  // namespace panel
