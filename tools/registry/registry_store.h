// SPDX-License-Identifier: MIT
// The store in the registry of this machine.
#pragma once

#include <windows.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "registry/store_access.h"

namespace kora4::tools {

// Whether the tool may write into what it opens.
enum class OpenMode { eRead, eReadWrite };

// The registry: the three keys below HKEY_LOCAL_MACHINE in the 64-bit view, held open.
// One thread at a time.
class RegistryStore : public StoreAccess {
  public:
    // Failure with eNotReady naming 'kora4ctl register' when the static or the dynamic keys
    // are missing; with eFailed when they may not be opened. The app keys are optional; a
    // first write into them creates them.
    explicit RegistryStore(OpenMode mode);

    std::optional<StoredValue> Read(KORA4KeySet keySet, const PropertyKey& key) override;
    void Write(KORA4KeySet keySet, const PropertyKey& key, const StoredValue& value) override;
    void Delete(KORA4KeySet keySet, const PropertyKey& key) override;
    std::vector<std::string> ValueNames(KORA4KeySet keySet) override;
    void Reopen() override;

  private:
    static constexpr std::size_t cKeySets = eKeySetApp - eKeySetStatic + 1;
    using Keys = std::array<UniqueRegKey, cKeySets>;

    static UniqueRegKey& KeyIn(Keys& keys, KORA4KeySet keySet) {
        return keys[static_cast<std::size_t>(keySet - eKeySetStatic)];
    }
    UniqueRegKey& KeyOf(KORA4KeySet keySet) { return KeyIn(m_keys, keySet); }
    static void OpenNeeded(KORA4KeySet keySet, REGSAM access, UniqueRegKey& hKey);

    REGSAM m_access;
    Keys m_keys;  // null: optional and absent
};

// Where a key set lies below HKEY_LOCAL_MACHINE.
std::string KeySetPath(KORA4KeySet keySet);

// How every verb opens the store: a RegistryStore, inside the wrapper when there is one.
std::unique_ptr<StoreAccess> OpenStore(OpenMode mode);

// For test programs: what stands between the tool and the registry from now on. Null: none.
using StoreWrapper = std::unique_ptr<StoreAccess> (*)(std::unique_ptr<StoreAccess> store);
void SetStoreWrapper(StoreWrapper wrapper);

}  // namespace kora4::tools
