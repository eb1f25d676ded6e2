// SPDX-License-Identifier: MIT
// What can go wrong with an engine, on demand.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::tools::sim {

// What can go wrong; the table of Faults says what each means.
enum class FaultKind {
    eStop,
    eGarbage,
    eCounts,
    eDie,
    eHold,
    eBurst,
    eWrongTypes,
    eProfileGarbage,
    eResume,
};

// Where a fault was asked for.
enum class FaultCause { eCommandLine, eTimeline };

// One fault at one moment.
struct Fault {
    FaultKind kind = FaultKind::eResume;
    std::string argument;  // the kind's name; empty for none
    double number = 0;     // hold: seconds; burst: writes
    std::uint64_t atMilliseconds = 0;
    FaultCause cause = FaultCause::eCommandLine;

    // "garbage=nan": as it is asked for, without its moment.
    std::string Text() const;
};

// A name that an argument may have, and what it does.
struct FaultArgument {
    std::string name;
    std::string meaning;
};

// A kind of fault with its name, its argument and its help text.
struct FaultDef {
    FaultKind kind;
    const char* name;
    // "=KIND", "[=KIND]", "=S", "=N" or nothing.
    const char* shape;
    const char* meaning;
    // The names that the argument may have; null when it is a number or there is none.
    std::vector<FaultArgument> (*kinds)() = nullptr;
    // Numbers: their range and what they count. Both 0: the argument is no number.
    double least = 0;
    double most = 0;
    const char* unit = "";
};

// All of them, in the order of --help.
std::span<const FaultDef> Faults();

// The row of a kind.
const FaultDef& DefOf(FaultKind kind);
// "1 to 100000"; empty when the argument is not a number.
std::string RangeOf(const FaultDef& def);
// The names that the argument may have; empty when it is a number or there is none.
std::vector<FaultArgument> ArgumentsOf(FaultKind kind);

// A fault by the name and argument; Failure with eBadInput, in words, when there is no such
// fault.
Fault MakeFault(std::string_view name, std::string_view argument, double atSeconds,
                FaultCause cause);
// "NAME[=ARGUMENT][@SECONDS]".
Fault ParseFault(std::string_view text);

inline constexpr double cLongestRun = 86400;  // seconds

}  // namespace kora4::tools::sim
