// SPDX-License-Identifier: MIT
// What an inspection of the machine found.
#ifndef KORA4_KORA4CTL_DOCTOR_OBSERVATION_H
#define KORA4_KORA4CTL_DOCTOR_OBSERVATION_H

#include <algorithm>
#include <string>
#include <vector>

#include "settings/lint.h"

namespace kora4::tools {

// One thing found out, with what to do about it.
struct Observation {
    Severity severity = Severity::eNote;
    std::string what;  // sentences
    std::string next;  // what to do, a sentence or a command; may be empty
};

using Observations = std::vector<Observation>;

inline void Add(Observations& observations, Severity severity, std::string what,
                std::string next = {}) {
    observations.push_back({severity, std::move(what), std::move(next)});
}

// Warnings and errors end a verb with findings, notes do not.
inline bool NeedsMending(const Observations& observations) {
    return std::any_of(observations.begin(), observations.end(),
                       [](const Observation& one) { return one.severity != Severity::eNote; });
}

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_DOCTOR_OBSERVATION_H
