// SPDX-License-Identifier: MIT
// Where trace lines go in addition to the debugger's output.
#pragma once

namespace kora4::trace {

// A file for each tag, and one for all lines. The folder is not created.
inline constexpr char cLogFolder[] = "C:\\KalLogs\\";
inline constexpr char cLogExtension[] = ".log";
inline constexpr char cSharedLog[] = "KalTrace";

}  // namespace kora4::trace
