// SPDX-License-Identifier: MIT
// What a client's own writes do to what it knows of the store.
#pragma once

#include "contract/result.h"

namespace kora4 {

// An item as read just before it is written, and as written.
template <typename T>
struct Change {
    T before;
    T after;
};

// Ends an own write of an item that the client watches: `hr` is the result of the write, which
// is handed on, and `pKnown` what the client knows of the item; null when it knows nothing of
// it. That moves with the write only if it is what the write replaced: otherwise a foreign
// change is still to be told. A failed write moves nothing.
template <typename T>
HRESULT MoveOwn(HRESULT hr, const Change<T>& change, T* pKnown) {
    if (result::Succeeded(hr) && pKnown && *pKnown == change.before)
        *pKnown = change.after;
    return hr;
}

}  // namespace kora4
