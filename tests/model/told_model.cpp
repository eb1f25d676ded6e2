#include "model/told_model.h"

#include <algorithm>

namespace kora4::test {

Known Known::Of(const View& view) {
    return {view.profile, view.enable, view.table, view.triggers, view.switches};
}

std::vector<Told> Known::Compare(const View& view) const {
    std::vector<Told> told;
    if (enable != view.enable)
        told.push_back(Told::Enable(view.enable));
    if (profile != view.profile) {
        // The client is expected to read everything again.
        told.push_back(Told::Profile(static_cast<LONG>(view.profile)));
    } else {
        for (std::size_t i = 0; i < cToldTechnologies.size(); ++i) {
            const KORA4APITechnology api = cToldTechnologies[i].api;
            if (switches[i] != view.switches[i])
                told.push_back(Told::OnElseOff(api, view.switches[i]));
            if (triggers[i] != view.triggers[i])
                told.push_back(api == eGraphicEQ ? Told::EQ(view.eq)
                                                 : Told::Value(api, view.values[i]));
        }
    }
    if (table != view.table)
        told.push_back(Told::Table());
    return told;
}

namespace {

template <typename T>
void Move(T& known, const T& before, const T& after) {
    if (known == before)
        known = after;
}

}  // namespace

void Known::MoveWithOwn(const View& before, const View& after) {
    if (before.profile != after.profile) {
        if (profile == before.profile) {
            profile = after.profile;
            switches = after.switches;
        }
    } else if (profile == after.profile) {
        for (std::size_t i = 0; i < switches.size(); ++i)
            Move(switches[i], before.switches[i], after.switches[i]);
    }
    Move(enable, before.enable, after.enable);
    Move(table, before.table, after.table);
    for (std::size_t i = 0; i < triggers.size(); ++i)
        Move(triggers[i], before.triggers[i], after.triggers[i]);
}

namespace {

void AddOnce(Hypotheses& hypotheses, const Hypothesis& hypothesis) {
    if (std::find(hypotheses.begin(), hypotheses.end(), hypothesis) == hypotheses.end())
        hypotheses.push_back(hypothesis);
}

// `told` comes next in the evidence, and could have been found at `clock`: it was told
// then or, but for the driver's own thread, later.
bool Follows(const Hypothesis& hypothesis, const std::vector<Told>& told,
             const Evidence& evidence, LONG clock) {
    const std::vector<Told>& all = *evidence.pTold;
    if (hypothesis.explained + told.size() > all.size())
        return false;
    for (std::size_t i = 0; i < told.size(); ++i) {
        const Told& heard = all[hypothesis.explained + i];
        if (!heard.Says(told[i]) ||
            (evidence.onDriverThread ? heard.clock != clock : heard.clock < clock))
            return false;
    }
    return true;
}

}  // namespace

void Compared(Hypotheses& hypotheses, const View& view, bool registered,
              const Evidence& evidence, LONG clock) {
    Hypotheses next;
    for (const Hypothesis& before : hypotheses) {
        const std::vector<Told> told = before.known.Compare(view);
        if (!told.empty() &&
            (!registered || !evidence.pTold || Follows(before, told, evidence, clock))) {
            Hypothesis after = before;
            // Somebody else has ended the demo.
            if (before.known.profile != view.profile && !IsDemo(view.profile))
                after.inDemo = false;
            after.known = Known::Of(view);
            if (registered && evidence.pTold)
                after.explained += told.size();
            AddOnce(next, after);
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
            hypothesis = {Known::Of(after), false, hypothesis.explained};
        else if (step.command.action == Action::eSetDemoProfileAndEnable && step.hr == S_OK)
            hypothesis.inDemo = true;
        else if (LeavesDemo(step, before))
            hypothesis.inDemo = false;
        hypothesis.known.MoveWithOwn(before, after);
        AddOnce(next, hypothesis);
    }
    hypotheses = std::move(next);
}

Hypotheses Explain(Hypotheses hypotheses, std::size_t seat, bool registered,
                   const std::vector<Step>& steps, const std::vector<View>& views,
                   const Evidence& evidence) {
    for (std::size_t i = 0;; ++i) {
        const LONG clock = evidence.clockBase + static_cast<LONG>(i);
        Compared(hypotheses, views[i], registered, evidence, clock);
        if (i == steps.size())
            return hypotheses;
        const Step& step = steps[i];
        const bool own = step.seat == seat;
        Stepped(hypotheses, step, own, views[i], views[i + 1]);
        if (own && step.command.action == Action::eUnregister)
            registered = false;
        if (own &&
            (step.command.action == Action::eRegister || step.command.action == Action::eOpen))
            registered = true;
    }
}

}  // namespace kora4::test
