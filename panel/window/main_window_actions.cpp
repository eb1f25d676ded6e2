// SPDX-License-Identifier: MIT
// What the user does, as commands for the worker.
#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <utility>

#include "panel/model/curve.h"
#include "panel/model/limits.h"
#include "panel/window/main_window.h"
#include "panel/window/name_dialog.h"

namespace panel {

namespace {

bool IsIn(int id, int first) {
    return id >= first && id < first + KORA4_TECHNOLOGIES;
}

Item About(Subject subject, std::size_t index, double number) {
    Item item;
    item.subject = subject;
    item.index = index;
    item.number = number;
    return item;
}

}  // namespace

Command MainWindow::Make(Action action) const {
    Command command;
    command.action = action;
    command.profile = m_session.Shown().profile;
    command.fallback = m_session.LastPreset();
    return command;
}

void MainWindow::Say(std::wstring status) {
    m_status = std::move(status);
    ShowAll();
}

void MainWindow::Want(Items items, unsigned gesture) {
    Command command = Make(Action::eSet);
    for (const Item& item : items)
        m_session.Want(item, m_asked + 1);
    command.items = std::move(items);
    command.gesture = gesture;
    Ask(std::move(command));
    ShowAll();
}

void MainWindow::Ask(Command command) {
    command.number = ++m_asked;
    // The controls show the wishes, the status line the others.
    if (command.action != Action::eSet && command.action != Action::eTryAgain) {
        m_pending = command;
        ShowStatus();
    }
    // Not any more when the window is being destroyed.
    if (m_worker)
        m_worker->Ask(std::move(command));
}

void MainWindow::OnCommand(int id, int event) {
    if (id == IDOK)
        return OnEnter();
    if (id == IDCANCEL)
        return OnEscape();
    const bool isChecked = SendMessageW(Control(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
    if (IsIn(id, eSwitchBox))
        return Want(About(Subject::eSwitch, static_cast<std::size_t>(id - eSwitchBox),
                          isChecked ? 1 : 0));
    // A disabled button sends nothing, but its key does.
    if (event <= 1 && !IsWindowEnabled(Control(id)))
        return;
    switch (id) {
        case eEnableBox:
            return Want(About(Subject::eEnable, 0, isChecked ? 1 : 0));
        case eProfileList:
        case eCurveList:
        case eBandList:
            return OnList(id, event);
        case eGainField:
            if (event == EN_KILLFOCUS)
                CommitGain();
            return;
        case eLevelBox:
            m_memory.SetNumber(L"Levels", isChecked);
            UpdateLevels();
            return ShowAll();
        case eMoreButton:
            return ShowMoreMenu();
        case eBannerButton:
            // Once, however long the key is held: whether it helps shows only later.
            return m_isKeyHeld ? void() : PressBanner();
        default:
            return OnButton(id);
    }
}

void MainWindow::OnButton(int id) {
    // A key that is held asks again when it has its answer: else what it asks for would go on
    // long after it was let go.
    if (m_isKeyHeld && m_pending)
        return;
    switch (id) {
        case eNewButton:
            return NewProfile();
        case eRenameButton:
            return RenameProfile();
        case eDeleteButton:
            return DeleteProfile();
        case eRevertButton:
            return Ask(Make(Action::eRevert));
        case eFlatButton: {
            Settings flat = m_session.Shown();
            flat.bands = Flat(std::move(flat.bands));
            Items items;
            for (std::size_t band = 0; band < flat.bands.size(); ++band)
                items.push_back(Get(flat, Subject::eBand, band));
            return Want(std::move(items));
        }
        case eImportButton:
        case eExportButton:
            return TransferFile(id == eImportButton);
        case eUndoOwnButton:
            return UndoLast(Origin::eOwn);
        case eUndoForeignButton:
            return UndoLast(Origin::eForeign);
        case eCompareButton:
            return Ask(Make(Action::eCompare));
        default:
            return;
    }
}

// A list that is open is only being looked through: what counts is what is picked of it, and
// what the keys choose of a closed one.
void MainWindow::OnList(int id, int event) {
    const HWND list = Control(id);
    if (event == CBN_DROPDOWN || event == CBN_SELENDOK)
        m_isPicked = event == CBN_SELENDOK;
    if ((event != CBN_SELCHANGE && event != CBN_CLOSEUP) ||
        SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0))
        return;
    const LRESULT chosen = SendMessageW(list, CB_GETCURSEL, 0, 0);
    if (chosen >= 0 && (m_isPicked || event == CBN_SELCHANGE))
        ChooseOf(id, static_cast<std::size_t>(chosen), event == CBN_CLOSEUP);
    // What has changed while it was open.
    ShowAll();
}

void MainWindow::ChooseOf(int id, std::size_t chosen, bool isPicked) {
    const Settings shown = m_session.Shown();
    constexpr std::size_t cCurve = IndexOf(Technology::eIntelligentEq);
    if (id == eProfileList) {
        const auto profile = static_cast<long>(
            SendMessageW(Control(id), CB_GETITEMDATA, static_cast<WPARAM>(chosen), 0));
        // An arrow too many does not begin a demo, which disables nearly everything.
        if (IsDemo(profile) && !IsDemo(shown.profile) && !isPicked)
            m_status = m_strings.Text(IDS_DEMO_FROM_LIST);
        else
            ChooseProfile(profile);
    } else if (id == eBandList) {
        const auto isSame = [&](const kora4::Band& band) {
            return chosen < m_listedBands->size() && IsSameBand(band, (*m_listedBands)[chosen]);
        };
        const auto band = std::find_if(shown.bands.begin(), shown.bands.end(), isSame);
        m_equalizer.SelectBand(static_cast<std::size_t>(band - shown.bands.begin()));
    } else if (shown.values[cCurve] < static_cast<double>(chosen) ||
               shown.values[cCurve] > static_cast<double>(chosen)) {
        Want(About(Subject::eValue, cCurve, static_cast<double>(chosen)));
    }
}

void MainWindow::OnScroll(HWND slider, int event) {
    const int id = GetDlgCtrlID(slider);
    if (!IsIn(id, eSlider))
        return;
    if (event == TB_THUMBTRACK && std::exchange(m_heldSlider, id) != id)
        ++m_gesture;
    if (event == TB_ENDTRACK) {
        if (std::exchange(m_heldSlider, 0) == id)
            ShowAll();
        return;
    }
    const auto technology = static_cast<Technology>(id - eSlider);
    const int position = static_cast<int>(SendMessageW(slider, TBM_GETPOS, 0, 0));
    // A value that is not on the scale stays unless the slider moves, which it need not when it
    // is only touched.
    const double shown = m_session.Shown().values[IndexOf(technology)];
    if (position == SliderPosition(technology, shown))
        return;
    Want(About(Subject::eValue, IndexOf(technology), SliderValue(technology, position)),
         m_heldSlider == id ? m_gesture : 0);
}

void MainWindow::OnEnter() {
    const HWND focus = GetFocus();
    if (focus == Control(eGainField)) {
        CommitGain();
        SendMessageW(focus, EM_SETSEL, 0, -1);
    } else if (SendMessageW(focus, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON) {
        SendMessageW(focus, BM_CLICK, 0, 0);
    }
}

// What is typed is dropped.
void MainWindow::OnEscape() {
    const HWND field = Control(eGainField);
    if (GetFocus() != field)
        return;
    SendMessageW(field, EM_SETMODIFY, FALSE, 0);
    ShowGain();
    SendMessageW(field, EM_SETSEL, 0, -1);
}

// ---- Profiles ---------------------------------------------------------------------------

void MainWindow::ChooseProfile(long profile) {
    const long active = m_session.Shown().profile;
    if (profile == active)
        return;
    // From a demo, no other profile can be chosen before it is left.
    if (IsDemo(active) && !IsDemo(profile))
        Ask(Make(Action::eLeaveDemo));
    Want(About(Subject::eProfile, 0, static_cast<double>(profile)));
}

void MainWindow::NewProfile() {
    if (!FreeCustomProfile(m_session.Stored()))
        return Say(m_strings.Text(IDS_NO_FREE_PROFILE));
    const auto name =
        AskName(m_window, m_strings, m_look, IDS_ASK_NEW, m_strings.Text(IDS_NAME_PROPOSAL));
    if (!name)
        return;
    Command command = Make(Action::eCreate);
    command.text = *name;
    Ask(std::move(command));
}

void MainWindow::RenameProfile() {
    Command command = Make(Action::eRename);
    const auto name = AskName(m_window, m_strings, m_look, IDS_ASK_RENAME,
                              ProfileName(m_session.Stored(), command.profile));
    if (!name)
        return;
    command.text = *name;
    Ask(std::move(command));
}

void MainWindow::DeleteProfile() {
    Command command = Make(Action::eDelete);
    const Settings& stored = m_session.Stored();
    const std::wstring question =
        m_strings.Format(IDS_ASK_DELETE, ProfileName(stored, command.profile),
                         ProfileName(stored, command.fallback));
    if (MessageBoxW(m_window, question.c_str(), m_strings.Text(IDS_TITLE).c_str(),
                    MB_OKCANCEL | MB_ICONWARNING | MB_DEFBUTTON2) == IDOK)
        Ask(std::move(command));
}

// ---- The equalizer ----------------------------------------------------------------------

void MainWindow::CommitGain() {
    const HWND field = Control(eGainField);
    if (!SendMessageW(field, EM_GETMODIFY, 0, 0))
        return;
    wchar_t text[64];
    GetWindowTextW(field, text, std::size(text));
    const auto gain = ParseGain(Narrow(text));
    SendMessageW(field, EM_SETMODIFY, FALSE, 0);
    if (gain)
        MoveBand(m_equalizer.Selected(), *gain, false);
    else
        Say(m_strings.Text(IDS_BAD_GAIN));
}

void MainWindow::MoveBand(std::size_t band, double gain, bool isDrag) {
    const Settings shown = m_session.Shown();
    Settings moved = shown;
    moved.bands = WithGain(std::move(moved.bands), band, gain);
    if (moved.bands == shown.bands)
        return ShowAll();
    Want(Get(moved, Subject::eBand, band), isDrag ? m_gesture : 0);
}

void MainWindow::TransferFile(bool isImport) {
    std::wstring filter = m_strings.Text(IDS_FILE_FILTER);
    std::replace(filter.begin(), filter.end(), L'|', L'\0');
    const std::wstring title = m_strings.Plain(isImport ? UINT{IDS_IMPORT} : UINT{IDS_EXPORT});
    wchar_t path[MAX_PATH] = L"";
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = m_window;
    dialog.lpstrFilter = filter.c_str();
    dialog.lpstrFile = path;
    dialog.nMaxFile = std::size(path);
    dialog.lpstrTitle = title.c_str();
    dialog.lpstrDefExt = L"txt";
    dialog.Flags = OFN_NOCHANGEDIR | OFN_HIDEREADONLY |
                   (isImport ? OFN_FILEMUSTEXIST : OFN_OVERWRITEPROMPT);
    if (!(isImport ? GetOpenFileNameW(&dialog) : GetSaveFileNameW(&dialog)))
        return;
    Command command = Make(isImport ? Action::eImport : Action::eExport);
    command.text = path;
    Ask(std::move(command));
}

// ---- Undo, compare, demo ----------------------------------------------------------------

namespace {

// Whether a refused command, when it is done again, is what its user wanted.
bool MeansTheSame(const Command& refused, bool isLast) {
    switch (refused.action) {
        case Action::eUndo:       // the newest change may be another one by now
        case Action::eLeaveDemo:  // done anyway while there is a demo
            return false;
        case Action::eCompare:
            // What was wanted after it was meant for the state in use.
            return isLast;
        default:
            return true;
    }
}

}  // namespace

void MainWindow::UndoLast(Origin origin) {
    Command command = Make(Action::eUndo);
    command.origin = origin;
    Ask(std::move(command));
}

// Leaves the demo, and tries again what did not work.
void MainWindow::PressBanner() {
    const bool isDemo = IsConnected() && IsDemo(m_session.Stored().profile);
    // What is refused once more comes back with its answer.
    std::vector<Command> refused = std::exchange(m_refused, {});
    if (!refused.empty() || !isDemo)
        Ask(Make(Action::eTryAgain));
    if (isDemo)
        Ask(Make(Action::eLeaveDemo));
    for (Command& command : refused)
        if (MeansTheSame(command, &command == &refused.back()))
            Ask(std::move(command));
    ShowAll();
}

// ---- The menu ---------------------------------------------------------------------------

void MainWindow::ShowMoreMenu() {
    const HMENU menu = CreatePopupMenu();
    const auto add = [&](UINT id, bool isChecked) {
        AppendMenuW(menu, isChecked ? MF_CHECKED : 0, id, m_strings.Text(id).c_str());
    };
    add(IDS_MENU_TRAY, m_tray.IsWanted());
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    add(IDS_MENU_SYSTEM, m_theme.Choice() == ColorChoice::eSystem);
    add(IDS_MENU_LIGHT, m_theme.Choice() == ColorChoice::eLight);
    add(IDS_MENU_DARK, m_theme.Choice() == ColorChoice::eDark);
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    add(IDS_MENU_EXIT, false);
    RECT button{};
    GetWindowRect(Control(eMoreButton), &button);
    const UINT align = m_isRightToLeft ? TPM_LEFTALIGN : TPM_RIGHTALIGN;
    const int chosen = TrackPopupMenu(menu, TPM_RETURNCMD | TPM_BOTTOMALIGN | align,
                                      m_isRightToLeft ? button.left : button.right, button.top,
                                      0, m_window, nullptr);
    DestroyMenu(menu);
    OnMenu(chosen);
}

void MainWindow::OnMenu(int id) {
    switch (id) {
        case IDS_MENU_TRAY:
            if (m_tray.IsWanted())
                m_tray.Remove();
            else
                ShowTray();
            m_memory.SetNumber(L"Tray", m_tray.IsWanted());
            return m_tray.IsWanted() && !m_tray.IsShown() ? Say(m_strings.Text(IDS_NO_TRAY))
                                                          : void();
        case IDS_MENU_SYSTEM:
        case IDS_MENU_LIGHT:
        case IDS_MENU_DARK: {
            const auto choice = static_cast<ColorChoice>(id - IDS_MENU_SYSTEM);
            m_memory.SetNumber(L"Colors", static_cast<DWORD>(choice));
            m_theme.Choose(choice);
            return UseColors();
        }
        case IDS_MENU_EXIT:
            m_memory.SavePlace(m_window);
            DestroyWindow(m_window);
            return;
        default:
            return;
    }
}

}  // namespace panel
