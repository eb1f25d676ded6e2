// SPDX-License-Identifier: MIT
// Drawing the levels.
#include "panel/window/level_view.h"

#include <algorithm>
#include <cmath>

#include "panel/model/limits.h"

namespace panel {

namespace {

// dB, at the lower and the upper edge.
constexpr double cLow = -48;
constexpr double cHigh = 36;
constexpr int cGrid = 12;

int HeightOf(double level, const Area& plot) {
    const double inside = std::isnan(level) ? cLow : std::clamp(level, cLow, cHigh);
    return plot.top + static_cast<int>((cHigh - inside) / (cHigh - cLow) * plot.Height());
}

}  // namespace

void LevelView::Show(const std::optional<LevelsRead>& levels) {
    if (m_levels == levels)
        return;
    m_levels = levels;
    Redraw();
    Tell(EVENT_OBJECT_VALUECHANGE, CHILDID_SELF);
}

std::wstring LevelView::Sentence() const {
    if (!IsWindowEnabled(Window()))
        return {};
    if (!m_levels)
        return m_strings.Text(IDS_LEVELS_OFF);
    if (m_levels->code == S_FALSE)
        return m_strings.Text(IDS_LEVELS_SILENT);
    return m_levels->code == S_OK ? std::wstring() : m_strings.Text(IDS_LEVELS_FAILED);
}

void LevelView::Draw(Canvas& canvas) {
    const Palette& colors = m_theme.Colors();
    const Area& whole = canvas.Whole();
    const int gap = m_scale(6);
    if (HasLevels()) {
        const int line = m_scale.LineHeight();
        const Area plot{whole.left + m_scale.WidthOf(L"-48") + 2 * gap,
                        whole.top + gap + line + line / 2, whole.right - gap,
                        whole.bottom - gap / 2 - line / 2};
        DrawLegend(canvas,
                   {plot.left, whole.top + gap / 2, plot.right, whole.top + gap / 2 + line});
        DrawScale(canvas, plot);
        DrawBands(canvas, plot);
    } else {
        canvas.Write(Sentence(),
                     {whole.left + gap, whole.top + gap, whole.right - gap, whole.bottom - gap},
                     colors.muted, DT_WORDBREAK | DT_CENTER);
    }
    canvas.Frame(whole, colors.line);
}

// What bars and marks are, each beside a piece of its color.
void LevelView::DrawLegend(Canvas& canvas, const Area& area) const {
    const Palette& colors = m_theme.Colors();
    const int gap = m_scale(6);
    const int middle = (area.top + area.bottom) / 2;
    const int side = m_scale(4);
    const auto write = [&](int left, UINT id) {
        const std::wstring text = m_strings.Text(id);
        const int right = left + m_scale.WidthOf(text);
        canvas.Write(text, {left, area.top, right, area.bottom}, colors.muted,
                     DT_SINGLELINE | DT_VCENTER | DT_NOCLIP);
        return right + 2 * gap;
    };
    int left = area.left;
    canvas.Fill({left, middle - side, left + 2 * side, middle + side}, colors.accent);
    left = write(left + 2 * side + gap, IDS_LEVELS_BARS);
    canvas.Fill({left, middle - m_scale(1), left + 2 * side, middle + m_scale(1)},
                colors.warning);
    write(left + 2 * side + gap, IDS_LEVELS_MARKS);
}

void LevelView::DrawScale(Canvas& canvas, const Area& plot) const {
    const Palette& colors = m_theme.Colors();
    const int half = m_scale.LineHeight() / 2;
    // Numbers that would touch are left out, 0 never.
    int step = cGrid;
    while (HeightOf(0, plot) - HeightOf(step, plot) < m_scale.LineHeight() && step < cHigh)
        step += cGrid;
    for (int level = static_cast<int>(cLow); level <= cHigh; level += cGrid) {
        const int y = HeightOf(level, plot);
        canvas.Line({plot.left, y}, {plot.right, y}, level == 0 ? colors.muted : colors.grid);
        if (level % step == 0)
            canvas.Write(std::to_wstring(level),
                         {0, y - half, plot.left - m_scale(6), y + half + m_scale(1)},
                         colors.muted, DT_SINGLELINE | DT_VCENTER | DT_RIGHT | DT_NOCLIP);
    }
}

void LevelView::DrawBands(Canvas& canvas, const Area& plot) const {
    const Palette& colors = m_theme.Colors();
    const int bands = static_cast<int>(m_levels->gains.size());
    for (int i = 0; i < bands; ++i) {
        const auto band = static_cast<std::size_t>(i);
        const int left = plot.left + plot.Width() * i / bands + m_scale(1);
        const int right = plot.left + plot.Width() * (i + 1) / bands - m_scale(1);
        const int top = HeightOf(static_cast<double>(m_levels->excitations[band]), plot);
        canvas.Fill({left, top, right, plot.bottom}, colors.accent);
        const int mark = HeightOf(static_cast<double>(m_levels->gains[band]), plot);
        canvas.Fill({left, mark - m_scale(1), right, mark + m_scale(1)}, colors.warning);
    }
}

std::optional<LRESULT> LevelView::On(UINT, WPARAM, LPARAM) {
    return std::nullopt;
}

std::wstring LevelView::Name(long) const {
    return m_strings.Text(IDS_LEVELS_NAME);
}

std::wstring LevelView::Value(long) const {
    if (!HasLevels())
        return Sentence();
    const auto& levels = m_levels->excitations;
    const auto loudest = std::max_element(levels.begin(), levels.end());
    return m_strings.Format(IDS_LEVELS_VALUE, std::to_wstring(loudest - levels.begin() + 1),
                            m_strings.Number(FormatGain(static_cast<double>(*loudest))));
}

std::wstring LevelView::Help(long) const {
    return {};
}

long LevelView::Role(long) const {
    return ROLE_SYSTEM_INDICATOR;
}

long LevelView::State(long) const {
    return STATE_SYSTEM_READONLY | (HasLevels() ? 0 : STATE_SYSTEM_UNAVAILABLE);
}

Area LevelView::Place(long) const {
    return Client();
}

long LevelView::FocusedPart() const {
    return CHILDID_SELF;
}

}  // namespace panel
