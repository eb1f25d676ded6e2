// SPDX-License-Identifier: MIT
// What is stored and what is wanted.
#include "panel/model/session.h"

#include <algorithm>

namespace panel {

Settings Session::Shown() const {
    Settings shown = m_stored;
    for (const Item& wish : m_wishes)
        Put(shown, wish);
    return shown;
}

void Session::Want(const Item& item) {
    std::erase_if(m_wishes, [&](const Item& wish) { return wish.IsAboutSame(item); });
    m_wishes.push_back(item);
}

bool Session::Wants(Subject subject, std::size_t index) const {
    return std::any_of(m_wishes.begin(), m_wishes.end(), [=](const Item& wish) {
        return wish.subject == subject && wish.index == index;
    });
}

void Session::Answered(const Items& items) {
    std::erase_if(m_wishes, [&](const Item& wish) {
        return std::find(items.begin(), items.end(), wish) != items.end();
    });
}

void Session::Became(const Settings& settings, Origin origin, bool isNoted, unsigned gesture,
                     std::uint64_t time) {
    if (isNoted)
        m_history.Note(origin, m_stored, settings, gesture, time);
    Take(settings);
}

void Session::Connected(const Settings& settings) {
    m_wishes.clear();
    Take(settings);
}

void Session::Take(const Settings& settings) {
    m_stored = settings;
    if (IsPreset(settings.profile))
        m_lastPreset = settings.profile;
}

std::optional<Items> Session::Compare() {
    const Settings now = Shown();
    const std::optional<Settings> other = m_comparison.Toggle(now);
    return other ? std::optional(Steps(now, *other)) : std::nullopt;
}

}  // namespace panel
