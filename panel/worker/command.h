// SPDX-License-Identifier: MIT
// What the window asks of the worker, and what the worker tells the window.
#ifndef KORA4_PANEL_WORKER_COMMAND_H
#define KORA4_PANEL_WORKER_COMMAND_H

#include <kora4.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "panel/model/timeline.h"

namespace panel {

enum class Action {
    eSet,        // `items`, one after the other, until one is not done
    eUndo,       // the last change of `origin`; not noted as one itself
    eCompare,    // to the other one of two states
    eCreate,     // a custom profile with the name `text`; then it is the active one
    eRename,     // `profile` gets the name `text`
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
    long profile = 0;  // that was shown: what belongs to a profile is set in no other one
    long fallback = 0;
    unsigned gesture = 0;  // of History
    Origin origin = Origin::eOwn;
    unsigned number = 0;  // ascending
};

// Whether there is nothing left of the earlier one when the later one is done.
inline bool Covers(const Command& later, const Command& earlier) {
    // There are only two states, whatever profile was active.
    const bool isSamePlace =
        later.profile == earlier.profile || later.action == Action::eCompare;
    return later.action == earlier.action && isSamePlace && later.text == earlier.text &&
           later.origin == earlier.origin &&
           std::all_of(earlier.items.begin(), earlier.items.end(), [&](const Item& item) {
               return std::any_of(later.items.begin(), later.items.end(),
                                  [&](const Item& other) { return other.IsAboutSame(item); });
           });
}

// Answers of the panel's own. None is a failure: the store has not refused anything.
constexpr HRESULT OwnCode(HRESULT number) {
    return KORA4_S_DEMO_MODE_ACTIVE + 0x1000 + number;
}
inline constexpr HRESULT cOtherPlace = OwnCode(0);  // meant for what is not there any more
inline constexpr HRESULT cNoFreeProfile = OwnCode(1);
inline constexpr HRESULT cUndoNothing = OwnCode(2);  // as the verdicts of History
inline constexpr HRESULT cUndoOvertaken = OwnCode(3);
inline constexpr HRESULT cUndoImpossible = OwnCode(4);
inline constexpr HRESULT cCompareNew = OwnCode(5);   // there is no other state yet
inline constexpr HRESULT cCompareLost = OwnCode(6);  // nor any more
inline constexpr HRESULT cNoText = OwnCode(7);       // a file
inline constexpr HRESULT cTooLong = OwnCode(8);      // a file

// What a command came to.
struct Answer : Command {
    HRESULT code = S_OK;
    std::string detail;  // what is wrong with a file, in UTF-8; or empty
};

struct Connection {
    HRESULT code = S_OK;  // S_OK: there is an object; otherwise why there is none
};

struct LevelsRead {
    HRESULT code = S_OK;  // S_FALSE: nothing is published
    std::array<float, KORA4_VISUALIZATION_BANDS> gains{};
    std::array<float, KORA4_VISUALIZATION_BANDS> excitations{};
    // By their bits: what is no number is the same as before, too.
    friend bool operator==(const LevelsRead& a, const LevelsRead& b) {
        return a.code == b.code && std::memcmp(&a.gains, &b.gains, sizeof a.gains) == 0 &&
               std::memcmp(&a.excitations, &b.excitations, sizeof a.excitations) == 0;
    }
};

// One message to the window; any of these may be in it.
struct Report {
    std::optional<Connection> connection;
    std::optional<Settings> settings;  // all of them, as they are now
    Past past;
    std::optional<Answer> answer;
    std::optional<LevelsRead> levels;
};

// Posted to the window: lParam is a Report, which the window owns then.
inline constexpr UINT cReportMessage = WM_APP;
// Posted when the worker begins something (wParam), and when there is nothing more to do.
inline constexpr UINT cBusyMessage = WM_APP + 1;

}  // namespace panel

#endif  // KORA4_PANEL_WORKER_COMMAND_H
