// SPDX-License-Identifier: MIT
// The bits of the trace's flag word in names.
#pragma once

#include <cstdint>
#include <string_view>

#include "contract/trace_flags.h"

namespace kora4::contract {

// A bit or field of the flag word in words.
struct TraceBits {
    std::uint32_t bits;
    const char* name;
    const char* constant;  // in contract/trace_flags.h
    const char* lines;     // which lines it lets through
};

// The categories, and the switch for files.
inline constexpr TraceBits cTraceCategories[] = {
    {trace::eResults, "results", "eResults", "exit lines that print a result"},
    {trace::eSecurity, "security", "eSecurity",
     "key security, monitor thread, visualization reader"},
    {trace::eApiEntryExit, "api", "eApiEntryExit",
     "entry and exit of the API object, the keys clients and key security"},
    {trace::eAssertions, "assertions", "eAssertions", "failed assertions"},
    {trace::eModuleEvents, "module", "eModuleEvents", "process and thread attach and detach"},
    {trace::eProcessTracking, "process", "eProcessTracking",
     "process id, handle count, desktop, thread ids of calls"},
    {trace::eMessages, "messages", "eMessages", "what the API object reports"},
    {trace::eAllEntryExit, "all-entries", "eAllEntryExit",
     "entry and exit lines of everything"},
    {trace::eVisualizationDump, "visualization", "eVisualizationDump",
     "the content of visualization data"},
    {trace::eNotificationThreads, "notification-threads", "eNotificationThreads",
     "threads on which notifications are delivered"},
    {trace::eLogFiles, "log-files", "eLogFiles", "append every line to log files too"},
};

// A field of two bits: with one of its four values nothing is traced at all.
inline constexpr TraceBits cTraceMasterSwitch[] = {
    {trace::eMasterSwitch, "master-switch", "eMasterSwitch",
     "two bits; with the value below nothing is traced, with any other the bits above decide"},
    {trace::eMasterSwitchOff, "off", "eMasterSwitchOff", "that value"},
};

// Null when there is no such category.
constexpr const TraceBits* FindTraceCategory(std::string_view name) {
    for (const TraceBits& category : cTraceCategories)
        if (name == category.name)
            return &category;
    return nullptr;
}

// Every bit that lets lines through.
constexpr std::uint32_t AllTraceCategories() {
    std::uint32_t bits = 0;
    for (const TraceBits& category : cTraceCategories)
        bits |= category.bits;
    return bits & ~std::uint32_t{trace::eLogFiles};
}

}  // namespace kora4::contract
