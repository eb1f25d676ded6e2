// SPDX-License-Identifier: MIT
// Each question is asked in a process of its own, and some take another one: the program that
// asks them starts itself again.
#ifndef KORA4_TESTS_PLATFORM_PROBE_ROLES_H
#define KORA4_TESTS_PLATFORM_PROBE_ROLES_H

#include <optional>
#include <string>

namespace kora4::probe {

// The exit code, if the arguments are those of a role; `main` calls it first.
std::optional<int> PlayRole(int count, char** arguments);

// The role of the one that asks, with the name of the question behind it.
inline constexpr char cAnswerRole[] = "--answer";
// Prints the answer and ends the process; returns if there is no such question.
std::optional<int> GiveAnswer(const std::string& name);

}  // namespace kora4::probe

#endif  // KORA4_TESTS_PLATFORM_PROBE_ROLES_H
