// SPDX-License-Identifier: MIT
// The scripts that make shells complete a command line, with a comment on how to load them.
#pragma once

#include <string>
#include <vector>

#include "process/completion/completion.h"

namespace kora4::tools {

// "bash", "fish", "powershell", "zsh".
std::vector<std::string> ShellNames();

// The script for a shell, whose name is taken in any case. Failure with eBadInput when there is
// none.
std::string ShellScript(const std::string& shell, const Completion& completion);

}  // namespace kora4::tools
