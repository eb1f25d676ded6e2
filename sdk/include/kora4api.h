// SPDX-License-Identifier: MIT
/* The KORA4 API: everything that a client of QXA64T.dll includes.
 *
 * Plain C11 or C++; needs nothing but the platform's headers. The interfaces, records and
 * their documentation are in veltokora4api.h, which is generated from the interface
 * definition; the library's own result codes are in kora4api_codes.h, profile numbers, limits
 * and other numbers in kora4api_constants.h. The GUIDs are defined by veltokora4api_i.c, or in
 * one source of the client by INITGUID.
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
#include "kora4api_constants.h"

#include "veltokora4api.h"

#endif /* KORA4API_H */
