// SPDX-License-Identifier: MIT
// The curve of the graphic equalizer: bands that mouse and keyboard move.
#ifndef KORA4_PANEL_WINDOW_EQUALIZER_VIEW_H
#define KORA4_PANEL_WINDOW_EQUALIZER_VIEW_H

#include <functional>

#include "panel/window/view.h"

namespace panel {

inline constexpr wchar_t cEqualizerClass[] = L"KORA4EqualizerView";

class EqualizerView final : public View {
  public:
    using View::View;
    void Create(HWND parent, int id) { Make(parent, cEqualizerClass, id, WS_TABSTOP); }

    // What to show; a band that is being dragged keeps the gain that the user gives it. When
    // there are other bands now, a drag ends: what the user holds is not there any more.
    void Show(const kora4::Bands& bands, bool isOn);
    std::size_t Selected() const { return m_selected; }
    void SelectBand(std::size_t band);

    // The user chose another band; the user moved a band, and has the mouse still on it.
    std::function<void()> onSelect;
    std::function<void(std::size_t band, double gain, bool isDrag)> onMove;
    // Drags end.
    std::function<void()> onRelease;

    long PartCount() const override;
    std::wstring Name(long part) const override;
    std::wstring Value(long part) const override;
    std::wstring Help(long part) const override;
    long Role(long part) const override;
    long State(long part) const override;
    Area Place(long part) const override;
    long FocusedPart() const override;
    void Select(long part) override;
    bool SetValue(long part, const std::wstring& text) override;

  private:
    void Draw(Canvas& canvas) override;
    std::optional<LRESULT> On(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool OnKey(WPARAM key);
    void OnMouse(UINT message, Point point);
    void Move(double gain, bool isDrag);
    void EndDrag();
    Area Plot() const;
    void DrawGrid(Canvas& canvas, const CurvePicture& picture) const;
    void DrawCurve(Canvas& canvas, const CurvePicture& picture) const;

    kora4::Bands m_bands;
    bool m_isOn = true;
    std::size_t m_selected = 0;
    bool m_isDragging = false;
    // Of a drag: where it began, from where on its dot the pointer holds it, and whether it is
    // a click so far, which chooses the band and moves nothing.
    int m_begin = 0;
    int m_grip = 0;
    bool m_isClick = false;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_EQUALIZER_VIEW_H
