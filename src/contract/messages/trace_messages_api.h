// SPDX-License-Identifier: MIT
// Messages of the object that clients use, with their meaning.
#ifndef KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_API_H
#define KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_API_H

#include "contract/messages/trace_message.h"
#include "contract/results.h"

namespace kora4::contract {

namespace detail {

inline constexpr char cExitLineDecides[] =
    "The line is written whatever became of the call; the exit line of the function has the "
    "result ('kora4ctl trace on results').";
inline constexpr char cNullPointer[] =
    "The client passed a null pointer; the method answered E_INVALIDARG and did nothing.";
inline constexpr char cRefusedValue[] =
    "The value was refused with E_INVALIDARG and nothing was stored.";
inline constexpr char cSeeLimits[] = "See the limits with 'kora4ctl describe'.";
inline constexpr char cMasterMaskOrigin[] =
    "The mask stands in the static keys, where the installer of the engine writes it; "
    "Initialize read it.";

inline constexpr char cLockLine[] = "processID: 0x%08x threadID: 0x%08x threadProcID: 0x%08x";
inline constexpr char cLockUse[] =
    "It is held while a callback is registered or unregistered, and while the client is told of"
    " changes; no other method takes it.";

}  // namespace detail

inline constexpr TraceMessage cApiMessages[] = {
    // Life of an object.
    {"CKORA4ASL::GetVeltoKORA4Version", "%u.%u.%u.%u", trace::eMessages,
     "version,version,version,version", "A client asked for the version of the library.", "",
     ""},
    {"CKORA4ASL::GetVeltoKORA4Version", "**** Error: called with a null pointer",
     trace::eMessages, "", "One of the four pointers for the version is null.",
     detail::cNullPointer, detail::cPassPointer},
    {"CKORA4ASL::RegisterChangeNotifications", ">> pICallback: %p", trace::eEntry, "pointer",
     "A client registers its callback for notifications.", "", ""},
    {"CKORA4ASL::RegisterChangeNotifications", "(0x%x)success", trace::eMessages, "pointer",
     "The callback is registered; from now on it hears of changes.",
     "The number is the low half of the callback's address.", ""},
    {"CKORA4ASL::RegisterChangeNotifications", "**** Error: NULL == pICallback",
     trace::eMessages, "", "The callback to register is null.", detail::cNullPointer,
     "Pass a callback, or call UnregisterChangeNotifications to have none."},
    {"CKORA4ASL::UnregisterChangeNotifications",
     " Successfully unregistered callback and set m_spIASLCallback = Null", trace::eMessages,
     "", "The callback was released; the client hears of no more changes.", "", ""},

    // Profiles.
    {"CKORA4ASL::GetActiveProfile", " is %s", trace::eMessages, "profile name",
     "A client asked which profile is active, and this one is.", "", ""},
    {"CKORA4ASL::GetActiveProfile", " is KORA4APITechnology bad index", trace::eMessages, "",
     "The active profile has no name in this line: it is none of 0 to 8.",
     "A demo profile, 240 to 242, shows like this; so does a number that is no profile, or one "
     "that could not be read. The words speak of a technology, but the profile is meant.",
     "See it with 'kora4ctl get profile'; when no demo is meant to run, 'kora4ctl demo "
     "force-leave'."},
    {"CKORA4ASL::GetActiveProfile", "**** Error: NULL == pProfile", trace::eMessages, "",
     "The pointer for the profile number is null.", detail::cNullPointer, detail::cPassPointer},
    {"CKORA4ASL::SetActiveProfile", ">> profile: %d", trace::eEntry, "profile",
     "A client asks for this profile to become the active one.", "", ""},
    {"CKORA4ASL::SetActiveProfile", " to %s", trace::eMessages, "profile name",
     "A client asked for this profile to become the active one.", detail::cExitLineDecides, ""},
    {"CKORA4ASL::SetActiveProfile", " to bad Profile index", trace::eMessages, "",
     "A client asked for a profile that cannot be chosen: none of 0 to 8.",
     "The call was refused with E_INVALIDARG. Demo profiles are entered with "
     "SetDemoProfileAndEnable.",
     "Pass a profile number from 0 to 8."},
    {"CKORA4ASL::RevertActiveProfile", " Successfully Reverted Active Profile",
     trace::eMessages, "", "A client asked for the factory values of the active profile.",
     detail::cExitLineDecides, ""},
    {"CKORA4ASL::SetDemoProfileAndEnable", ">> demoProfileID: %d demoVeltoEnable: %d",
     trace::eEntry, "profile,switch",
     "A client enters this demo profile, with the master enable as given.", "", ""},
    {"CKORA4ASL::SetDemoProfileAndEnable", " to %s", trace::eMessages, "demo profile name",
     "A client asked for this demo profile.", detail::cExitLineDecides, ""},
    {"CKORA4ASL::SetDemoProfileAndEnable", " to bad Demo Profile index", trace::eMessages, "",
     "A client asked for a demo profile that does not exist: none of 240 to 242.",
     "The call was refused with E_INVALIDARG.", "Pass a profile number from 240 to 242."},
    {"CKORA4ASL::RevertFromDemoMode", " Successfully Reverted from Demo Mode", trace::eMessages,
     "", "A client asked to leave the demo.", detail::cExitLineDecides, ""},
    {"CKORA4ASL::GetProfileTable", "() completed", trace::eMessages, "",
     "A client asked for the names of the custom profiles.", detail::cExitLineDecides, ""},
    {"CKORA4ASL::GetProfileTable", "**** Error: pwPresetNames is Null", trace::eMessages, "",
     "The array for the names is null.", detail::cNullPointer, detail::cPassPointer},
    {"CKORA4ASL::SetCustomProfileName", "(%d, %ls)", trace::eMessages, "profile,name",
     "A client asked to rename this custom profile.", detail::cExitLineDecides, ""},
    {"CKORA4ASL::SetCustomProfileName", "**** Error: pwCustomPresetName is Null",
     trace::eMessages, "", "The new name is a null pointer.", detail::cNullPointer,
     "Pass a name; the empty one is a name, too."},
    {"CKORA4ASL::CreateCustomProfile", "(%d)", trace::eMessages, "profile",
     "A client asked to create this custom profile.", detail::cExitLineDecides, ""},
    {"CKORA4ASL::CreateCustomProfile", "**** Error: pwName is Null", trace::eMessages, "",
     "The name of the new profile is a null pointer.", detail::cNullPointer,
     "Pass a name; the empty one is a name, too."},
    {"CKORA4ASL::DeleteCustomProfile", "(%d)", trace::eMessages, "profile",
     "A client asked to delete this custom profile.", detail::cExitLineDecides, ""},

    // Switches.
    {"CKORA4ASL::GetVeltoEnable", " is %s", trace::eMessages, "switch",
     "A client asked for the master enable.", "", ""},
    {"CKORA4ASL::GetVeltoEnable", "**** Error: pVeltoEnable is Null", trace::eMessages, "",
     "The pointer for the switch is null.", detail::cNullPointer, detail::cPassPointer},
    {"CKORA4ASL::SetVeltoEnable", " to %s", trace::eMessages, "switch",
     "A client asked to switch all processing on or off.", detail::cExitLineDecides, ""},
    {"CKORA4ASL::ToggleVeltoEnable", "is now %s", trace::eMessages, "switch",
     "A client toggled the master enable; this is the state after it.",
     detail::cExitLineDecides, ""},
    {"CKORA4ASL::GetTechnologyOnElseOff", "%16s is %s", trace::eMessages,
     "technology name,switch", "A client asked for the switch of a technology.",
     "It is that of the active profile; whether the technology is heard takes the master "
     "enable, too.",
     ""},
    {"CKORA4ASL::GetTechnologyOnElseOff",
     "**** Error: pOnElseOff is Null or invalid technology ID", trace::eMessages, "",
     "The pointer for the switch is null, or the number is no technology.",
     "The call was refused with E_INVALIDARG and did nothing.",
     "Pass a valid pointer and a technology from 0 to 5."},
    {"CKORA4ASL::SetTechnologyOnElseOff", "%16s to %s", trace::eMessages,
     "technology name,switch", "A client asked to switch a technology of the active profile.",
     detail::cExitLineDecides, ""},
    {"CKORA4ASL::SetTechnologyOnElseOff", "**** Error: IsValidASLTechnology failed",
     trace::eMessages, "", "The number is no technology.",
     "The call was refused with E_INVALIDARG and did nothing.",
     "Pass a technology from 0 to 5."},
    {"CKORA4ASL::GetTechnologyMasterEnables", "%s configuration (0x%04X)", trace::eMessages,
     "name,mask", "The engine mask is that of a known configuration of the engine.",
     detail::cMasterMaskOrigin, ""},
    {"CKORA4ASL::GetTechnologyMasterEnables", "**** Error: no technologies are enabled",
     trace::eMessages, "", "The engine mask is 0: no engine is installed, as far as is known.",
     detail::cMasterMaskOrigin, "Install the engine, or start kora4sim, which writes a mask."},
    {"CKORA4ASL::GetTechnologyMasterEnables", "**** Error: custom configuration 0x%0x",
     trace::eMessages, "mask",
     "The engine mask is none of the known ones; clients get it all the same.",
     detail::cMasterMaskOrigin, "Nothing, when the engine is a new one."},

    // Values.
    {"CKORA4ASL::GetSimplePatchValue", "%s = %d", trace::eMessages, "technology name,amount",
     "A client read the value of a technology in the active profile.",
     "A value outside the limits was stored like this; limits are for setting.", ""},
    {"CKORA4ASL::GetSimplePatchValue", "%s = %f", trace::eMessages, "technology name,amount",
     "A client read the value of a technology in the active profile.",
     "A value outside the limits was stored like this; limits are for setting.", ""},
    {"CKORA4ASL::ValidatePatchField",
     "**** Error: eVolumeLeveler value of %d > cVeltoVolumeLevelerAmountMax (%d). Returning "
     "E_INVALIDARG",
     trace::eMessages, "amount,limit", "The amount of the volume leveler is too large.",
     detail::cRefusedValue, detail::cSeeLimits},
    {"CKORA4ASL::ValidatePatchField", "eVolumeLeveler set to %d", trace::eMessages, "amount",
     "A client sets the amount of the volume leveler; it is within its limits.", "", ""},
    {"CKORA4ASL::ValidatePatchField",
     "**** Error: eIntelligentEQ value of %d >= eNumberIEQPatches (%d). Returning "
     "E_INVALIDARG",
     trace::eMessages, "curve,limit", "There is no curve of the intelligent EQ of that number.",
     "The value was refused with E_INVALIDARG and nothing was stored. The number in "
     "parentheses is always 0 and says nothing: the curves are 0 to 5.",
     detail::cSeeLimits},
    {"CKORA4ASL::ValidatePatchField", "Intelligent EQ patch set to %s  (%d)", trace::eMessages,
     "name,curve", "A client sets the curve of the intelligent EQ.", "", ""},
    {"CKORA4ASL::ValidatePatchField",
     "**** Error: %s value of %f > %s (%f). Returning E_INVALIDARG", trace::eMessages,
     "technology name,amount,limit name,limit", "The value of a technology is too large.",
     detail::cRefusedValue, detail::cSeeLimits},
    {"CKORA4ASL::ValidatePatchField",
     "**** Error: %s value of %f < %s (%f). Returning E_INVALIDARG", trace::eMessages,
     "technology name,amount,limit name,limit",
     "The value of a technology is too small, or no number.", detail::cRefusedValue,
     detail::cSeeLimits},
    {"CKORA4ASL::ValidatePatchField", "%s set to %f", trace::eMessages,
     "technology name,amount",
     "A client sets the value of a technology; it is within its limits.", "", ""},
    {"CKORA4ASL::ValidateAndLimitGraphicEQ", "Graphic EQ gain band %u limited to %f (was %f).",
     trace::eMessages, "band,gain,gain",
     "A gain of the graphic EQ was outside its limits and was moved to the nearest one.",
     "Gains are limited to -12 to +12 dB; what is no number becomes the lowest.", ""},
    {"KORA4UIKeysClient::GetASLPatchUnionField", "Invalid API technology: %d", trace::eMessages,
     "technology", "The record names a technology that has no single value.",
     "The graphic EQ has methods of its own, and other numbers are no technology. The call "
     "was refused with E_INVALIDARG.",
     "Set m_technology to one with a value; for the graphic EQ use GetGraphicEQData and "
     "SetGraphicEQData."},

    // Levels and commands.
    {"CKORA4ASL::GetVisualizationSamplingPeriod", "= %d milliseconds", trace::eMessages,
     "milliseconds", "A client asked how often it should read the levels.", "", ""},
    {"CKORA4ASL::GetVisualizationSamplingPeriod", "**** Error: NULL == pSamplingPeriod",
     trace::eMessages, "", "The pointer for the period is null.", detail::cNullPointer,
     detail::cPassPointer},
    {"CKORA4ASL::SetVisualizationSamplingPeriod", "set to %d milliseconds", trace::eMessages,
     "milliseconds", "A client set how often displays should read the levels.", "", ""},
    {"CKORA4ASL::SetVisualizationSamplingPeriod",
     "**** Error setting Visualization Sampling Period to %d msecs, hr: 0x%08x",
     trace::eMessages, "milliseconds,result", "The period could not be stored.",
     "The static keys are gone, or this user may not write them.", "Run 'kora4ctl doctor'."},
    {"CKORA4ASL::GetVisualizationData", "**** Error getting Visualization Data, hr: 0x%08x",
     trace::eMessages, "result", "There are no levels to show.",
     "With 0x00000001 the engine has published none; with another result they could not be "
     "read.",
     "Start the engine, or kora4sim; for another result run 'kora4ctl doctor'."},
    {nullptr, "**** Error: E_INVALIDARG", trace::eMessages, "",
     "The pointer for the command line is null.", detail::cNullPointer, detail::cPassPointer},

    // Notifications.
    {"CKORA4ASL::OnKeyChangeNotify", "Into  OnKeyChangeNotify TID: 0x%08x",
     trace::eNotificationThreads, "thread",
     "The store has changed; the object begins to compare it with what it told last.", "", ""},
    {"CKORA4ASL::OnKeyChangeNotify", "Done  OnKeyChangeNotify TID: 0x%08x",
     trace::eNotificationThreads, "thread", "The comparison is done.", "", ""},
    {"CKORA4ASL::OnKeyChangeNotify", "pICallback: %p TID: 0x%08x", trace::eNotificationThreads,
     "pointer,thread", "This is the callback that will be told; zeros when there is none.", "",
     ""},
    {"CKORA4ASL::OnKeyChangeNotify", "CallbackNotifications TID: 0x%08x",
     trace::eNotificationThreads, "thread", "The client is being told now, on this thread.", "",
     ""},
    {"CKORA4ASL::OnKeyChangeNotify", "CallbackNotifications hr: 0x%08x TID: 0x%08x",
     trace::eNotificationThreads, "result,thread", "The client has been told.",
     "A failure is what a callback method of the client returned: the object tells nothing "
     "any more after it.",
     "Return S_OK from callback methods."},

    // The process.
    {"ProcessTrack::Enter", detail::cLockLine, trace::eProcessTracking,
     "process,thread,process", "The lock of an object's callback was taken, on this thread.",
     detail::cLockUse, ""},
    {"ProcessTrack::Leave", detail::cLockLine, trace::eProcessTracking,
     "process,thread,process", "The lock of an object's callback is given up, on this thread.",
     detail::cLockUse, ""},
    {"ProcessTrack::ProcessTrack", "Process ID: %d\n", trace::eTrackerStartUp, "process",
     "An object was created in this process.", "", ""},
    {"ProcessTrack::ProcessTrack", "Error obtaining handle count\n", trace::eTrackerStartUp, "",
     "The platform did not say how many handles the process has.",
     "It is said to be 0 in the lines that follow.", ""},
    {"ProcessTrack::ProcessTrack",
     "Process startup info:\n"
     "       processID: 0x%08x\n"
     "    handle count: %d\n"
     "       lpDesktop: %S\n"
     "         lpTitle: %S",
     trace::eTrackerStartUp, "process,count,name,name",
     "How the process was started: its number, open handles, desktop and window title.", "",
     ""},
};

}  // namespace kora4::contract

#endif  // KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_API_H
