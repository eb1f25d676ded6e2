// SPDX-License-Identifier: MIT
// Messages that many functions write, and the failed assertions.
#pragma once

#include "contract/messages/trace_message.h"

namespace kora4::contract::msg {

inline constexpr auto cEntry = Line(nullptr, ">>", 0, "", "The function begins.");
inline constexpr auto cExit = Line(nullptr, "<<", 0, "", "The function ends.");
inline constexpr auto cExitResult =
    Line(nullptr, "<< hr: 0x%08x", 0, "result", "The function ends with this result.");
inline constexpr auto cNotInitialized = Message(
    nullptr, "**** Error: APOERR_NOT_INITIALIZED", "",
    "The method was called before Initialize had succeeded.",
    "The call was refused with APOERR_NOT_INITIALIZED and did nothing.",
    "Call Initialize first and look at its result; when it fails, run 'kora4ctl doctor'.");
// For a refusal that is not known better.
inline constexpr auto cRefused = Message(
    nullptr, "**** Error: %s", "reason", "The method refused an argument, for this reason.",
    "The call was refused with E_INVALIDARG and did nothing.", "Pass what the method takes.");

inline constexpr TraceMessage cGeneralMessages[] = {cEntry, cExit, cExitResult, cNotInitialized,
                                                    cRefused};

inline constexpr char cBrokenRule[] =
    "A rule inside the library was broken; the function copes with it and goes on.";
inline constexpr char cTellTheMakers[] =
    "Tell the makers of the library, with the lines around this one.";
inline constexpr char cForeignProfile[] =
    "The active profile in the store is a number that is no profile: somebody else wrote it.";
inline constexpr char cRepairProfile[] =
    "Choose a profile: 'kora4ctl profile use music'; 'kora4ctl lint' finds such values.";

constexpr TraceMessage Assertion(const char* text, const char* meaning,
                                 const char* why = cBrokenRule,
                                 const char* next = cTellTheMakers) {
    return {nullptr, text, trace::eAssertions, "", meaning, why, next};
}

inline constexpr auto cAssertion =
    Line(nullptr, "KALASSERT failed: %s", trace::eAssertions, "condition",
         "A condition that the library relies on did not hold.", cBrokenRule, cTellTheMakers);

// The conditions that the statements show; the text of each stands with its statement.
inline constexpr TraceMessage cAssertionMessages[] = {
    cAssertion,

    // What garbage in the store brings about.
    Assertion("KALASSERT failed: KORA4KeysClient::IsAllowableProfile( profile )",
              "The number of the profile to work on is no profile.", cForeignProfile,
              cRepairProfile),
    Assertion("KALASSERT failed: IsAllowableProfile( newActivePreset )",
              "The profile to become active is no profile.", cForeignProfile, cRepairProfile),
    Assertion("KALASSERT failed: IsAllowableProfile( newProfile )",
              "The profile to change to is no profile.", cForeignProfile, cRepairProfile),
    Assertion("KALASSERT failed: !(profile < 0)",
              "The number of the profile whose switches are looked up is negative.",
              cForeignProfile, cRepairProfile),
    Assertion("KALASSERT failed: profile >= 0",
              "The number of the profile in a value's name is negative.", cForeignProfile,
              cRepairProfile),
    Assertion("KALASSERT failed: defaultsIndex < 3",
              "The row of defaults to use does not exist.", cForeignProfile, cRepairProfile),

    // The mutex.
    Assertion("KALASSERT failed: !IsAcquired()",
              "The mutex of the store is given up while it is held."),
    Assertion("KALASSERT failed: IsAcquired()",
              "The mutex of the store is released while it is not held."),
    Assertion("KALASSERT failed: m_regKeysMutex.IsAcquired()",
              "The store is compared while its mutex is not held.",
              "The wait for the mutex failed, or a rule inside the library was broken.",
              "Run 'kora4ctl doctor', which looks at the mutex."),

    // Technologies and fields.
    Assertion("KALASSERT failed: IsValidTechnology( technology )",
              "The number of a technology is none."),
    Assertion("KALASSERT failed: IsValidTechnology( presetTech )",
              "The number of a technology is none."),
    Assertion("KALASSERT failed: IsValidTechnology( globalTech )",
              "The number of a global technology is none."),
    Assertion("KALASSERT failed: !\"Invalid technology\"",
              "The fields of something that is no technology were asked for."),
    Assertion("KALASSERT failed: !\"Invalid global tech\"",
              "The switch of something that is no global technology was asked for."),
    Assertion("KALASSERT failed: !\"Invalid field type\"",
              "A field is of a type that nobody knows."),
    Assertion("KALASSERT failed: 1 == m_numArrays",
              "A field with a choice of curves has more than one array."),
    Assertion("KALASSERT failed: pEnumFieldDef != NULL",
              "A field with a choice of curves has no curves."),
    Assertion(
        "KALASSERT failed: (pEnumDefaults != NULL) && (pEnumValues != NULL) && (enumLimit > 0)",
        "A field with a choice of curves has no curves."),
    Assertion("KALASSERT failed: pwDefaultString != NULL", "An array field has no default."),
    Assertion(
        "KALASSERT failed: (0 == numberFields) || ((pStruct != NULL) && (pFields != NULL))",
        "A technology with fields has no place for their values."),
    Assertion("KALASSERT failed: pStructVersion != NULL",
              "A technology has no version of its values."),
    Assertion("KALASSERT failed: (UINT) written <= charsAvail",
              "The text of an array is longer than its place."),
    Assertion("KALASSERT failed: dwValue == value",
              "A switch to be stored is neither 0 nor 1."),

    // The API's records.
    Assertion("KALASSERT failed: !\"Unexpected technology for API tech conversion\"",
              "A technology of the store has no number in the API."),
    Assertion("KALASSERT failed: !\"Invalid ASL technology\"",
              "The value of something that is no technology was to be read."),
    Assertion("KALASSERT failed: !\"Invalid ASL patch field.\"",
              "The value of something that is no technology was to be set."),
    Assertion("KALASSERT failed: eGraphicEQ == APITech",
              "A technology without a single value is not the graphic EQ."),
    Assertion("KALASSERT failed: IsValidASLTechnology( presetPatchValues[ (UINT) "
              "presetTech ].m_technology )",
              "A notification was to name something that is no technology."),
    Assertion("KALASSERT failed: APITech == presetPatchValues[ (UINT) presetTech "
              "].m_technology",
              "A notification was to name another technology than the one that changed."),
    Assertion("KALASSERT failed: IsCustomProfile( customProfileID )",
              "The profile to copy to is no custom profile."),

    // Pointers and handles.
    Assertion("KALASSERT failed: pICallback != NULL", "Nobody is there to be told."),
    Assertion("KALASSERT failed: pICOMCallbackGate != NULL", "The monitor has nobody to call."),
    Assertion("KALASSERT failed: (pwKeyName != NULL) && (pKeyHandle != NULL)",
              "A key was to be created without a name or a place for its handle."),
    Assertion("KALASSERT failed: pwRegPath != NULL", "A key was to be opened without a path."),
    Assertion("KALASSERT failed: (NULL == m_hStaticKeys) && (NULL == m_hDynamicKeys) "
              "&& (NULL == m_hAppKeys)",
              "The keys of the store were to be opened while they are open."),
    Assertion("KALASSERT failed: m_spIPropertyStore != NULL",
              "A value of the property store was asked for, and there is none."),
};

}  // namespace kora4::contract::msg
