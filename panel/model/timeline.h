// SPDX-License-Identifier: MIT
// Who made the settings what they are, and the way back: the list of changes and the two states
// to compare. Belongs to the worker, which alone knows what was stored before and after each
// change, so that every command is done with what is stored when its turn comes.
#ifndef KORA4_PANEL_MODEL_TIMELINE_H
#define KORA4_PANEL_MODEL_TIMELINE_H

#include "panel/model/history.h"

namespace panel {

// What the window shows of it.
struct Past {
    bool hasOwn = false;
    bool hasForeign = false;
    bool isB = false;
};

class Timeline {
  public:
    // The settings as they were noted last.
    const Settings& Now() const { return m_now; }
    // A store was opened: what it holds is nobody's change.
    void Opened(const Settings& settings);
    // The store became so, by whom.
    void Became(const Settings& settings, Origin origin, unsigned gesture, std::uint64_t time);
    // The same, by taking back a change, which is none itself.
    void WentBack(const Settings& settings);

    // Whether who wanted to go back while `shown` was shown still means what is active now:
    // a profile that came by the user's own doing, such as another step back, does not matter.
    bool IsMeant(long shown) const { return shown == m_now.profile || m_wasOwnProfile; }
    // What takes back the newest change; as that of History.
    History::Undo TakeBack(Origin origin);
    // That was refused: as if nobody had asked.
    void Restore() { m_history = m_keptHistory; }

    // The two states to compare. One of a profile that is gone is lost.
    const Comparison& Compared() const { return m_comparison; }
    void Exchange(const Settings& left) { m_comparison.Exchange(left); }

    Past Shown() const;

  private:
    void Take(const Settings& settings, Origin origin);
    void Forget(const Settings& settings);

    Settings m_now;
    bool m_wasOwnProfile = false;  // the last change of the active profile
    History m_history;
    Comparison m_comparison;
    History m_keptHistory;
};

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_TIMELINE_H
