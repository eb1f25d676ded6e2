// SPDX-License-Identifier: MIT
// The frame that the operations of KORA4UIKeysClient share; included by their files only.
#ifndef KORA4_STORE_CLIENTS_RUN_UNDER_MUTEX_H
#define KORA4_STORE_CLIENTS_RUN_UNDER_MUTEX_H

#include "store/clients/ui_keys_client.h"
#include "trace/trace.h"

namespace kora4 {

// The tag of the lines of every operation.
inline constexpr char cUIKeysClientTag[] = "KORA4UIKeysClient";

// See the declaration: the frame of every operation.
template <typename Body>
HRESULT KORA4UIKeysClient::RunUnderMutex(const trace::Site& site, int line, bool argumentsGood,
                                         Body&& body) {
    HRESULT hr = result::cInvalidArg;
    const trace::Scope scope(site, line, trace::eEntry, trace::eExitResult, &hr);
    if (argumentsGood) {
        const MutexHold hold(m_regKeysMutex);
        hr = body();
    }
    return hr;
}

}  // namespace kora4

#endif  // KORA4_STORE_CLIENTS_RUN_UNDER_MUTEX_H
