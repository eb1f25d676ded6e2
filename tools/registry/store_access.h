// SPDX-License-Identifier: MIT
// The store as raw values: what tools do behind the API's back goes through here.
#ifndef KORA4_REGISTRY_STORE_STORE_ACCESS_H
#define KORA4_REGISTRY_STORE_STORE_ACCESS_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contract/property_key.h"
#include "registry/stored_value.h"

namespace kora4::tools {

// Raw values of the key sets 2 to 4. Hold the store's mutex to write, and to read values that
// belong together (store_lock.h). What the platform refuses is thrown as Failure with eFailed:
// what was tried, in words, and what to do about it.
class StoreAccess {
  public:
    virtual ~StoreAccess() = default;

    // None when the value, or the whole key of an optional key set, is absent.
    virtual std::optional<StoredValue> Read(KORA4KeySet keySet, const PropertyKey& key) = 0;

    // Stores the value, whatever is there.
    virtual void Write(KORA4KeySet keySet, const PropertyKey& key,
                       const StoredValue& value) = 0;
    // An absent value is not an error.
    virtual void Delete(KORA4KeySet keySet, const PropertyKey& key) = 0;
    // The names of all values of a key set, known or not, sorted.
    virtual std::vector<std::string> ValueNames(KORA4KeySet keySet) = 0;

    // A REG_DWORD of four bytes; otherwise `absent`.
    std::uint32_t Number(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t absent);

    // Stores a REG_DWORD.
    void WriteNumber(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t number);
    // A counter plus one, which is how a change of values is announced. One that is absent
    // or unreadable counts as 0.
    void Bump(const PropertyKey& counter);
};

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
    ~RegistryStore() override;
    RegistryStore(const RegistryStore&) = delete;
    RegistryStore& operator=(const RegistryStore&) = delete;

    std::optional<StoredValue> Read(KORA4KeySet keySet, const PropertyKey& key) override;
    void Write(KORA4KeySet keySet, const PropertyKey& key, const StoredValue& value) override;
    void Delete(KORA4KeySet keySet, const PropertyKey& key) override;
    std::vector<std::string> ValueNames(KORA4KeySet keySet) override;

  private:
    class Keys;
    std::unique_ptr<Keys> m_keys;
};

// How every verb opens the store: a RegistryStore, inside the wrapper when there is one.
std::unique_ptr<StoreAccess> OpenStore(OpenMode mode);

// For test programs: what stands between the tool and the registry from now on. Null: none.
using StoreWrapper = std::unique_ptr<StoreAccess> (*)(std::unique_ptr<StoreAccess> store);
void SetStoreWrapper(StoreWrapper wrapper);

// "{5C2E8A47-...},2"
std::string ValueName(const PropertyKey& key);
// The property key that such a name stands for; none unless the text is exactly such a name.
std::optional<PropertyKey> ParseValueName(std::string_view name);

// "static", "dynamic", "app".
std::string KeySetName(KORA4KeySet keySet);

// The path below HKEY_LOCAL_MACHINE.
std::string KeySetPath(KORA4KeySet keySet);

}  // namespace kora4::tools

#endif  // KORA4_REGISTRY_STORE_STORE_ACCESS_H
