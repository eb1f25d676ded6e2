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
    Forget(settings);
    m_now = settings;
}

// What is left of profiles that are gone.
void Timeline::Forget(const Settings& settings) {
    for (long profile = 0; profile < KORA4_PROFILE_TABLE_ENTRIES; ++profile)
        if (Exists(profile, m_now) && !Exists(profile, settings))
            m_history.Forget(profile);
    const std::optional<Settings>& other = m_comparison.Other();
    if (other && other->profile != settings.profile && !Exists(other->profile, settings))
        m_comparison.Lose();
}

History::Undo Timeline::TakeBack(Origin origin) {
    m_keptHistory = m_history;
    return m_history.TakeBack(origin, m_now);
}

Past Timeline::Shown() const {
    return {m_history.Has(Origin::eOwn, m_now), m_history.Has(Origin::eForeign, m_now),
            m_comparison.IsB()};
}

}  // namespace panel
