// SPDX-License-Identifier: MIT
// What a test program is told on its command line besides the test framework's arguments.
#ifndef KORA4_TESTS_SUPPORT_PROGRAM_ARGUMENTS_H
#define KORA4_TESTS_SUPPORT_PROGRAM_ARGUMENTS_H

#include <cstdlib>
#include <cstring>

namespace kora4::test {

// The number in that place, the first is 1; `fallback` if there is none. What begins with two
// dashes is not counted.
inline unsigned ProgramArgument(int place, unsigned fallback) {
    for (char** p = __argv + 1; *p; ++p)
        if (std::strncmp(*p, "--", 2) != 0 && --place == 0)
            return static_cast<unsigned>(std::strtoul(*p, nullptr, 10));
    return fallback;
}

// The seed of random choices in that place. Without one it is always the same: what a new seed
// finds is for the long runs to tell.
inline unsigned SeedArgument(int place) {
    return ProgramArgument(place, 1);
}

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_PROGRAM_ARGUMENTS_H
