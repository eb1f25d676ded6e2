// SPDX-License-Identifier: MIT
// Messages of the store, its monitor and the module, with their meaning.
#ifndef KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_STORE_H
#define KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_STORE_H

#include "contract/messages/trace_message.h"

namespace kora4::contract {

namespace msg {

inline constexpr char cRegistryErrors[] =
    "0 is success, 2 means that it does not exist, 5 that access was denied, 1018 that the key "
    "was deleted while it was open.";
inline constexpr char cSeeDoctor[] = "For another number than 0 or 2 run 'kora4ctl doctor'.";
inline constexpr char cAdministratorNeeded[] =
    "Register the library as an administrator: 'kora4ctl register'.";

// The registry keys.
inline constexpr auto cOpenKeyEntry =
    Line("KORA4RegPropKeysAccess::OpenGlobalKey", ">> pwRegPath: %S", trace::eStoreEntry,
         "path", "A key of the store is being opened.");
inline constexpr auto cOpenKeyStatus =
    Line(cOpenKeyEntry.function, "reg open retStatus: %ld", trace::eStoreEntry, "error",
         "What the registry answered to opening the key.", cRegistryErrors, cSeeDoctor);
inline constexpr auto cQueryValue =
    Line("KORA4RegPropKeysAccess::QueryRegistryValue", "to RegQueryValueEx of: %S",
         trace::eStoreEntry, "value name", "This value is being read.");
inline constexpr auto cSetValueStatus =
    Line("KORA4RegPropKeysAccess::SetRegistryValue", "RegSetValue retStatus: %ld",
         trace::eStoreEntry, "error", "What the registry answered to writing a value.",
         cRegistryErrors, cSeeDoctor);
inline constexpr auto cDeleteValue =
    Line("KORA4RegPropKeysAccess::DeleteRegistryKey", "to RegDeleteValue of: %S",
         trace::eStoreEntry, "value name", "This value is being deleted.");
inline constexpr auto cDeleteValueStatus =
    Line(cDeleteValue.function, "RegDeleteValue retStatus: %ld", trace::eStoreEntry, "error",
         "What the registry answered to deleting a value.", cRegistryErrors, cSeeDoctor);
inline constexpr auto cMutexMade =
    Line("KORA4KeysClient::ObjInitialize", "Create on named muxtex %S hr: 0x%08x",
         trace::eExitResult, "mutex,result",
         "The mutex that guards the store was created or opened.",
         "A failure leaves the object without it: Initialize fails.",
         "For a failure run 'kora4ctl doctor'.");

// The engine's levels.
inline constexpr auto cNumAPOs =
    Line("KORA4VisKeyData::GetNumAPOs", "<< numberAPOs: %u", trace::eMonitorExitResult, "count",
         "So many audio processing objects have published levels.",
         "Records that do not lie in the data as a whole do not count.");
inline constexpr auto cFirstAPOData =
    Line("KORA4VisKeyData::FirstAPOData", "<< pAPOData: %p", trace::eMonitorExitResult,
         "pointer", "Where the first record of levels is; zeros when there is none.");
inline constexpr auto cNextAPOData =
    Line("KORA4VisKeyData::NextAPOData", "<< pNextAPOData: %p", trace::eMonitorExitResult,
         "pointer", "Where the next record of levels is; zeros when there is none.");
inline constexpr auto cGetLevels =
    Line("KORA4VisKeyData::GetData", "<< numBands: %u pGains: %p pExcitation: %p",
         trace::eMonitorExitResult, "bands,pointer,pointer",
         "So many bands a record has, and where their gains and excitations are.");
inline constexpr auto cPrintLevelsEntry =
    Line("KORA4VisKeyData::DebugPrint", ">> pModule: %p pMessage: %p", trace::eMonitorEntry,
         "pointer,pointer", "The content of the levels is about to be written.");
inline constexpr auto cPrintLevels =
    Line(cPrintLevelsEntry.function, "Vis Key Data: Module: %p: %s", trace::eVisualizationDump,
         "pointer,name", "The content of the engine's levels follows.");
inline constexpr auto cPrintNumAPOs =
    Line(cPrintLevelsEntry.function, "    NumAPOs: %u pAPOData: %p", trace::eVisualizationDump,
         "count,pointer", "So many audio processing objects have published levels.");
inline constexpr auto cPrintAPO =
    Line(cPrintLevelsEntry.function, "      APO: %u pAPOData: %p", trace::eVisualizationDump,
         "index,pointer", "The levels of one audio processing object follow.");
inline constexpr auto cPrintNumBands =
    Line(cPrintLevelsEntry.function,
         "        (APO %u) numBands: %u pGains: %p pExcitiation: %p", trace::eVisualizationDump,
         "index,bands,pointer,pointer", "So many bands this object has published.");
inline constexpr auto cPrintBand =
    Line(cPrintLevelsEntry.function, "        (Band %u) gain: %10f excitation: %10f",
         trace::eVisualizationDump, "band,gain,excitation",
         "Gain and excitation of one band in dB, as the engine wrote them.",
         "GetVisualizationData adds 36 to the excitation.");

// The monitor.
inline constexpr auto cThreadCreated =
    Line("RegKeyMonitor::SpawnRegMonitor", "CreateThread : 0x%08x", trace::eResults, "handle",
         "The thread that watches the store was created.",
         "Zeros mean that the platform refused it: Initialize fails.",
         "When it was refused, close what takes the process's memory and threads.");
inline constexpr auto cThreadEntry =
    Line("RegKeyMonitor::RegMonitorEntry", ">> CurrentThreadId: 0x%08x", trace::eMonitorEntry,
         "thread", "The thread that watches the store begins.");
inline constexpr auto cCallingThroughGate =
    Line("RegKeyMonitor::RegMonitorLoop",
         "Calling through Callback gate: pICOMCallbackGate: %p TID: 0x%08x",
         trace::eNotificationThreads, "pointer,thread",
         "The store has changed; the thread calls into the object's apartment.",
         "In a single-threaded apartment the call comes in when its thread takes messages.",
         "When no 'Post callback' line follows, the client's thread takes no messages.");
inline constexpr auto cCalledThroughGate =
    Line(cCallingThroughGate.function, "Post callback: hr: 0x%08x", trace::eNotificationThreads,
         "result", "The call into the object's apartment is back.",
         "A failure ends the monitor: this object is told nothing any more. But 0x80010001 and "
         "0x8001010A from a message filter only put the call off.",
         "For a failure, see what the callback methods of the client return.");
inline constexpr auto cWaitFailed =
    Line(cCallingThroughGate.function, "WAIT_FAILED, TID: 0x%08x lastError: %d (0x%08x)",
         trace::eSecurity, "thread,error,hexadecimal error",
         "The wait for changes failed: this object is told nothing any more.",
         "One of the handles of the monitor is not valid any more; somebody closed it.",
         "Restart the program.");
inline constexpr auto cWatchedKeyDeleted =
    Line("RegKeyMonitor::ArmNotification",
         "RegNotifyChangeKeyValue: key deleted, error: 1018 (0x000003fa)", trace::eSecurity, "",
         "The key that is watched is gone: this object is told nothing any more.",
         "Somebody deleted the store's keys, perhaps to register the library anew.",
         "Register the library with 'kora4ctl register' and restart the program.");
inline constexpr auto cWatchDenied = Line(
    cWatchedKeyDeleted.function,
    "RegNotifyChangeKeyValue: access denied, error: 5 (0x00000005)", trace::eSecurity, "",
    "The key may not be watched: Initialize fails, or this object is told nothing any more.",
    "The key's access list refuses it to this user.", cAdministratorNeeded);
inline constexpr auto cArmingFailed = Line(
    cWatchedKeyDeleted.function, "RegNotifyChangeKeyValue: %s, error: %d (0x%08x)",
    trace::eSecurity, "reason,error,hexadecimal error",
    "The key cannot be watched: Initialize fails, or this object is told nothing any more.",
    "The errors 8, 14 and 1450 mean that there is no more memory.",
    "When there is no more memory, close what takes it. Then, or for another reason, restart "
    "the program.");
inline constexpr auto cCallbackEntry =
    Line("RegKeyMonitor::Callback", ">> TID: 0x%08x", trace::eNotificationThreads, "thread",
         "The news of a change has arrived in the object's apartment, on this thread.");
inline constexpr auto cCallbackExit =
    Line(cCallbackEntry.function, "<< pClient: %p hr: 0x%08x", trace::eNotificationThreads,
         "pointer,result", "The object has dealt with the change.",
         "Zeros for the pointer: the object was being released, and was not told.");
inline constexpr auto cZombieThread = Line(
    "RegKeyMonitor::HaltMonitorThread", "Zombie thread 0x%08x 0x%08x 0x%08x", trace::eSecurity,
    "thread,handle,handle", "The thread that watches the store did not end in time.",
    "It is held up in a call, for example in a callback method that does not return. It is "
    "left to end by itself, or terminated where it cannot.",
    "Do not block in callback methods, and take messages in a single-threaded apartment.");

// Registration: keys and their access lists.
inline constexpr auto cCreateKeyStatus = Line(
    "RegKeySecurity::CreateRegKey", "Create reg key %S code: %ld", trace::eSecurity,
    "path,error", "A key of the store was created or opened.",
    "0 is success, 5 means that access was denied, 681 that the key is a link to another key, "
    "which registration refuses.",
    "For 681 remove the link; for another number than 0 register the library as an "
    "administrator.");
inline constexpr auto cMakeKeyResult = Line(
    "RegKeySecurity::MakeRegKeysAccessible", "MakeRegKey hr: 0x%08x name: %S", trace::eSecurity,
    "result,path", "A key of the store was created and opened to every user, or failed to be.",
    "", "For a failure register the library as an administrator.");
inline constexpr auto cKeyCreated = Line(
    "RegKeySecurity::MakeRegKey", "Post creation security string for: %S", trace::eSecurity,
    "path", "The access list of the key before it is opened to every user follows.");
inline constexpr auto cKeyOpened =
    Line(cKeyCreated.function, "Post-set security string for: %S", trace::eSecurity, "path",
         "The access list of the key after it was opened to every user follows.");
inline constexpr auto cMakeKeyExit =
    Line(cKeyCreated.function, ">> hr: 0x%08x", trace::eExitResult, "result",
         "The function ends with this result.",
         "It is an exit line, although it has the marker of an entry line.");
inline constexpr auto cNoWorldDescriptor =
    Line(nullptr, "Error loading DACL string 0x%08x", trace::eSecurity, "hexadecimal error",
         "The access list for every user could not be made.", "The platform refused its text.",
         cAdministratorNeeded);
inline constexpr auto cNoWorldDacl =
    Line(nullptr, "Error getting DACL from CSecurityDesc", trace::eSecurity, "",
         "The access list for every user is not in the descriptor that was made.", "",
         cAdministratorNeeded);
inline constexpr auto cWorldDaclRefused =
    Line(nullptr, "Error setting world DACL", trace::eSecurity, "",
         "The key could not be opened to every user.",
         "Only an owner or an administrator may change the access list of a key.",
         cAdministratorNeeded);
inline constexpr auto cNoDescriptor =
    Line("RegKeySecurity::ListSecurityString", "Error getting security descriptor %x",
         trace::eSecurity, "hexadecimal error",
         "The access list of the key could not be read, to be shown.",
         "The audit part of it takes a privilege; nothing depends on the line.");
inline constexpr auto cNoDescriptorText =
    Line(cNoDescriptor.function, "Error getting security string 0x%08x", trace::eSecurity,
         "hexadecimal error", "The access list of the key could not be put into words.",
         "Nothing depends on the line.");
inline constexpr auto cDescriptorText =
    Line(cNoDescriptor.function, "securityString: %S", trace::eSecurity, "name",
         "The access list of the key, in the platform's notation.");

// The module.
inline constexpr auto cDllMainEntry =
    Line("DllMain", ">> dwReason: 0x%08x lpReserved: %p", trace::eModuleEntry, "reason,pointer",
         "A process or a thread attaches to the library or detaches from it.");
inline constexpr auto cProcessAttach =
    Line(cDllMainEntry.function, "DLL_PROCESS_ATTACH", trace::eModuleEvents, "",
         "The library was loaded into a process.");
inline constexpr auto cProcessDetach =
    Line(cDllMainEntry.function, "DLL_PROCESS_DETACH", trace::eModuleEvents, "",
         "The library is being unloaded, or its process ends.");
inline constexpr auto cThreadAttach =
    Line(cDllMainEntry.function, "DLL_THREAD_ATTACH", trace::eModuleEvents, "",
         "A thread of the process began.");
inline constexpr auto cThreadDetach =
    Line(cDllMainEntry.function, "DLL_THREAD_DETACH", trace::eModuleEvents, "",
         "A thread of the process ends.");
inline constexpr auto cGetClassObjectEntry =
    Line("DllGetClassObject", ">> rclsid: 0x%08x, riid: 0x%08x ppv: %p", trace::eModuleEntry,
         "class,interface,pointer", "COM asks the library for a class object.",
         "The numbers are the first parts of the identifiers of class and interface.");
inline constexpr auto cGetClassObjectExit =
    Line(cGetClassObjectEntry.function, "<< hr: 0x%08x *ppv: %p", trace::eModuleExitResult,
         "result,pointer", "COM got a class object from the library, or the failure.");

inline constexpr auto cStoreMessages =
    Rows(cOpenKeyEntry, cOpenKeyStatus, cQueryValue, cSetValueStatus, cDeleteValue,
         cDeleteValueStatus, cMutexMade, cNumAPOs, cFirstAPOData, cNextAPOData, cGetLevels,
         cPrintLevelsEntry, cPrintLevels, cPrintNumAPOs, cPrintAPO, cPrintNumBands, cPrintBand,
         cThreadCreated, cThreadEntry, cCallingThroughGate, cCalledThroughGate, cWaitFailed,
         cWatchedKeyDeleted, cWatchDenied, cArmingFailed, cCallbackEntry, cCallbackExit,
         cZombieThread, cCreateKeyStatus, cMakeKeyResult, cKeyCreated, cKeyOpened, cMakeKeyExit,
         cNoWorldDescriptor, cNoWorldDacl, cWorldDaclRefused, cNoDescriptor, cNoDescriptorText,
         cDescriptorText, cDllMainEntry, cProcessAttach, cProcessDetach, cThreadAttach,
         cThreadDetach, cGetClassObjectEntry, cGetClassObjectExit);

}  // namespace msg

}  // namespace kora4::contract

#endif  // KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_STORE_H
