// SPDX-License-Identifier: MIT
// What a settings document asks to be stored, from a table of its own.
#ifndef KORA4_TESTS_FUZZ_SETTINGS_ORACLE_H
#define KORA4_TESTS_FUZZ_SETTINGS_ORACLE_H

#include <map>
#include <string>

#include "fuzz/json_oracle.h"

namespace kora4::fuzz {

struct SettingsOracle {
    bool isAll = false;  // scope "all"
    // "music: volume-leveler" -> what the registry shall hold there: "4 03000000", or
    // "3 unread 3000000".
    std::map<std::string, std::string> values;
};

// Throws Refused.
SettingsOracle ReadSettings(const Node& document);

// A profile that has settings of the user: movie to p6.
bool IsUsersProfile(const std::string& word);

// A registry value as the oracle shows it.
std::string ShownStored(unsigned type, const std::string& bytes);
std::string ShownUnread(unsigned type, unsigned size);

}  // namespace kora4::fuzz

#endif  // KORA4_TESTS_FUZZ_SETTINGS_ORACLE_H
