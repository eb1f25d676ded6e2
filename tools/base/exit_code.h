// SPDX-License-Identifier: MIT
// What a tool's exit code says. The numbers are part of the contract: scripts depend on them.
#pragma once

namespace kora4::tools {

// The exit codes of both tools; --help lists them.
enum class ExitCode : int {
    eDone = 0,
    eFailed = 1,
    eUsage = 2,     // the command line is not understood
    eRefused = 3,   // an informational code: understood, and nothing was changed
    eNotReady = 4,  // the library is not registered, or cannot be initialised
    eBadInput = 5,  // a value or a file that cannot be taken; nothing was changed
    eTimedOut = 6,
    eFindings = 7,  // doctor, lint, diff: there is something to tell
};

}  // namespace kora4::tools
