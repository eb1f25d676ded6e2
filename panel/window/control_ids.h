// SPDX-License-Identifier: MIT
// What others find the window and its controls by: a second start, and tests.
#ifndef KORA4_PANEL_WINDOW_CONTROL_IDS_H
#define KORA4_PANEL_WINDOW_CONTROL_IDS_H

namespace panel {

inline constexpr wchar_t cPanelClass[] = L"KORA4PanelWindow";

// The controls, in the order of the keyboard. Those of technologies are counted on from the
// first one by the technology's number; the graphic equalizer has no slider and no value.
enum ControlId : int {
    eEnableBox = 1000,
    eProfileLabel,
    eProfileList,
    eNewButton,
    eRenameButton,
    eDeleteButton,
    eRevertButton,
    eBannerText,
    eBannerButton,
    eSwitchBox = 1010,
    eSlider = 1020,
    eCurveList = 1028,
    eValueText = 1030,
    eLevelBox = 1040,
    eLevels,
    eBandLabel,
    eBandList,
    eGainLabel,
    eGainField,
    eGainUnit,
    eEqualizer,
    eFlatButton,
    eImportButton,
    eExportButton,
    eStatusText,
    eUndoOwnButton,
    eUndoForeignButton,
    eCompareButton,
    eMoreButton
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_CONTROL_IDS_H
