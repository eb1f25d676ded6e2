// SPDX-License-Identifier: MIT
// The scripts that make shells complete a command line, with a comment on how to load them.
#pragma once

#include <string>

#include "kora4ctl/command_line/completion.h"

namespace kora4::tools {

std::string BashScript(const Completion& completion);
std::string PowerShellScript(const Completion& completion);

}  // namespace kora4::tools
