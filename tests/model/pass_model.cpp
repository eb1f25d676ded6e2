// SPDX-License-Identifier: MIT
// Which call of the client overtakes which notification of a pass, and what is left to tell.
#include "model/pass_model.h"

namespace kora4::test {

// The values and switches of a demo cannot be changed, and only a demo can be left.
bool OwnCall::Stored() const {
    switch (command.action) {
        case Action::eSetSimplePatchValue:
        case Action::eSetGraphicEQData:
        case Action::eSetTechnologyOnElseOff:
            return !IsDemo(before.profile);
        case Action::eRevertFromDemoMode:
        case Action::eForceRevertFromDemoMode:
            return IsDemo(before.profile);
        case Action::eSetActiveProfile:
        case Action::eSetDemoProfileAndEnable:
        case Action::eRevertActiveProfile:
        case Action::eSetVeltoEnable:
        case Action::eToggleVeltoEnable:
            return true;
        default:
            return false;
    }
}

bool OwnCall::StoredEnable() const {
    return Stored() && (command.action == Action::eSetVeltoEnable ||
                        command.action == Action::eToggleVeltoEnable ||
                        command.action == Action::eSetDemoProfileAndEnable ||
                        command.action == Action::eRevertFromDemoMode ||
                        command.action == Action::eForceRevertFromDemoMode);
}

bool OwnCall::Overtakes(const Told& told, std::uint32_t profile) const {
    if (!Stored() || told.kind == ToldKind::eTable)
        return false;
    if (told.kind == ToldKind::eEnable)
        return StoredEnable();
    const bool isValue = told.kind == ToldKind::eValue;
    const bool isEQ = told.kind == ToldKind::eEQ;
    const bool isSwitch = told.kind == ToldKind::eOnElseOff;
    const bool inProfile = before.profile == profile;
    switch (command.action) {
        case Action::eSetSimplePatchValue:
            return inProfile && isValue &&
                   told.number == static_cast<LONG>(command.value.m_technology);
        case Action::eSetGraphicEQData:
            return inProfile && isEQ;
        case Action::eSetTechnologyOnElseOff:
            return inProfile && isSwitch && told.number == command.number;
        case Action::eRevertActiveProfile:
            return inProfile && (isValue || isEQ || isSwitch);
        case Action::eSetActiveProfile:
        case Action::eSetDemoProfileAndEnable:
        case Action::eRevertFromDemoMode:
        case Action::eForceRevertFromDemoMode:
            // Whatever others have stored since.
            return after.profile != profile;
        default:
            return false;
    }
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
