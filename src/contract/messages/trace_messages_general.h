// SPDX-License-Identifier: MIT
// Messages that many functions write, and the failed assertions.
#pragma once

#include "contract/messages/trace_message.h"

namespace kora4::contract::msg {

inline constexpr auto cEntry = Line(nullptr, ">>", 0, {}, "The function begins.");
inline constexpr auto cExit = Line(nullptr, "<<", 0, {}, "The function ends.");
inline constexpr auto cExitResult =
    Line(nullptr, "<< hr: 0x%08x", 0, {eResult}, "The function ends with this result.");
inline constexpr auto cNotInitialized =
    Message(nullptr, "**** Error: APOERR_NOT_INITIALIZED", {},
            "The method was called before Initialize had succeeded.",
            "The call was refused with APOERR_NOT_INITIALIZED and did nothing.",
            "Call Initialize first and check its result; if it fails, run 'kora4ctl doctor'.");
// Matches a refusal that has no row of its own; no statement names it.
inline constexpr auto cRefused = Message(
    nullptr, "**** Error: %s", {eReason}, "The method refused an argument, for this reason.",
    "The call was refused with E_INVALIDARG and did nothing.", "Pass a valid argument.");

inline constexpr TraceMessage cGeneralMessages[] = {cEntry, cExit, cExitResult, cNotInitialized,
                                                    cRefused};

inline constexpr char cBrokenRule[] =
    "A rule inside the library was broken; the function handles this and continues.";
inline constexpr char cReport[] =
    "Report it to the developers of the library, with the surrounding lines.";
inline constexpr char cForeignProfile[] =
    "The active profile in the store is not a profile number: another program wrote it.";
inline constexpr char cRepairProfile[] =
    "Choose a profile: 'kora4ctl profile use music'; 'kora4ctl lint' finds such values.";

consteval TraceMessage Assertion(const char* text, const char* meaning,
                                 const char* why = cBrokenRule, const char* next = cReport) {
    return Line(nullptr, text, trace::eAssertions, {}, meaning, why, next);
}

inline constexpr auto cAssertion =
    Line(nullptr, "KALASSERT failed: %s", trace::eAssertions, {eCondition},
         "A condition that the library relies on did not hold.", cBrokenRule, cReport);

// The conditions that the statements show; the text of each stands with its statement.
inline constexpr TraceMessage cAssertionMessages[] = {
    cAssertion,

    // Caused by invalid data in the store.
    Assertion("KALASSERT failed: KORA4KeysClient::IsAllowableProfile( profile )",
              "The profile number is not valid.", cForeignProfile, cRepairProfile),
    Assertion("KALASSERT failed: IsAllowableProfile( newActivePreset )",
              "The number of the profile to make active is not valid.", cForeignProfile,
              cRepairProfile),
    Assertion("KALASSERT failed: IsAllowableProfile( newProfile )",
              "The number of the profile to switch to is not valid.", cForeignProfile,
              cRepairProfile),
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
              "The store's mutex handle is closed while the mutex is held."),
    Assertion("KALASSERT failed: IsAcquired()",
              "The store's mutex is released while it is not held."),
    Assertion("KALASSERT failed: m_regKeysMutex.IsAcquired()",
              "The store is compared while its mutex is not held.",
              "The wait for the mutex failed, or a rule inside the library was broken.",
              "Run 'kora4ctl doctor', which checks the mutex."),

    // Technologies and fields.
    Assertion("KALASSERT failed: IsValidTechnology( technology )",
              "The technology number is not valid."),
    Assertion("KALASSERT failed: IsValidTechnology( presetTech )",
              "The technology number is not valid."),
    Assertion("KALASSERT failed: IsValidTechnology( globalTech )",
              "The number of the global technology is not valid."),
    Assertion("KALASSERT failed: !\"Invalid technology\"",
              "The fields of an unknown technology were requested."),
    Assertion("KALASSERT failed: !\"Invalid global tech\"",
              "The switch of an unknown global technology was requested."),
    Assertion("KALASSERT failed: !\"Invalid field type\"", "A field has an unknown type."),
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
        "A technology with fields has no room for their values."),
    Assertion("KALASSERT failed: pStructVersion != NULL",
              "A technology has no version of its values."),
    Assertion("KALASSERT failed: (UINT) written <= charsAvail",
              "The text of an array is longer than its buffer."),
    Assertion("KALASSERT failed: dwValue == value",
              "A switch to be stored is neither 0 nor 1."),

    // The API's records.
    Assertion("KALASSERT failed: !\"Unexpected technology for API tech conversion\"",
              "A technology of the store has no number in the API."),
    Assertion("KALASSERT failed: !\"Invalid ASL technology\"",
              "The value of an unknown technology was to be read."),
    Assertion("KALASSERT failed: !\"Invalid ASL patch field.\"",
              "The value of an unknown technology was to be set."),
    Assertion("KALASSERT failed: eGraphicEQ == APITech",
              "A technology that has no single value is not the graphic EQ."),
    Assertion("KALASSERT failed: IsValidASLTechnology( presetPatchValues[ (UINT) "
              "presetTech ].m_technology )",
              "A notification was to name an unknown technology."),
    Assertion("KALASSERT failed: APITech == presetPatchValues[ (UINT) presetTech "
              "].m_technology",
              "A notification was to name a technology other than the one that changed."),
    Assertion("KALASSERT failed: IsCustomProfile( customProfileID )",
              "The profile to copy to is not a custom profile."),

    // Pointers and handles.
    Assertion("KALASSERT failed: pICallback != NULL", "There is no callback to notify."),
    Assertion("KALASSERT failed: pICOMCallbackGate != NULL",
              "The monitor has no gate to call."),
    Assertion("KALASSERT failed: (pwKeyName != NULL) && (pKeyHandle != NULL)",
              "A key was to be created without a name or a place for its handle."),
    Assertion("KALASSERT failed: pwRegPath != NULL", "A key was to be opened without a path."),
    Assertion("KALASSERT failed: (NULL == m_hStaticKeys) && (NULL == m_hDynamicKeys) "
              "&& (NULL == m_hAppKeys)",
              "The keys of the store were to be opened while they are open."),
    Assertion("KALASSERT failed: m_spIPropertyStore != NULL",
              "A value of the property store was requested, but there is no property store."),
};

}  // namespace kora4::contract::msg
