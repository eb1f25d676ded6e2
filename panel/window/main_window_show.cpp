// SPDX-License-Identifier: MIT
// The session in the controls. Nothing is touched that shows the right thing already, so
// nothing flickers, and no control is moved that its user holds.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <iterator>

#include "panel/model/curve.h"
#include "panel/model/limits.h"
#include "panel/window/main_window.h"

namespace panel {

namespace {

std::wstring TextOf(HWND control) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)), L'\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextW(control, text.data(), static_cast<int>(text.size()) + 1)));
    return text;
}

int IdOf(int first, Technology technology) {
    return first + static_cast<int>(technology);
}

// Of a number that may be none.
WPARAM ListIndex(double number, std::size_t count) {
    return number >= 0 && number < static_cast<double>(count) ? static_cast<WPARAM>(number)
                                                              : static_cast<WPARAM>(-1);
}

bool IsOpen(HWND list) {
    return SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

void ChooseInList(HWND list, WPARAM index) {
    if (!IsOpen(list) && static_cast<WPARAM>(SendMessageW(list, CB_GETCURSEL, 0, 0)) != index)
        SendMessageW(list, CB_SETCURSEL, index, 0);
}

}  // namespace

void MainWindow::ShowText(int id, const std::wstring& text) const {
    if (TextOf(Control(id)) != text)
        SetWindowTextW(Control(id), text.c_str());
}

void MainWindow::ShowChecked(int id, bool isChecked) const {
    const WPARAM state = isChecked ? BST_CHECKED : BST_UNCHECKED;
    if (static_cast<WPARAM>(SendMessageW(Control(id), BM_GETCHECK, 0, 0)) != state)
        SendMessageW(Control(id), BM_SETCHECK, state, 0);
}

void MainWindow::Enable(int id, bool isEnabled) const {
    const HWND control = Control(id);
    if ((IsWindowEnabled(control) != FALSE) == isEnabled)
        return;
    // The keyboard must not stay at a control that takes none.
    if (!isEnabled && GetFocus() == control)
        SetFocus(Control(eMoreButton));
    EnableWindow(control, isEnabled);
}

void MainWindow::ShowAll() {
    const Settings shown = m_session.Shown();
    ShowProfiles(shown);
    ShowChecked(eEnableBox, shown.isEnabled);
    for (const Technology technology : cTechnologies)
        ShowTechnology(shown, technology);
    ShowEqualizer(shown);
    ShowBanner();
    ShowEnabled(shown);
    ShowText(eCompareButton, m_strings.Text(m_past.isB ? IDS_COMPARE_B : IDS_COMPARE_A));
    ShowStatus();
    const bool wantsLevels = SendMessageW(Control(eLevelBox), BM_GETCHECK, 0, 0) == BST_CHECKED;
    m_levelView.Show(wantsLevels && IsConnected() ? m_levels : std::nullopt);
}

void MainWindow::ShowProfiles(const Settings& shown) {
    const HWND list = Control(eProfileList);
    const bool isOther = !m_listedProfiles || m_listedProfiles->names != shown.names ||
                         m_listedProfiles->profile != shown.profile;
    if (isOther && !IsOpen(list)) {
        m_listedProfiles = shown;
        std::vector<long> profiles;
        for (long profile = 0; profile < KORA4_PROFILE_TABLE_ENTRIES; ++profile)
            if (IsPreset(profile) || profile == shown.profile ||
                shown.names[static_cast<std::size_t>(profile)])
                profiles.push_back(profile);
        for (long i = 0; i < KORA4_PRESET_PROFILES; ++i)
            profiles.push_back(KORA4_PROFILE_DEMO_MOVIE + i);
        if (std::find(profiles.begin(), profiles.end(), shown.profile) == profiles.end())
            profiles.push_back(shown.profile);
        SendMessageW(list, WM_SETREDRAW, FALSE, 0);
        SendMessageW(list, CB_RESETCONTENT, 0, 0);
        for (const long profile : profiles) {
            const LRESULT index =
                SendMessageW(list, CB_ADDSTRING, 0,
                             reinterpret_cast<LPARAM>(ProfileName(shown, profile).c_str()));
            SendMessageW(list, CB_SETITEMDATA, static_cast<WPARAM>(index), profile);
        }
        SendMessageW(list, WM_SETREDRAW, TRUE, 0);
        InvalidateRect(list, nullptr, TRUE);
    }
    const LRESULT count = SendMessageW(list, CB_GETCOUNT, 0, 0);
    for (WPARAM i = 0; i < static_cast<WPARAM>(count); ++i)
        if (SendMessageW(list, CB_GETITEMDATA, i, 0) == shown.profile)
            ChooseInList(list, IsConnected() ? i : static_cast<WPARAM>(-1));
}

void MainWindow::ShowTechnology(const Settings& shown, Technology technology) {
    const std::size_t index = IndexOf(technology);
    ShowChecked(IdOf(eSwitchBox, technology), shown.switches[index]);
    if (technology == Technology::eGraphicEq)
        return;
    const double value = shown.values[index];
    std::wstring text = m_strings.Number(FormatValue(technology, value));
    if (technology == Technology::eIntelligentEq) {
        const WPARAM curve = ListIndex(IsConnected() ? value : -1, KORA4_INTELLIGENT_EQ_CURVES);
        ChooseInList(Control(eCurveList), curve);
        // The list says it.
        text = curve == static_cast<WPARAM>(-1) ? m_strings.Format(IDS_NO_CURVE, text) : L"";
    } else {
        const HWND slider = Control(IdOf(eSlider, technology));
        const int position = SliderPosition(technology, value);
        const bool isHeld = m_heldSlider == IdOf(eSlider, technology);
        if (!isHeld && SendMessageW(slider, TBM_GETPOS, 0, 0) != position)
            SendMessageW(slider, TBM_SETPOS, TRUE, position);
    }
    if (IsConnected() && !IsInside(technology, value))
        text = m_strings.Format(IDS_OUTSIDE, text);
    const bool isWanted =
        m_session.Wants(Subject::eValue, index) || m_session.Wants(Subject::eSwitch, index);
    if (m_isWaiting && isWanted)
        text = m_strings.Format(IDS_WAITING_MARK, text);
    ShowText(IdOf(eValueText, technology), IsConnected() ? text : L"");
}

void MainWindow::ShowEqualizer(const Settings& shown) {
    m_equalizer.Show(shown.bands,
                     shown.isEnabled && shown.switches[IndexOf(Technology::eGraphicEq)]);
    ShowBands(shown);
    ShowGain();
}

void MainWindow::ShowBands(const Settings& shown) {
    const HWND list = Control(eBandList);
    if ((m_listedBands && AreSameBands(*m_listedBands, shown.bands)) || IsOpen(list))
        return;
    m_listedBands = shown.bands;
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const kora4::Band& band : shown.bands)
        SendMessageW(
            list, CB_ADDSTRING, 0,
            reinterpret_cast<LPARAM>(
                (m_strings.Number(kora4::FormatDecimal(band.frequency)) + L" Hz").c_str()));
}

void MainWindow::ShowGain() {
    const Settings shown = m_session.Shown();
    const std::size_t selected = m_equalizer.Selected();
    ChooseInList(Control(eBandList),
                 ListIndex(static_cast<double>(selected), shown.bands.size()));
    const kora4::Band band =
        selected < shown.bands.size() ? shown.bands[selected] : kora4::Band{};
    const HWND field = Control(eGainField);
    // What is being typed stays, as long as it is about the same thing.
    if (GetFocus() == field && SendMessageW(field, EM_GETMODIFY, 0, 0) &&
        m_gainProfile == shown.profile && IsSameBand(m_gainBand, band))
        return;
    m_gainProfile = shown.profile;
    m_gainBand = band;
    SendMessageW(field, EM_SETMODIFY, FALSE, 0);
    ShowText(eGainField, selected < shown.bands.size()
                             ? m_strings.Number(FormatGain(static_cast<double>(band.gain)))
                             : std::wstring());
}

void MainWindow::ShowEnabled(const Settings& shown) {
    const bool isConnected = IsConnected();
    const bool canSet = isConnected && !IsDemo(shown.profile);
    const bool hasBands = canSet && !shown.bands.empty();
    const std::pair<int, bool> states[] = {
        {eEnableBox, isConnected},
        {eProfileLabel, isConnected},
        {eProfileList, isConnected},
        {eNewButton, canSet},
        {eRenameButton, canSet && IsCustom(shown.profile)},
        {eDeleteButton, canSet && IsCustom(shown.profile)},
        {eRevertButton, canSet && IsPreset(shown.profile)},
        {eCurveList, canSet},
        {eBandLabel, hasBands},
        {eBandList, hasBands},
        {eGainLabel, hasBands},
        {eGainField, hasBands},
        {eGainUnit, hasBands},
        // Without bands it says so.
        {eEqualizer, canSet},
        {eFlatButton, hasBands},
        {eImportButton, canSet},
        {eExportButton, isConnected && !shown.bands.empty()},
        {eLevelBox, isConnected},
        {eLevels, isConnected},
        {eUndoOwnButton, canSet && (m_past.hasOwn || m_session.HasWishes())},
        {eUndoForeignButton, canSet && m_past.hasForeign},
        {eCompareButton, canSet}};
    for (const auto& [id, isEnabled] : states)
        Enable(id, isEnabled);
    // A disabled slider is in nobody's hand; it may not say so.
    if (!canSet)
        m_heldSlider = 0;
    // While there was no connection, nothing could take the keyboard.
    if (isConnected && GetFocus() == m_window)
        SetFocus(Control(eEnableBox));
    for (const Technology technology : cTechnologies) {
        Enable(IdOf(eSwitchBox, technology), canSet);
        if (technology != Technology::eGraphicEq && technology != Technology::eIntelligentEq)
            Enable(IdOf(eSlider, technology), canSet);
    }
}

// ---- Texts ------------------------------------------------------------------------------

std::wstring MainWindow::ProfileName(const Settings& settings, long profile) const {
    if (IsPreset(profile))
        return m_strings.Text(IDS_PRESET + static_cast<UINT>(profile));
    if (IsDemo(profile))
        return m_strings.Text(IDS_DEMO + static_cast<UINT>(profile - KORA4_PROFILE_DEMO_MOVIE));
    if (!IsCustom(profile))
        return m_strings.Format(IDS_OTHER_PROFILE, std::to_wstring(profile));
    const auto& name = settings.names[static_cast<std::size_t>(profile)];
    if (name && !name->empty())
        return *name;
    return m_strings.Format(IDS_CUSTOM,
                            std::to_wstring(profile - KORA4_PROFILE_FIRST_CUSTOM + 1));
}

std::wstring MainWindow::BannerText() const {
    constexpr HRESULT cNoLibrary[] = {CO_E_DLLNOTFOUND, CO_E_ERRORINDLL};
    if (!m_connection)
        return m_isWaiting ? m_strings.Text(IDS_BANNER_CONNECTING) : std::wstring();
    if (!IsConnected()) {
        const HRESULT code = m_connection->code;
        if (code == REGDB_E_CLASSNOTREG)
            return m_strings.Text(IDS_BANNER_NOT_REGISTERED);
        if (code == E_FAIL || code == HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED) ||
            code == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))
            return m_strings.Text(IDS_BANNER_NO_STORE);
        const bool isMissing = std::find(std::begin(cNoLibrary), std::end(cNoLibrary), code) !=
                                   std::end(cNoLibrary) ||
                               HRESULT_FACILITY(code) == FACILITY_WIN32;
        return m_strings.Format(IDS_BANNER_LIBRARY, isMissing
                                                        ? m_strings.Text(IDS_CODE_NO_LIBRARY)
                                                        : CodeText(code));
    }
    const Settings& stored = m_session.Stored();
    std::wstring text;
    if (IsDemo(stored.profile))
        text = m_strings.Format(IDS_BANNER_DEMO, ProfileName(stored, stored.profile));
    if (!m_refused.empty())
        text += (text.empty() ? L"" : L" ") + m_strings.Text(IDS_BANNER_READ_ONLY);
    return text;
}

void MainWindow::ShowBanner() {
    const std::wstring text = BannerText();
    // The way out of a demo is always there.
    const bool isDemo =
        IsConnected() && (IsDemo(m_session.Stored().profile) || m_refused.empty());
    ShowText(eBannerButton, m_strings.Text(isDemo ? IDS_LEAVE_DEMO : IDS_TRY_AGAIN));
    const bool isOther = TextOf(Control(eBannerText)) != text;
    ShowText(eBannerText, text);
    if (!isOther)
        return;
    const int show = text.empty() ? SW_HIDE : SW_SHOW;
    if (show == SW_HIDE && GetFocus() == Control(eBannerButton))
        SetFocus(Control(eProfileList));
    ShowWindow(Control(eBannerText), show);
    ShowWindow(Control(eBannerButton), show);
    Arrange();
}

void MainWindow::ShowStatus() {
    std::wstring text = m_status;
    if (m_isWaiting && IsConnected())
        text = m_pending ? m_strings.Format(IDS_WAITING_WITH, ActionText(*m_pending))
                         : m_strings.Text(IDS_WAITING);
    ShowText(eStatusText, text);
}

std::wstring MainWindow::CodeText(HRESULT code) const {
    struct Known {
        HRESULT code;
        UINT text;
    };
    static const Known cKnown[] = {
        {KORA4_S_DEMO_MODE_ACTIVE, IDS_CODE_DEMO},
        {KORA4_S_NOT_IN_DEMO_PROFILE, IDS_CODE_NOT_IN_DEMO},
        {KORA4_S_NO_SUCH_CUSTOM_PROFILE, IDS_CODE_NO_SUCH},
        {KORA4_S_NOT_A_PRESET_PROFILE, IDS_CODE_NOT_PRESET},
        {S_FALSE, IDS_CODE_ABSENT},
        {E_FAIL, IDS_CODE_FAIL},
        {E_INVALIDARG, IDS_CODE_INVALID},
        {E_ACCESSDENIED, IDS_CODE_DENIED},
        {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), IDS_CODE_NO_FILE},
        {HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), IDS_CODE_NO_FILE},
        {cOtherPlace, IDS_CODE_OTHER_PLACE},
        {cNoFreeProfile, IDS_NO_FREE_PROFILE},
        {cUndoNothing, IDS_UNDO_NOTHING},
        {cUndoOvertaken, IDS_UNDO_OVERTAKEN},
        {cUndoImpossible, IDS_UNDO_IMPOSSIBLE},
        {cCompareNew, IDS_COMPARE_NEW},
        {cCompareLost, IDS_COMPARE_LOST},
        {cNoText, IDS_CODE_NO_TEXT},
        {cTooLong, IDS_CODE_TOO_LONG},
    };
    for (const Known& known : cKnown)
        if (known.code == code)
            return m_strings.Text(known.text);
    // In English, or in the platform's language.
    return m_strings.Format(IDS_CODE_OTHER, Widen(kora4::Status(code).Text()));
}

std::wstring MainWindow::SubjectName(const Item& item) const {
    switch (item.subject) {
        case Subject::eProfile:
            return ProfileName(m_session.Stored(), static_cast<long>(item.number));
        case Subject::eEnable:
            return m_strings.Plain(IDS_ENABLE);
        case Subject::eSwitch:
        case Subject::eValue:
            return m_strings.Plain(IDS_VOLUME_LEVELER + static_cast<UINT>(item.index));
        case Subject::eBands:
        case Subject::eBand:
            return m_strings.Plain(IDS_GRAPHIC_EQ);
        case Subject::eName:
            return m_strings.Plain(IDS_PROFILE);
    }
    return {};
}

std::wstring MainWindow::ActionText(const Command& command) const {
    // By action.
    constexpr UINT cDid[] = {
        IDS_DID_SET,    IDS_DID_UNDO,   IDS_DID_COMPARE,    IDS_DID_CREATE, IDS_DID_RENAME,
        IDS_DID_DELETE, IDS_DID_REVERT, IDS_DID_LEAVE_DEMO, IDS_DID_IMPORT, IDS_DID_EXPORT};
    const auto action = static_cast<std::size_t>(command.action);
    if (command.action == Action::eSet && !command.items.empty())
        return SubjectName(command.items.front());
    return action < std::size(cDid) ? m_strings.Format(cDid[action], command.text)
                                    : std::wstring();
}

std::wstring MainWindow::AnswerText(const Answer& answer) const {
    const std::wstring did = ActionText(answer);
    if (answer.code == S_OK)
        return m_strings.Format(IDS_DONE, did);
    if (!answer.detail.empty())
        return m_strings.Format(IDS_NOT_DONE, did,
                                m_strings.Format(IDS_FILE_LINE, Widen(answer.detail)));
    return m_strings.Format(IDS_NOT_DONE, did, CodeText(answer.code));
}

}  // namespace panel
