// SPDX-License-Identifier: MIT
// What the arguments and options of kora4ctl take, for the completion of shells.
#pragma once

#include "process/completion/completion.h"

namespace kora4::tools {

// From the settings table, the names, and the commands of the program.
Vocabulary KnownWords(const CLI::App& root);

}  // namespace kora4::tools
