// SPDX-License-Identifier: MIT
// The ways in which a stored value can be wrong, as bytes.
#include "kora4sim/engine/spoilt_values.h"

namespace kora4::tools::sim {

void SpoiltValues::Announce(const std::vector<SchemaValue>& values) {
    std::vector<PropertyKey> counters;
    for (const SchemaValue& value : values)
        AddAnnouncement(counters, value);
    for (const PropertyKey& counter : counters)
        m_store.Bump(counter);
}

void SpoiltValues::Spoil(const std::vector<Wrong>& values) {
    std::vector<SchemaValue> spoilt;
    for (const Wrong& wrong : values) {
        const auto& [value, stored] = wrong;
        m_spoilt.push_back({wrong, m_store.Read(value.keySet, value.key)});
        m_store.Write(value.keySet, value.key, stored);
        spoilt.push_back(value);
    }
    Announce(spoilt);
}

// What somebody has written in the meantime stays. The last spoilt comes back first, so that
// a value that was spoilt twice is what it was at the beginning.
std::size_t SpoiltValues::Restore() {
    std::vector<SchemaValue> restored;
    for (auto spoilt = m_spoilt.rbegin(); spoilt != m_spoilt.rend(); ++spoilt) {
        const auto& [value, stored] = spoilt->wrong;
        if (m_store.Read(value.keySet, value.key) != stored)
            continue;
        m_store.Put(value.keySet, value.key, spoilt->before);
        restored.push_back(value);
    }
    m_spoilt.clear();
    Announce(restored);
    return restored.size();
}

}  // namespace kora4::tools::sim
