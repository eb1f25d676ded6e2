// SPDX-License-Identifier: MIT
// Noting changes and going back.
#include "panel/model/timeline.h"

namespace panel {

void Timeline::Opened(const Settings& settings) {
    Take(settings, Origin::eForeign);
}

void Timeline::Became(const Settings& settings, Origin origin, unsigned gesture,
                      std::uint64_t time) {
    m_history.Note(origin, m_now, settings, gesture, time);
    Take(settings, origin);
}

void Timeline::WentBack(const Settings& settings) {
    Take(settings, Origin::eOwn);
}

void Timeline::Take(const Settings& settings, Origin origin) {
    if (m_now.profile != settings.profile)
        m_wasOwnProfile = origin == Origin::eOwn;
    m_now = settings;
}

void Timeline::Keep() {
    m_keptHistory = m_history;
    m_keptComparison = m_comparison;
}

void Timeline::Restore() {
    m_history = m_keptHistory;
    m_comparison = m_keptComparison;
}

History::Undo Timeline::TakeBack(Origin origin) {
    Keep();
    return m_history.TakeBack(origin, m_now);
}

std::optional<Items> Timeline::Compare() {
    Keep();
    const std::optional<Settings> other = m_comparison.Toggle(m_now);
    return other ? std::optional(Steps(m_now, *other)) : std::nullopt;
}

Past Timeline::Shown() const {
    return {m_history.Has(Origin::eOwn, m_now), m_history.Has(Origin::eForeign, m_now),
            m_comparison.IsB()};
}

}  // namespace panel
