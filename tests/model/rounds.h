// SPDX-License-Identifier: MIT
// Rounds of the test of overtaken notifications, planned on the model: changes that one
// object is told of, and what its callback does when it is told. What the object must then
// be told, and not be told, follows from the plan.
#ifndef KORA4_TESTS_MODEL_ROUNDS_H
#define KORA4_TESTS_MODEL_ROUNDS_H

#include <array>
#include <map>
#include <optional>
#include <vector>

#include "model/pass_model.h"
#include "model/random_calls.h"
#include "model/seats.h"
#include "model/store_model.h"
#include "model/told_model.h"

namespace kora4::test {

// The driver's own thread, whose object is told only while the driver lets calls in; a
// thread of the multithreaded apartment; and another process, whose owner can be busy.
enum : std::size_t { eIdleSeat, eMtaSeat, eProcessSeat };

// A call or a change of the plan, with all that must come of it.
struct PlannedStep {
    Step step;  // without a seat: `change`, from outside
    RawChange change{};
    Reply expected{};
};

// One round of the plan.
struct Round {
    std::size_t seat = 0;
    bool busy = false;   // its owner turns calls away during the first steps
    bool meets = false;  // another object, which is told slowly, makes calls meanwhile

    // In their order: what the seat is told of; what its callbacks do; and how the round
    // ends, with a change that nobody has seen before, so that all have looked at the rest.
    std::vector<PlannedStep> steps;
    std::size_t firstReaction = 0;
    std::size_t firstClosing = 0;
    std::vector<View> views;      // the store before steps[i]; the last one: after all
    std::vector<Baseline> known;  // to the seat's object, before steps[i]
    std::vector<Reaction> reactions;

    std::vector<Told> told;  // to the seat, with the recorders
    // So many of them before the first closing step, and after each.
    std::vector<std::size_t> toldAtClosing;
    unsigned dropped = 0;  // not told, because an own call has overtaken it

    Baseline KnownBefore(std::size_t step) const {
        return step < known.size() ? known[step] : Baseline(views.back());
    }
};

// Plans the rounds and makes their changes on the model.
class RoundPlanner {
  public:
    RoundPlanner(StoreModel& model, RandomCalls& random);

    Round Next();

    // What an object can be, as far as the plan determines it.
    bool MayBe(std::size_t seat, bool inDemo) const { return m_demo[seat][inDemo]; }

  private:
    using Writes = std::map<StoreModel::Address, StoreModel::Value>;

    std::uint32_t Below(std::uint32_t bound) { return m_random.Below(bound); }
    bool OneIn(std::uint32_t count) { return m_random.OneIn(count); }
    const View& Now() const { return m_round.views.back(); }
    bool HasNews() const { return !m_known.Compare(Now()).empty(); }

    void AddForeign(const Writes& writes);
    bool AddCall(std::size_t seat, const Command& command, PassModel* pPass = nullptr);
    bool IsCertain(std::size_t seat, const Command& command) const;
    void Extend(const PlannedStep& planned, PassModel* pPass);
    void FollowDemo(const Step& step, const View& before, const View& after);

    void PlanTriggers();
    void AddSomeCall(std::size_t seat);
    void PlanMeeting();
    void PlanPass(bool reacting);
    void PlanReactions(PassModel& pass, const Told& told);
    void PlanReaction(PassModel& pass, const Told& told);
    void PlanExcursion(PassModel& pass, const Told& told);
    void React(PassModel& pass, const Command& command);
    void ReactFromOutside(const Writes& writes);
    Command SomeReaction(const PassModel& pass, const Told& told);
    Command Answer(const Told& told);
    void PlanClosing();

    Writes SomeWrites();
    void PlanMarker();
    void ChangeValue(Writes& writes, const ToldTechnology& technology, std::uint32_t profile);
    void Announce(Writes& writes, RawTechnology technology);

    StoreModel& m_model;
    RandomCalls& m_random;
    std::array<std::array<bool, 2>, cSeats> m_demo;
    std::array<LONG, cSeats> m_recorder;
    std::optional<std::uint32_t> m_profileToRestore;  // the marker has taken its place
    std::uint32_t m_marker = 1000;

    // Of the round.
    Round m_round;
    Baseline m_known;
    bool m_registered = true;
    bool m_opened = false;  // by a reaction of the pass
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_ROUNDS_H
