// SPDX-License-Identifier: MIT
// The store as raw values: what tools do behind the API's back goes through here.
#pragma once

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

    // The value, or its type and size when that is above cMaxReadBytes. None when it, or the
    // whole key of an optional key set, is absent.
    virtual std::optional<StoredValue> Read(KORA4KeySet keySet, const PropertyKey& key) = 0;

    // Stores the value, whatever is there.
    virtual void Write(KORA4KeySet keySet, const PropertyKey& key,
                       const StoredValue& value) = 0;
    // An absent value is not an error.
    virtual void Delete(KORA4KeySet keySet, const PropertyKey& key) = 0;
    // The names of all values of a key set, known or not, sorted.
    virtual std::vector<std::string> ValueNames(KORA4KeySet keySet) = 0;

    // What was open is refused for ever after its deletion: opens what has been made since.
    // Failure as from the opening of the store; it stays as it was then.
    virtual void Reopen() {}

    // Writes the value, or deletes it when there is none, or one that was not read.
    void Put(KORA4KeySet keySet, const PropertyKey& key,
             const std::optional<StoredValue>& value);
    // A REG_DWORD of four bytes; otherwise `absent`.
    std::uint32_t Number(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t absent);

    // Stores a REG_DWORD.
    void WriteNumber(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t number);
    // A counter plus one, which is how a change of values is announced. One that is absent
    // or unreadable counts as 0.
    void Bump(const PropertyKey& counter);
};

// "{5C2E8A47-...},2"
std::string ValueName(const PropertyKey& key);
// The property key that such a name stands for; none unless the text is exactly such a name.
std::optional<PropertyKey> ParseValueName(std::string_view name);

// "static", "dynamic", "app".
std::string KeySetName(KORA4KeySet keySet);

}  // namespace kora4::tools
