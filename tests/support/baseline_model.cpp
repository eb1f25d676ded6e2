// SPDX-License-Identifier: MIT
// The rules of what a client knows of the store.
#include "support/baseline_model.h"

namespace kora4::test {

namespace {

template <typename T>
void Move(T& known, const T& before, const T& after) {
    if (known == before)
        known = after;
}

}  // namespace

std::vector<News> Baseline::Compare(const StoreState& stored) const {
    using enum News::Kind;
    std::vector<News> news;
    if (m_known.enable != stored.enable)
        news.push_back({eEnable});
    if (m_known.profile != stored.profile) {
        // The client is expected to read everything again.
        news.push_back({eProfile});
    } else {
        for (std::size_t i = 0; i < cToldTechnologyCount; ++i) {
            if (m_known.switches[i] != stored.switches[i])
                news.push_back({eSwitch, i});
            if (m_known.triggers[i] != stored.triggers[i])
                news.push_back({eValue, i});
        }
    }
    if (m_known.table != stored.table)
        news.push_back({eTable});
    return news;
}

void Baseline::MoveWithOwn(const StoreState& before, const StoreState& after) {
    if (before.profile != after.profile) {
        if (m_known.profile == before.profile) {
            m_known.profile = after.profile;
            m_known.switches = after.switches;
        }
    } else if (m_known.profile == after.profile) {
        for (std::size_t i = 0; i < cToldTechnologyCount; ++i)
            Move(m_known.switches[i], before.switches[i], after.switches[i]);
    }
    Move(m_known.enable, before.enable, after.enable);
    Move(m_known.table, before.table, after.table);
    for (std::size_t i = 0; i < cToldTechnologyCount; ++i)
        Move(m_known.triggers[i], before.triggers[i], after.triggers[i]);
}

bool OwnWrite::Overtakes(const News& news, std::uint32_t analysed) const {
    using enum News::Kind;
    if (news.kind == eTable)
        return false;
    if (news.kind == eEnable)
        return enable;
    // Whatever others have stored since.
    if (profile && profileAfter != analysed)
        return true;
    if (news.kind == eProfile || profileBefore != analysed ||
        (technology && *technology != news.technology))
        return false;
    return news.kind == eSwitch ? switches : values;
}

}  // namespace kora4::test
