// SPDX-License-Identifier: MIT
// Where the trace lines go beside the debugger's output.
#ifndef KORA4_CONTRACT_MESSAGES_TRACE_FILES_H
#define KORA4_CONTRACT_MESSAGES_TRACE_FILES_H

namespace kora4::trace {

// A file for each tag, and one for all lines. The folder is not created.
inline constexpr char cLogFolder[] = "C:\\KalLogs\\";
inline constexpr char cLogExtension[] = ".log";
inline constexpr char cSharedLog[] = "KalTrace";

}  // namespace kora4::trace

#endif  // KORA4_CONTRACT_MESSAGES_TRACE_FILES_H
