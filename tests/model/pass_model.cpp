// SPDX-License-Identifier: MIT
// Which call of the client overtakes which notification of a pass, and what is left to tell.
#include "model/pass_model.h"

namespace kora4::test {

namespace {

News NewsOf(const Told& told) {
    switch (told.kind) {
        case ToldKind::eProfile:
            return {News::Kind::eProfile};
        case ToldKind::eEnable:
            return {News::Kind::eEnable};
        case ToldKind::eTable:
            return {News::Kind::eTable};
        case ToldKind::eOnElseOff:
            return {News::Kind::eSwitch, IndexOf(told.number)};
        case ToldKind::eValue:
            return {News::Kind::eValue, IndexOf(told.number)};
        case ToldKind::eEQ:
            break;
    }
    return {News::Kind::eValue, IndexOf(eGraphicEQ)};
}

}  // namespace

// The values and switches of a demo cannot be changed, and only a demo can be left.
OwnWrite OwnCall::Written() const {
    const bool inDemo = IsDemo(before.profile);
    OwnWrite written;
    written.profileBefore = before.profile;
    written.profileAfter = after.profile;
    switch (command.action) {
        case Action::eSetSimplePatchValue:
            written.values = !inDemo;
            written.technology = IndexOf(command.value.m_technology);
            break;
        case Action::eSetGraphicEQData:
            written.values = !inDemo;
            written.technology = IndexOf(eGraphicEQ);
            break;
        case Action::eSetTechnologyOnElseOff:
            written.switches = !inDemo;
            written.technology = IndexOf(command.number);
            break;
        case Action::eRevertActiveProfile:
            written.values = written.switches = true;
            break;
        case Action::eSetActiveProfile:
            written.profile = true;
            break;
        case Action::eSetDemoProfileAndEnable:
            written.profile = written.enable = true;
            break;
        case Action::eRevertFromDemoMode:
        case Action::eForceRevertFromDemoMode:
            written.profile = written.enable = inDemo;
            break;
        case Action::eSetVeltoEnable:
        case Action::eToggleVeltoEnable:
            written.enable = true;
            break;
        default:
            break;
    }
    return written;
}

bool OwnCall::Overtakes(const Told& told, std::uint32_t profile) const {
    return Written().Overtakes(NewsOf(told), profile);
}

std::optional<Told> PassModel::Next() {
    if (m_left.empty())
        return std::nullopt;
    const Told told = m_left.front();
    m_left.erase(m_left.begin());
    return told;
}

void PassModel::Own(const OwnCall& call) {
    m_dropped += static_cast<unsigned>(std::erase_if(
        m_left, [&](const Told& told) { return call.Overtakes(told, m_profile); }));
}

}  // namespace kora4::test
