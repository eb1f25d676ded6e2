// SPDX-License-Identifier: MIT
// What the window shows at a moment: what is stored, and on top of it what its user wants and
// the store has not answered yet. Belongs to the thread of the window.
#ifndef KORA4_PANEL_MODEL_SESSION_H
#define KORA4_PANEL_MODEL_SESSION_H

#include "panel/model/history.h"

namespace panel {

class Session {
  public:
    // What is stored, as it was told last.
    const Settings& Stored() const { return m_stored; }
    // The same with the wishes: controls do not jump back while a set is on its way.
    Settings Shown() const;

    // The user wants it; until it is answered.
    void Want(const Item& item);
    bool Wants(Subject subject, std::size_t index = 0) const;
    bool HasWishes() const { return !m_wishes.empty(); }
    // The worker has answered for exactly this; a later wish for the same stays.
    void Answered(const Items& items);

    // The store became so, by whom. What was asked for before a connection is void.
    void Became(const Settings& settings, Origin origin, bool isNoted, unsigned gesture,
                std::uint64_t time);
    void Connected(const Settings& settings);
    void Disconnected() { m_wishes.clear(); }

    History& Changes() { return m_history; }
    const History& Changes() const { return m_history; }
    // What to set for the other one of two states; none the first time.
    std::optional<Items> Compare();
    bool IsB() const { return m_comparison.IsB(); }
    // The preset that was active last: where to go when a custom profile is deleted.
    long LastPreset() const { return m_lastPreset; }

  private:
    void Take(const Settings& settings);

    Settings m_stored;
    Items m_wishes;
    History m_history;
    Comparison m_comparison;
    long m_lastPreset = KORA4_PROFILE_MOVIE;
};

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_SESSION_H
