// SPDX-License-Identifier: MIT
// The whole of kora4sim but its entry point.
#pragma once

#include <string>
#include <vector>

namespace kora4::tools::sim {

// Runs the program: parses the arguments, which are UTF-8 without the program's name, and
// returns the exit code of the process. Does not throw.
int RunKora4Sim(const std::vector<std::string>& arguments);

}  // namespace kora4::tools::sim
