// SPDX-License-Identifier: MIT
// Asks for the name of a profile.
#ifndef KORA4_PANEL_WINDOW_NAME_DIALOG_H
#define KORA4_PANEL_WINDOW_NAME_DIALOG_H

#include <optional>
#include <string>

#include "panel/window/dark_button.h"
#include "panel/window/strings.h"

namespace panel {

// What was entered, without blanks at its ends; none when the user has cancelled. An empty name
// cannot be confirmed.
std::optional<std::wstring> AskName(HWND owner, const Strings& strings, const ButtonLook& look,
                                    UINT question, const std::wstring& proposal);

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_NAME_DIALOG_H
