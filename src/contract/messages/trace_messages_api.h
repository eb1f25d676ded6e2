// SPDX-License-Identifier: MIT
// Messages of the object that clients use, with their meaning.
#ifndef KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_API_H
#define KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_API_H

#include "contract/messages/trace_message.h"

namespace kora4::contract {

namespace msg {

inline constexpr char cExitLineDecides[] =
    "The line is written whatever became of the call; the exit line of the function has the "
    "result ('kora4ctl trace on results').";
inline constexpr char cNullPointer[] =
    "The client passed a null pointer; the method answered E_INVALIDARG and did nothing.";
inline constexpr char cRefusedValue[] =
    "The value was refused with E_INVALIDARG and nothing was stored.";
inline constexpr char cPassPointer[] = "Pass a valid pointer.";
inline constexpr char cSeeLimits[] = "See the limits with 'kora4ctl describe'.";
inline constexpr char cMasterMaskOrigin[] =
    "The mask stands in the static keys, where the installer of the engine writes it; "
    "Initialize read it.";

inline constexpr char cLockLine[] = "processID: 0x%08x threadID: 0x%08x threadProcID: 0x%08x";
inline constexpr char cLockUse[] =
    "It is held while a callback is registered or unregistered, and while the client is told of"
    " changes; no other method takes it.";

// The refusal of a null pointer.
constexpr TraceMessage NullPointer(const char* function, const char* text, const char* meaning,
                                   const char* next = cPassPointer) {
    return Message(function, text, "", meaning, cNullPointer, next);
}

// Life of an object.
inline constexpr auto cVersion =
    Message("CKORA4ASL::GetVeltoKORA4Version", "%u.%u.%u.%u", "version,version,version,version",
            "A client asked for the version of the library.");
inline constexpr auto cVersionNull =
    NullPointer(cVersion.function, "**** Error: called with a null pointer",
                "One of the four pointers for the version is null.");
inline constexpr auto cRegisterEntry =
    Line("CKORA4ASL::RegisterChangeNotifications", ">> pICallback: %p", trace::eEntry,
         "pointer", "A client registers its callback for notifications.");
inline constexpr auto cRegistered =
    Message(cRegisterEntry.function, "(0x%x)success", "pointer",
            "The callback is registered; from now on it hears of changes.",
            "The number is the low half of the callback's address.");
inline constexpr auto cRegisterNull =
    NullPointer(cRegisterEntry.function, "**** Error: NULL == pICallback",
                "The callback to register is null.",
                "Pass a callback, or call UnregisterChangeNotifications to have none.");
inline constexpr auto cUnregistered =
    Message("CKORA4ASL::UnregisterChangeNotifications",
            " Successfully unregistered callback and set m_spIASLCallback = Null", "",
            "The callback was released; the client hears of no more changes.");

// Profiles.
inline constexpr auto cGetActiveProfile =
    Message("CKORA4ASL::GetActiveProfile", " is %s", "profile name",
            "A client asked which profile is active, and this one is.");
inline constexpr auto cGetBadProfile = Message(
    cGetActiveProfile.function, " is KORA4APITechnology bad index", "",
    "The active profile has no name in this line: it is none of 0 to 8.",
    "A demo profile, 240 to 242, shows like this; so does a number that is no profile, or one "
    "that could not be read. The words speak of a technology, but the profile is meant.",
    "See it with 'kora4ctl get profile'; when no demo is meant to run, 'kora4ctl demo "
    "force-leave'.");
inline constexpr auto cGetActiveProfileNull =
    NullPointer(cGetActiveProfile.function, "**** Error: NULL == pProfile",
                "The pointer for the profile number is null.");
inline constexpr auto cSetActiveProfileEntry =
    Line("CKORA4ASL::SetActiveProfile", ">> profile: %d", trace::eEntry, "profile",
         "A client asks for this profile to become the active one.");
inline constexpr auto cSetActiveProfile =
    Message(cSetActiveProfileEntry.function, " to %s", "profile name",
            "A client asked for this profile to become the active one.", cExitLineDecides);
inline constexpr auto cSetBadProfile =
    Message(cSetActiveProfileEntry.function, " to bad Profile index", "",
            "A client asked for a profile that cannot be chosen: none of 0 to 8.",
            "The call was refused with E_INVALIDARG. Demo profiles are entered with "
            "SetDemoProfileAndEnable.",
            "Pass a profile number from 0 to 8.");
inline constexpr auto cRevertActiveProfile =
    Message("CKORA4ASL::RevertActiveProfile", " Successfully Reverted Active Profile", "",
            "A client asked for the factory values of the active profile.", cExitLineDecides);
inline constexpr auto cSetDemoProfileEntry =
    Line("CKORA4ASL::SetDemoProfileAndEnable", ">> demoProfileID: %d demoVeltoEnable: %d",
         trace::eEntry, "profile,switch",
         "A client enters this demo profile, with the master enable as given.");
inline constexpr auto cSetDemoProfile =
    Message(cSetDemoProfileEntry.function, " to %s", "demo profile name",
            "A client asked for this demo profile.", cExitLineDecides);
inline constexpr auto cSetBadDemoProfile = Message(
    cSetDemoProfileEntry.function, " to bad Demo Profile index", "",
    "A client asked for a demo profile that does not exist: none of 240 to 242.",
    "The call was refused with E_INVALIDARG.", "Pass a profile number from 240 to 242.");
inline constexpr auto cRevertFromDemoMode =
    Message("CKORA4ASL::RevertFromDemoMode", " Successfully Reverted from Demo Mode", "",
            "A client asked to leave the demo.", cExitLineDecides);
inline constexpr auto cGetProfileTable =
    Message("CKORA4ASL::GetProfileTable", "() completed", "",
            "A client asked for the names of the custom profiles.", cExitLineDecides);
inline constexpr auto cGetProfileTableNull =
    NullPointer(cGetProfileTable.function, "**** Error: pwPresetNames is Null",
                "The array for the names is null.");
inline constexpr auto cSetCustomProfileName =
    Message("CKORA4ASL::SetCustomProfileName", "(%d, %ls)", "profile,name",
            "A client asked to rename this custom profile.", cExitLineDecides);
inline constexpr auto cSetCustomProfileNameNull = NullPointer(
    cSetCustomProfileName.function, "**** Error: pwCustomPresetName is Null",
    "The new name is a null pointer.", "Pass a name; the empty one is a name, too.");
inline constexpr auto cCreateCustomProfile =
    Message("CKORA4ASL::CreateCustomProfile", "(%d)", "profile",
            "A client asked to create this custom profile.", cExitLineDecides);
inline constexpr auto cCreateCustomProfileNull =
    NullPointer(cCreateCustomProfile.function, "**** Error: pwName is Null",
                "The name of the new profile is a null pointer.",
                "Pass a name; the empty one is a name, too.");
inline constexpr auto cDeleteCustomProfile =
    Message("CKORA4ASL::DeleteCustomProfile", "(%d)", "profile",
            "A client asked to delete this custom profile.", cExitLineDecides);

// Switches.
inline constexpr auto cGetVeltoEnable = Message("CKORA4ASL::GetVeltoEnable", " is %s", "switch",
                                                "A client asked for the master enable.");
inline constexpr auto cGetVeltoEnableNull =
    NullPointer(cGetVeltoEnable.function, "**** Error: pVeltoEnable is Null",
                "The pointer for the switch is null.");
inline constexpr auto cSetVeltoEnable =
    Message("CKORA4ASL::SetVeltoEnable", " to %s", "switch",
            "A client asked to switch all processing on or off.", cExitLineDecides);
inline constexpr auto cToggleVeltoEnable = Message(
    "CKORA4ASL::ToggleVeltoEnable", "is now %s", "switch",
    "A client toggled the master enable; this is the state after it.", cExitLineDecides);
inline constexpr auto cGetTechnologyOnElseOff = Message(
    "CKORA4ASL::GetTechnologyOnElseOff", "%16s is %s", "technology name,switch",
    "A client asked for the switch of a technology.",
    "It is that of the active profile; whether the technology is heard takes the master "
    "enable, too.");
inline constexpr auto cGetTechnologyOnElseOffBad = Message(
    cGetTechnologyOnElseOff.function, "**** Error: pOnElseOff is Null or invalid technology ID",
    "", "The pointer for the switch is null, or the number is no technology.",
    "The call was refused with E_INVALIDARG and did nothing.",
    "Pass a valid pointer and a technology from 0 to 5.");
inline constexpr auto cSetTechnologyOnElseOff =
    Message("CKORA4ASL::SetTechnologyOnElseOff", "%16s to %s", "technology name,switch",
            "A client asked to switch a technology of the active profile.", cExitLineDecides);
inline constexpr auto cSetTechnologyOnElseOffBad = Message(
    cSetTechnologyOnElseOff.function, "**** Error: IsValidASLTechnology failed", "",
    "The number is no technology.", "The call was refused with E_INVALIDARG and did nothing.",
    "Pass a technology from 0 to 5.");
inline constexpr auto cKnownMasterEnables = Message(
    "CKORA4ASL::GetTechnologyMasterEnables", "%s configuration (0x%04X)", "name,mask",
    "The engine mask is that of a known configuration of the engine.", cMasterMaskOrigin);
inline constexpr auto cNoMasterEnables =
    Message(cKnownMasterEnables.function, "**** Error: no technologies are enabled", "",
            "The engine mask is 0: no engine is installed, as far as is known.",
            cMasterMaskOrigin, "Install the engine, or start kora4sim, which writes a mask.");
inline constexpr auto cCustomMasterEnables =
    Message(cKnownMasterEnables.function, "**** Error: custom configuration 0x%0x", "mask",
            "The engine mask is none of the known ones; clients get it all the same.",
            cMasterMaskOrigin, "Nothing, when the engine is a new one.");

// Values.
inline constexpr auto cGetWholeValue =
    Message("CKORA4ASL::GetSimplePatchValue", "%s = %d", "technology name,amount",
            "A client read the value of a technology in the active profile.",
            "A value outside the limits was stored like this; limits are for setting.");
inline constexpr auto cGetFloatValue =
    Message(cGetWholeValue.function, "%s = %f", "technology name,amount",
            "A client read the value of a technology in the active profile.",
            "A value outside the limits was stored like this; limits are for setting.");
inline constexpr auto cVolumeTooLarge = Message(
    "CKORA4ASL::ValidatePatchField",
    "**** Error: eVolumeLeveler value of %d > cVeltoVolumeLevelerAmountMax (%d). Returning "
    "E_INVALIDARG",
    "amount,limit", "The amount of the volume leveler is too large.", cRefusedValue,
    cSeeLimits);
inline constexpr auto cVolumeAccepted =
    Message(cVolumeTooLarge.function, "eVolumeLeveler set to %d", "amount",
            "A client sets the amount of the volume leveler; it is within its limits.");
inline constexpr auto cNoSuchCurve =
    Message(cVolumeTooLarge.function,
            "**** Error: eIntelligentEQ value of %d >= eNumberIEQPatches (%d). Returning "
            "E_INVALIDARG",
            "curve,limit", "There is no curve of the intelligent EQ of that number.",
            "The value was refused with E_INVALIDARG and nothing was stored. The number in "
            "parentheses is always 0 and says nothing: the curves are 0 to 5.",
            cSeeLimits);
inline constexpr auto cCurveAccepted =
    Message(cVolumeTooLarge.function, "Intelligent EQ patch set to %s  (%d)", "name,curve",
            "A client sets the curve of the intelligent EQ.");
inline constexpr auto cFloatTooLarge = Message(
    cVolumeTooLarge.function, "**** Error: %s value of %f > %s (%f). Returning E_INVALIDARG",
    "technology name,amount,limit name,limit", "The value of a technology is too large.",
    cRefusedValue, cSeeLimits);
inline constexpr auto cFloatTooSmall = Message(
    cVolumeTooLarge.function, "**** Error: %s value of %f < %s (%f). Returning E_INVALIDARG",
    "technology name,amount,limit name,limit",
    "The value of a technology is too small, or no number.", cRefusedValue, cSeeLimits);
inline constexpr auto cFloatAccepted =
    Message(cVolumeTooLarge.function, "%s set to %f", "technology name,amount",
            "A client sets the value of a technology; it is within its limits.");
inline constexpr auto cGainLimited =
    Message("CKORA4ASL::ValidateAndLimitGraphicEQ",
            "Graphic EQ gain band %u limited to %f (was %f).", "band,gain,gain",
            "A gain of the graphic EQ was outside its limits and was moved to the nearest one.",
            "Gains are limited to -12 to +12 dB; what is no number becomes the lowest.");
inline constexpr auto cNoSimpleValue = Message(
    "KORA4UIKeysClient::GetASLPatchUnionField", "Invalid API technology: %d", "technology",
    "The record names a technology that has no single value.",
    "The graphic EQ has methods of its own, and other numbers are no technology. The call "
    "was refused with E_INVALIDARG.",
    "Set m_technology to one with a value; for the graphic EQ use GetGraphicEQData and "
    "SetGraphicEQData.");

// Levels and commands.
inline constexpr auto cGetSamplingPeriod =
    Message("CKORA4ASL::GetVisualizationSamplingPeriod", "= %d milliseconds", "milliseconds",
            "A client asked how often it should read the levels.");
inline constexpr auto cGetSamplingPeriodNull =
    NullPointer(cGetSamplingPeriod.function, "**** Error: NULL == pSamplingPeriod",
                "The pointer for the period is null.");
inline constexpr auto cSetSamplingPeriod =
    Message("CKORA4ASL::SetVisualizationSamplingPeriod", "set to %d milliseconds",
            "milliseconds", "A client set how often displays should read the levels.");
inline constexpr auto cSetSamplingPeriodFailed = Message(
    cSetSamplingPeriod.function,
    "**** Error setting Visualization Sampling Period to %d msecs, hr: 0x%08x",
    "milliseconds,result", "The period could not be stored.",
    "The static keys are gone, or this user may not write them.", "Run 'kora4ctl doctor'.");
inline constexpr auto cNoLevels = Message(
    "CKORA4ASL::GetVisualizationData", "**** Error getting Visualization Data, hr: 0x%08x",
    "result", "There are no levels to show.",
    "With 0x00000001 the engine has published none; with another result they could not be "
    "read.",
    "Start the engine, or kora4sim; for another result run 'kora4ctl doctor'.");
inline constexpr auto cGetCommandNull = NullPointer(
    nullptr, "**** Error: E_INVALIDARG", "The pointer for the command line is null.");

// Notifications.
inline constexpr auto cAnalysisBegins =
    Line("CKORA4ASL::OnKeyChangeNotify", "Into  OnKeyChangeNotify TID: 0x%08x",
         trace::eNotificationThreads, "thread",
         "The store has changed; the object begins to compare it with what it told last.");
inline constexpr auto cAnalysisDone =
    Line(cAnalysisBegins.function, "Done  OnKeyChangeNotify TID: 0x%08x",
         trace::eNotificationThreads, "thread", "The comparison is done.");
inline constexpr auto cCallbackToTell =
    Line(cAnalysisBegins.function, "pICallback: %p TID: 0x%08x", trace::eNotificationThreads,
         "pointer,thread", "This is the callback that will be told; zeros when there is none.");
inline constexpr auto cTelling = Line(
    cAnalysisBegins.function, "CallbackNotifications TID: 0x%08x", trace::eNotificationThreads,
    "thread", "The client is being told now, on this thread.");
inline constexpr auto cTold =
    Line(cAnalysisBegins.function, "CallbackNotifications hr: 0x%08x TID: 0x%08x",
         trace::eNotificationThreads, "result,thread", "The client has been told.",
         "A failure is what a callback method of the client returned: the object tells nothing "
         "any more after it.",
         "Return S_OK from callback methods.");

// The process.
inline constexpr auto cLockTaken =
    Line("ProcessTrack::Enter", cLockLine, trace::eProcessTracking, "process,thread,process",
         "The lock of an object's callback was taken, on this thread.", cLockUse);
inline constexpr auto cLockGivenUp =
    Line("ProcessTrack::Leave", cLockLine, trace::eProcessTracking, "process,thread,process",
         "The lock of an object's callback is given up, on this thread.", cLockUse);
inline constexpr auto cProcessId =
    Line("ProcessTrack::ProcessTrack", "Process ID: %d\n", trace::eTrackerStartUp, "process",
         "An object was created in this process.");
inline constexpr auto cNoHandleCount =
    Line(cProcessId.function, "Error obtaining handle count\n", trace::eTrackerStartUp, "",
         "The platform did not say how many handles the process has.",
         "It is said to be 0 in the lines that follow.");
inline constexpr auto cProcessStart =
    Line(cProcessId.function,
         "Process startup info:\n"
         "       processID: 0x%08x\n"
         "    handle count: %d\n"
         "       lpDesktop: %S\n"
         "         lpTitle: %S",
         trace::eTrackerStartUp, "process,count,name,name",
         "How the process was started: its number, open handles, desktop and window title.");

inline constexpr auto cApiMessages = Rows(
    cVersion, cVersionNull, cRegisterEntry, cRegistered, cRegisterNull, cUnregistered,
    cGetActiveProfile, cGetBadProfile, cGetActiveProfileNull, cSetActiveProfileEntry,
    cSetActiveProfile, cSetBadProfile, cRevertActiveProfile, cSetDemoProfileEntry,
    cSetDemoProfile, cSetBadDemoProfile, cRevertFromDemoMode, cGetProfileTable,
    cGetProfileTableNull, cSetCustomProfileName, cSetCustomProfileNameNull,
    cCreateCustomProfile, cCreateCustomProfileNull, cDeleteCustomProfile, cGetVeltoEnable,
    cGetVeltoEnableNull, cSetVeltoEnable, cToggleVeltoEnable, cGetTechnologyOnElseOff,
    cGetTechnologyOnElseOffBad, cSetTechnologyOnElseOff, cSetTechnologyOnElseOffBad,
    cKnownMasterEnables, cNoMasterEnables, cCustomMasterEnables, cGetWholeValue, cGetFloatValue,
    cVolumeTooLarge, cVolumeAccepted, cNoSuchCurve, cCurveAccepted, cFloatTooLarge,
    cFloatTooSmall, cFloatAccepted, cGainLimited, cNoSimpleValue, cGetSamplingPeriod,
    cGetSamplingPeriodNull, cSetSamplingPeriod, cSetSamplingPeriodFailed, cNoLevels,
    cGetCommandNull, cAnalysisBegins, cAnalysisDone, cCallbackToTell, cTelling, cTold,
    cLockTaken, cLockGivenUp, cProcessId, cNoHandleCount, cProcessStart);

}  // namespace msg

}  // namespace kora4::contract

#endif  // KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_API_H
