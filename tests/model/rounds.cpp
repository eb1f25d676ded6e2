// SPDX-License-Identifier: MIT
// Plans a round on the model: changes, reactions of the callback, and what must be told.
#include "model/rounds.h"

#include <algorithm>
#include <cwchar>

#include "model/encodings.h"

namespace kora4::test {

namespace {

// No client ever enters it: a change to it is always a marker.
constexpr std::uint32_t cMarkerProfile = cDemoGames;

constexpr std::uint32_t cTriggers = 4;
constexpr std::size_t cReactingPasses = 3;
constexpr std::size_t cMostReactions = 40;
static_assert(cMostReactions < cMaxReactions);

RawChange RawChangeOf(const std::map<StoreModel::Address, StoreModel::Value>& writes) {
    RawChange change{};
    for (const auto& [address, value] : writes) {
        RawWrite& write = change.writes[change.count++];
        write.dynamic = address.first;
        std::wcsncpy(write.name, address.second.c_str(), cRawNameCapacity - 1);
        write.isText = std::holds_alternative<std::wstring>(value);
        if (write.isText)
            std::wcsncpy(write.text, std::get<std::wstring>(value).c_str(),
                         cRawTextCapacity - 1);
        else
            write.number = std::get<std::uint32_t>(value);
    }
    return change;
}

bool LeavesDemo(Action action) {
    return action == Action::eRevertFromDemoMode || action == Action::eForceRevertFromDemoMode;
}

bool IsRegistration(Action action) {
    return action <= Action::eUnregister;
}

}  // namespace

RoundPlanner::RoundPlanner(StoreModel& model, RandomCalls& random)
    : m_model(model), m_random(random) {
    m_demo.fill({true, false});
    m_recorder.fill(1);
}

Round RoundPlanner::Next() {
    m_round = {};
    m_round.seat = Below(cSeats);
    m_round.views = {m_model.Look()};
    m_known = Baseline(Now());
    m_registered = true;
    m_round.busy = OneIn(25) && m_round.seat == eProcessSeat;
    m_round.meets = OneIn(5) && m_round.seat == eIdleSeat;
    PlanTriggers();
    m_round.firstReaction = m_round.steps.size();
    for (std::size_t pass = 0; HasNews(); ++pass)
        PlanPass(pass < cReactingPasses);
    PlanClosing();
    // By then every object has looked at the store.
    for (auto& demo : m_demo) {
        if (!IsDemo(Now().profile))
            demo = {true, false};
    }
    return m_round;
}

void RoundPlanner::AddForeign(const Writes& writes) {
    PlannedStep planned{{std::nullopt, {}, S_OK, {}}, RawChangeOf(writes)};
    for (const auto& [address, value] : writes)
        m_model.Write(address, value);
    Extend(planned, nullptr);
}

bool RoundPlanner::IsCertain(std::size_t seat, const Command& command) const {
    return !(m_demo[seat][false] && m_demo[seat][true]) ||
           m_model.Result(command, false) == m_model.Result(command, true);
}

// Adds nothing, and says so, when the result is not certain.
bool RoundPlanner::AddCall(std::size_t seat, const Command& command, PassModel* pPass) {
    if (!IsCertain(seat, command))
        return false;
    PlannedStep planned{{seat, command, S_OK, {}}};
    for (const bool inDemo : {false, true})
        planned.step.answers[inDemo] = m_model.Result(command, inDemo);
    planned.step.hr = planned.step.answers[m_demo[seat][true]];
    planned.expected = Reply::Untouched();
    planned.expected.value = command.value;
    if (command.action == Action::eSetGraphicEQData)
        planned.expected.eq = command.eq;
    if (planned.step.hr == S_OK)
        m_model.Perform(command, &planned.expected);
    Extend(planned, pPass);
    return true;
}

// The model has made the step already.
void RoundPlanner::Extend(const PlannedStep& planned, PassModel* pPass) {
    const View before = Now();
    const View after = m_model.Look();
    const Step& step = planned.step;
    m_round.steps.push_back(planned);
    m_round.known.push_back(m_known);
    m_round.views.push_back(after);
    FollowDemo(step, before, after);
    if (step.seat != m_round.seat)
        return;
    m_known.MoveWithOwn(before, after);
    if (pPass && step.hr == S_OK)
        pPass->Own({step.command, before, after});
    switch (step.command.action) {
        case Action::eOpen:
            m_known = Baseline(after);
            m_opened = true;
            ++m_recorder[m_round.seat];
            break;
        case Action::eRegisterOther:
            ++m_recorder[m_round.seat];
            m_registered = true;
            break;
        case Action::eRegister:
            m_registered = true;
            break;
        case Action::eUnregister:
            m_registered = false;
            break;
        default:
            break;
    }
}

void RoundPlanner::FollowDemo(const Step& step, const View& before, const View& after) {
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        auto& [out, in] = m_demo[seat];
        if (step.seat == seat) {
            const Action action = step.command.action;
            const bool leaves = LeavesDemo(action) && IsDemo(before.profile);
            if (step.hr == S_OK && action == Action::eSetDemoProfileAndEnable)
                m_demo[seat] = {false, true};
            else if (action == Action::eOpen || (step.hr == S_OK && leaves))
                m_demo[seat] = {true, false};
        } else if (seat != m_round.seat && in && !IsDemo(after.profile)) {
            // It has looked at this or not.
            out = true;
        }
    }
}

// An owner that lets no calls in is told of several steps at once; every other one of each
// step by itself, so that the first step with news is the last one.
void RoundPlanner::PlanTriggers() {
    const bool together = m_round.seat == eIdleSeat || m_round.busy;
    if (m_profileToRestore) {
        Writes writes = SomeWrites();
        writes[{true, SettingName(cProfilePid)}] = *m_profileToRestore;
        m_profileToRestore.reset();
        AddForeign(writes);
    }
    if (m_round.meets)
        PlanMeeting();
    const std::uint32_t count = m_round.meets ? 0 : 1 + Below(cTriggers);
    for (std::uint32_t i = 0; i < count && (together || !HasNews()); ++i) {
        const std::uint32_t kind = Below(10);
        if (kind < 6)
            AddForeign(SomeWrites());
        else
            AddSomeCall(kind == 6 ? m_round.seat : (m_round.seat + 1 + Below(2)) % cSeats);
    }
}

// Only in the multithreaded apartment can an object be called while it tells.
void RoundPlanner::PlanMeeting() {
    AddForeign(SomeWrites());
    const std::uint32_t count = 1 + Below(2);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (OneIn(2)) {
            const std::vector<Told> news = ToldBy(m_known, Now());
            if (!news.empty())
                AddCall(eMtaSeat, Answer(news[Below(static_cast<std::uint32_t>(news.size()))]));
        } else {
            AddSomeCall(eMtaSeat);
        }
    }
}

void RoundPlanner::AddSomeCall(std::size_t seat) {
    Command command = m_random.Next();
    if (OneIn(4))
        command.action = Action::eRevertActiveProfile;
    AddCall(seat, command);
}

void RoundPlanner::PlanPass(bool reacting) {
    PassModel pass(m_known, Now());
    const LONG recorder = m_recorder[m_round.seat];
    m_known = Baseline(Now());
    m_opened = false;
    // A demo that is over is over also for the object that has entered it.
    if (!IsDemo(Now().profile))
        m_demo[m_round.seat] = {true, false};
    while (auto told = pass.Next()) {
        told->recorder = recorder;
        m_round.told.push_back(*told);
        if (reacting && !m_opened)
            PlanReactions(pass, *told);
    }
    m_round.dropped += pass.Dropped();
}

void RoundPlanner::PlanReactions(PassModel& pass, const Told& told) {
    const std::uint32_t drawn = Below(20);
    const std::uint32_t count = drawn < 9 ? 0 : drawn < 16 ? 1 : drawn < 19 ? 2 : 4;
    for (std::uint32_t i = 0;
         i < count && m_registered && !m_opened && m_round.reactions.size() < cMostReactions;
         ++i)
        PlanReaction(pass, told);
    // What is announced while nobody is registered is told by nobody.
    if (!m_registered && (HasNews() || OneIn(2)))
        PlanReaction(pass, told);
}

void RoundPlanner::PlanReaction(PassModel& pass, const Told& told) {
    if (m_registered && OneIn(12))
        PlanExcursion(pass, told);
    else if (m_registered && OneIn(7))
        ReactFromOutside(SomeWrites());
    else
        React(pass, SomeReaction(pass, told));
}

// While somebody else has put another profile in place, for a while or for good, an own call
// works on that one.
void RoundPlanner::PlanExcursion(PassModel& pass, const Told& told) {
    const StoreModel::Address address{true, SettingName(cProfilePid)};
    const std::uint32_t profile = Now().profile;
    const std::uint32_t visited = Below(3);
    ReactFromOutside({{address, visited}});
    Command command = SomeReaction(pass, told);
    if (OneIn(2)) {
        command.action =
            OneIn(3) ? Action::eSetDemoProfileAndEnable : Action::eSetActiveProfile;
        command.number = static_cast<LONG>(command.action == Action::eSetActiveProfile
                                               ? (OneIn(2) ? profile : visited)
                                               : cDemoMovie);
    }
    React(pass, command);
    if (m_registered && !m_opened && OneIn(2))
        ReactFromOutside({{address, profile}});
}

void RoundPlanner::ReactFromOutside(const Writes& writes) {
    AddForeign(writes);
    Reaction reaction{};
    reaction.atTold = static_cast<LONG>(m_round.told.size() - 1);
    reaction.change = m_round.steps.back().change;
    m_round.reactions.push_back(reaction);
}

void RoundPlanner::React(PassModel& pass, const Command& command) {
    if (!AddCall(m_round.seat, command, &pass))
        return;
    Reaction reaction{};
    reaction.atTold = static_cast<LONG>(m_round.told.size() - 1);
    reaction.command = command;
    reaction.fromOtherThread =
        m_round.seat == eMtaSeat && !IsRegistration(command.action) && OneIn(3);
    m_round.reactions.push_back(reaction);
    if (command.action == Action::eRegisterOther || command.action == Action::eUnregister)
        pass.End();
}

Command RoundPlanner::SomeReaction(const PassModel& pass, const Told& told) {
    Command command = m_random.Next();
    const std::uint32_t drawn = Below(100);
    if (!m_registered) {
        command.action = OneIn(2) ? Action::eRegister : Action::eRegisterOther;
    } else if (drawn < 45) {
        const std::vector<Told>& left = pass.Left();
        command = Answer(left.empty() || OneIn(3)
                             ? told
                             : left[Below(static_cast<std::uint32_t>(left.size()))]);
    } else if (drawn < 52) {
        constexpr Action cWide[] = {Action::eRevertActiveProfile,
                                    Action::eSetDemoProfileAndEnable,
                                    Action::eRevertFromDemoMode, Action::eToggleVeltoEnable};
        command.action = cWide[Below(std::size(cWide))];
        command.number = static_cast<LONG>(cDemoMovie + Below(2));
    } else if (drawn < 59) {
        constexpr Action cRegistrations[] = {Action::eRegister, Action::eRegisterOther,
                                             Action::eUnregister};
        command.action = cRegistrations[Below(std::size(cRegistrations))];
    } else if (drawn == 59 && OneIn(2)) {
        command.action = Action::eOpen;
    }
    return command;
}

// A call that changes just what was told, or is going to be.
Command RoundPlanner::Answer(const Told& told) {
    Command command{};
    command.number = told.number;
    command.flag = static_cast<BOOL>(Below(2));
    switch (told.kind) {
        case ToldKind::eProfile:
            command.action = Action::eSetActiveProfile;
            command.number = static_cast<LONG>(Below(4));
            break;
        case ToldKind::eEnable:
            command.action = Action::eSetVeltoEnable;
            break;
        case ToldKind::eTable:
            command.action =
                OneIn(2) ? Action::eSetCustomProfileName : Action::eCreateCustomProfile;
            command.number = static_cast<LONG>(3 + Below(2));
            std::wcscpy(command.name, L"answered");
            break;
        case ToldKind::eOnElseOff:
            command.action = Action::eSetTechnologyOnElseOff;
            break;
        case ToldKind::eValue:
            command.action = Action::eSetSimplePatchValue;
            do
                command.value = m_random.SliderValue();
            while (command.value.m_technology != static_cast<KORA4APITechnology>(told.number));
            break;
        case ToldKind::eEQ:
            command.action = Action::eSetGraphicEQData;
            command.eq = m_random.EQ();
            break;
    }
    return command;
}

void RoundPlanner::PlanClosing() {
    m_round.firstClosing = m_round.steps.size();
    m_round.toldAtClosing = {m_round.told.size()};
    if (!m_registered) {
        Command registration{};
        registration.action = OneIn(2) ? Action::eRegister : Action::eRegisterOther;
        AddCall(m_round.seat, registration);
        m_round.toldAtClosing.push_back(m_round.told.size());
    }
    // Who is told of a new profile is told of no marker that has come with it.
    const std::uint32_t profile = Now().profile;
    if (std::any_of(m_round.views.begin(), m_round.views.end(),
                    [=](const View& view) { return view.profile != profile; }))
        PlanMarker();
    PlanMarker();
    // Whether the object still thinks itself in a demo shows in this answer.
    if (!IsDemo(Now().profile)) {
        Command question{};
        question.action = Action::eRevertFromDemoMode;
        AddCall(m_round.seat, question);
        m_round.toldAtClosing.push_back(m_round.told.size());
    }
}

// Something that nobody has been told before: an object that has told it has looked at the
// store after everything else. The values of a demo are built in; there the profile serves.
void RoundPlanner::PlanMarker() {
    const std::uint32_t profile = Now().profile;
    Writes writes;
    if (IsDemo(profile)) {
        m_profileToRestore = profile == cMarkerProfile ? cDemoMovie : profile;
        writes[{true, SettingName(cProfilePid)}] = cMarkerProfile;
    } else {
        writes[{false, PatchName(RawTechnology::eVolume, profile, 3)}] = m_marker++;
        Announce(writes, RawTechnology::eVolume);
    }
    AddForeign(writes);
    PlanPass(false);
    m_round.toldAtClosing.push_back(m_round.told.size());
}

void RoundPlanner::Announce(Writes& writes, RawTechnology technology) {
    const StoreModel::Address trigger{true, TriggerName(technology)};
    const auto found = m_model.Stored().find(trigger);
    writes[trigger] =
        1 + (found == m_model.Stored().end() ? 0 : std::get<std::uint32_t>(found->second));
}

void RoundPlanner::ChangeValue(Writes& writes, const ToldTechnology& technology,
                               std::uint32_t profile) {
    const auto field = [&](std::uint32_t pid) -> StoreModel::Value& {
        return writes[{false, PatchName(technology.raw, profile, pid)}];
    };
    switch (technology.api) {
        case eVolumeLeveler:
            field(3) = Below(11);
            break;
        case eIntelligentEQ:
            field(5) = Below(6);
            break;
        case eGraphicEQ: {
            const GraphicEQData eq = Limited(m_random.EQ());
            field(3) = ArrayText(eq.m_freq, eq.m_bands, cHertzScale);
            field(4) = ArrayText(eq.m_gain, eq.m_bands, cGainScale);
            break;
        }
        default:
            field(3) = FloatText(m_random.Between(0.0f, 1.0f));
    }
    Announce(writes, technology.raw);
}

// What a program that is not a client of the API changes at once.
RoundPlanner::Writes RoundPlanner::SomeWrites() {
    Writes writes;
    std::uint32_t profile = Now().profile;
    if (OneIn(8)) {
        profile = Below(8) == 0 ? cDemoMovie + Below(2) : Below(4);
        writes[{true, SettingName(cProfilePid)}] = profile;
    }
    if (OneIn(2))
        writes[{true, SettingName(cEnablePid)}] = std::uint32_t{!Now().enable};
    if (OneIn(4))
        writes[{true, SettingName(cTablePid)}] = Now().table + 1;
    const std::uint32_t items = 1 + Below(5);
    for (std::uint32_t i = 0; i < items; ++i) {
        const ToldTechnology& technology = cToldTechnologies[Below(cToldTechnologies.size())];
        if (OneIn(2))
            ChangeValue(writes, technology, profile);
        else
            writes[{true, PatchName(technology.raw, profile, 0)}] = Below(2);
    }
    return writes;
}

}  // namespace kora4::test
