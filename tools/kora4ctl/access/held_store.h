// SPDX-License-Identifier: MIT
// The settings store, opened and held.
#pragma once

#include <memory>

#include "process/program.h"
#include "registry/registry_store.h"
#include "registry/store_lock.h"

namespace kora4::tools {

// Milliseconds until a tool gives up waiting for the store's mutex.
inline constexpr DWORD cLockPatience = 30000;

// The store and its mutex, which is given back with it. Failure with eTimedOut when another
// program holds the mutex for half a minute, with eFailed when Ctrl-C comes first. Belongs to
// the thread that made it.
struct HeldStore {
    HeldStore(const Context& context, OpenMode mode)
        : store(OpenStore(mode)), lock(cLockPatience, context.interrupt.Event()) {}

    std::unique_ptr<StoreAccess> store;
    StoreLock lock;

    StoreAccess& operator*() const { return *store; }
    StoreAccess* operator->() const { return store.get(); }
};

// Returns when nobody holds the store; what StoreLock throws otherwise. The library itself
// waits for it without end, so this comes before it is started.
inline void WaitForStore(const Context& context) {
    const StoreLock lock(cLockPatience, context.interrupt.Event());
}

}  // namespace kora4::tools
