// SPDX-License-Identifier: MIT
// What the window shows at a moment: what is stored, and on top of it what its user wants and
// the store has not answered yet. Belongs to the thread of the window.
#ifndef KORA4_PANEL_MODEL_SESSION_H
#define KORA4_PANEL_MODEL_SESSION_H

#include "panel/model/settings.h"

namespace panel {

class Session {
  public:
    // What is stored, as it was told last.
    const Settings& Stored() const { return m_stored; }
    // The same with the wishes: controls do not jump back while a set is on its way. Those for
    // another profile do not show.
    Settings Shown() const;

    // The user wants it, of the profile that is shown; until the command of that number is
    // answered.
    void Want(const Item& item, unsigned command);
    bool Wants(Subject subject, std::size_t index = 0) const;
    bool HasWishes() const { return !m_wishes.empty(); }
    // The worker has answered that command, and does them in the order of their numbers; a
    // later wish for the same stays.
    void Answered(unsigned command);

    // The store became so.
    void Became(const Settings& settings);
    // What was asked for before a connection is void.
    void Disconnected() { m_wishes.clear(); }

    // The preset that was active last: where to go when a custom profile is deleted.
    long LastPreset() const { return m_lastPreset; }

  private:
    struct Wish {
        unsigned command = 0;
        long profile = 0;
        Item item;
    };

    Settings m_stored;
    std::vector<Wish> m_wishes;
    long m_lastPreset = KORA4_PROFILE_MOVIE;
};

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_SESSION_H
