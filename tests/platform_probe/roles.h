// SPDX-License-Identifier: MIT
// Some questions take a second process: the program that asks them starts itself again.
#ifndef KORA4_TESTS_PLATFORM_PROBE_ROLES_H
#define KORA4_TESTS_PLATFORM_PROBE_ROLES_H

#include <optional>

namespace kora4::probe {

// The exit code, if the arguments are those of a role; `main` calls it first.
std::optional<int> PlayRole(int count, char** arguments);

}  // namespace kora4::probe

#endif  // KORA4_TESTS_PLATFORM_PROBE_ROLES_H
