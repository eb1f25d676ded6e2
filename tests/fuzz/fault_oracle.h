// SPDX-License-Identifier: MIT
// The faults of kora4sim, from the table of its manual.
#ifndef KORA4_TESTS_FUZZ_FAULT_ORACLE_H
#define KORA4_TESTS_FUZZ_FAULT_ORACLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "kora4sim/engine/faults.h"

namespace kora4::fuzz {

struct FaultSeen {
    std::string name;
    std::string argument;  // empty: none
    std::uint64_t at = 0;  // ms
    double number = 0;
};

// The number that the argument of a fault is; 0 for a name or no argument. Throws Refused for
// an unknown fault, and for an argument that it does not take.
double NumberOfFault(const std::string& name, const std::string& argument);
// The same for an argument that is a number already.
void CheckNumberOfFault(const std::string& name, double number);

// A number as the whole of a text, with an exponent or not. Throws Refused.
double NumberOf(const std::string& text);

void ExpectSameFaults(const std::vector<FaultSeen>& expected,
                      const std::vector<tools::sim::Fault>& seen);

}  // namespace kora4::fuzz

#endif  // KORA4_TESTS_FUZZ_FAULT_ORACLE_H
