// SPDX-License-Identifier: MIT
// Starts and ends the two programs, reads their JSON lines, and checks each line against the
// documented events.
#include "tools/kora4sim/sim_watch_fixture.h"

#include <sstream>

namespace kora4::test {
namespace {

constexpr char cToldShape[] =
    R"({"time": "string", "event": "string", "name": "string", "value": "any"})";

// The members that every event has, and those of each.
constexpr char cEveryEvent[] =
    R"("time": "string", "event": "string", "cause": "string", "picture": "integer")";

struct EventShape {
    const char* event;
    const char* members;
};
constexpr EventShape cEventShapes[] = {
    {"ready", R"("scene": "string", "seed": "integer", "mask": "string",
        "engine": "string|null", "pid": "integer", "profile": "string", "enable": "boolean",
        "period": "integer", "settings": {"*": "any"})"},
    {"enable", R"("name": "=enable", "from": "boolean", "to": "boolean")"},
    {"profile", R"("from": "string", "to": "string",
        "changes": [{"name": "string", "from": "any", "to": "any"}])"},
    {"switch", R"("name": "string", "from": "boolean", "to": "boolean",
        "technology": "string")"},
    {"setting", R"("name": "string", "from": "boolean", "to": "boolean")"},
    {"reload", R"("technology": "string",
        "changes": [{"name": "string", "from": "any", "to": "any"}])"},
    {"table", R"("names": {"*": "string"})"},
    {"period", R"("from": "integer", "to": "integer")"},
    {"abandoned", ""},
    {"defaults", R"("values": "integer")"},
    {"fault", R"("fault": "string", "argument": "string|null", "*": "any")"},
    {"released", ""},
    {"burst", R"("writes": "integer", "settings": {"*": "number"})"},
    {"problem", R"("problem": "string")"},
    {"summary", R"("pictures": "integer", "failures": "integer", "reloads": "integer",
        "faults": "integer", "digest": "string")"},
};

// What both documents have in the places where the pattern has something.
bool Has(const Json& document, const Json& pattern) {
    for (const auto& [name, value] : pattern.items()) {
        if (!document.contains(name) || document[name] != value)
            return false;
    }
    return true;
}

}  // namespace

testing::AssertionResult IsDocumented(const Json& event) {
    const std::string name = event.value("event", std::string());
    for (const EventShape& shape : cEventShapes) {
        if (name != shape.event)
            continue;
        const std::string members = shape.members;
        return HasShape(event,
                        "{" + (members.empty() ? members : members + ", ") + cEveryEvent + "}");
    }
    return testing::AssertionFailure() << "the event '" << name << "' is not documented";
}

Words DocumentedEvents() {
    Words names;
    for (const EventShape& shape : cEventShapes)
        names.push_back(shape.event);
    return names;
}

void CheckEvents(const ToolResult& result) {
    for (const std::string& line : result.Lines()) {
        const Json event = ParsedJson(line);
        EXPECT_TRUE(IsDocumented(event)) << line;
        EXPECT_THAT(event.value("time", std::string()),
                    testing::MatchesRegex("....-..-..T..:..:......Z"));
    }
}

// In the help, faults are indented by two columns, their kinds by four, and lines that go on
// by more.
Words OfferedFaults() {
    const ToolResult help = RunSim({"--help"});
    EXPECT_EQ(0u, help.exitCode) << help;
    Words faults;
    std::string fault;
    bool isPast = false;
    for (const std::string& line : help.Lines()) {
        isPast = isPast || line == "Faults:";
        if (!isPast || line == "Faults:")
            continue;
        if (!line.starts_with("  "))
            break;
        if (line.starts_with("     "))
            continue;
        std::string word;
        std::istringstream(line) >> word;
        if (line.starts_with("    ")) {
            faults.push_back(fault + "=" + word);
            continue;
        }
        fault = word.substr(0, word.find_first_of("[="));
        const bool needsKind = word.ends_with("=KIND");
        if (!needsKind)
            faults.push_back(fault);
    }
    return faults;
}

void SimWatchTest::TearDown() {
    m_watch.reset();
    m_sim.reset();
    CtlTest::TearDown();
}

void SimWatchTest::StartWatch() {
    m_watch = std::make_unique<RunningTool>("kora4ctl", Words{"watch", "--json"});
    EXPECT_EQ("ready", ParsedJson(m_watch->NextLine()).value("event", std::string()));
}

Json SimWatchTest::StartSim(Words arguments) {
    arguments.push_back("--json");
    m_sim = std::make_unique<RunningTool>("kora4sim", arguments);
    return NextSeen("ready");
}

Json SimWatchTest::EndSim() {
    m_sim->PressCtrlC();
    const ToolResult result = m_sim->WaitForEnd();
    EXPECT_EQ(0u, result.exitCode) << result;
    CheckEvents(result);
    m_sim.reset();
    return EventOf(result, "summary");
}

ToolResult SimWatchTest::RunSimToItsEnd(Words arguments, DWORD exitCode) {
    arguments.push_back("--json");
    const ToolResult result = RunSim(arguments);
    EXPECT_EQ(exitCode, result.exitCode) << result;
    CheckEvents(result);
    return result;
}

Json SimWatchTest::NextTold() {
    Json event = ParsedJson(m_watch->NextLine());
    EXPECT_TRUE(HasShape(event, cToldShape));
    if (event.is_object())
        event.erase("time");
    return event;
}

Json SimWatchTest::NextSeen() {
    return ParsedJson(m_sim->NextLine());
}

Json SimWatchTest::NextSeen(const std::string& event) {
    return ParsedJson(m_sim->LineWith("\"event\":\"" + event + "\""));
}

void SimWatchTest::ExpectTold(const Events& expected) {
    for (const Json& event : expected)
        EXPECT_EQ(event, NextTold());
    for (const Json& event : TakeRest().told)
        ADD_FAILURE() << "nobody should be told of " << event;
}

void SimWatchTest::ExpectSeen(const Events& expected) {
    for (const Json& pattern : expected) {
        const Json event = NextSeen();
        EXPECT_TRUE(Has(event, pattern)) << event << "\nand not\n" << pattern;
    }
}

// The master enable is told before anything else that is found together with it: what comes
// up to the second change of it happened before the first, or was found together with that.
SimWatchTest::Rest SimWatchTest::TakeRest() {
    BOOL isOn = FALSE;
    EXPECT_EQ(S_OK, Client().GetVeltoEnable(&isOn));
    Rest rest;
    for (const bool next : {!isOn, !!isOn}) {
        EXPECT_EQ(S_OK, Client().SetVeltoEnable(next));
        for (Json& event : ToldUntilEnable(next))
            rest.told.push_back(std::move(event));
        if (!m_sim)
            continue;
        for (Json& event : SeenUntilEnable(next))
            rest.seen.push_back(std::move(event));
    }
    return rest;
}

Events SimWatchTest::ToldUntilEnable(bool isOn) {
    Events events;
    for (;;) {
        Json event = NextTold();
        if (event.is_null() || event == Told("enable", "enable", isOn))
            return events;
        events.push_back(std::move(event));
    }
}

Events SimWatchTest::SeenUntilEnable(bool isOn) {
    Events events;
    for (;;) {
        Json event = NextSeen();
        if (event.is_null() || Has(event, {{"event", "enable"}, {"to", isOn}}))
            return events;
        events.push_back(std::move(event));
    }
}

void SimWatchTest::SetSlider(KORA4APITechnology technology, float amount) {
    KORA4PatchValueUnion value = {};
    value.m_technology = technology;
    value.m_values.m_enhancementSlider = amount;
    EXPECT_EQ(S_OK, Client().SetSimplePatchValue(&value));
}

void SimWatchTest::SetNumber(KORA4APITechnology technology, DWORD number) {
    KORA4PatchValueUnion value = {};
    value.m_technology = technology;
    value.m_values.m_volumeSlider = number;
    EXPECT_EQ(S_OK, Client().SetSimplePatchValue(&value));
}

}  // namespace kora4::test
