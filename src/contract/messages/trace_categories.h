// SPDX-License-Identifier: MIT
// The trace in names: the bits of the flag word, the modules whose lines it writes, and the
// files that the lines go to.
#ifndef KORA4_CONTRACT_MESSAGES_TRACE_CATEGORIES_H
#define KORA4_CONTRACT_MESSAGES_TRACE_CATEGORIES_H

#include <cstdint>
#include <string_view>

#include "contract/trace_flags.h"

namespace kora4::contract {

// A bit or field of the flag word in words.
struct TraceBits {
    std::uint32_t bits;
    const char* name;
    const char* constant;  // in trace/trace.h
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

// What the first word of a line names. It is the name of a log file, too.
struct TraceTag {
    const char* tag;
    const char* writer;
};

// The modules that write lines, in alphabetical order.
inline constexpr TraceTag cTraceTags[] = {
    {"KOLFXPropKeysAccess", "the access to the registry keys"},
    {"KORA4ASL", "the object that clients use, and registration"},
    {"KORA4ASLDLL", "the library as a module: its entry points and class factories"},
    {"KORA4KeysClient", "the client of the store, and its mutex"},
    {"KORA4PropKey", "the set of values of a profile"},
    {"KORA4PropKeyFields", "the fields of the technologies and their defaults"},
    {"KORA4UIKeysClient", "the operations on the store"},
    {"KORA4VisKeyData", "the reader of the engine's levels"},
    {"RegKeyMonitor", "the monitor that watches the store for changes"},
    {"RegKeySecurity", "the access lists of the store's keys"},
};

// Null when the library writes no such lines.
constexpr const TraceTag* FindTraceTag(std::string_view tag) {
    for (const TraceTag& known : cTraceTags)
        if (tag == known.tag)
            return &known;
    return nullptr;
}

}  // namespace kora4::contract

#endif  // KORA4_CONTRACT_MESSAGES_TRACE_CATEGORIES_H
