// SPDX-License-Identifier: MIT
// Messages that many functions write, the failed assertions, and who writes them.
#ifndef KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_GENERAL_H
#define KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_GENERAL_H

#include "contract/messages/trace_message.h"

namespace kora4::contract {

inline constexpr TraceMessage cGeneralMessages[] = {
    {nullptr, ">>", 0, "", "The function begins.", "", ""},
    {nullptr, "<<", 0, "", "The function ends.", "", ""},
    {nullptr, "<< hr: 0x%08x", 0, "result", "The function ends with this result.", "", ""},
    {nullptr, "**** Error: APOERR_NOT_INITIALIZED", trace::eMessages, "",
     "The method was called before Initialize had succeeded.",
     "The call was refused with APOERR_NOT_INITIALIZED and did nothing.",
     "Call Initialize first and look at its result; when it fails, run 'kora4ctl doctor'."},
    {nullptr, "**** Error: %s", trace::eMessages, "reason",
     "The method refused an argument, for this reason.",
     "The call was refused with E_INVALIDARG and did nothing.", "Pass what the method takes."},
};

namespace detail {

inline constexpr char cBrokenRule[] =
    "A rule inside the library was broken; the function copes with it and goes on.";
inline constexpr char cTellTheMakers[] =
    "Tell the makers of the library, with the lines around this one.";
inline constexpr char cForeignProfile[] =
    "The active profile in the store is a number that is no profile: somebody else wrote it.";
inline constexpr char cMendProfile[] =
    "Choose a profile: 'kora4ctl profile use music'; 'kora4ctl lint' finds such values.";

constexpr TraceMessage Assertion(const char* function, const char* text, const char* meaning,
                                 const char* why = cBrokenRule,
                                 const char* next = cTellTheMakers) {
    return {function, text, trace::eAssertions, "", meaning, why, next};
}

}  // namespace detail

inline constexpr TraceMessage cAssertionMessages[] = {
    {nullptr, "KALASSERT failed: %s", trace::eAssertions, "condition",
     "A condition that the library relies on did not hold.", detail::cBrokenRule,
     detail::cTellTheMakers},

    // What garbage in the store brings about.
    detail::Assertion(nullptr,
                      "KALASSERT failed: KORA4KeysClient::IsAllowableProfile( profile )",
                      "The number of the profile to work on is no profile.",
                      detail::cForeignProfile, detail::cMendProfile),
    detail::Assertion(nullptr, "KALASSERT failed: IsAllowableProfile( newActivePreset )",
                      "The profile to become active is no profile.", detail::cForeignProfile,
                      detail::cMendProfile),
    detail::Assertion(nullptr, "KALASSERT failed: IsAllowableProfile( newProfile )",
                      "The profile to change to is no profile.", detail::cForeignProfile,
                      detail::cMendProfile),
    detail::Assertion(nullptr, "KALASSERT failed: !(profile < 0)",
                      "The number of the profile whose switches are looked up is negative.",
                      detail::cForeignProfile, detail::cMendProfile),
    detail::Assertion(nullptr, "KALASSERT failed: profile >= 0",
                      "The number of the profile in a value's name is negative.",
                      detail::cForeignProfile, detail::cMendProfile),
    detail::Assertion(nullptr, "KALASSERT failed: defaultsIndex < 3",
                      "The row of defaults to use does not exist.", detail::cForeignProfile,
                      detail::cMendProfile),

    // The mutex.
    detail::Assertion(nullptr, "KALASSERT failed: !IsAcquired()",
                      "The mutex of the store is given up while it is held."),
    detail::Assertion(nullptr, "KALASSERT failed: IsAcquired()",
                      "The mutex of the store is released while it is not held."),
    detail::Assertion(nullptr, "KALASSERT failed: m_regKeysMutex.IsAcquired()",
                      "The store is compared while its mutex is not held.",
                      "The wait for the mutex failed, or a rule inside the library was broken.",
                      "Run 'kora4ctl doctor', which looks at the mutex."),

    // Technologies and fields.
    detail::Assertion(nullptr, "KALASSERT failed: IsValidTechnology( technology )",
                      "The number of a technology is none."),
    detail::Assertion(nullptr, "KALASSERT failed: IsValidTechnology( presetTech )",
                      "The number of a technology is none."),
    detail::Assertion(nullptr, "KALASSERT failed: IsValidTechnology( globalTech )",
                      "The number of a global technology is none."),
    detail::Assertion(nullptr, "KALASSERT failed: !\"Invalid technology\"",
                      "The fields of something that is no technology were asked for."),
    detail::Assertion(nullptr, "KALASSERT failed: !\"Invalid global tech\"",
                      "The switch of something that is no global technology was asked for."),
    detail::Assertion(nullptr, "KALASSERT failed: !\"Invalid field type\"",
                      "A field is of a type that nobody knows."),
    detail::Assertion(nullptr, "KALASSERT failed: 1 == m_numArrays",
                      "A field with a choice of curves has more than one array."),
    detail::Assertion(nullptr, "KALASSERT failed: pEnumFieldDef != NULL",
                      "A field with a choice of curves has no curves."),
    detail::Assertion(
        nullptr,
        "KALASSERT failed: (pEnumDefaults != NULL) && (pEnumValues != NULL) && (enumLimit > 0)",
        "A field with a choice of curves has no curves."),
    detail::Assertion(nullptr, "KALASSERT failed: pwDefaultString != NULL",
                      "An array field has no default."),
    detail::Assertion(
        nullptr,
        "KALASSERT failed: (0 == numberFields) || ((pStruct != NULL) && (pFields != NULL))",
        "A technology with fields has no place for their values."),
    detail::Assertion(nullptr, "KALASSERT failed: pStructVersion != NULL",
                      "A technology has no version of its values."),
    detail::Assertion(nullptr, "KALASSERT failed: (UINT) written <= charsAvail",
                      "The text of an array is longer than its place."),
    detail::Assertion(nullptr, "KALASSERT failed: dwValue == value",
                      "A switch to be stored is neither 0 nor 1."),

    // The API's records.
    detail::Assertion(nullptr,
                      "KALASSERT failed: !\"Unexpected technology for API tech conversion\"",
                      "A technology of the store has no number in the API."),
    detail::Assertion(nullptr, "KALASSERT failed: !\"Invalid ASL technology\"",
                      "The value of something that is no technology was to be read."),
    detail::Assertion(nullptr, "KALASSERT failed: !\"Invalid ASL patch field.\"",
                      "The value of something that is no technology was to be set."),
    detail::Assertion(nullptr, "KALASSERT failed: eGraphicEQ == APITech",
                      "A technology without a single value is not the graphic EQ."),
    detail::Assertion(nullptr,
                      "KALASSERT failed: IsValidASLTechnology( presetPatchValues[ (UINT) "
                      "presetTech ].m_technology )",
                      "A notification was to name something that is no technology."),
    detail::Assertion(
        nullptr,
        "KALASSERT failed: APITech == presetPatchValues[ (UINT) presetTech "
        "].m_technology",
        "A notification was to name another technology than the one that changed."),
    detail::Assertion(nullptr, "KALASSERT failed: IsCustomProfile( customProfileID )",
                      "The profile to copy to is no custom profile."),

    // Pointers and handles.
    detail::Assertion(nullptr, "KALASSERT failed: pICallback != NULL",
                      "Nobody is there to be told."),
    detail::Assertion(nullptr, "KALASSERT failed: pICOMCallbackGate != NULL",
                      "The monitor has nobody to call."),
    detail::Assertion(nullptr, "KALASSERT failed: (pwKeyName != NULL) && (pKeyHandle != NULL)",
                      "A key was to be created without a name or a place for its handle."),
    detail::Assertion(nullptr, "KALASSERT failed: pwRegPath != NULL",
                      "A key was to be opened without a path."),
    detail::Assertion(nullptr,
                      "KALASSERT failed: (NULL == m_hStaticKeys) && (NULL == m_hDynamicKeys) "
                      "&& (NULL == m_hAppKeys)",
                      "The keys of the store were to be opened while they are open."),
    detail::Assertion(nullptr, "KALASSERT failed: m_spIPropertyStore != NULL",
                      "A value of the property store was asked for, and there is none."),
};

// Who writes lines: for those that only say that a function begins or ends.
inline constexpr TraceWriter cTraceWriters[] = {
    {"CKORA4ASL", "a method of the object that clients use"},
    {"ClassFactory", "the creation of an object"},
    {"DllCanUnloadNow", "COM asks whether the library can be unloaded"},
    {"DllGetClassObject", "COM asks the library for a class object"},
    {"DllMain", "the library is attached or detached"},
    {"DllRegisterServer", "the library is being registered"},
    {"DllUnregisterServer", "the library is being unregistered"},
    {"GateStreamHolder", "how the monitor's thread reaches the object's apartment"},
    {"KORA4FieldDef", "a field of a technology is read or written"},
    {"KORA4KeysClient", "the store is loaded or compared"},
    {"KORA4ManagedPatchSet", "the values of a profile are read or written"},
    {"KORA4PropKeyBase", "the name of a value is made"},
    {"KORA4PropKeyStoreAccess", "numbers and arrays as the store keeps them"},
    {"KORA4RegPropKeysAccess", "a value in the registry is read, written or deleted"},
    {"KORA4UIKeysClient", "an operation on the store"},
    {"KORA4VisKeyData", "the engine's levels are read"},
    {"NamedMutex", "the mutex that guards the store"},
    {"OnRegisterServer", "the store's keys are made when the library is registered"},
    {"ProcessTrack", "what is known of the process"},
    {"RegKeyMonitor", "the store is watched for changes"},
    {"RegKeySecurity", "the keys of the store are opened to every user"},
};

}  // namespace kora4::contract

#endif  // KORA4_CONTRACT_MESSAGES_TRACE_MESSAGES_GENERAL_H
