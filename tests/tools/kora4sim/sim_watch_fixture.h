// SPDX-License-Identifier: MIT
// kora4sim and kora4ctl watch beside each other: what the engine does, and what the programs
// of the library are told of it.
#ifndef KORA4_TESTS_TOOLS_KORA4SIM_SIM_WATCH_FIXTURE_H
#define KORA4_TESTS_TOOLS_KORA4SIM_SIM_WATCH_FIXTURE_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/kora4ctl/ctl_fixture.h"
#include "tools/kora4sim/sim_fixture.h"

namespace kora4::test {

using Events = std::vector<Json>;

// One line of kora4ctl watch --json, but for its time.
inline Json Told(const char* event, const std::string& name, Json value) {
    return {{"event", event}, {"name", name}, {"value", std::move(value)}};
}
inline Json ToldValue(const std::string& name, Json value) {
    return Told("value", name, std::move(value));
}

// Whether a line of kora4sim --json looks as the manual says; an event that the manual does
// not have does not.
testing::AssertionResult IsDocumented(const Json& event);
// The names of all events that the manual has.
Words DocumentedEvents();
// Each line of what an engine printed; the test fails for each that is not documented.
void CheckEvents(const ToolResult& result);

// A fault as --help offers it: "stop", "garbage=nan", "wrong-types", "wrong-types=mixed".
// Those that take a number are there without one.
Words OfferedFaults();

// kora4sim and kora4ctl watch on one store.
class SimWatchTest : public CtlTest {
  protected:
    void TearDown() override;

    // Past its registration; tells what happens from then on.
    void StartWatch();
    // Past its start; the last one goes on until EndSim or the end of the test.
    Json StartSim(Words arguments);
    // As a person ends it; every line that it has printed is checked. The summary.
    Json EndSim();
    RunningTool& Watch() { return *m_watch; }
    RunningTool& Sim() { return *m_sim; }

    // An engine that runs to its end, with every line checked.
    static ToolResult RunSimToItsEnd(Words arguments, DWORD exitCode = 0);

    // The next line of the watcher, or of the engine.
    Json NextTold();
    Json NextSeen();
    // The next event of the engine of that name; others are skipped.
    Json NextSeen(const std::string& event);

    // The watcher is told exactly that, in this order, and nothing more.
    void ExpectTold(const Events& expected);
    void ExpectNothingTold() { ExpectTold({}); }
    // The engine sees exactly that; only the members that stand there are compared.
    void ExpectSeen(const Events& expected);
    // What was told, and what the running engine saw, since the last look. Nothing that
    // happened before the call is left out.
    struct Rest {
        Events told;
        Events seen;
    };
    Rest TakeRest();

    void SetSlider(KORA4APITechnology technology, float amount);
    void SetNumber(KORA4APITechnology technology, DWORD number);

  private:
    Events ToldUntilEnable(bool isOn);
    Events SeenUntilEnable(bool isOn);

    std::unique_ptr<RunningTool> m_watch;
    std::unique_ptr<RunningTool> m_sim;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_KORA4SIM_SIM_WATCH_FIXTURE_H
