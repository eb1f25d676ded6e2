// SPDX-License-Identifier: MIT
// Random calls of three objects in two processes against a model: model_test [CALLS [SEED]].
// After each call its result, what it handed out and what it stored are compared; every few
// calls the whole store, and all that each object was told. Ends with 1 at a difference.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "model/arena.h"
#include "model/encodings.h"
#include "model/random_calls.h"
#include "support/desktop_hold.h"

namespace kora4::test {
namespace {

constexpr unsigned cDefaultCalls = 20000;
constexpr unsigned cCallsPerBarrier = 25;
constexpr std::size_t cLogLines = 120;

// No client ever enters it: a change to it is always the driver's.
constexpr std::uint32_t cBarrierProfile = cDemoGames;

// The seats of the arena.
enum : std::size_t { eOwnThread, eOtherThread, eOtherProcess };
constexpr const char* cSeatNames[cSeats] = {"driver", "thread", "process"};

// Whether what passes between a comparison of an object and its callback is bounded by the
// object's thread: else registration is changed while some of it is still under way.
constexpr bool MayChangeRegistration(std::size_t seat) {
    return seat != eOtherThread;
}

class ModelTest : Arena {
  public:
    ModelTest(unsigned calls, std::uint32_t seed)
        : Arena(L"model"), m_calls(calls), m_seed(seed), m_random(seed) {}

    void Run();

  private:
    struct LogEntry {
        unsigned call;
        Step step;
    };

    void FillStore();
    void RandomCall();
    void MakeCall(std::size_t seat, const Command& command);
    void CheckReply(const Command& command, const Reply& expected, const Reply& reply);
    void CheckTouched();
    void Change(const std::vector<std::pair<StoreModel::Address, StoreModel::Value>>& changes);
    void AddStep(const Step& step);
    void LetCallsIn();

    void Barrier();
    Evidence EvidenceOf(std::size_t seat, const std::vector<Told>& told) const;
    bool HasToldEverything(std::size_t seat);
    bool HasToldBarrier(std::size_t seat);
    void RequireOfAll(bool (ModelTest::*done)(std::size_t), const char* what);
    void BeginBatch();

    [[noreturn]] void Differ(const std::string& what);
    void PrintBatch();

    const unsigned m_calls;
    const std::uint32_t m_seed;
    RandomCalls m_random;

    unsigned m_call = 0;
    std::vector<LogEntry> m_log;

    // Since the last barrier.
    std::vector<Step> m_steps;
    std::vector<View> m_views;
    std::array<bool, cSeats> m_wereRegistered{};

    // Of now.
    std::array<bool, cSeats> m_registered{};
    std::array<Hypotheses, cSeats> m_possible;  // what was told not looked at

    unsigned m_barriers = 0;
    unsigned long long m_told = 0;
    unsigned long long m_stored = 0;
};

void ModelTest::Run() {
    std::printf("model test: %u calls, seed %u\n", m_calls, m_seed);
    std::fflush(stdout);
    const ULONGLONG start = GetTickCount64();
    FillStore();
    Enter();
    m_registered.fill(true);
    BeginBatch();
    while (m_call < m_calls) {
        RandomCall();
        if (m_call % cCallsPerBarrier == 0)
            Barrier();
    }
    Barrier();
    Leave();
    std::printf(
        "no difference: %u calls, %u barriers, %llu calls of callbacks and %llu stored "
        "values compared, %llu s\n",
        m_calls, m_barriers, m_told, m_stored,
        static_cast<unsigned long long>((GetTickCount64() - start) / 1000));
}

// Some settings are there from the start, those of the demos among them.
void ModelTest::FillStore() {
    using enum RawTechnology;
    constexpr std::uint32_t cMask = 0x03FF;
    m_model.Write({false, SettingName(cTraceWordPid)}, std::uint32_t{0});
    m_model.Write({false, MasterEnablesName()}, cMask);
    for (std::uint32_t demo = cDemoMovie; demo <= cDemoGames; ++demo) {
        if (demo == cDemoMusic)
            continue;
        m_model.WriteField(eVolume, demo, 3, demo - 236);
        m_model.WriteField(eHeadphone, demo, 3, L"1.250000");
        m_model.WriteField(eStandardEQ, demo, 3, L"0001,0002,0064,03e8");
        m_model.WriteField(eStandardEQ, demo, 4, L"0100,0002,0100,ff00");
        m_model.WriteSwitch(eEnhancement, demo, false);
        m_model.WriteSwitch(eDynamicEQ, demo, true);
    }
    m_model.Write({false, ProfileNameName(4)}, L"from the start");
}

void ModelTest::BeginBatch() {
    m_clockBase = m_meeting.State().clock.load();
    m_steps.clear();
    m_views = {m_model.Look()};
    m_wereRegistered = m_registered;
    m_possible = m_starts;
    for (auto& pSeat : m_seats)
        pSeat->Forget();
}

void ModelTest::RandomCall() {
    ++m_call;
    const std::size_t seat = m_random.Below(cSeats);
    Command command = m_random.Next();
    // Drawn in any case, so that the calls do not depend on what is registered.
    const bool changeRegistration = m_random.OneIn(60);
    const bool renew = m_random.OneIn(300);
    const bool pump = m_random.OneIn(2);
    if (MayChangeRegistration(seat) && renew)
        command.action = Action::eOpen;
    else if (MayChangeRegistration(seat) && changeRegistration)
        command.action = m_registered[seat] ? Action::eUnregister : Action::eRegister;
    MakeCall(seat, command);
    if (pump)
        LetCallsIn();
}

// Calls that have arrived come in now; those of the driver's own object, at no other time.
void ModelTest::LetCallsIn() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
}

void ModelTest::MakeCall(std::size_t seat, const Command& command) {
    Step step{seat, command, S_OK, {}};
    for (const bool inDemo : {false, true})
        step.answers[inDemo] = m_model.Result(command, inDemo);
    // It may have compared before the call, which may have ended its demo.
    for (std::size_t i = 0; i < cSeats; ++i)
        Compared(m_possible[i], m_views.back(), m_registered[i], {}, 0);
    const bool legal[2] = {std::any_of(m_possible[seat].begin(), m_possible[seat].end(),
                                       [](const Hypothesis& h) { return !h.inDemo; }),
                           std::any_of(m_possible[seat].begin(), m_possible[seat].end(),
                                       [](const Hypothesis& h) { return h.inDemo; })};

    ++m_meeting.State().clock;
    const Reply reply = m_seats[seat]->Ask(command);
    step.hr = reply.hr;
    m_log.push_back({m_call, step});
    if (!(legal[0] && reply.hr == step.answers[0]) &&
        !(legal[1] && reply.hr == step.answers[1])) {
        char text[96];
        std::snprintf(text, sizeof text, "the result is 0x%08lx, it must be 0x%08lx",
                      static_cast<unsigned long>(reply.hr),
                      static_cast<unsigned long>(step.answers[legal[0] ? 0 : 1]));
        Differ(text);
    }
    Reply expected = Reply::Untouched();
    expected.value = command.value;
    if (command.action == Action::eSetGraphicEQData)
        expected.eq = command.eq;
    if (reply.hr == S_OK) {
        m_model.Perform(command, &expected);
        CheckTouched();
    }
    CheckReply(command, expected, reply);
    if (command.action == Action::eOpen || command.action == Action::eRegister)
        m_registered[seat] = true;
    if (command.action == Action::eUnregister)
        m_registered[seat] = false;
    AddStep(step);
}

void ModelTest::AddStep(const Step& step) {
    m_steps.push_back(step);
    m_views.push_back(m_model.Look());
    const View& before = m_views[m_views.size() - 2];
    for (std::size_t i = 0; i < cSeats; ++i)
        Stepped(m_possible[i], step, step.seat == i, before, m_views.back());
}

void ModelTest::CheckReply(const Command& command, const Reply& expected, const Reply& reply) {
    if (expected.SaysSame(reply))
        return;
    Command wanted = command;
    wanted.eq = expected.eq;
    wanted.value = expected.value;
    wanted.number = expected.number;
    Command got = command;
    got.eq = reply.eq;
    got.value = reply.value;
    got.number = reply.number;
    Differ("what the call handed out\n  must be " + Text(wanted) + "\n  and is  " + Text(got));
}

void ModelTest::CheckTouched() {
    for (const StoreModel::Address& address : m_model.Touched()) {
        const auto found = m_model.Stored().find(address);
        std::optional<StoreModel::Value> expected;
        if (found != m_model.Stored().end())
            expected = found->second;
        const auto stored = m_storedValues.Read(address);
        ++m_stored;
        if (stored != expected)
            Differ("stored after the call: " + Text(address, stored) +
                   "\n  it must be: " + Text(address, expected));
    }
}

// Somebody else changes the store, in one go.
void ModelTest::Change(
    const std::vector<std::pair<StoreModel::Address, StoreModel::Value>>& changes) {
    for (std::size_t i = 0; i < cSeats; ++i)
        Compared(m_possible[i], m_views.back(), m_registered[i], {}, 0);
    ++m_meeting.State().clock;
    {
        const RawTransaction transaction;
        for (const auto& [address, value] : changes) {
            m_storedValues.Write(address, value);
            m_model.Write(address, value);
        }
    }
    AddStep({std::nullopt, {}, S_OK, {}});
}

// First a change that everybody must be told after all others; then one that nobody can
// have been told before, so that nothing is under way when it has come.
void ModelTest::Barrier() {
    ++m_barriers;
    Command registration{};
    registration.action = Action::eRegister;
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        if (!m_registered[seat])
            MakeCall(seat, registration);
    }
    const StoreModel::Address table{true, SettingName(cTablePid)};
    const StoreModel::Address profile{true, SettingName(cProfilePid)};
    const std::uint32_t active = m_model.Setting(true, cProfilePid, 0);
    const std::uint32_t count = m_model.Setting(true, cTablePid, 0);

    Change({{table, count + 1}});
    RequireOfAll(&ModelTest::HasToldEverything, "was not told what stands");
    Change({{profile, cBarrierProfile}, {table, count + 2}});
    RequireOfAll(&ModelTest::HasToldBarrier, "was not told the change of the barrier");

    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        const std::vector<Told> told = ToldTo(seat);
        const Evidence evidence = EvidenceOf(seat, told);
        Hypotheses left =
            Explain(m_starts[seat], seat, m_wereRegistered[seat], m_steps, m_views, evidence);
        std::erase_if(left, [&](const Hypothesis& h) { return h.explained != told.size(); });
        if (left.empty())
            Differ(std::string("what the object of the ") + cSeatNames[seat] +
                   " was told cannot be right");
        for (Hypothesis& hypothesis : left)
            hypothesis.explained = 0;
        m_starts[seat] = left;
        m_told += told.size();
    }
    const StoreModel::Values stored = m_storedValues.ReadAll();
    m_stored += stored.size();
    if (const std::string difference = Difference(m_model.Stored(), stored);
        !difference.empty())
        Differ("the store differs:\n" + difference);
    BeginBatch();
    Change({{profile, active}});
}

Evidence ModelTest::EvidenceOf(std::size_t seat, const std::vector<Told>& told) const {
    return {&told, m_clockBase, seat == eOwnThread, seat == eOtherThread};
}

bool ModelTest::HasToldEverything(std::size_t seat) {
    const std::vector<Told> told = ToldTo(seat);
    const Evidence evidence = EvidenceOf(seat, told);
    const Hypotheses left =
        Explain(m_starts[seat], seat, m_wereRegistered[seat], m_steps, m_views, evidence);
    return std::any_of(left.begin(), left.end(), [&](const Hypothesis& h) {
        return h.explained == told.size() && h.known.Compare(m_views.back()).empty();
    });
}

// The table comes last in what one comparison tells.
bool ModelTest::HasToldBarrier(std::size_t seat) {
    const LONG count = m_seats[seat]->ToldCount();
    return count >= 2 && m_seats[seat]->ToldAt(count - 1).Says(Told::Table()) &&
           m_seats[seat]->ToldAt(count - 2).Says(Told::Profile(cBarrierProfile));
}

void ModelTest::RequireOfAll(bool (ModelTest::*done)(std::size_t), const char* what) {
    const std::array<bool, cSeats> isDone =
        AwaitAll([&](std::size_t seat) { return (this->*done)(seat); });
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        if (!isDone[seat])
            Differ(std::string("the object of the ") + cSeatNames[seat] + " " + what +
                   ", or was told something else");
    }
}

void ModelTest::PrintBatch() {
    std::printf("the calls, the last one at the end:\n");
    const std::size_t first = m_log.size() > cLogLines ? m_log.size() - cLogLines : 0;
    for (std::size_t i = first; i < m_log.size(); ++i) {
        const Step& step = m_log[i].step;
        std::printf("  %6u %-8s %s -> 0x%08lx\n", m_log[i].call, cSeatNames[*step.seat],
                    Text(step.command).c_str(), static_cast<unsigned long>(step.hr));
    }
    for (std::size_t seat = 0; seat < cSeats; ++seat) {
        std::printf(
            "told to the object of the %s since the last barrier, by the number of "
            "calls begun since then:\n",
            cSeatNames[seat]);
        for (LONG i = 0; i < m_seats[seat]->ToldCount(); ++i) {
            const Told& told = m_seats[seat]->ToldAt(i);
            std::printf("  %3ld %s\n", told.clock - m_clockBase, told.Text().c_str());
        }
    }
}

void ModelTest::Differ(const std::string& what) {
    PrintBatch();
    std::printf("DIFFERENCE at call %u, seed %u: %s\n", m_call, m_seed, what.c_str());
    Die("again: model_test " + std::to_string(m_calls) + " " + std::to_string(m_seed));
}

}  // namespace
}  // namespace kora4::test

int main(int argc, char** argv) {
    using namespace kora4::test;
    const int served = ServeSeatIfAsked(argc, argv);
    if (served >= 0)
        return served;
    const ModelArguments arguments =
        ArgumentsOf(argc, argv, cDefaultCalls, "usage: model_test [CALLS [SEED]]");
    const DesktopHold desktop;
    ModelTest(arguments.count, arguments.seed).Run();
    return 0;
}
