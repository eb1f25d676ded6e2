// SPDX-License-Identifier: MIT
// What the values in trace messages are.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kora4::contract {

// X(enumerator, the name that `kora4ctl explain` shows). Two kinds share a name where one is
// printed in another form.
// clang-format off
#define KORA4_TRACE_KINDS(X)                                                                   \
    X(eAccessList, "access list") X(eAmount, "amount") X(eAttachReason, "reason")              \
    X(eBand, "band") X(eBands, "bands") X(eClass, "class") X(eCondition, "condition")          \
    X(eCount, "count") X(eCurve, "curve") X(eCurveName, "curve name")                          \
    X(eDemoProfileName, "demo profile name") X(eDesktop, "desktop")                            \
    X(eEngineName, "engine name") X(eError, "error") X(eExcitation, "excitation")              \
    X(eGain, "gain") X(eHandle, "handle") X(eHexError, "error") X(eIndex, "index")             \
    X(eInterface, "interface") X(eLimit, "limit") X(eLimitName, "limit name")                  \
    X(eMask, "mask") X(eMilliseconds, "milliseconds") X(eMutex, "mutex") X(eName, "name")      \
    X(eOrigin, "origin") X(ePath, "path") X(ePointer, "pointer") X(eProcess, "process")        \
    X(eProfile, "profile") X(eProfileName, "profile name") X(eReason, "reason")                \
    X(eResult, "result") X(eSwitch, "switch") X(eTechnology, "technology")                     \
    X(eTechnologyName, "technology name") X(eThread, "thread") X(eTitle, "title")              \
    X(eValueName, "value name") X(eVersion, "version")
// clang-format on

#define KORA4_KIND(enumerator, name) enumerator,
enum class TraceKind : std::uint8_t { eNone, KORA4_TRACE_KINDS(KORA4_KIND) };
#undef KORA4_KIND

// The kinds of the values of a message, in their order; none after the last.
inline constexpr std::size_t cMostTraceValues = 4;
using TraceKinds = std::array<TraceKind, cMostTraceValues>;

#define KORA4_KIND(enumerator, name) name,
inline constexpr const char* cTraceKindNames[] = {"", KORA4_TRACE_KINDS(KORA4_KIND)};
#undef KORA4_KIND

}  // namespace kora4::contract
