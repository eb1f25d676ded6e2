// SPDX-License-Identifier: MIT
// Follows every hypothesis about when an object compared, and drops those that what it told
// refutes.
#include "model/told_model.h"

#include <algorithm>

#include "model/pass_model.h"

namespace kora4::test {

std::vector<Told> ToldBy(const Baseline& baseline, const View& view) {
    std::vector<Told> told;
    for (const News& news : baseline.Compare(view)) {
        const KORA4APITechnology api = cToldTechnologies[news.technology].api;
        switch (news.kind) {
            case News::Kind::eEnable:
                told.push_back(Told::Enable(view.enable));
                break;
            case News::Kind::eProfile:
                told.push_back(Told::Profile(static_cast<LONG>(view.profile)));
                break;
            case News::Kind::eSwitch:
                told.push_back(Told::OnElseOff(api, view.switches[news.technology]));
                break;
            case News::Kind::eValue:
                told.push_back(api == eGraphicEQ
                                   ? Told::EQ(view.eq)
                                   : Told::Value(api, view.values[news.technology]));
                break;
            case News::Kind::eTable:
                told.push_back(Told::Table());
                break;
        }
    }
    return told;
}

namespace {

void AddOnce(Hypotheses& hypotheses, const Hypothesis& hypothesis) {
    if (std::find(hypotheses.begin(), hypotheses.end(), hypothesis) == hypotheses.end())
        hypotheses.push_back(hypothesis);
}

// What one comparison found, held against what comes next in the evidence.
class Telling {
  public:
    Telling(const std::vector<Told>& told, std::uint32_t profile, const Evidence& evidence,
            LONG clock, std::span<const TimedCall> later)
        : m_told(told),
          m_profile(profile),
          m_evidence(evidence),
          m_clock(clock),
          m_later(later) {}

    // All counts of what is explained then, when `explained` was before.
    std::vector<std::size_t> Ends(std::size_t explained) {
        Follow(0, explained, m_clock, m_clock);
        return m_ends;
    }

  private:
    // `last`: when the call before was heard; `earliest`: when the next one can have been.
    void Follow(std::size_t i, std::size_t explained, LONG last, LONG earliest) {
        if (i == m_told.size()) {
            m_ends.push_back(explained);
            return;
        }
        bool mustBeDropped = false;
        const TimedCall* pFirst = nullptr;
        for (const TimedCall& call : m_later) {
            if (!OwnCall{call.pStep->command, *call.pBefore, *call.pAfter}.Overtakes(m_told[i],
                                                                                     m_profile))
                continue;
            pFirst = pFirst ? pFirst : &call;
            mustBeDropped = mustBeDropped || last >= call.over;
        }
        if (pFirst)
            Follow(i + 1, explained, last, std::max(earliest, pFirst->begun));
        if (!mustBeDropped && IsHeard(i, explained, earliest))
            Follow(i + 1, explained + 1, (*m_evidence.pTold)[explained].clock, earliest);
    }

    // It was told when it was found or, but for the driver's own thread, later.
    bool IsHeard(std::size_t i, std::size_t explained, LONG earliest) const {
        if (explained == m_evidence.pTold->size())
            return false;
        const Told& heard = (*m_evidence.pTold)[explained];
        return heard.Says(m_told[i]) &&
               (m_evidence.onDriverThread ? heard.clock == m_clock : heard.clock >= earliest);
    }

    const std::vector<Told>& m_told;
    const std::uint32_t m_profile;
    const Evidence& m_evidence;
    const LONG m_clock;
    const std::span<const TimedCall> m_later;
    std::vector<std::size_t> m_ends;
};

}  // namespace

void Compared(Hypotheses& hypotheses, const View& view, bool registered,
              const Evidence& evidence, LONG clock, std::span<const TimedCall> later) {
    Hypotheses next;
    for (const Hypothesis& before : hypotheses) {
        Hypothesis after = before;
        after.known = Baseline(view);
        // Somebody else has ended the demo.
        if (!IsDemo(view.profile))
            after.inDemo = false;
        const std::vector<Told> told = ToldBy(before.known, view);
        if (!registered || !evidence.pTold) {
            AddOnce(next, after);
        } else {
            for (const std::size_t end :
                 Telling(told, view.profile, evidence, clock, later).Ends(before.explained)) {
                after.explained = end;
                AddOnce(next, after);
            }
        }
        AddOnce(next, before);
    }
    // What was told by now cannot be explained later.
    if (evidence.pTold) {
        std::erase_if(next, [&](const Hypothesis& hypothesis) {
            return hypothesis.explained < evidence.pTold->size() &&
                   (*evidence.pTold)[hypothesis.explained].clock <= clock;
        });
    }
    hypotheses = std::move(next);
}

namespace {

bool LeavesDemo(const Step& step, const View& before) {
    return step.hr == S_OK && IsDemo(before.profile) &&
           (step.command.action == Action::eRevertFromDemoMode ||
            step.command.action == Action::eForceRevertFromDemoMode);
}

}  // namespace

void Stepped(Hypotheses& hypotheses, const Step& step, bool own, const View& before,
             const View& after) {
    if (!own)
        return;
    Hypotheses next;
    for (Hypothesis hypothesis : hypotheses) {
        if (step.hr != step.answers[hypothesis.inDemo])
            continue;
        if (step.command.action == Action::eOpen)
            hypothesis = {Baseline(after), false, hypothesis.explained};
        else if (step.command.action == Action::eSetDemoProfileAndEnable && step.hr == S_OK)
            hypothesis.inDemo = true;
        else if (LeavesDemo(step, before))
            hypothesis.inDemo = false;
        hypothesis.known.MoveWithOwn(before, after);
        AddOnce(next, hypothesis);
    }
    hypotheses = std::move(next);
}

namespace {

std::vector<TimedCall> OwnCalls(std::size_t seat, const std::vector<Step>& steps,
                                const std::vector<View>& views, LONG clockBase) {
    std::vector<TimedCall> calls;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const LONG begun = clockBase + static_cast<LONG>(i) + 1;
        // The next step begins when this one is over.
        if (steps[i].seat == seat && steps[i].hr == S_OK)
            calls.push_back({&steps[i], &views[i], &views[i + 1], begun, begun + 1});
    }
    return calls;
}

}  // namespace

Hypotheses Explain(Hypotheses hypotheses, std::size_t seat, bool registered,
                   const std::vector<Step>& steps, const std::vector<View>& views,
                   const Evidence& evidence) {
    const std::vector<TimedCall> calls = evidence.ownCallsMeetPasses
                                             ? OwnCalls(seat, steps, views, evidence.clockBase)
                                             : std::vector<TimedCall>();
    std::span<const TimedCall> later = calls;
    for (std::size_t i = 0;; ++i) {
        const LONG clock = evidence.clockBase + static_cast<LONG>(i);
        Compared(hypotheses, views[i], registered, evidence, clock, later);
        if (i == steps.size())
            return hypotheses;
        const Step& step = steps[i];
        const bool own = step.seat == seat;
        if (!later.empty() && later.front().pStep == &step)
            later = later.subspan(1);
        Stepped(hypotheses, step, own, views[i], views[i + 1]);
        if (own && step.command.action == Action::eUnregister)
            registered = false;
        if (own &&
            (step.command.action == Action::eRegister || step.command.action == Action::eOpen))
            registered = true;
    }
}

}  // namespace kora4::test
