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
        eImpossible  // a profile that was deleted, or a value that cannot be set
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

    const std::deque<Change>& Changes() const { return m_changes; }
    void Clear() { m_changes.clear(); }

  private:
    bool Merges(const Change& change) const;
    std::deque<Change>::const_iterator Newest(Origin origin, const Settings& now) const;

    std::deque<Change> m_changes;  // the newest last
};

// A/B: two states that one key goes to and fro between.
class Comparison {
  public:
    // What is active goes into the slot in use, and the other slot is used from now on. Its
    // state, to be set; none the first time, when both are the same.
    std::optional<Settings> Toggle(const Settings& now);
    bool IsB() const { return m_isB; }

  private:
    bool m_isB = false;
    std::optional<Settings> m_other;
};

// What has to be set so that `from` becomes `to`: the profile before its values, no value that
// cannot be set, and no names.
Items Steps(const Settings& from, const Settings& to);

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_HISTORY_H
