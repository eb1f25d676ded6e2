// SPDX-License-Identifier: MIT
// What this process may do, and on which platform it runs.
#pragma once

namespace kora4::tools {

// Whether it runs elevated: it may write the machine's keys and folders.
bool IsElevated();

// Wine keeps no access lists of keys when its server ends, shows every file as its user's, and
// follows links by itself. Where that makes a difference, the code asks.
bool RunsUnderWine();

}  // namespace kora4::tools
