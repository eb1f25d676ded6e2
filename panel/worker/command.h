// SPDX-License-Identifier: MIT
// What the window asks of the worker, and what the worker tells the window.
#ifndef KORA4_PANEL_WORKER_COMMAND_H
#define KORA4_PANEL_WORKER_COMMAND_H

#include <kora4.hpp>

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "panel/model/history.h"
#include "panel/model/settings.h"

namespace panel {

enum class Action {
    eSet,        // `items`, one after the other, until one is not done
    eUndo,       // the same; not noted as a change
    eCompare,    // the same, for the other one of two states
    eCreate,     // custom profile `profile` with the name `text`; then it is the active one
    eRename,     // the same profile's name
    eDelete,     // `profile`; `fallback` becomes active first if need be
    eRevert,     // the active profile to its factory values
    eLeaveDemo,  // whoever entered it
    eImport,     // the equalizer from the file `text`
    eExport,     // the equalizer to the file `text`
    eTryAgain    // to connect, at once and anew
};

struct Command {
    Action action = Action::eSet;
    Items items;
    std::wstring text;
    long profile = 0;
    long fallback = 0;
    unsigned gesture = 0;  // of History
};

// What a command came to.
struct Answer {
    Action action = Action::eSet;
    Items items;  // of the command
    HRESULT code = S_OK;
    std::string detail;  // what is wrong with a file, in UTF-8; or empty
    std::wstring text;   // of the command
    long profile = 0;    // of the command
    long fallback = 0;   // of the command
};

struct Connection {
    HRESULT code = S_OK;  // S_OK: there is an object; otherwise why there is none
    ULONG engineMask = 0;
};

struct LevelsRead {
    HRESULT code = S_OK;  // S_FALSE: nothing is published
    std::array<float, KORA4_VISUALIZATION_BANDS> gains{};
    std::array<float, KORA4_VISUALIZATION_BANDS> excitations{};
    friend bool operator==(const LevelsRead&, const LevelsRead&) = default;
};

// One message to the window; any of these may be in it.
struct Report {
    std::optional<Connection> connection;
    std::optional<Settings> settings;  // all of them, as they are now
    Origin origin = Origin::eForeign;  // whose change made them so
    bool isNoted = true;               // in the history
    unsigned gesture = 0;
    std::optional<Answer> answer;
    std::optional<LevelsRead> levels;
};

// Posted to the window: lParam is a Report, which the window owns then.
inline constexpr UINT cReportMessage = WM_APP;
// Posted when the worker begins and ends to have something to do (wParam).
inline constexpr UINT cBusyMessage = WM_APP + 1;

}  // namespace panel

#endif  // KORA4_PANEL_WORKER_COMMAND_H
