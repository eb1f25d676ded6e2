// SPDX-License-Identifier: MIT
// What an object must have been told. An object compares the store with what it knows at
// moments that only it chooses; whatever it finds it must tell completely, and nothing
// else. The model follows every choice of moments that agrees with what was told so far:
// when none is left, the object has told something wrong, or has not told something.
#ifndef KORA4_TESTS_MODEL_TOLD_MODEL_H
#define KORA4_TESTS_MODEL_TOLD_MODEL_H

#include <optional>
#include <span>
#include <vector>

#include "model/seats.h"
#include "model/store_model.h"
#include "support/baseline_model.h"

namespace kora4::test {

// What a comparison with the store tells an object with that baseline, in its order.
std::vector<Told> ToldBy(const Baseline& baseline, const View& view);

// One possible state of an object that agrees with what it was told so far.
struct Hypothesis {
    Baseline known;
    bool inDemo = false;        // the object has entered a demo and not left it
    std::size_t explained = 0;  // of what it was told

    friend bool operator==(const Hypothesis&, const Hypothesis&) = default;
};
using Hypotheses = std::vector<Hypothesis>;

// A call that changed, or could have changed, the store or an object.
struct Step {
    std::optional<std::size_t> seat;  // none: a program that is not a client of the API
    Command command;
    HRESULT hr;
    HRESULT answers[2];  // the right ones of an object that is not, and that is, in a demo
};

// What one object was told, and what the moments of its comparisons are bound to.
struct Evidence {
    const std::vector<Told>* pTold = nullptr;  // null: not looked at
    LONG clockBase = 0;                        // the shared clock before the first step
    bool onDriverThread = false;               // compares only while the driver lets calls in
    bool ownCallsMeetPasses = false;           // own calls are made while others tell
};

// A call of the object's own client, and the shared clock when it had begun and was over.
struct TimedCall {
    const Step* pStep;
    const View* pBefore;
    const View* pAfter;
    LONG begun;
    LONG over;
};

// The object may have compared, any number of times, while the store was as `view`. The
// `later` calls of its own client may have overtaken what it had not told yet.
void Compared(Hypotheses& hypotheses, const View& view, bool registered,
              const Evidence& evidence, LONG clock, std::span<const TimedCall> later = {});

// Some client has made a call. Drops the hypotheses under which the object could not have
// answered so; `own`: it was this object.
void Stepped(Hypotheses& hypotheses, const Step& step, bool own, const View& before,
             const View& after);

// All of it: views[i] is the store before steps[i], the last one that of now.
Hypotheses Explain(Hypotheses hypotheses, std::size_t seat, bool registered,
                   const std::vector<Step>& steps, const std::vector<View>& views,
                   const Evidence& evidence);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_TOLD_MODEL_H
