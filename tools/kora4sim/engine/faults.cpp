// SPDX-License-Identifier: MIT
// The table of faults, and the parser of their texts.
#include "kora4sim/engine/faults.h"

#include <cmath>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "kora4sim/engine/wrong_values.h"
#include "kora4sim/signal/blob.h"

namespace kora4::tools::sim {

namespace {

std::vector<FaultArgument> NamesOf(std::span<const Spoiling> spoilings) {
    std::vector<FaultArgument> names;
    for (const Spoiling& spoiling : spoilings)
        names.push_back({spoiling.name, spoiling.meaning});
    return names;
}

constexpr FaultDef cFaults[] = {
    {FaultKind::eStop, "stop", "", "stops publishing"},
    {FaultKind::eGarbage, "garbage", "=KIND", "publishes values that are not levels",
     [] { return NamesOf(Garbage()); }},
    {FaultKind::eCounts, "counts", "=KIND", "publishes levels with wrong counts",
     [] { return NamesOf(WrongCounts()); }},
    {FaultKind::eDie, "die", "[=KIND]",
     "ends at once, without a summary, while it holds the store's mutex",
     []() -> std::vector<FaultArgument> {
         return {{cHalfWay, "after the value of a change is written, before it is announced"}};
     }},
    {FaultKind::eHold, "hold", "=S", "holds the store's mutex for S seconds", nullptr, 0.001,
     600, "seconds"},
    {FaultKind::eBurst, "burst", "=N",
     "writes settings of the active profile N times, as fast as possible", nullptr, 1, 100000,
     "writes"},
    {FaultKind::eWrongTypes, "wrong-types", "[=KIND]",
     "corrupts and announces every field of the active profile", WrongFieldKinds},
    {FaultKind::eProfileGarbage, "profile-garbage", "[=KIND]",
     "corrupts the active profile's number, or a profile's name", WrongProfileKinds},
    {FaultKind::eResume, "resume", "",
     "ends stop, garbage, counts and hold, and restores corrupted values"},
};

bool IsOptional(const FaultDef& def) {
    return def.shape[0] != '=';
}

Failure Bad(const std::string& what, const std::string& next = {}) {
    return Failure(ExitCode::eBadInput, what,
                   next.empty() ? "All faults and their kinds: kora4sim --help" : next);
}

const FaultDef& DefOf(std::string_view name) {
    std::vector<std::string> names;
    for (const FaultDef& def : cFaults) {
        if (name == def.name)
            return def;
        names.push_back(def.name);
    }
    throw Bad("Unknown fault '" + std::string(name) + "'. " + Suggestion(name, names));
}

double NumberOf(const FaultDef& def, std::string_view text) {
    const std::optional<double> number = ReadNumber<double>(text);
    if (!number || !(*number >= def.least) || !(*number <= def.most) ||
        (def.kind == FaultKind::eBurst && *number != std::floor(*number)))
        throw Bad("Invalid argument '" + std::string(text) + "' for the fault '" + def.name +
                  "': expected " + RangeOf(def) + " " + def.unit + ".");
    return *number;
}

void CheckName(const FaultDef& def, std::string_view argument) {
    std::vector<std::string> names;
    for (const FaultArgument& known : ArgumentsOf(def.kind)) {
        if (argument == known.name)
            return;
        names.push_back(known.name);
    }
    if (names.empty())
        throw Bad("The fault '" + std::string(def.name) + "' takes no argument.");
    throw Bad("The fault '" + std::string(def.name) + "' has no kind '" +
              std::string(argument) + "'. " + Suggestion(argument, names));
}

}  // namespace

std::string RangeOf(const FaultDef& def) {
    return def.most > 0 ? Range(def.least, def.most) : std::string();
}

std::span<const FaultDef> Faults() {
    return cFaults;
}

const FaultDef& DefOf(FaultKind kind) {
    for (const FaultDef& def : cFaults)
        if (def.kind == kind)
            return def;
    return cFaults[0];
}

std::vector<FaultArgument> ArgumentsOf(FaultKind kind) {
    const FaultDef& def = DefOf(kind);
    return def.kinds ? def.kinds() : std::vector<FaultArgument>();
}

Fault MakeFault(std::string_view name, std::string_view argument, double atSeconds,
                FaultCause cause) {
    const FaultDef& def = DefOf(name);
    Fault fault;
    fault.kind = def.kind;
    fault.cause = cause;
    fault.argument = argument;
    if (!(atSeconds >= 0) || !(atSeconds <= cLongestRun))
        throw Bad("Invalid time of a fault: expected " + Range(0, cLongestRun) + " seconds.");
    fault.atMilliseconds = static_cast<std::uint64_t>(std::llround(atSeconds * 1000));
    if (argument.empty()) {
        if (!IsOptional(def))
            throw Bad("The fault '" + std::string(name) + "' needs an argument: " + def.name +
                      def.shape + ".");
    } else if (def.most > 0) {
        fault.number = NumberOf(def, argument);
    } else {
        CheckName(def, argument);
    }
    return fault;
}

Fault ParseFault(std::string_view text) {
    const std::string_view whole = text;
    double atSeconds = 0;
    if (const std::size_t at = text.rfind('@'); at != std::string_view::npos) {
        const std::string_view moment = text.substr(at + 1);
        const std::optional<double> seconds = ReadNumber<double>(moment);
        if (!seconds)
            throw Bad("Invalid time '" + std::string(moment) + "' in '" + std::string(whole) +
                      "': expected a number of seconds.");
        atSeconds = *seconds;
        text = text.substr(0, at);
    }
    const std::size_t equals = text.find('=');
    const std::string_view name = text.substr(0, equals);
    std::string_view argument;
    if (equals != std::string_view::npos) {
        argument = text.substr(equals + 1);
        if (argument.empty())
            throw Bad("'" + std::string(whole) + "' lacks an argument after '='.");
    }
    return MakeFault(name, argument, atSeconds, FaultCause::eCommandLine);
}

std::string Fault::Text() const {
    const std::string name = DefOf(kind).name;
    return argument.empty() ? name : name + "=" + argument;
}

}  // namespace kora4::tools::sim
