// SPDX-License-Identifier: MIT
// Push buttons and check boxes that paint themselves while the colours are dark: the platform
// documents no dark ones. In every other respect they stay the platform's controls.
#ifndef KORA4_PANEL_WINDOW_DARK_BUTTON_H
#define KORA4_PANEL_WINDOW_DARK_BUTTON_H

#include "panel/window/theme.h"

namespace panel {

// What the painting needs to know; must outlive the buttons.
struct ButtonLook {
    const Theme& theme;
    const Scale& scale;
};

void LetPaintDark(HWND button, const ButtonLook& look);

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_DARK_BUTTON_H
