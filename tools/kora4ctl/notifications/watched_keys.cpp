// SPDX-License-Identifier: MIT
// Asks the open keys for anything at all: deleted ones answer that they are.
#include "kora4ctl/notifications/watched_keys.h"

#include "base/failure.h"
#include "contract/registry_paths.h"

namespace kora4::tools {

WatchedKeys::WatchedKeys() {
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, cStaticKeysPath, 0, KEY_READ | KEY_WOW64_64KEY,
                  m_static.Put());
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, cDynamicKeysPath, 0, KEY_READ | KEY_WOW64_64KEY,
                  m_dynamic.Put());
}

void WatchedKeys::CheckAreThere() const {
    for (const HKEY key : {m_static.Get(), m_dynamic.Get()})
        if (!key ||
            RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr) == ERROR_KEY_DELETED)
            throw Failure(ExitCode::eNotReady,
                          "The store's keys were deleted; changes are no longer reported.",
                          "Run 'kora4ctl register' as an administrator, and start again.");
}

}  // namespace kora4::tools
