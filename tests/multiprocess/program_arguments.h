// SPDX-License-Identifier: MIT
// What a multi-process test program is told on its command line besides the test framework's.
#ifndef KORA4_TESTS_MULTIPROCESS_PROGRAM_ARGUMENTS_H
#define KORA4_TESTS_MULTIPROCESS_PROGRAM_ARGUMENTS_H

namespace kora4::test {

// The number in that place, the first is 1; `fallback` if there is none.
unsigned ProgramArgument(int place, unsigned fallback);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_PROGRAM_ARGUMENTS_H
