// SPDX-License-Identifier: MIT
// Platform calls by kind, and how a sequence of them is written down.
#ifndef KORA4_BENCH_CALL_LIST_H
#define KORA4_BENCH_CALL_LIST_H

#include <string>
#include <vector>

namespace kora4::bench {

// The kinds by their names in docs/performance.md.
namespace call {
inline constexpr char cWait[] = "wait";        // for the mutex, an event, a thread
inline constexpr char cRelease[] = "release";  // of the mutex
inline constexpr char cNumber[] = "number";    // queries of a value, by its type
inline constexpr char cText[] = "text";
inline constexpr char cBlob[] = "blob";
inline constexpr char cSet[] = "set";  // a value is written
inline constexpr char cDelete[] = "delete";
inline constexpr char cAllocation[] = "allocation";
inline constexpr char cCom[] = "COM";        // a function of COM, or a call through a proxy
inline constexpr char cOpen[] = "open";      // of a registry key
inline constexpr char cArm[] = "arm";        // a watch on a key
inline constexpr char cCreate[] = "create";  // an event, a mutex, a thread
inline constexpr char cSignal[] = "signal";  // an event is set
inline constexpr char cClose[] = "close";    // a handle or a key
inline constexpr char cModule[] = "module";  // the loader
inline constexpr char cMessage[] = "message";
inline constexpr char cLine[] = "line";  // to the debugger's output
}  // namespace call

using CallList = std::vector<std::string>;

// "wait, 2 number, 3 x (text, allocation), release"; "none" for an empty list. Equal lists
// give equal texts.
std::string Written(const CallList& calls);

}  // namespace kora4::bench

#endif  // KORA4_BENCH_CALL_LIST_H
