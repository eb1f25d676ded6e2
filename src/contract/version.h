// SPDX-License-Identifier: MIT
/* The version of the library: what its version resource and GetVeltoKORA4Version say.
 * Read by the resource compiler too. */
#ifndef KORA4_CONTRACT_VERSION_H
#define KORA4_CONTRACT_VERSION_H

#define KORA4_VERSION_3 7
#define KORA4_VERSION_2 2
#define KORA4_VERSION_1 7000
#define KORA4_VERSION_0 4

#define KORA4_VERSION_TEXT_OF(a, b, c, d) #a "." #b "." #c "." #d
#define KORA4_VERSION_TEXT_OF_(a, b, c, d) KORA4_VERSION_TEXT_OF(a, b, c, d)
#define KORA4_VERSION_TEXT \
    KORA4_VERSION_TEXT_OF_(KORA4_VERSION_3, KORA4_VERSION_2, KORA4_VERSION_1, KORA4_VERSION_0)

#endif /* KORA4_CONTRACT_VERSION_H */
