// SPDX-License-Identifier: MIT
// The whole store at once, value for value, as the registry has it: nothing of the tools'
// own way to the registry is used.
#ifndef KORA4_TESTS_TOOLS_SUPPORT_RAW_VALUES_H
#define KORA4_TESTS_TOOLS_SUPPORT_RAW_VALUES_H

#include <string>
#include <vector>

#include "settings/document.h"
#include "tools/support/memory_store.h"

namespace kora4::test {

using StoreValues = tools::MemoryStore::Values;
using tools::Scope;

// Everything that stands in the three keys.
StoreValues ReadStoreValues();
// Makes the store just that.
void ReplaceStoreValues(const StoreValues& values);

// Without the counters that announce changes.
StoreValues WithoutCounters(const StoreValues& values);

// Where two stores differ, in words; empty when nowhere.
std::string DifferencesOf(const StoreValues& expected, const StoreValues& actual);

// How a load that makes one store into another has to go.
struct ExpectedLoad {
    std::size_t changes = 0;            // values that are written or deleted
    std::vector<PropertyKey> counters;  // those that announce them
    StoreValues after;                  // the whole store, with its counters

    std::size_t Writes() const { return changes + counters.size(); }
};
// The document has what the scope covers of `wanted`.
ExpectedLoad LoadOf(const StoreValues& before, const StoreValues& wanted, Scope scope);

// Two stores of which each value differs: right ones, garbage, absent ones.
struct TwoStores {
    StoreValues before;
    StoreValues after;
};
TwoStores DifferentStores(std::uint32_t seed);

// What `dump` would print of them.
std::string DocumentText(const StoreValues& values, Scope scope);

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_SUPPORT_RAW_VALUES_H
