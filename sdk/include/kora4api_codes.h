// SPDX-License-Identifier: MIT
/* Result codes of the KORA4 API beside the platform's own.
 *
 * Plain C; needs nothing but the HRESULT type. A failure code has the top bit set;
 * the informational codes are success codes: the call was understood and nothing was
 * changed. */
#ifndef KORA4API_CODES_H
#define KORA4API_CODES_H

#if defined(__cplusplus)
#define KORA4_RESULT_CODE(code) static_cast<HRESULT>(code)
#else
#define KORA4_RESULT_CODE(code) ((HRESULT)(code))
#endif

/* The object has not been initialised: call IVeltoKORA4API::Initialize first. */
#define APOERR_NOT_INITIALIZED KORA4_RESULT_CODE(0x887D0002)

/* Demo mode is active; leave it first. */
#define KORA4_S_DEMO_MODE_ACTIVE KORA4_RESULT_CODE(0x00040200)

/* This object entered a demo, but the active profile is no demo profile any more. */
#define KORA4_S_NOT_IN_DEMO_PROFILE KORA4_RESULT_CODE(0x00040201)

/* The requested custom profile does not exist. */
#define KORA4_S_NO_SUCH_CUSTOM_PROFILE KORA4_RESULT_CODE(0x00040202)

/* The active profile is not a preset profile: there is nothing to revert. */
#define KORA4_S_NOT_A_PRESET_PROFILE KORA4_RESULT_CODE(0x00040203)

/* What each result of the methods says, in words that can stand in a sentence. */
#define KORA4_MEANING_S_OK "done"
#define KORA4_MEANING_S_FALSE \
    "what was asked for is absent: no levels published, no such profile to delete"
#define KORA4_MEANING_DEMO_MODE_ACTIVE                                            \
    "nothing changed: a demo profile is active that must be left first; or, for " \
    "RevertFromDemoMode, this object entered no demo"
#define KORA4_MEANING_NOT_IN_DEMO_PROFILE \
    "nothing changed: this object entered a demo, but no demo profile is active any more"
#define KORA4_MEANING_NO_SUCH_CUSTOM_PROFILE \
    "nothing changed: the custom profile does not exist"
#define KORA4_MEANING_NOT_A_PRESET_PROFILE \
    "nothing changed: the active profile is not a preset profile"
#define KORA4_MEANING_E_POINTER "creating the object with a null out pointer"
#define KORA4_MEANING_E_FAIL                                                                \
    "the store failed; the profile exists already, does not exist, or is active; a key to " \
    "watch is missing"
#define KORA4_MEANING_E_OUTOFMEMORY "no memory"
#define KORA4_MEANING_E_INVALIDARG "a null pointer, or a number or value outside its range"
#define KORA4_MEANING_NOT_INITIALIZED "Initialize has not succeeded yet"

#endif /* KORA4API_CODES_H */
