// SPDX-License-Identifier: MIT
// fault_matrix_test [EACH [SEED]]: injects every EACH-th fault (default: every one), the first
// of them chosen at random, and prints what was injected.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>

#include "faults/fault_matrix.h"

// Of all tests together; fewer mean that calls were not seen.
constexpr std::size_t cFewestFaults = 12000;

int main(int argc, char** argv) {
    using namespace kora4::test;
    testing::InitGoogleTest(&argc, argv);
    const unsigned each =
        argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10)) : 1;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10))
                                   : static_cast<unsigned>(std::time(nullptr));
    if (each == 0) {
        std::fprintf(stderr, "fault_matrix_test [EACH [SEED]]\n");
        return 2;
    }
    std::printf("every fault of %u, seed %u\n", each, seed);
    SelectFaults(each, std::mt19937(seed)() % each);
    const int result = RUN_ALL_TESTS();
    std::printf("injected:\n%s", InjectedFaultsText().c_str());
    if (GTEST_FLAG_GET(filter) == "*" && InjectedFaults() < cFewestFaults / each) {
        std::printf("FAILED: at least %zu are expected\n", cFewestFaults / each);
        return 1;
    }
    return result;
}
