// SPDX-License-Identifier: MIT
// The store in memory, which can be made to refuse a write, or to die at one.
#ifndef KORA4_TESTS_TOOLS_SUPPORT_MEMORY_STORE_H
#define KORA4_TESTS_TOOLS_SUPPORT_MEMORY_STORE_H

#include <map>
#include <random>
#include <string>
#include <utility>

#include "registry/store_access.h"
#include "settings/document.h"

namespace kora4::tools {

// Thrown by a dying store: nothing that handles failures handles this.
struct Died {};

// The store as the tools use it, in memory.
class MemoryStore : public StoreAccess {
  public:
    using Values = std::map<std::pair<KORA4KeySet, std::string>, StoredValue>;

    std::optional<StoredValue> Read(KORA4KeySet keySet, const PropertyKey& key) override;
    void Write(KORA4KeySet keySet, const PropertyKey& key, const StoredValue& value) override;
    void Delete(KORA4KeySet keySet, const PropertyKey& key) override;
    std::vector<std::string> ValueNames(KORA4KeySet keySet) override;

    static constexpr int cNever = -1;

    Values values;
    // Counted down with every write and delete; the one at 0 throws a Failure.
    int writesToFailure = cNever;
    // That one and all later ones throw Died and change nothing.
    int writesToDeath = cNever;
    // After the failure, so do all later ones: putting back fails as well.
    bool staysBroken = false;
    int writes = 0;
    // The value names in the order of writing.
    std::vector<std::string> written;

  private:
    void Count(const PropertyKey& key);
};

// Makes the changes of a plan.
void Put(MemoryStore& store, const Plan& plan);

// Values of every kind, most of them well stored, some of them garbage, many of them absent.
class RandomStore {
  public:
    explicit RandomStore(std::uint32_t seed) : m_random(seed) {}

    // garbage: one in that many stored values is of any type and content; 0: none.
    MemoryStore::Values Values(std::uint32_t garbage);
    StoredValue Garbage();
    // As the library would store it; within the limits of the API unless `beyond`.
    StoredValue Right(const SchemaValue& value, bool beyond);
    std::uint32_t Pick(std::uint32_t bound) {
        return static_cast<std::uint32_t>(m_random() % bound);
    }

  private:
    std::u16string Text(std::size_t longest);
    float Float(const Setting* setting);
    std::uint32_t Number(const SchemaValue& value, const Setting* setting, bool beyond);

    std::mt19937 m_random;
};

// What is not an application key, which no journal restores.
MemoryStore::Values WithoutAppKeys(MemoryStore::Values values);

// Those of the values that documents of a scope cover, and those that they do not.
MemoryStore::Values Covered(const MemoryStore::Values& values, Scope scope);
MemoryStore::Values NotCovered(const MemoryStore::Values& values, Scope scope);

}  // namespace kora4::tools

#endif  // KORA4_TESTS_TOOLS_SUPPORT_MEMORY_STORE_H
