// SPDX-License-Identifier: MIT
/* What the C client of the layout test does for the C++ side. */
#ifndef KORA4_TESTS_UNIT_SDK_LAYOUT_C_H
#define KORA4_TESTS_UNIT_SDK_LAYOUT_C_H

#include "kora4api.h"

#ifdef __cplusplus
extern "C" {
#endif

HRESULT InitializeFromC(IVeltoKORA4API* pApi);
const IID* ApiIidFromC(void);
/* 0 to 4: the library's result codes in the order of their numbers, failures first. */
HRESULT CodeFromC(int index);

#ifdef __cplusplus
}
#endif

#endif /* KORA4_TESTS_UNIT_SDK_LAYOUT_C_H */
