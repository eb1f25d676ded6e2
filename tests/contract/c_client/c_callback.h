// SPDX-License-Identifier: MIT
/* A client's callback in C: an object with a function table of its own, that counts what it
 * is told and remembers the last value of each kind. Lives in one single-threaded
 * apartment. */
#ifndef KORA4_TESTS_CONTRACT_C_CLIENT_C_CALLBACK_H
#define KORA4_TESTS_CONTRACT_C_CLIENT_C_CALLBACK_H

#include "kora4api.h"

typedef struct Callback {
    IVeltoKORA4APICallback api;
    LONG references;

    int profileCalls;
    LONG profile;
    int enableCalls;
    BOOL enable;
    int tableCalls;
    int switchCalls;
    int valueCalls;
    KORA4PatchValueUnion value;
    int eqCalls;
    GraphicEQData eq;
} Callback;

/* With one reference, which is the caller's; the storage stays the caller's. */
void Callback_Construct(Callback* pThis);

#endif /* KORA4_TESTS_CONTRACT_C_CLIENT_C_CALLBACK_H */
