// SPDX-License-Identifier: MIT
/* What a C program sees of the constants. */
#ifndef KORA4_TESTS_SDK_CONSTANTS_C_H
#define KORA4_TESTS_SDK_CONSTANTS_C_H

#ifdef __cplusplus
extern "C" {
#endif

#define CONSTANTS_IN_C 6
extern const double cConstantsInC[CONSTANTS_IN_C];

#ifdef __cplusplus
}
#endif

#endif /* KORA4_TESTS_SDK_CONSTANTS_C_H */
