// SPDX-License-Identifier: MIT
// The live levels of the engine: a bar for the excitation of each band, and a mark for its
// gain.
#ifndef KORA4_PANEL_WINDOW_LEVEL_VIEW_H
#define KORA4_PANEL_WINDOW_LEVEL_VIEW_H

#include "panel/window/view.h"
#include "panel/worker/command.h"

namespace panel {

inline constexpr wchar_t cLevelClass[] = L"KORA4LevelView";

class LevelView final : public View {
  public:
    using View::View;
    void Create(HWND parent, int id) { Make(parent, cLevelClass, id, 0); }

    // None: they are switched off, or not known yet.
    void Show(const std::optional<LevelsRead>& levels);

    long PartCount() const override { return 0; }
    std::wstring Name(long part) const override;
    std::wstring Value(long part) const override;
    std::wstring Help(long part) const override;
    long Role(long part) const override;
    long State(long part) const override;
    Area Place(long part) const override;
    long FocusedPart() const override;
    void Select(long) override {}
    bool SetValue(long, const std::wstring&) override { return false; }

  private:
    void Draw(Canvas& canvas) override;
    void DrawLegend(Canvas& canvas, const Area& area) const;
    void DrawScale(Canvas& canvas, const Area& plot) const;
    void DrawBands(Canvas& canvas, const Area& plot) const;
    std::optional<LRESULT> On(UINT message, WPARAM wParam, LPARAM lParam) override;
    // In place of the bars; empty when there are levels.
    std::wstring Sentence() const;
    bool HasLevels() const { return m_levels && m_levels->code == S_OK; }

    std::optional<LevelsRead> m_levels;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_LEVEL_VIEW_H
