// SPDX-License-Identifier: MIT
// What is stored and what is wanted.
#include "panel/model/session.h"

#include <algorithm>

namespace panel {

Settings Session::Shown() const {
    Settings shown = m_stored;
    for (const Wish& wish : m_wishes)
        if (wish.profile == shown.profile || !BelongsToProfile(wish.item.subject))
            Put(shown, wish.item);
    return shown;
}

void Session::Want(const Item& item, unsigned command) {
    const long profile = Shown().profile;
    std::erase_if(m_wishes, [&](const Wish& wish) {
        return wish.item.IsAboutSame(item) &&
               (wish.profile == profile || !BelongsToProfile(item.subject));
    });
    m_wishes.push_back({command, profile, item});
}

bool Session::Wants(Subject subject, std::size_t index) const {
    return std::any_of(m_wishes.begin(), m_wishes.end(), [=](const Wish& wish) {
        return wish.item.subject == subject && wish.item.index == index;
    });
}

void Session::Answered(unsigned command) {
    std::erase_if(m_wishes, [=](const Wish& wish) { return wish.command <= command; });
}

void Session::Became(const Settings& settings) {
    m_stored = settings;
    if (IsPreset(settings.profile))
        m_lastPreset = settings.profile;
}

}  // namespace panel
