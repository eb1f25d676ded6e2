// SPDX-License-Identifier: MIT
// The table of faults, and the parser of their texts.
#include "kora4sim/engine/faults.h"

#include <charconv>
#include <cmath>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "kora4sim/engine/wrong_values.h"
#include "kora4sim/signal/blob.h"

namespace kora4::tools::sim {

namespace {

constexpr FaultDef cFaults[] = {
    {FaultKind::eStop, "stop", "", "publishes nothing any more", 0, 0},
    {FaultKind::eGarbage, "garbage", "=KIND", "publishes values that are no levels", 0, 0},
    {FaultKind::eCounts, "counts", "=KIND", "publishes levels that state wrong numbers", 0, 0},
    {FaultKind::eDie, "die", "[=KIND]",
     "ends at once, without a summary, while it holds the store's mutex", 0, 0},
    {FaultKind::eHold, "hold", "=S", "holds the store's mutex for S seconds", 0.001, 600},
    {FaultKind::eBurst, "burst", "=N",
     "writes settings of the active profile N times as fast as it can", 1, 100000},
    {FaultKind::eWrongTypes, "wrong-types", "[=KIND]",
     "spoils every field of the active profile and announces it", 0, 0},
    {FaultKind::eProfileGarbage, "profile-garbage", "[=KIND]",
     "spoils what says which profile is active, or a profile's name", 0, 0},
    {FaultKind::eResume, "resume", "",
     "ends stop, garbage, counts and hold, and puts back what was spoilt", 0, 0},
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
    throw Bad("There is no fault '" + std::string(name) + "'. " + Suggestion(name, names));
}

std::string Shown(double number) {
    return number == std::floor(number) ? std::to_string(static_cast<long long>(number))
                                        : Decimal(static_cast<float>(number));
}

double NumberOf(const FaultDef& def, std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !(number >= def.least) ||
        !(number <= def.most) ||
        (def.kind == FaultKind::eBurst && number != std::floor(number)))
        throw Bad("'" + std::string(text) + "' is no argument for the fault '" + def.name +
                  "': it takes a number from " + Shown(def.least) + " to " + Shown(def.most) +
                  (def.kind == FaultKind::eHold ? " seconds." : " writes."));
    return number;
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

std::vector<FaultArgument> NamesOf(std::span<const Spoiling> spoilings) {
    std::vector<FaultArgument> names;
    for (const Spoiling& spoiling : spoilings)
        names.push_back({spoiling.name, spoiling.meaning});
    return names;
}

}  // namespace

std::string RangeOf(const FaultDef& def) {
    return def.most > 0 ? Shown(def.least) + " to " + Shown(def.most) : std::string();
}

std::span<const FaultDef> Faults() {
    return cFaults;
}

const FaultDef& DefOf(FaultKind kind) {
    for (const FaultDef& def : cFaults) {
        if (def.kind == kind)
            return def;
    }
    return cFaults[0];
}

std::vector<FaultArgument> ArgumentsOf(FaultKind kind) {
    switch (kind) {
        case FaultKind::eGarbage:
            return NamesOf(Garbage());
        case FaultKind::eCounts:
            return NamesOf(WrongCounts());
        case FaultKind::eDie:
            return {{cHalfWay,
                     "after the value of a change is written, and before what "
                     "announces it"}};
        case FaultKind::eWrongTypes:
            return WrongFieldKinds();
        case FaultKind::eProfileGarbage:
            return WrongProfileKinds();
        default:
            return {};
    }
}

Fault MakeFault(std::string_view name, std::string_view argument, double atSeconds,
                FaultCause cause) {
    const FaultDef& def = DefOf(name);
    Fault fault;
    fault.kind = def.kind;
    fault.cause = cause;
    fault.argument = argument;
    if (!(atSeconds >= 0) || !(atSeconds <= cLongestRun))
        throw Bad("A fault may come after 0 to " + Shown(cLongestRun) + " seconds.");
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
        const char* end = moment.data() + moment.size();
        const auto [last, error] = std::from_chars(moment.data(), end, atSeconds);
        if (error != std::errc() || last != end)
            throw Bad("'" + std::string(moment) + "' in '" + std::string(whole) +
                      "' is no number of seconds.");
        text = text.substr(0, at);
    }
    const std::size_t equals = text.find('=');
    const std::string_view name = text.substr(0, equals);
    std::string_view argument;
    if (equals != std::string_view::npos) {
        argument = text.substr(equals + 1);
        if (argument.empty())
            throw Bad("'" + std::string(whole) + "' ends where its argument should begin.");
    }
    return MakeFault(name, argument, atSeconds, FaultCause::eCommandLine);
}

std::string Fault::Text() const {
    const std::string name = DefOf(kind).name;
    return argument.empty() ? name : name + "=" + argument;
}

}  // namespace kora4::tools::sim
