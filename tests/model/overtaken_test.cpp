// SPDX-License-Identifier: MIT
// What callbacks do while they are told overtakes what they have not been told yet:
// overtaken_test [STEPS [SEED]]. Three objects, in a single-threaded apartment, the
// multithreaded one, and a single-threaded apartment of another process that turns calls away,
// are told of random changes, several at a time, and react with random calls; the model of a
// pass says what each call of the callback must be. Ends with 1 at a difference.
#include <algorithm>
#include <cstdio>
#include <cwchar>

#include "model/arena.h"
#include "model/mirror.h"
#include "model/rounds.h"
#include "support/desktop_hold.h"

namespace kora4::test {
namespace {

constexpr unsigned cDefaultSteps = 25000;
constexpr const char* cSeatNames[cSeats] = {"idle", "mta", "process"};
constexpr LONG cMostTurnedAway = 3;
constexpr int cTriesOfAMeeting = 10;  // a millisecond each

class OvertakenTest : Arena {
  public:
    OvertakenTest(unsigned steps, std::uint32_t seed)
        : Arena(L"overtaken"),
          m_steps(steps),
          m_seed(seed),
          m_random(seed),
          m_planner(m_model, m_random) {}

    void Run();

  private:
    void FillStore();

    void Play();
    void Prepare();
    Channel& ChannelOf(std::size_t seat) { return m_meeting.State().channels[seat]; }
    void AwaitFirstTold();
    void Make(std::size_t step);
    void TurnAway();
    void LetIn();
    void CheckReply(std::size_t step, const Reply& reply);
    void AwaitReactor(std::size_t told);
    void CheckReactor();
    void CheckMirror();
    void AwaitOthers(std::size_t steps);
    bool IsSettled(std::size_t seat, std::size_t steps) const;
    bool HasMetAPass(std::size_t seat) const;
    bool IsExplained(std::size_t seat, std::size_t steps, bool ownCallsMeetPasses) const;
    void BeginAnew();
    void CheckStore();

    [[noreturn]] void Differ(const std::string& what);
    void PrintStep(std::size_t step);
    void PrintRound();

    const unsigned m_steps;
    const std::uint32_t m_seed;
    RandomCalls m_random;
    RoundPlanner m_planner;
    std::vector<Mirror> m_mirrors;

    Round m_round;

    unsigned m_rounds = 0;
    unsigned m_stepsMade = 0;
    unsigned m_busyRounds = 0;
    unsigned m_meetings = 0;
    unsigned long long m_reactions = 0;
    unsigned long long m_told = 0;
    unsigned long long m_dropped = 0;
    unsigned long long m_shown = 0;
};

void OvertakenTest::Run() {
    std::printf("overtaken test: %u steps, seed %u\n", m_steps, m_seed);
    std::fflush(stdout);
    const ULONGLONG start = GetTickCount64();
    FillStore();
    Enter();
    m_mirrors.assign(cSeats, Mirror(m_model.Look()));
    for (; m_stepsMade < m_steps; ++m_rounds) {
        m_round = m_planner.Next();
        Play();
        m_stepsMade += static_cast<unsigned>(m_round.steps.size());
    }
    Leave();
    std::printf(
        "no difference: %u steps in %u rounds, %llu reactions, %llu calls of callbacks, %llu "
        "overtaken ones not made, %u rounds of a busy owner, %u of an own call in the midst of "
        "a pass, %llu shown items compared, "
        "%llu s\n",
        m_stepsMade, m_rounds, m_reactions, m_told, m_dropped, m_busyRounds, m_meetings,
        m_shown, static_cast<unsigned long long>((GetTickCount64() - start) / 1000));
}

void OvertakenTest::FillStore() {
    m_model.Write({false, SettingName(cTraceWordPid)}, std::uint32_t{0});
    m_model.Write({false, ProfileNameName(3)}, L"from the start");
    for (std::uint32_t demo = cDemoMovie; demo <= cDemoMusic; ++demo) {
        m_model.WriteField(RawTechnology::eVolume, demo, 3, demo - 236);
        m_model.WriteSwitch(RawTechnology::eEnhancement, demo, false);
    }
}

void OvertakenTest::Play() {
    Prepare();
    if (m_round.busy)
        TurnAway();
    for (std::size_t i = 0; i < m_round.firstReaction; ++i)
        Make(i);
    if (m_round.busy)
        LetIn();
    AwaitReactor(m_round.toldAtClosing[0]);
    for (std::size_t i = m_round.firstClosing; i < m_round.steps.size(); ++i) {
        Make(i);
        AwaitReactor(m_round.toldAtClosing[1 + i - m_round.firstClosing]);
        AwaitOthers(i + 1);
    }
    BeginAnew();
    CheckReactor();
    CheckMirror();
    CheckStore();
    m_reactions += m_round.reactions.size();
    m_dropped += m_round.dropped;
}

void OvertakenTest::Prepare() {
    for (auto& pSeat : m_seats)
        pSeat->Forget();
    m_clockBase = m_meeting.State().clock;
    ChannelOf(eMtaSeat).slow = m_round.meets;
    Channel& channel = ChannelOf(m_round.seat);
    std::copy(m_round.reactions.begin(), m_round.reactions.end(), channel.reactions);
    channel.reactionCount = static_cast<LONG>(m_round.reactions.size());
}

// The answer to a call says that its thread was at no other call then.
void OvertakenTest::TurnAway() {
    ++m_busyRounds;
    Channel& channel = ChannelOf(m_round.seat);
    channel.turnedAway = 0;
    channel.busy = true;
    Command nothing{};
    nothing.action = Action::eGetSamplingPeriod;
    m_seats[m_round.seat]->Ask(nothing);
}

// What is told later was found out by a call that was turned away before.
void OvertakenTest::LetIn() {
    Channel& channel = ChannelOf(m_round.seat);
    const LONG wanted = 1 + static_cast<LONG>(m_rounds % cMostTurnedAway);
    if (m_round.toldAtClosing[0] != 0 &&
        !PumpUntil([&] { return channel.turnedAway >= wanted; }))
        Differ("a busy owner was called " + std::to_string(channel.turnedAway) +
               " times and no more");
    channel.busy = false;
}

// Without letting calls in. It may well be told nothing at all.
void OvertakenTest::AwaitFirstTold() {
    for (int tries = 0; tries < cTriesOfAMeeting && ChannelOf(eMtaSeat).toldCount == 0; ++tries)
        Sleep(1);
}

void OvertakenTest::Make(std::size_t i) {
    const PlannedStep& planned = m_round.steps[i];
    if (m_round.meets && planned.step.seat == eMtaSeat)
        AwaitFirstTold();
    ++m_meeting.State().clock;
    if (!planned.step.seat)
        planned.change.Perform();
    else
        CheckReply(i, m_seats[*planned.step.seat]->Ask(planned.step.command));
}

void OvertakenTest::CheckReply(std::size_t i, const Reply& reply) {
    const PlannedStep& planned = m_round.steps[i];
    if (reply.hr == planned.step.hr && planned.expected.SaysSame(reply))
        return;
    char text[96];
    std::snprintf(text, sizeof text, "step %u gave 0x%08lx, it must give 0x%08lx%s",
                  static_cast<unsigned>(i), static_cast<unsigned long>(reply.hr),
                  static_cast<unsigned long>(planned.step.hr),
                  planned.expected.SaysSame(reply) ? "" : ", and what it handed out is wrong");
    Differ(text);
}

void OvertakenTest::AwaitReactor(std::size_t told) {
    const Channel& channel = ChannelOf(m_round.seat);
    const bool done = PumpUntil(
        [&] {
            return channel.toldCount >= static_cast<LONG>(told) &&
                   channel.reactionsDone >= channel.reactionCount;
        },
        m_meeting.ToldEvent());
    if (!done)
        CheckReactor();
}

void OvertakenTest::CheckReactor() {
    const Channel& channel = ChannelOf(m_round.seat);
    const auto count = static_cast<std::size_t>(channel.toldCount);
    for (std::size_t i = 0; i < std::min(count, m_round.told.size()); ++i) {
        if (!m_round.told[i].Says(channel.told[i]) ||
            m_round.told[i].recorder != channel.told[i].recorder)
            Differ("call " + std::to_string(i) + " of the callback must be '" +
                   m_round.told[i].Text() + "', it is '" + channel.told[i].Text() + "'");
    }
    if (count != m_round.told.size())
        Differ("the callback must be called " + std::to_string(m_round.told.size()) +
               " times, it was called " + std::to_string(count) + " times");
    for (LONG i = 0; i < channel.reactionsDone; ++i) {
        const std::size_t step = m_round.firstReaction + static_cast<std::size_t>(i);
        if (m_round.steps[step].step.seat)
            CheckReply(step, channel.reactionReplies[i]);
    }
    if (channel.reactionsDone != channel.reactionCount)
        Differ("the callback has not made all of its calls");
}

// Whoever believes the last thing told, or the last own call if that came later, shows what
// is stored: whatever the model of a pass may think.
void OvertakenTest::CheckMirror() {
    Mirror& mirror = m_mirrors[m_round.seat];
    const Channel& channel = ChannelOf(m_round.seat);
    std::size_t step = 0;
    bool opened = false;
    const auto follow = [&](std::size_t end) {
        for (; step < end; ++step) {
            const PlannedStep& planned = m_round.steps[step];
            if (!planned.step.seat || planned.step.hr != S_OK)
                continue;
            if (planned.step.command.action == Action::eCreateCustomProfile)
                mirror.Created(static_cast<std::uint32_t>(planned.step.command.number),
                               m_round.views[step]);
            if (planned.step.seat != m_round.seat)
                continue;
            opened = opened || planned.step.command.action == Action::eOpen;
            mirror.Did({planned.step.command, m_round.views[step], m_round.views[step + 1]},
                       m_round.known[step]);
        }
    };
    follow(m_round.firstReaction);
    for (std::size_t i = 0; i < m_round.told.size(); ++i) {
        for (std::size_t closing = 0; closing + 1 < m_round.toldAtClosing.size(); ++closing) {
            if (i == m_round.toldAtClosing[closing])
                follow(m_round.firstClosing + closing + 1);
        }
        // A callback of an object that is gone, in its last pass, says nothing.
        if (!opened ||
            channel.told[i].recorder == channel.told[m_round.told.size() - 1].recorder)
            mirror.Hear(channel.told[i], m_round.views[step], m_round.KnownBefore(step));
        while (step - m_round.firstReaction < m_round.reactions.size() &&
               m_round.reactions[step - m_round.firstReaction].atTold == static_cast<LONG>(i))
            follow(step + 1);
    }
    follow(m_round.steps.size());
    m_shown += mirror.Certain();
    if (const std::string difference = mirror.Difference(m_round.views.back());
        !difference.empty())
        Differ("the client shows otherwise than it is stored:\n" + difference);
}

bool OvertakenTest::IsSettled(std::size_t seat, std::size_t steps) const {
    return IsExplained(seat, steps, seat == eMtaSeat);
}

// Whether what the object was told shows that a call of its own came in between.
bool OvertakenTest::HasMetAPass(std::size_t seat) const {
    return seat == eMtaSeat && !IsExplained(seat, m_round.steps.size(), false);
}

// Whether what it was told is right and all there is to tell after so many steps.
bool OvertakenTest::IsExplained(std::size_t seat, std::size_t count,
                                bool ownCallsMeetPasses) const {
    const std::vector<Told> told = ToldTo(seat);
    std::vector<Step> steps;
    for (std::size_t i = 0; i < count; ++i)
        steps.push_back(m_round.steps[i].step);
    const View& view = m_round.views[count];
    const Hypotheses left = Explain(m_starts[seat], seat, true, steps, m_round.views,
                                    {&told, m_clockBase, false, ownCallsMeetPasses});
    return std::any_of(left.begin(), left.end(), [&](const Hypothesis& h) {
        return h.explained == told.size() && h.known.Compare(view).empty();
    });
}

// The other objects have looked at the store when they pleased.
void OvertakenTest::AwaitOthers(std::size_t steps) {
    const std::array<bool, cSeats> isSettled = AwaitAll(
        [&](std::size_t seat) { return seat == m_round.seat || IsSettled(seat, steps); });
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        if (!isSettled[seat])
            Differ(std::string("what the object of the seat '") + cSeatNames[seat] +
                   "' was told cannot be right, or is not all");
    }
}

// Everybody knows the store as it is now.
void OvertakenTest::BeginAnew() {
    const View& view = m_round.views.back();
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        if (seat != m_round.seat) {
            m_mirrors[seat].ReadAll(view, Baseline(view));
            m_meetings += HasMetAPass(seat);
        }
        m_told += static_cast<unsigned long long>(m_seats[seat]->ToldCount());
        m_starts[seat].clear();
        for (const bool inDemo : {false, true}) {
            if (m_planner.MayBe(seat, inDemo))
                m_starts[seat].push_back({Baseline(view), inDemo, 0});
        }
    }
}

void OvertakenTest::CheckStore() {
    if (const std::string difference = Difference(m_model.Stored(), m_storedValues.ReadAll());
        !difference.empty())
        Differ("the store differs:\n" + difference);
}

void OvertakenTest::PrintStep(std::size_t i) {
    const PlannedStep& planned = m_round.steps[i];
    std::printf("    step %u, %s: ", static_cast<unsigned>(i),
                planned.step.seat ? cSeatNames[*planned.step.seat] : "from outside");
    if (planned.step.seat)
        std::printf("%s -> 0x%08lx\n", Text(planned.step.command).c_str(),
                    static_cast<unsigned long>(planned.step.hr));
    for (LONG w = 0; w < planned.change.count; ++w) {
        const RawWrite& write = planned.change.writes[w];
        std::printf("%s%s\n", w == 0 ? "" : "      ",
                    Text({write.dynamic, write.name},
                         write.isText ? StoreModel::Value(std::wstring(write.text))
                                      : StoreModel::Value(write.number))
                        .c_str());
    }
}

void OvertakenTest::PrintRound() {
    std::printf("round %u, told and reacting: '%s'%s; the store is in profile %u\n", m_rounds,
                cSeatNames[m_round.seat], m_round.busy ? ", busy at first" : "",
                m_round.views.front().profile);
    for (std::size_t i = 0; i < m_round.firstReaction; ++i)
        PrintStep(i);
    std::size_t step = m_round.firstReaction;
    for (std::size_t i = 0; i < m_round.told.size(); ++i) {
        for (std::size_t closing = 0; closing + 1 < m_round.toldAtClosing.size(); ++closing) {
            for (;
                 i == m_round.toldAtClosing[closing] && step <= m_round.firstClosing + closing;
                 ++step)
                PrintStep(step);
        }
        std::printf("  must be told to callback %ld: %s\n", m_round.told[i].recorder,
                    m_round.told[i].Text().c_str());
        for (; step < m_round.firstClosing &&
               m_round.reactions[step - m_round.firstReaction].atTold == static_cast<LONG>(i);
             ++step) {
            if (m_round.reactions[step - m_round.firstReaction].fromOtherThread)
                std::printf("    from another thread:\n");
            PrintStep(step);
        }
    }
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        std::printf("told to '%s', by the number of steps begun then:\n", cSeatNames[seat]);
        for (LONG i = 0; i < m_seats[seat]->ToldCount(); ++i) {
            const Told& told = m_seats[seat]->ToldAt(i);
            std::printf("  %3ld to callback %ld: %s\n", told.clock - m_clockBase, told.recorder,
                        told.Text().c_str());
        }
    }
}

void OvertakenTest::Differ(const std::string& what) {
    PrintRound();
    std::printf("DIFFERENCE in the round that begins with step %u, seed %u: %s\n", m_stepsMade,
                m_seed, what.c_str());
    Die("again: overtaken_test " + std::to_string(m_steps) + " " + std::to_string(m_seed));
}

}  // namespace
}  // namespace kora4::test

int main(int argc, char** argv) {
    using namespace kora4::test;
    const int served = ServeSeatIfAsked(argc, argv);
    if (served >= 0)
        return served;
    const ModelArguments arguments =
        ArgumentsOf(argc, argv, cDefaultSteps, "usage: overtaken_test [STEPS [SEED]]");
    const DesktopHold desktop;
    OvertakenTest(arguments.count, arguments.seed).Run();
    return 0;
}
