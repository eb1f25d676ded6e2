// SPDX-License-Identifier: MIT
// Drawing and moving the curve.
#include "panel/window/equalizer_view.h"

#include <windowsx.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "panel/model/limits.h"

namespace panel {

namespace {

// dB, by the keyboard: arrows, arrows with Ctrl, the page keys.
constexpr double cStep = 0.5;
constexpr double cFineStep = 0.1;
constexpr double cPage = 3;
// dB between two lines of the grid.
constexpr int cGrid = 6;
// Of a dot, at 96 dpi; the pointer holds it up to a little farther from its middle.
constexpr int cRadius = 4;
constexpr int cSelectedRadius = 6;
constexpr int cGripRadius = 8;

}  // namespace

void EqualizerView::Show(const kora4::Bands& bands, bool isOn) {
    if (!AreSameBands(m_bands, bands))
        EndDrag();
    const kora4::Bands before = m_bands;
    const bool wasOn = std::exchange(m_isOn, isOn);
    m_bands = bands;
    if (m_isDragging && m_selected < bands.size())
        m_bands[m_selected].gain = before[m_selected].gain;
    if (m_selected >= m_bands.size())
        m_selected = 0;
    if (m_bands == before && wasOn == isOn)
        return;
    Redraw();
    if (m_bands.size() != before.size())
        return Tell(EVENT_OBJECT_REORDER, CHILDID_SELF);
    for (std::size_t i = 0; i < m_bands.size(); ++i)
        if (m_bands[i] != before[i])
            Tell(EVENT_OBJECT_VALUECHANGE, static_cast<long>(i) + 1);
}

void EqualizerView::SelectBand(std::size_t band) {
    if (band >= m_bands.size() || band == m_selected)
        return;
    m_selected = band;
    Redraw();
    if (GetFocus() == Window())
        Tell(EVENT_OBJECT_FOCUS, FocusedPart());
    onSelect();
}

void EqualizerView::EndDrag() {
    // Answered by WM_CAPTURECHANGED.
    if (m_isDragging)
        ReleaseCapture();
}

// ---- Drawing ----------------------------------------------------------------------------

Area EqualizerView::Plot() const {
    const Area client = Client();
    const int gap = m_scale(6);
    return {m_scale.WidthOf(L"-12") + 2 * gap, gap + m_scale.LineHeight() / 2,
            std::max(client.right - gap, 0),
            std::max(client.bottom - m_scale.LineHeight() - 2 * gap, 0)};
}

void EqualizerView::Draw(Canvas& canvas) {
    const Palette& colors = m_theme.Colors();
    if (m_bands.empty()) {
        const int gap = m_scale(12);
        const Area& whole = canvas.Whole();
        if (IsWindowEnabled(Window()))
            canvas.Write(m_strings.Text(IDS_NO_BANDS),
                         {gap, gap, whole.right - gap, whole.bottom}, colors.muted,
                         DT_WORDBREAK | DT_CENTER);
    } else {
        const CurvePicture picture(m_bands, Plot());
        DrawGrid(canvas, picture);
        DrawCurve(canvas, picture);
    }
    canvas.Frame(canvas.Whole(), colors.line);
    if (GetFocus() == Window())
        canvas.Frame(canvas.Whole(), colors.accent, m_scale(2));
}

void EqualizerView::DrawGrid(Canvas& canvas, const CurvePicture& picture) const {
    const Palette& colors = m_theme.Colors();
    const Area& plot = picture.Plot();
    const int half = m_scale.LineHeight() / 2;
    const Limits limits = LimitsOf(Technology::eGraphicEq);
    for (int gain = static_cast<int>(limits.least); gain <= limits.most; gain += cGrid) {
        const int y = picture.HeightOf(gain);
        canvas.Line({plot.left, y}, {plot.right, y}, gain == 0 ? colors.muted : colors.grid);
        canvas.Write(std::to_wstring(gain),
                     {0, y - half, plot.left - m_scale(6), y + half + m_scale(1)}, colors.muted,
                     DT_SINGLELINE | DT_VCENTER | DT_RIGHT | DT_NOCLIP);
    }
    // Names that would touch are left out.
    int free = 0;
    for (std::size_t i = 0; i < m_bands.size(); ++i) {
        const std::wstring name =
            m_strings.Number(FormatFrequency(static_cast<double>(m_bands[i].frequency)));
        const int width = m_scale.WidthOf(name);
        const int x = picture.At(i).x;
        if (x - width / 2 < free)
            continue;
        free = x + (width + 1) / 2 + m_scale(6);
        canvas.Write(name, {x - width, plot.bottom + m_scale(4), x + width, Client().bottom},
                     colors.muted, DT_SINGLELINE | DT_CENTER | DT_TOP | DT_NOCLIP);
    }
}

void EqualizerView::DrawCurve(Canvas& canvas, const CurvePicture& picture) const {
    const Palette& colors = m_theme.Colors();
    const bool isStrong = m_isOn && IsWindowEnabled(Window());
    const COLORREF color = isStrong ? colors.accent : colors.muted;
    for (std::size_t i = 0; i < m_bands.size(); ++i) {
        const Point point = picture.At(i);
        if (i == 0)
            canvas.Line({picture.Plot().left, point.y}, point, color, m_scale(2));
        const Point next =
            i + 1 < m_bands.size() ? picture.At(i + 1) : Point{picture.Plot().right, point.y};
        canvas.Line(point, next, color, m_scale(2));
    }
    for (std::size_t i = 0; i < m_bands.size(); ++i) {
        const Point point = picture.At(i);
        const bool isSelected = i == m_selected && IsWindowEnabled(Window());
        const int radius = m_scale(isSelected ? cSelectedRadius : cRadius);
        // Another form, too: colours alone do not tell everybody, and those of high contrast
        // are few.
        if (IsOutside(m_bands[i]))
            canvas.Fill({point.x - radius, point.y - radius, point.x + radius + 1,
                         point.y + radius + 1},
                        colors.warning);
        else
            canvas.Dot(point, radius, color);
        if (isSelected)
            canvas.Dot(point, m_scale(3), colors.field);
    }
}

// ---- Input ------------------------------------------------------------------------------

std::optional<LRESULT> EqualizerView::On(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            Redraw();
            if (message == WM_SETFOCUS)
                Tell(EVENT_OBJECT_FOCUS, FocusedPart());
            return 0;
        case WM_KEYDOWN:
            return OnKey(wParam) ? std::optional<LRESULT>(0) : std::nullopt;
        case WM_LBUTTONDOWN:
        case WM_MOUSEMOVE:
            OnMouse(message, {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
            return 0;
        case WM_LBUTTONUP:
            ReleaseCapture();
            return 0;
        case WM_CAPTURECHANGED:
            if (std::exchange(m_isDragging, false))
                onRelease();
            return 0;
        default:
            return std::nullopt;
    }
}

bool EqualizerView::OnKey(WPARAM key) {
    if (m_bands.empty())
        return false;
    const double gain = static_cast<double>(m_bands[m_selected].gain);
    const double step = GetKeyState(VK_CONTROL) < 0 ? cFineStep : cStep;
    switch (key) {
        case VK_LEFT:
            SelectBand(m_selected > 0 ? m_selected - 1 : 0);
            return true;
        case VK_RIGHT:
            SelectBand(m_selected + 1);
            return true;
        case VK_HOME:
            SelectBand(0);
            return true;
        case VK_END:
            SelectBand(m_bands.size() - 1);
            return true;
        case VK_UP:
            Move(gain + step, false);
            return true;
        case VK_DOWN:
            Move(gain - step, false);
            return true;
        case VK_PRIOR:
            Move(gain + cPage, false);
            return true;
        case VK_NEXT:
            Move(gain - cPage, false);
            return true;
        case VK_DELETE:
            Move(0, false);
            return true;
        default:
            return false;
    }
}

void EqualizerView::OnMouse(UINT message, Point point) {
    const CurvePicture picture(m_bands, Plot());
    if (message == WM_LBUTTONDOWN) {
        SetFocus(Window());
        const auto band = picture.Nearest(point);
        if (!band)
            return;
        SelectBand(*band);
        SetCapture(Window());
        m_isDragging = true;
        const Point dot = picture.At(*band);
        const int radius = m_scale(cGripRadius);
        m_isClick = std::abs(point.x - dot.x) <= radius && std::abs(point.y - dot.y) <= radius;
        m_begin = point.y;
        m_grip = m_isClick ? point.y - dot.y : 0;
    }
    if (std::abs(point.y - m_begin) >= GetSystemMetrics(SM_CYDRAG))
        m_isClick = false;
    if (m_isDragging && !m_isClick && m_selected < m_bands.size())
        Move(picture.GainAt(point.y - m_grip), true);
}

void EqualizerView::Move(double gain, bool isDrag) {
    const Limits limits = LimitsOf(Technology::eGraphicEq);
    const kora4::Bands moved =
        WithGain(m_bands, m_selected, std::clamp(gain, limits.least, limits.most));
    if (moved == m_bands)
        return;
    m_bands = moved;
    Redraw();
    Tell(EVENT_OBJECT_VALUECHANGE, FocusedPart());
    onMove(m_selected, static_cast<double>(moved[m_selected].gain), isDrag);
}

// ---- Accessibility ----------------------------------------------------------------------

long EqualizerView::PartCount() const {
    return static_cast<long>(m_bands.size());
}

std::wstring EqualizerView::Name(long part) const {
    if (part == CHILDID_SELF)
        return m_strings.Text(IDS_CURVE_NAME);
    const kora4::Band& band = m_bands[static_cast<std::size_t>(part - 1)];
    return m_strings.Format(IDS_BAND_NAME, std::to_wstring(part),
                            m_strings.Number(kora4::FormatDecimal(band.frequency)));
}

std::wstring EqualizerView::Value(long part) const {
    if (part == CHILDID_SELF)
        return {};
    const kora4::Band& band = m_bands[static_cast<std::size_t>(part - 1)];
    const std::wstring value = m_strings.Format(
        IDS_GAIN_VALUE, m_strings.Number(FormatGain(static_cast<double>(band.gain))));
    return IsOutside(band) ? m_strings.Format(IDS_OUTSIDE, value) : value;
}

std::wstring EqualizerView::Help(long part) const {
    return part == CHILDID_SELF ? m_strings.Text(IDS_CURVE_HELP) : std::wstring();
}

long EqualizerView::Role(long part) const {
    return part == CHILDID_SELF ? ROLE_SYSTEM_CHART : ROLE_SYSTEM_SLIDER;
}

long EqualizerView::State(long part) const {
    if (!IsWindowEnabled(Window()))
        return STATE_SYSTEM_UNAVAILABLE;
    const bool hasFocus = GetFocus() == Window();
    if (part == CHILDID_SELF)
        return STATE_SYSTEM_FOCUSABLE | (hasFocus ? STATE_SYSTEM_FOCUSED : 0);
    const bool isSelected = part == FocusedPart();
    return STATE_SYSTEM_FOCUSABLE | STATE_SYSTEM_SELECTABLE |
           (isSelected ? STATE_SYSTEM_SELECTED : 0) |
           (isSelected && hasFocus ? STATE_SYSTEM_FOCUSED : 0);
}

Area EqualizerView::Place(long part) const {
    if (part == CHILDID_SELF)
        return Client();
    const Point point = CurvePicture(m_bands, Plot()).At(static_cast<std::size_t>(part - 1));
    const int radius = m_scale(cSelectedRadius);
    return {point.x - radius, point.y - radius, point.x + radius, point.y + radius};
}

long EqualizerView::FocusedPart() const {
    return m_bands.empty() ? CHILDID_SELF : static_cast<long>(m_selected) + 1;
}

void EqualizerView::Select(long part) {
    SelectBand(static_cast<std::size_t>(part - 1));
}

bool EqualizerView::SetValue(long part, const std::wstring& text) {
    const auto gain = ParseGain(Narrow(text));
    if (part == CHILDID_SELF || !gain || !IsWindowEnabled(Window()))
        return false;
    Select(part);
    Move(*gain, false);
    return true;
}

}  // namespace panel
