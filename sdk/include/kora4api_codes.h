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

#endif /* KORA4API_CODES_H */
