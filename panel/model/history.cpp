// SPDX-License-Identifier: MIT
// The list of changes and the two states to compare.
#include "panel/model/history.h"

#include <algorithm>
#include <utility>

#include "panel/model/curve.h"
#include "panel/model/limits.h"

namespace panel {

namespace {

bool HasValues(const Change& change) {
    return std::any_of(change.before.begin(), change.before.end(),
                       [](const Item& item) { return BelongsToProfile(item.subject); });
}

bool IsOfActiveProfile(const Change& change, const Settings& now) {
    return change.profile == now.profile || !HasValues(change);
}

// The API refuses a value off scale, and puts a gain to the nearest limit.
bool CanBeSet(const Item& item) {
    if (item.subject == Subject::eValue)
        return IsInside(static_cast<Technology>(item.index), item.number);
    return std::none_of(item.bands.begin(), item.bands.end(), IsOutside);
}

// A deleted profile is not brought back: only its name is known. Nor is one that was created
// deleted: what was set in it meanwhile would be lost.
bool CanBeTakenBack(const Item& before, const Item& after, const Settings& now) {
    if (before.subject == Subject::eName)
        return before.name && after.name;
    if (before.subject == Subject::eProfile)
        return Exists(static_cast<long>(before.number), now);
    return CanBeSet(before);
}

}  // namespace

void History::Note(Origin origin, const Settings& from, const Settings& to, unsigned gesture,
                   std::uint64_t time) {
    Change change{origin, to.profile, {}, {}, gesture, time};
    const bool isDemo = IsDemo(from.profile) || IsDemo(to.profile);
    for (Item& item : Difference(from, to)) {
        if (from.profile != to.profile && BelongsToProfile(item.subject))
            continue;
        if (isDemo && item.subject != Subject::eName)
            continue;
        change.before.push_back(Get(from, item.subject, item.index));
        change.after.push_back(std::move(item));
    }
    if (change.after.empty())
        return;
    if (Merges(change)) {
        m_changes.back().after = std::move(change.after);
        m_changes.back().time = time;
        return;
    }
    m_changes.push_back(std::move(change));
    // Those of others leave one's own alone.
    const auto isOfOrigin = [origin](const Change& one) { return one.origin == origin; };
    if (std::count_if(m_changes.begin(), m_changes.end(), isOfOrigin) > cMost)
        m_changes.erase(std::find_if(m_changes.begin(), m_changes.end(), isOfOrigin));
}

bool History::Merges(const Change& change) const {
    if (m_changes.empty())
        return false;
    const Change& last = m_changes.back();
    const bool isOneMove = change.origin == Origin::eOwn
                               ? change.gesture != 0 && change.gesture == last.gesture
                               : change.time - last.time < cBurst;
    return isOneMove && last.origin == change.origin && last.profile == change.profile &&
           std::equal(last.after.begin(), last.after.end(), change.after.begin(),
                      change.after.end(),
                      [](const Item& a, const Item& b) { return a.IsAboutSame(b); });
}

std::deque<Change>::const_iterator History::Newest(Origin origin, const Settings& now) const {
    const auto found =
        std::find_if(m_changes.rbegin(), m_changes.rend(), [&](const Change& change) {
            return change.origin == origin && IsOfActiveProfile(change, now);
        });
    return found == m_changes.rend() ? m_changes.end() : std::prev(found.base());
}

bool History::Has(Origin origin, const Settings& now) const {
    return Newest(origin, now) != m_changes.end();
}

History::Undo History::TakeBack(Origin origin, const Settings& now) {
    const auto newest = Newest(origin, now);
    if (newest == m_changes.end())
        return {};
    const Change change =
        std::move(m_changes[static_cast<std::size_t>(newest - m_changes.begin())]);
    m_changes.erase(newest);
    Undo undo{Verdict::eItems, {}};
    bool isAllBack = true;
    for (std::size_t i = 0; i < change.after.size(); ++i) {
        const Item& after = change.after[i];
        const Item present = Get(now, after.subject, after.index);
        // An attempt that was refused halfway has brought this one back.
        if (present == change.before[i])
            continue;
        isAllBack = false;
        if (present != after)
            return {Verdict::eOvertaken, {}};
        if (CanBeTakenBack(change.before[i], after, now))
            undo.items.push_back(change.before[i]);
    }
    if (isAllBack)
        return {Verdict::eOvertaken, {}};
    // Of several values that came at once those are taken back that can be.
    return undo.items.empty() ? Undo{Verdict::eImpossible, {}} : undo;
}

void History::Forget(long profile) {
    std::erase_if(m_changes, [profile](const Change& change) {
        return change.profile == profile && HasValues(change);
    });
}

void Comparison::Exchange(const Settings& left) {
    m_isB = !m_isB;
    m_isLost = false;
    m_other = left;
}

void Comparison::Lose() {
    m_isB = false;
    m_isLost = true;
    m_other.reset();
}

Items Steps(const Settings& from, const Settings& to) {
    Items items = Difference(from, to);
    std::erase_if(items, [](const Item& item) {
        return item.subject == Subject::eName || !CanBeSet(item);
    });
    return items;
}

}  // namespace panel
