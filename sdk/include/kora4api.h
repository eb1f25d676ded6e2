// SPDX-License-Identifier: MIT
/* The KORA4 API: everything that a client of QXA64T.dll includes.
 *
 * Plain C11 or C++; needs nothing but the platform's headers. The interfaces, records and
 * their documentation are in veltokora4api.h, which is generated from the interface
 * definition; the library's own result codes are in kora4api_codes.h. The GUIDs are defined
 * by veltokora4api_i.c, or in one source of the client by INITGUID.
 *
 *   IVeltoKORA4API* pApi = NULL;
 *   CoCreateInstance(&CLSID_VeltoKORA4APITestCoclass, NULL, CLSCTX_INPROC_SERVER,
 *                    &IID_IVeltoKORA4API, (void**)&pApi);
 *
 * In C, define COBJMACROS first to call methods as IVeltoKORA4API_Initialize(pApi). */
#ifndef KORA4API_H
#define KORA4API_H

#include <windows.h>

#include <objbase.h>

#include "kora4api_codes.h"
#include "veltokora4api.h"

/* Profile numbers. */
#define KORA4_PROFILE_MOVIE 0
#define KORA4_PROFILE_MUSIC 1
#define KORA4_PROFILE_GAMES 2
#define KORA4_PROFILE_FIRST_CUSTOM 3 /* P1 */
#define KORA4_PROFILE_LAST_CUSTOM 8  /* P6 */
#define KORA4_PROFILE_DEMO_MOVIE 240
#define KORA4_PROFILE_DEMO_MUSIC 241
#define KORA4_PROFILE_DEMO_GAMES 242

/* Capacities of the arrays that cross the API. */
#define KORA4_PROFILE_TABLE_ENTRIES 9
#define KORA4_VISUALIZATION_BANDS 20
#define KORA4_GRAPHIC_EQ_MAX_BANDS 40

#endif /* KORA4API_H */
