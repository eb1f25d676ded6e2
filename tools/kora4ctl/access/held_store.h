// SPDX-License-Identifier: MIT
// The settings store, opened and held.
#pragma once

#include <memory>

#include "process/program.h"
#include "registry/registry_store.h"
#include "registry/store_lock.h"

namespace kora4::tools {

// The store's mutex; says so when that takes long. Failure with eTimedOut when another program
// holds it longer than --wait says, with eFailed when Ctrl-C comes first, unless it is no
// longer heeded.
inline StoreLock LockStore(const Context& context, bool isInterruptible = true) {
    return StoreLock(
        static_cast<DWORD>(context.wait * 1000),
        isInterruptible ? context.interrupt.Event() : nullptr, [&context] {
            context.output.Say("Waiting for the settings store, held by another program.");
        });
}

// The store and its mutex, which is given back with it. Failure as from LockStore. Belongs to
// the thread that made it.
struct HeldStore {
    HeldStore(const Context& context, OpenMode mode)
        : store(OpenStore(mode)), lock(LockStore(context)) {}

    std::unique_ptr<StoreAccess> store;
    StoreLock lock;

    StoreAccess& operator*() const { return *store; }
    StoreAccess* operator->() const { return store.get(); }
};

// Returns when nobody holds the store; what LockStore throws otherwise. The library itself
// waits for it without end, so this comes before it is started.
inline void WaitForStore(const Context& context) {
    const StoreLock lock = LockStore(context);
}

}  // namespace kora4::tools
