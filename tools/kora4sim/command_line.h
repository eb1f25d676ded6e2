// SPDX-License-Identifier: MIT
// The whole of kora4sim but its entry point.
#ifndef KORA4_KORA4SIM_COMMAND_LINE_H
#define KORA4_KORA4SIM_COMMAND_LINE_H

#include <string>
#include <vector>

namespace kora4::tools::sim {

// Gives the exit code of the process.
int RunKora4Sim(const std::vector<std::string>& arguments);

}  // namespace kora4::tools::sim

#endif  // KORA4_KORA4SIM_COMMAND_LINE_H
