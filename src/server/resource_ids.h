// SPDX-License-Identifier: MIT
/* Resources of the library. Read by the resource compiler too. */
#ifndef KORA4_SERVER_RESOURCE_IDS_H
#define KORA4_SERVER_RESOURCE_IDS_H

#define KORA4_RES_TYPELIB 1
#define KORA4_RES_APPID_SCRIPT 101
#define KORA4_RES_TEST_CLASS_SCRIPT 102

#endif /* KORA4_SERVER_RESOURCE_IDS_H */
