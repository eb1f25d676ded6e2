// SPDX-License-Identifier: MIT
// The names of the trace's categories.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "contract/trace_flags.h"

namespace kora4::contract {

// A bit of the trace word, and what it stands for.
struct TraceBits {
    std::uint32_t bits;
    const char* name;
    const char* lines;  // which lines it lets through
};

// The categories, and the switch for files.
inline constexpr TraceBits cTraceCategories[] = {
    {trace::eResults, "results", "exit lines that print a result"},
    {trace::eSecurity, "security", "key security, monitor thread, visualization reader"},
    {trace::eApiEntryExit, "api",
     "entry and exit of the API object, the keys clients and key security"},
    {trace::eAssertions, "assertions", "failed assertions"},
    {trace::eModuleEvents, "module", "process and thread attach and detach"},
    {trace::eProcessTracking, "process",
     "process id, handle count, desktop, thread ids of calls"},
    {trace::eMessages, "messages", "what the API object reports"},
    {trace::eAllEntryExit, "all-entries", "entry and exit lines of everything"},
    {trace::eVisualizationDump, "visualization", "the content of visualization data"},
    {trace::eNotificationThreads, "notification-threads",
     "threads on which notifications are delivered"},
    {trace::eLogFiles, "log-files", "append every line to log files too"},
};

// Null if there is no such category.
constexpr const TraceBits* FindTraceCategory(std::string_view name) {
    const auto* const pFound = std::ranges::find(cTraceCategories, name, &TraceBits::name);
    return pFound != std::end(cTraceCategories) ? pFound : nullptr;
}

// Every bit that lets lines through.
constexpr std::uint32_t AllTraceCategories() {
    std::uint32_t bits = 0;
    for (const TraceBits& category : cTraceCategories)
        bits |= category.bits;
    return bits & ~std::uint32_t{trace::eLogFiles};
}

}  // namespace kora4::contract
