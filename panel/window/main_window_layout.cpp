// SPDX-License-Identifier: MIT
// The controls, as large as their texts need at any resolution and in any language.
#include <windows.h>

#include <commctrl.h>
#include <windowsx.h>

#include <oleacc.h>

#include <algorithm>
#include <numeric>

#include "panel/model/limits.h"
#include "panel/window/main_window.h"

namespace panel {

namespace {

struct ControlKind {
    const wchar_t* windowClass;
    int id;
    UINT text;
    DWORD style;
};

constexpr wchar_t cButton[] = L"BUTTON";
constexpr wchar_t cStatic[] = L"STATIC";
constexpr wchar_t cCombo[] = L"COMBOBOX";
constexpr wchar_t cEdit[] = L"EDIT";
constexpr DWORD cBox = BS_AUTOCHECKBOX | WS_TABSTOP;
constexpr DWORD cPush = BS_PUSHBUTTON | WS_TABSTOP;
constexpr DWORD cLabel = SS_LEFT | SS_CENTERIMAGE;
constexpr DWORD cList = CBS_DROPDOWNLIST | WS_TABSTOP | WS_VSCROLL;

constexpr ControlKind cHead[] = {
    {cButton, eEnableBox, IDS_ENABLE, cBox},
    {cStatic, eProfileLabel, IDS_PROFILE, cLabel},
    {cCombo, eProfileList, 0, cList},
    {cButton, eNewButton, IDS_NEW, cPush},
    {cButton, eRenameButton, IDS_RENAME, cPush},
    {cButton, eDeleteButton, IDS_DELETE, cPush},
    {cButton, eRevertButton, IDS_REVERT, cPush},
    {cStatic, eBannerText, 0, SS_LEFT | SS_NOPREFIX},
    {cButton, eBannerButton, IDS_TRY_AGAIN, cPush},
};
constexpr ControlKind cEqualizerHead[] = {
    {cButton, eSwitchBox + static_cast<int>(Technology::eGraphicEq), IDS_GRAPHIC_EQ, cBox},
    {cStatic, eBandLabel, IDS_BAND, cLabel},
    {cCombo, eBandList, 0, cList},
    {cStatic, eGainLabel, IDS_GAIN, cLabel},
    {cEdit, eGainField, 0, ES_AUTOHSCROLL | WS_TABSTOP | WS_BORDER},
    {cStatic, eGainUnit, IDS_DB, cLabel},
};
constexpr ControlKind cFoot[] = {
    {cButton, eFlatButton, IDS_FLAT, cPush},
    {cButton, eImportButton, IDS_IMPORT, cPush},
    {cButton, eExportButton, IDS_EXPORT, cPush},
    {cStatic, eStatusText, 0, SS_LEFT | SS_NOPREFIX},
    {cButton, eUndoOwnButton, IDS_UNDO_OWN, cPush},
    {cButton, eUndoForeignButton, IDS_UNDO_FOREIGN, cPush},
    {cButton, eCompareButton, IDS_COMPARE_A, cPush},
    {cButton, eMoreButton, IDS_MORE, cPush},
};

// In the order of the window.
constexpr Technology cListed[] = {
    Technology::eVolumeLeveler, Technology::eIntelligentEq, Technology::eDialogEnhancer,
    Technology::eHeadphoneVirtualizer, Technology::eSpeakerVirtualizer};

// Lengths at 96 dpi.
constexpr int cMargin = 12;
constexpr int cGap = 8;
constexpr int cBoxSign = 22;     // the sign of a check box and what is between it and its text
constexpr int cButtonEdge = 24;  // both sides of a button's text
constexpr int cLeastButton = 60;
constexpr int cArrow = 30;  // of a list
constexpr int cLeastSlider = 120;
constexpr int cLeastStatus = 180;
constexpr int cLeastCurve = 110;
constexpr int cLeastLevels = 90;
constexpr int cDropHeight = 320;
constexpr int cStatusLines = 2;

// All is drawn at once when everything has its place.
constexpr UINT cPlacing = SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS | SWP_NOREDRAW;

UINT NameId(Technology technology) {
    return IDS_VOLUME_LEVELER + static_cast<UINT>(technology);
}

int IdOf(int first, Technology technology) {
    return first + static_cast<int>(technology);
}

bool IsOfClass(HWND control, const wchar_t* name) {
    wchar_t own[16];
    GetClassNameW(control, own, std::size(own));
    return lstrcmpiW(own, name) == 0;
}

}  // namespace

// ---- Making -----------------------------------------------------------------------------

void MainWindow::MakeControl(const wchar_t* windowClass, int id, UINT text, DWORD style) {
    const HWND control =
        CreateWindowExW(0, windowClass, text ? m_strings.Text(text).c_str() : L"",
                        WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, m_window,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    if (windowClass == cButton)
        LetPaintDark(control, m_look);
}

void MainWindow::MakeControls() {
    const auto make = [this](const auto& kinds) {
        for (const ControlKind& kind : kinds)
            MakeControl(kind.windowClass, kind.id, kind.text, kind.style);
    };
    make(cHead);
    for (const Technology technology : cListed) {
        MakeControl(cButton, IdOf(eSwitchBox, technology), NameId(technology), cBox);
        if (technology == Technology::eIntelligentEq) {
            MakeControl(cCombo, eCurveList, 0, cList);
            for (UINT curve = 0; curve < KORA4_INTELLIGENT_EQ_CURVES; ++curve)
                SendMessageW(
                    Control(eCurveList), CB_ADDSTRING, 0,
                    reinterpret_cast<LPARAM>(m_strings.Text(IDS_CURVE + curve).c_str()));
        } else {
            const int id = IdOf(eSlider, technology);
            MakeControl(TRACKBAR_CLASSW, id, 0, TBS_HORZ | TBS_NOTICKS | WS_TABSTOP);
            const int steps = SliderSteps(technology);
            SendMessageW(Control(id), TBM_SETRANGEMAX, FALSE, steps);
            SendMessageW(Control(id), TBM_SETPAGESIZE, 0, std::max(steps / 10, 1));
        }
        MakeControl(cStatic, IdOf(eValueText, technology), 0, cLabel);
    }
    MakeControl(cButton, eLevelBox, IDS_LEVELS, cBox);
    SendMessageW(Control(eLevelBox), BM_SETCHECK,
                 m_memory.Number(L"Levels", 1) != 0 ? BST_CHECKED : BST_UNCHECKED, 0);
    m_levelView.Create(m_window, eLevels);
    make(cEqualizerHead);
    m_equalizer.Create(m_window, eEqualizer);
    make(cFoot);
    ShowWindow(Control(eBannerText), SW_HIDE);
    ShowWindow(Control(eBannerButton), SW_HIDE);
    NameForReaders();
    UseFont();
    UseColors();
}

// A slider and the list of curves follow a check box, which gives them no name.
void MainWindow::NameForReaders() const {
    IAccPropServices* pServices = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IAccPropServices, reinterpret_cast<void**>(&pServices))))
        return;
    for (const Technology technology : cListed) {
        const int id =
            technology == Technology::eIntelligentEq ? eCurveList : IdOf(eSlider, technology);
        pServices->SetHwndPropStr(Control(id), static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                  PROPID_ACC_NAME, m_strings.Plain(NameId(technology)).c_str());
    }
    pServices->Release();
}

void MainWindow::UseFont() {
    EnumChildWindows(
        m_window,
        [](HWND control, LPARAM font) -> BOOL {
            SendMessageW(control, WM_SETFONT, static_cast<WPARAM>(font), FALSE);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(m_scale.Font()));
}

void MainWindow::UseColors() {
    EnumChildWindows(
        m_window,
        [](HWND control, LPARAM pTheme) -> BOOL {
            reinterpret_cast<const Theme*>(pTheme)->Dress(control);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&m_theme));
    m_theme.DressFrame(m_window);
    RedrawWindow(m_window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_FRAME);
}

// ---- Measuring --------------------------------------------------------------------------

int MainWindow::ButtonWidth(UINT text) const {
    return std::max(m_scale(cLeastButton),
                    m_scale.WidthOf(m_strings.Text(text)) + m_scale(cButtonEdge));
}

int MainWindow::BoxWidth(UINT text) const {
    return m_scale.WidthOf(m_strings.Text(text)) + m_scale(cBoxSign);
}

// Mirrored text begins a little farther in.
int MainWindow::LabelWidth(UINT text) const {
    constexpr int cSlack = 3;
    return m_scale.WidthOf(m_strings.Text(text)) + m_scale(cSlack);
}

int MainWindow::RowHeight() const {
    return m_scale.LineHeight() + m_scale(12);
}

MainWindow::Row MainWindow::HeadRow() const {
    constexpr int cLeastList = 150;
    return {{eEnableBox, BoxWidth(IDS_ENABLE)},       {0, m_scale(cMargin)},
            {eProfileLabel, LabelWidth(IDS_PROFILE)}, {eProfileList, m_scale(cLeastList), true},
            {eNewButton, ButtonWidth(IDS_NEW)},       {eRenameButton, ButtonWidth(IDS_RENAME)},
            {eDeleteButton, ButtonWidth(IDS_DELETE)}, {eRevertButton, ButtonWidth(IDS_REVERT)}};
}

MainWindow::Row MainWindow::TechnologyRow(Technology technology) const {
    int box = 0;
    for (const Technology listed : cListed)
        box = std::max(box, BoxWidth(NameId(listed)));
    const bool isList = technology == Technology::eIntelligentEq;
    const int value = m_scale.WidthOf(m_strings.Format(
        IDS_WAITING_MARK, m_strings.Format(IDS_OUTSIDE, std::wstring(cLongestValue, L'8'))));
    return {{IdOf(eSwitchBox, technology), box},
            {isList ? eCurveList : IdOf(eSlider, technology), m_scale(cLeastSlider), true},
            {IdOf(eValueText, technology), value}};
}

MainWindow::Row MainWindow::BandRow() const {
    constexpr int cGainField = 60;
    return {{IdOf(eSwitchBox, Technology::eGraphicEq), BoxWidth(IDS_GRAPHIC_EQ)},
            {0, 0, true},
            {eBandLabel, LabelWidth(IDS_BAND)},
            {eBandList, m_scale.WidthOf(L"20000 Hz") + m_scale(cArrow)},
            {eGainLabel, LabelWidth(IDS_GAIN)},
            {eGainField, m_scale(cGainField)},
            {eGainUnit, LabelWidth(IDS_DB)}};
}

MainWindow::Row MainWindow::CurveRow() const {
    return {{0, 0, true},
            {eFlatButton, ButtonWidth(IDS_FLAT)},
            {eImportButton, ButtonWidth(IDS_IMPORT)},
            {eExportButton, ButtonWidth(IDS_EXPORT)}};
}

MainWindow::Row MainWindow::FootRow() const {
    return {{eStatusText, m_scale(cLeastStatus), true},
            {eUndoOwnButton, ButtonWidth(IDS_UNDO_OWN)},
            {eUndoForeignButton, ButtonWidth(IDS_UNDO_FOREIGN)},
            {eCompareButton, std::max(ButtonWidth(IDS_COMPARE_A), ButtonWidth(IDS_COMPARE_B))},
            {eMoreButton, ButtonWidth(IDS_MORE)}};
}

int MainWindow::WidthOf(const Row& row) const {
    return std::accumulate(row.begin(), row.end(), m_scale(cGap) * (int(row.size()) - 1),
                           [](int sum, const Cell& cell) { return sum + cell.width; });
}

int MainWindow::LeftWidth() const {
    return WidthOf(TechnologyRow(Technology::eVolumeLeveler));
}

int MainWindow::BannerHeight(int width) const {
    const std::wstring text = BannerText();
    if (text.empty())
        return 0;
    return std::max(m_scale.HeightOf(text, width), RowHeight()) + m_scale(cGap);
}

SIZE MainWindow::Least(int dpi) {
    const bool isOther = dpi != m_scale.Dpi() || !m_scale.Font();
    const int before = m_scale.Dpi();
    if (isOther)
        m_scale.Use(dpi);
    const int margins = 2 * m_scale(cMargin);
    const int width =
        margins + std::max({WidthOf(HeadRow()), WidthOf(FootRow()),
                            LeftWidth() + 2 * m_scale(cMargin) + WidthOf(BandRow())});
    const int rows = static_cast<int>(std::size(cListed)) + 1;
    const int content = std::max(rows * (RowHeight() + m_scale(cGap)) + m_scale(cLeastLevels),
                                 2 * (RowHeight() + m_scale(cGap)) + m_scale(cLeastCurve));
    const int height = margins + 3 * RowHeight() + 4 * m_scale(cGap) + content +
                       cStatusLines * m_scale.LineHeight() - RowHeight() +
                       BannerHeight(width / 2);
    RECT frame{0, 0, width, height};
    AdjustWindowRectExForDpi(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0, static_cast<UINT>(dpi));
    if (isOther)
        m_scale.Use(m_window ? before : dpi);
    return {frame.right - frame.left, frame.bottom - frame.top};
}

// ---- Placing ----------------------------------------------------------------------------

// A control that is there already is left alone: moving it costs more than all measuring, and
// it would flicker.
void MainWindow::Place(HWND control, const RECT& place) const {
    const RECT now = PlaceOf(control);
    if (!EqualRect(&now, &place))
        SetWindowPos(control, nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top, cPlacing);
}

// In the middle of the height. The height that is set is that of what a list drops down; its
// own, it knows itself.
void MainWindow::PlaceList(HWND list, const RECT& place) const {
    const auto height = [&] {
        const RECT now = PlaceOf(list);
        return now.bottom - now.top;
    };
    const RECT now = PlaceOf(list);
    if (now.left == place.left && now.right == place.right &&
        now.top == place.top + (place.bottom - place.top - height()) / 2)
        return;
    SetWindowPos(list, nullptr, place.left, place.top, place.right - place.left,
                 m_scale(cDropHeight), cPlacing);
    SetWindowPos(list, nullptr, place.left,
                 place.top + (place.bottom - place.top - height()) / 2, 0, 0,
                 cPlacing | SWP_NOSIZE);
}

RECT MainWindow::PlaceOf(HWND control) const {
    RECT place{};
    GetWindowRect(control, &place);
    // Mirrored where the window is.
    MapWindowPoints(nullptr, m_window, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

void MainWindow::PlaceRow(const Row& row, int left, int right, int top, int height) {
    const int rest = std::max(right - left - WidthOf(row), 0);
    for (const Cell& cell : row) {
        const int width = cell.width + (cell.grows ? rest : 0);
        if (cell.id != 0) {
            const HWND control = Control(cell.id);
            const bool isList = IsOfClass(control, cCombo);
            const int own = m_scale.LineHeight() + m_scale(8);
            const bool isOneLine = isList || IsOfClass(control, cEdit);
            if (isList)
                PlaceList(control, {left, top, left + width, top + height});
            else if (isOneLine)
                Place(control, {left, top + (height - own) / 2, left + width,
                                top + (height - own) / 2 + own});
            else
                Place(control, {left, top, left + width, top + height});
        }
        left += width + m_scale(cGap);
    }
}

void MainWindow::Arrange() {
    if (!m_worker || IsIconic(m_window))
        return;
    RECT client{};
    GetClientRect(m_window, &client);
    const int margin = m_scale(cMargin);
    const int gap = m_scale(cGap);
    const int row = RowHeight();
    const int right = client.right - margin;
    int top = margin;
    PlaceRow(HeadRow(), margin, right, top, row);
    top += row + gap;

    const bool hasButton = GetWindowLongW(Control(eBannerButton), GWL_STYLE) & WS_VISIBLE;
    const int button =
        hasButton ? std::max(ButtonWidth(IDS_TRY_AGAIN), ButtonWidth(IDS_LEAVE_DEMO)) : 0;
    const int banner = BannerHeight(right - margin - button - gap);
    PlaceRow({{eBannerText, 0, true}}, margin, right - button - gap, top, banner - gap);
    PlaceRow({{eBannerButton, button}}, right - button, right, top, row);
    top += banner;

    const int foot = std::max(row, cStatusLines * m_scale.LineHeight());
    const int bottom = client.bottom - margin - foot;
    const Row footRow = FootRow();
    const int status = right - margin - WidthOf(footRow) + m_scale(cLeastStatus);
    PlaceRow({footRow.begin() + 1, footRow.end()}, margin + status + gap, right, bottom, row);
    Place(Control(eStatusText), {margin, bottom, margin + status, bottom + foot});

    // Of what is to spare, the curve gets the most.
    const int spare = right - margin - LeftWidth() - 2 * margin - WidthOf(BandRow());
    const int split = margin + LeftWidth() + std::max(spare, 0) / 4;
    int y = top;
    for (const Technology technology : cListed) {
        PlaceRow(TechnologyRow(technology), margin, split, y, row);
        y += row + gap;
    }
    PlaceRow({{eLevelBox, BoxWidth(IDS_LEVELS)}}, margin, split, y, row);
    PlaceRow({{eLevels, 0, true}}, margin, split, y + row, bottom - gap - y - row);

    const int second = split + 2 * margin;
    PlaceRow(BandRow(), second, right, top, row);
    PlaceRow({{eEqualizer, 0, true}}, second, right, top + row + gap,
             bottom - top - 2 * (row + gap) - gap);
    PlaceRow(CurveRow(), second, right, bottom - row - gap, row);
    RedrawWindow(m_window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace panel
