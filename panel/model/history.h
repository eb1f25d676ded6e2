// SPDX-License-Identifier: MIT
// The last changes, the user's own and those of other programs, and what takes one back.
#ifndef KORA4_PANEL_MODEL_HISTORY_H
#define KORA4_PANEL_MODEL_HISTORY_H

#include <cstdint>
#include <deque>

#include "panel/model/settings.h"

namespace panel {

enum class Origin { eOwn, eForeign };

// What was there before and is there after; both have the same subjects in the same order.
struct Change {
    Origin origin = Origin::eOwn;
    long profile = 0;  // that the values belong to
    Items before;
    Items after;
    unsigned gesture = 0;    // own changes of one drag have the same number, which is not 0
    std::uint64_t time = 0;  // milliseconds of any clock
};

class History {
  public:
    static constexpr std::ptrdiff_t cMost = 50;  // of each origin
    // Changes of the same item by other programs within this time (ms) are one: a slider that
    // is dragged there.
    static constexpr std::uint64_t cBurst = 1000;

    // Notes that the settings became `to`; nothing when they are equal. With another profile
    // its values come along: the change is that of the profile alone. Nothing of a demo is
    // noted but the names of profiles: leaving it brings back what was there before.
    void Note(Origin origin, const Settings& from, const Settings& to, unsigned gesture,
              std::uint64_t time);

    enum class Verdict {
        eNothing,    // there is no such change, or none of the active profile
        eItems,      // to be set
        eOvertaken,  // somebody has changed it again since
        eImpossible  // a profile that does not exist, or a value that cannot be set
    };
    struct Undo {
        Verdict verdict = Verdict::eNothing;
        Items items;
    };
    // Takes the newest change of that origin off the list and says what takes it back. Changes
    // of values in another profile than the active one are passed over and stay.
    Undo TakeBack(Origin origin, const Settings& now);
    // Whether TakeBack would find one.
    bool Has(Origin origin, const Settings& now) const;

    // The profile is gone: a new one in its place has nothing to do with its values.
    void Forget(long profile);

    const std::deque<Change>& Changes() const { return m_changes; }

  private:
    bool Merges(const Change& change) const;
    std::deque<Change>::const_iterator Newest(Origin origin, const Settings& now) const;

    std::deque<Change> m_changes;  // the newest last
};

// A/B: two states that one key goes to and fro between. What is active is the one in use.
class Comparison {
  public:
    // The state that is not in use; none at first, when both are the same.
    const std::optional<Settings>& Other() const { return m_other; }
    // The other one is in use from now on, and `left` is what was active.
    void Exchange(const Settings& left);
    // There is no way to the other state any more: what is active becomes A again.
    void Lose();
    bool IsB() const { return m_isB; }
    bool IsLost() const { return m_isLost; }

  private:
    bool m_isB = false;
    bool m_isLost = false;
    std::optional<Settings> m_other;
};

// What has to be set so that `from` becomes `to`, which is of the same profile: no value that
// cannot be set, and no names.
Items Steps(const Settings& from, const Settings& to);

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_HISTORY_H
