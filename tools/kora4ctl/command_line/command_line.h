// SPDX-License-Identifier: MIT
// The whole of kora4ctl but its entry point.
#pragma once

#include <string>
#include <vector>

#include "process/program.h"

namespace kora4::tools {

// Puts every verb on the command line.
void AddVerbs(Context& context);

// Runs the program: parses the arguments, which are UTF-8 without the program's name, and
// returns the exit code of the process. Does not throw.
int RunKora4Ctl(const std::vector<std::string>& arguments);

}  // namespace kora4::tools
