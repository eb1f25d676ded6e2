// SPDX-License-Identifier: MIT
// What a client that follows its notifications shows after each of them.
#include "model/mirror.h"

#include <algorithm>

#include "model/encodings.h"

namespace kora4::test {

Mirror::Doubts Mirror::DoubtsOf(const View& view, const Baseline& known) {
    Doubts doubts;
    const StoreState& told = known.Known();
    doubts.profile = told.profile != view.profile;
    doubts.enable = told.enable != view.enable;
    for (std::size_t i = 0; i < doubts.switches.size(); ++i)
        doubts.switches[i] = doubts.profile || told.switches[i] != view.switches[i];
    return doubts;
}

void Mirror::ReadAll(const View& view, const Baseline& known) {
    m_shown = view;
    m_doubts = DoubtsOf(view, known);
}

// Everything but the enable and the profile table belongs to the profile.
void Mirror::ReadProfile(const View& view, const Baseline& known) {
    View shown = view;
    shown.enable = m_shown.enable;
    shown.table = m_shown.table;
    m_shown = shown;
    const bool enable = m_doubts.enable;
    m_doubts = DoubtsOf(view, known);
    m_doubts.enable = enable;
}

void Mirror::ShowValue(std::size_t technology, const View& view) {
    if (cToldTechnologies[technology].api == eGraphicEQ)
        m_shown.eq = view.eq;
    else
        m_shown.values[technology] = view.values[technology];
}

void Mirror::Hear(const Told& told, const View& view, const Baseline& known) {
    switch (told.kind) {
        case ToldKind::eProfile:
            ReadProfile(view, known);
            m_shown.profile = static_cast<std::uint32_t>(told.number);
            break;
        case ToldKind::eEnable:
            m_shown.enable = told.number != 0;
            m_doubts.enable = false;
            break;
        case ToldKind::eTable:
            m_shown.table = view.table;
            break;
        case ToldKind::eOnElseOff:
            m_shown.switches[IndexOf(told.number)] = told.flag != 0;
            m_doubts.switches[IndexOf(told.number)] = false;
            break;
        case ToldKind::eValue:
            m_shown.values[IndexOf(told.number)] = told.value;
            break;
        case ToldKind::eEQ:
            m_shown.eq = told.eq;
            break;
    }
}

void Mirror::Did(const OwnCall& call, const Baseline& known) {
    const View& before = call.before;
    const View& after = call.after;
    const Doubts doubts = DoubtsOf(before, known);
    const OwnWrite written = call.Written();
    // What goes into a profile that is not shown changes nothing that is.
    for (std::size_t i = 0; i < cToldTechnologyCount && before.profile == m_shown.profile;
         ++i) {
        if (written.technology && *written.technology != i)
            continue;
        if (written.values)
            ShowValue(i, after);
        if (written.switches) {
            m_shown.switches[i] = after.switches[i];
            m_doubts.switches[i] = doubts.switches[i];
        }
    }
    switch (call.command.action) {
        case Action::eOpen:
            ReadAll(after, Baseline(after));
            break;
        case Action::eRegister:
        case Action::eRegisterOther:
            ReadAll(after, known);
            break;
        default:
            break;
    }
    if (call.command.action == Action::eSetActiveProfile || before.profile != after.profile) {
        // An object that knew the profile before knows the new one, with its switches.
        Baseline moved = known;
        moved.MoveWithOwn(before, after);
        ReadProfile(after, moved);
        m_doubts.profile = doubts.profile;
    }
    if (written.enable) {
        m_shown.enable = after.enable;
        m_doubts.enable = doubts.enable;
    }
    if (before.table != after.table)
        m_shown.table = after.table;
}

// A profile that was shown without having a name gets other values while another one is
// stored. Nobody is told: the values that are announced are those of the active profile.
void Mirror::Created(std::uint32_t profile, const View& stored) {
    if (m_shown.profile == profile && stored.profile != profile)
        m_doubts.profile = true;
}

unsigned Mirror::Certain() const {
    const auto doubted = std::count(m_doubts.switches.begin(), m_doubts.switches.end(), true);
    return m_doubts.profile ? 2 : static_cast<unsigned>(15 - doubted - m_doubts.enable);
}

std::string Mirror::Difference(const View& view) const {
    std::string difference;
    const auto compare = [&](bool differs, const std::string& item) {
        if (differs)
            difference += "  " + item + "\n";
    };
    compare(!m_doubts.enable && m_shown.enable != view.enable, "the enable");
    compare(m_shown.table != view.table, "the profile table");
    if (m_doubts.profile)
        return difference;
    compare(m_shown.profile != view.profile, "the profile");
    for (std::size_t i = 0; i < cToldTechnologies.size(); ++i) {
        const std::string number = std::to_string(cToldTechnologies[i].api);
        compare(!m_doubts.switches[i] && m_shown.switches[i] != view.switches[i],
                "the switch of technology " + number);
        compare(m_shown.values[i] != view.values[i], "the value of technology " + number);
    }
    compare(!Same(m_shown.eq, view.eq), "the graphic EQ");
    return difference;
}

}  // namespace kora4::test
