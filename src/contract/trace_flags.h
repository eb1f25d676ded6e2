// SPDX-License-Identifier: MIT
// The trace word: its categories, and the unions of them that statements use.
#pragma once

#include <cstdint>

namespace kora4::trace {

// Bits of the trace word. A statement's mask is the union of the bits that enable it.
enum Flag : std::uint32_t {
    eResults = 0x00000001,          // exit lines that print an HRESULT
    eSecurity = 0x00000004,         // key security, monitor thread, visualization reader
    eApiEntryExit = 0x00000010,     // entry and exit of API object, keys clients, key security
    eAssertions = 0x00000020,       // failed KALASSERTs
    eModuleEvents = 0x00000100,     // DLL_PROCESS_ATTACH and the like
    eProcessTracking = 0x00000200,  // process id, handle count, desktop, per-call thread ids
    eMessages = 0x00000400,         // what the API object reports; on by default
    eAllEntryExit = 0x00000800,     // entry and exit lines of every module
    eVisualizationDump = 0x00008000,
    eNotificationThreads = 0x00010000,  // thread ids of notification delivery
    eLogFiles = 0x01000000,             // also append each produced line to the log files
    eMasterSwitch = 0x06000000,         // two-bit field ...
    eMasterSwitchOff = 0x04000000,      // ... with this value nothing is produced at all
};

// The masks in use, by their purpose.
enum Mask : std::uint32_t {
    eEntry = eAllEntryExit | eApiEntryExit,                            // 0x810
    eExitResult = eAllEntryExit | eApiEntryExit | eResults,            // 0x811
    eStoreEntry = eAllEntryExit,                                       // 0x800
    eStoreExitResult = eAllEntryExit | eResults,                       // 0x801
    eMonitorEntry = eAllEntryExit | eSecurity,                         // 0x804
    eMonitorExitResult = eAllEntryExit | eSecurity | eResults,         // 0x805
    eModuleEntry = eAllEntryExit | eModuleEvents,                      // 0x900
    eModuleExitResult = eAllEntryExit | eModuleEvents | eResults,      // 0x901
    eTrackerEntry = eAllEntryExit | eProcessTracking | eApiEntryExit,  // 0xA10
    eTrackerStartUp = eProcessTracking | eApiEntryExit,                // 0x210
};

// The word with which every process starts, until an object reads the stored one.
inline constexpr std::uint32_t cDefaultFlags = eMessages;

}  // namespace kora4::trace
