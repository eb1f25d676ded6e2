// SPDX-License-Identifier: MIT
// Who writes trace lines: the tags of the lines, and the classes and functions that write them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "contract/trace_flags.h"

namespace kora4::contract {

namespace tag {

inline constexpr char cKeyAccess[] = "KOLFXPropKeysAccess";
inline constexpr char cApi[] = "KORA4ASL";
inline constexpr char cModule[] = "KORA4ASLDLL";
inline constexpr char cKeysClient[] = "KORA4KeysClient";
inline constexpr char cPatchSet[] = "KORA4PropKey";
inline constexpr char cFields[] = "KORA4PropKeyFields";
inline constexpr char cUIKeysClient[] = "KORA4UIKeysClient";
inline constexpr char cLevels[] = "KORA4VisKeyData";
inline constexpr char cMonitor[] = "RegKeyMonitor";
inline constexpr char cSecurity[] = "RegKeySecurity";

}  // namespace tag

// What the first word of a line names; it is also the name of a log file.
struct TraceTag {
    const char* tag;
    const char* writer;
};

// The modules that write lines, in alphabetical order.
inline constexpr TraceTag cTraceTags[] = {
    {tag::cKeyAccess, "the access to the registry keys"},
    {tag::cApi, "the object that clients use, and registration"},
    {tag::cModule, "the library as a module: its entry points and class factories"},
    {tag::cKeysClient, "the client of the store, and its mutex"},
    {tag::cPatchSet, "the set of values of a profile"},
    {tag::cFields, "the fields of the technologies and their defaults"},
    {tag::cUIKeysClient, "the operations on the store"},
    {tag::cLevels, "the reader of the engine's levels"},
    {tag::cMonitor, "the monitor that watches the store for changes"},
    {tag::cSecurity, "the access lists of the store's keys"},
};

// Null if the library writes no lines with that tag.
constexpr const TraceTag* FindTraceTag(std::string_view tag) {
    const auto* const pFound = std::ranges::find(cTraceTags, tag, &TraceTag::tag);
    return pFound != std::end(cTraceTags) ? pFound : nullptr;
}

// A class whose functions write lines, or a function that does, and its purpose.
struct TraceWriter {
    const char* name;  // the part of a function's name before "::", or the whole of it
    const char* tag;
    // Lets the entry line through, and the exit line without a result. The one with a result
    // also has eResults.
    std::uint32_t entryMask;
    const char* meaning;
};

inline constexpr TraceWriter cTraceWriters[] = {
    {"CKORA4ASL", tag::cApi, trace::eEntry, "a method of the object that clients use"},
    {"ClassFactory", tag::cModule, trace::eModuleEntry, "the creation of an object"},
    {"DllCanUnloadNow", tag::cModule, trace::eModuleEntry,
     "COM asks whether the library can be unloaded"},
    {"DllGetClassObject", tag::cModule, trace::eModuleEntry,
     "COM asks the library for a class object"},
    {"DllMain", tag::cModule, trace::eModuleEntry, "the library is attached or detached"},
    {"DllRegisterServer", tag::cModule, trace::eModuleEntry, "the library is being registered"},
    {"DllUnregisterServer", tag::cModule, trace::eModuleEntry,
     "the library is being unregistered"},
    {"GateStreamHolder", tag::cMonitor, trace::eMonitorEntry,
     "how the monitor's thread reaches the object's apartment"},
    {"KORA4FieldDef", tag::cFields, trace::eStoreEntry,
     "a field of a technology is read or written"},
    {"KORA4KeysClient", tag::cKeysClient, trace::eEntry, "the store is loaded or compared"},
    {"KORA4ManagedPatchSet", tag::cPatchSet, trace::eStoreEntry,
     "the values of a profile are read or written"},
    {"KORA4PropKeyBase", tag::cUIKeysClient, trace::eStoreEntry,
     "the name of a value is built"},
    {"KORA4PropKeyStoreAccess", tag::cUIKeysClient, trace::eStoreEntry,
     "numbers and arrays as the store keeps them"},
    {"KORA4RegPropKeysAccess", tag::cKeyAccess, trace::eStoreEntry,
     "a value in the registry is read, written or deleted"},
    {"KORA4UIKeysClient", tag::cUIKeysClient, trace::eEntry, "an operation on the store"},
    {"KORA4VisKeyData", tag::cLevels, trace::eMonitorEntry, "the engine's levels are read"},
    {"NamedMutex", tag::cKeysClient, trace::eEntry, "the mutex that guards the store"},
    {"OnRegisterServer", tag::cApi, trace::eEntry,
     "the store's keys are created when the library is registered"},
    {"ProcessTrack", tag::cApi, trace::eTrackerEntry, "diagnostics about the process"},
    {"RegKeyMonitor", tag::cMonitor, trace::eMonitorEntry, "the store is watched for changes"},
    {"RegKeySecurity", tag::cSecurity, trace::eEntry,
     "the keys of the store are made writable for every user"},
};

// Whether a function is the writer or one of its functions.
constexpr bool IsOf(const TraceWriter& writer, std::string_view function) {
    return function.substr(0, function.find("::")) == writer.name;
}

// Null if no writer has that name.
constexpr const TraceWriter* FindTraceWriter(std::string_view function) {
    for (const TraceWriter& writer : cTraceWriters)
        if (IsOf(writer, function))
            return &writer;
    return nullptr;
}

// Functions whose lines differ from those of their class; log readers depend on them.
struct OddTraceFunction {
    const char* name;
    const char* tag;
    std::uint32_t resultMask;  // of the exit line with a result
};

inline constexpr OddTraceFunction cOddTraceFunctions[] = {
    {"KORA4KeysClient::UpdateActivePreset", tag::cUIKeysClient, trace::eExitResult},
    {"KORA4ManagedPatchSet::DefaultsIndexForProfile", tag::cFields, trace::eStoreExitResult},
    {"KORA4ManagedPatchSet::GetDefaultOnElseOff", tag::cFields, trace::eStoreExitResult},
    {"KORA4ManagedPatchSet::GetTechnologyFields", tag::cFields, trace::eStoreExitResult},
    {"KORA4PropKeyStoreAccess::WriteArrayNumericField", tag::cPatchSet,
     trace::eStoreExitResult},
    {"KORA4PropKeyStoreAccess::WriteFlagArray", tag::cPatchSet, trace::eStoreExitResult},
    {"KORA4PropKeyStoreAccess::WriteNumericArray", tag::cPatchSet, trace::eStoreExitResult},
    {"NamedMutex::Release", tag::cUIKeysClient, trace::eExitResult},
    {"OnRegisterServer", tag::cApi, trace::eStoreExitResult},
    {"RegKeyMonitor::RegMonitorEntry", tag::cMonitor, trace::eStoreExitResult},
    {"RegKeyMonitor::RegMonitorLoop", tag::cMonitor, trace::eStoreExitResult},
    {"RegKeyMonitor::RunRegMonitor", tag::cMonitor, trace::eStoreExitResult},
};

}  // namespace kora4::contract
