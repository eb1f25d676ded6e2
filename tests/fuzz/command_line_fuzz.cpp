// SPDX-License-Identifier: MIT
// The command line of kora4sim, from the arguments to what the engine is made with, and the
// words in which a tool refuses a command line. Each line of an input is an option, in one of
// its two forms, and a value; the oracle knows by the letter in front what it means. Other
// lines are arguments as they are: of these it is only known that a refusal is told in its own
// form.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <optional>

#include "fuzz/fault_oracle.h"
#include "fuzz/frame.h"
#include "fuzz/json_oracle.h"
#include "kora4sim/command_line.h"
#include "kora4sim/engine/engine.h"
#include "registry/registry_store.h"

namespace kora4 {

namespace {

using Texts = std::vector<std::string>;

// What the program said and did.
struct Seen {
    Texts complaints;
    std::string scene;
    std::size_t records = 0;
    tools::sim::EngineOptions options;
    bool hasEngine = false;
} s_seen;

// Ends the program where the engine would begin.
struct EngineMade {};

constexpr std::size_t cRecordsOfScene = 2;

}  // namespace

// ---- What the program calls, instead of the console, the store and the engine ---------------

namespace tools {

Output::Output() = default;
void Output::Print(std::string_view) {}
void Output::Write(std::string_view) {}
void Output::PrintJson(const Json&) {}
void Output::Table(const Texts&, const std::vector<Texts>&) {}
void Output::Complain(std::string_view message) {
    s_seen.complaints.emplace_back(message);
}

Interrupt::Interrupt() = default;
Interrupt::~Interrupt() = default;

namespace {

class EmptyStore : public StoreAccess {
  public:
    std::optional<StoredValue> Read(KORA4KeySet, const PropertyKey&) override { return {}; }
    void Write(KORA4KeySet, const PropertyKey&, const StoredValue&) override {}
    void Delete(KORA4KeySet, const PropertyKey&) override {}
    Texts ValueNames(KORA4KeySet) override { return {}; }
};

}  // namespace

std::unique_ptr<StoreAccess> OpenStore(OpenMode) {
    return std::make_unique<EmptyStore>();
}

namespace sim {

SceneFolder::SceneFolder() = default;
Texts SceneFolder::Names() const {
    return {"music"};
}
Scene SceneFolder::Load(std::string_view name) const {
    s_seen.scene = name;
    Scene scene;
    scene.records.resize(cRecordsOfScene);
    return scene;
}

namespace {

const Scene& Begin(const Scene& scene, const EngineOptions& options) {
    s_seen.records = scene.records.size();
    s_seen.options = options;
    s_seen.hasEngine = true;
    throw EngineMade();
}

}  // namespace

Engine::Engine(const Scene& scene, EngineOptions options, StoreAccess& store,
               Reporter& reporter, const Interrupt& interrupt)
    : m_scene(Begin(scene, options)),
      m_store(store),
      m_reporter(reporter),
      m_interrupt(interrupt),
      m_noise(0),
      m_signal(scene.spectrum, m_noise),
      m_spoilt(store) {}

}  // namespace sim
}  // namespace tools

// ---- The oracle ----------------------------------------------------------------------------

namespace fuzz {

namespace {

// An option with a value. In capitals: as one argument, with an equals sign.
const std::map<char, std::string> cValued = {{'f', "--for"},    {'e', "--seed"},
                                             {'p', "--period"}, {'r', "--records"},
                                             {'a', "--fault"},  {'c', "--completion"}};
const std::map<char, std::string> cFlags = {{'l', "--list"},           {'n', "--no-publish"},
                                            {'w', "--write-defaults"}, {'k', "--clean"},
                                            {'j', "--json"},           {'q', "-q"}};

struct CommandLine {
    Texts arguments;
    // By option, SCENE included, in their order.
    std::map<std::string, Texts> values;
    bool isKnown = true;  // nothing but lines with a meaning

    bool Has(const std::string& name) const { return values.contains(name); }
};

CommandLine Read(std::string_view input) {
    CommandLine line;
    for (std::size_t begin = 0; begin < input.size();) {
        const std::size_t end = std::min(input.find('\n', begin), input.size());
        const std::string all(input.substr(begin, end - begin));
        begin = end + 1;
        const std::string value = all.empty() ? all : all.substr(1);
        const char letter = all.empty() ? ' ' : all[0];
        const auto lower = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        if (cFlags.contains(letter) && value.empty()) {
            line.arguments.push_back(cFlags.at(letter));
            line.values[cFlags.at(letter)];
        } else if (cValued.contains(lower) && letter == lower && value != "--") {
            line.arguments.insert(line.arguments.end(), {cValued.at(lower), value});
            line.values[cValued.at(lower)].push_back(value);
        } else if (cValued.contains(lower) && !value.empty()) {
            line.arguments.push_back(cValued.at(lower) + "=" + value);
            line.values[cValued.at(lower)].push_back(value);
        } else if (letter == 's' && !value.starts_with('-')) {
            line.arguments.push_back(value);
            line.values["SCENE"].push_back(value);
        } else {
            line.arguments.push_back(all);
            line.isKnown = false;
        }
    }
    return line;
}

std::uint64_t WholeNumber(const std::string& text, std::uint64_t least, std::uint64_t most) {
    Demand(!text.empty() && text.find_first_not_of("0123456789") == std::string::npos);
    std::uint64_t number = 0;
    for (const char c : text) {
        const auto digit = static_cast<std::uint64_t>(c - '0');
        Demand(number <= (most - digit) / 10 && digit <= most);
        number = number * 10 + digit;
    }
    Demand(number >= least);
    return number;
}

std::uint64_t Milliseconds(const std::string& text) {
    const double seconds = NumberOf(text);
    Demand(seconds >= 0 && seconds <= 86400);
    return static_cast<std::uint64_t>(std::llround(seconds * 1000));
}

FaultSeen ReadFault(const std::string& text) {
    const std::size_t at = std::min(text.rfind('@'), text.size());
    const std::string what = text.substr(0, at);
    const std::size_t equals = std::min(what.find('='), what.size());
    FaultSeen fault{what.substr(0, equals), "", 0, 0};
    if (at < text.size())
        fault.at = Milliseconds(text.substr(at + 1));
    if (equals < what.size()) {
        fault.argument = what.substr(equals + 1);
        Demand(!fault.argument.empty());
    }
    fault.number = NumberOfFault(fault.name, fault.argument);
    return fault;
}

constexpr int cDone = 0;
constexpr int cUsage = 2;
constexpr int cBadInput = 5;

// Both tools refuse such arguments, whatever else is on the command line.
bool IsNeverTaken(const std::string& argument) {
    return argument == "++" || argument.starts_with(std::string(101, '['));
}

// What has to become of a command line.
struct Expected {
    int exitCode = cDone;
    bool hasEngine = false;
    std::string scene = "music";
    std::size_t records = cRecordsOfScene;
    tools::sim::EngineOptions options;
    std::vector<FaultSeen> faults;
};

Expected Judge(const CommandLine& line) {
    Expected expected;
    const bool isTwice =
        std::any_of(line.values.begin(), line.values.end(), [](const auto& option) {
            return option.first != "--fault" && option.second.size() > 1;
        });
    if (isTwice || std::any_of(line.arguments.begin(), line.arguments.end(), IsNeverTaken)) {
        expected.exitCode = cUsage;
        return expected;
    }
    const auto value = [&line](const char* name) { return line.values.at(name)[0]; };
    try {
        if (line.Has("--completion")) {
            std::string shell = value("--completion");
            for (char& c : shell)
                c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
            const Texts shells = {"bash", "fish", "powershell", "zsh"};
            Demand(std::count(shells.begin(), shells.end(), shell) == 1);
            return expected;
        }
        if (line.Has("--list"))
            return expected;
        tools::sim::EngineOptions& options = expected.options;
        if (line.Has("--for"))
            options.runMilliseconds = Milliseconds(value("--for"));
        if (line.Has("--period"))
            options.period =
                static_cast<std::uint32_t>(WholeNumber(value("--period"), 10, 10000));
        if (line.Has("--seed"))
            options.seed = WholeNumber(value("--seed"), 0, 0xFFFFFFFFFFFFFFFF);
        if (line.Has("--records"))
            expected.records = WholeNumber(value("--records"), 0, 64);
        options.publishes = !line.Has("--no-publish");
        options.writesDefaults = line.Has("--write-defaults");
        options.removesLevels = line.Has("--clean");
        if (line.Has("--fault"))
            for (const std::string& fault : line.values.at("--fault"))
                expected.faults.push_back(ReadFault(fault));
        if (line.Has("SCENE"))
            expected.scene = value("SCENE");
        expected.hasEngine = true;
    } catch (const Refused&) {
        expected.exitCode = cBadInput;
    }
    return expected;
}

std::string NumbersOf(const tools::sim::EngineOptions& options, std::size_t records) {
    return Shown(std::vector<std::uint64_t>{
        options.runMilliseconds.value_or(4711000000), options.seed, options.period.value_or(0),
        options.publishes, options.writesDefaults, options.removesLevels, records});
}

// A refusal is one line, and perhaps a second one that says what to do. With --json it is a
// line of JSON.
void CheckRefusal(const CommandLine& line, int exitCode) {
    ExpectSame("a refusal has words", true,
               !s_seen.complaints.empty() && s_seen.complaints.size() <= 2);
    for (const std::string& text : s_seen.complaints)
        ExpectSame("it is one line", std::string::npos, text.find('\n'));
    const std::string& first = s_seen.complaints[0];
    if (!line.isKnown || !line.Has("--json")) {
        ExpectSame("it is the program that speaks", true,
                   first.starts_with("kora4sim: ") || first.starts_with("{\"error\":"));
        return;
    }
    const Node document = ReadJson(first);
    document.CheckMembers({"error", "next", "exitCode"}, {});
    ExpectSame("exit code in JSON", std::to_string(exitCode),
               std::to_string(document.At("exitCode").Number()).substr(0, 1));
}

}  // namespace

void Check(std::string_view input) {
    const CommandLine line = Read(input);
    s_seen = {};
    int exitCode = cDone;
    try {
        exitCode = tools::sim::RunKora4Sim(line.arguments);
    } catch (const EngineMade&) {
    }
    ExpectSame("a documented exit code", true,
               exitCode == cDone || exitCode == cUsage || exitCode == cBadInput);
    if (exitCode != cDone)
        CheckRefusal(line, exitCode);
    if (!line.isKnown)
        return;
    const Expected expected = Judge(line);
    if (expected.exitCode != exitCode)
        Differ(
            "exit code", Shown(expected.exitCode),
            Shown(exitCode) + ", " + (s_seen.complaints.empty() ? "" : s_seen.complaints[0]));
    ExpectSame("the engine begins", expected.hasEngine, s_seen.hasEngine);
    if (!expected.hasEngine)
        return;
    ExpectSame("scene", expected.scene, s_seen.scene);
    ExpectSame("numbers", NumbersOf(expected.options, expected.records),
               NumbersOf(s_seen.options, s_seen.records));
    ExpectSameFaults(expected.faults, s_seen.options.faults);
}

}  // namespace fuzz
}  // namespace kora4
