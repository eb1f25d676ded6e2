// SPDX-License-Identifier: MIT
// What the library does to the store, as recorded while it runs on one in memory.
#ifndef KORA4_TESTS_CHECKS_DOCUMENTS_STORE_USE_H
#define KORA4_TESTS_CHECKS_DOCUMENTS_STORE_USE_H

#include <cstdint>
#include <string>
#include <vector>

#include "contract/property_key.h"

namespace kora4::test {

// A family of values as the documents name them.
struct Family {
    const char* name;
    const KeyGuid& base;
    bool hasOffset;   // bits 0 to 7 belong to the technology
    bool hasProfile;  // bits 8 to 15 belong to the profile
    enum class Pids { eZero, eOthers, eAll } pids;
};
extern const std::vector<Family> cFamilies;

// One access of a method to the store, as a document would state it.
struct Access {
    std::string family;  // what belongs to none keeps the whole log entry
    bool write;
    std::string type;  // "DWORD", "text", "blob"; empty for a deletion
    std::uint32_t keySet;
    std::uint32_t pid;
};

// What a method was seen to do with the store.
struct MethodUse {
    bool known = false;
    bool mutex = false;
    std::vector<Access> accesses;
    std::vector<std::string> told;  // to another client, in the order of a pass
};

// Runs the work of an API method on a store of its own, in each way in which it reads,
// writes or announces something.
const MethodUse& UseOf(const std::string& method);

// All that any method does.
const std::vector<Access>& EveryAccess();

// "settings (1, 2), flags, fields" of the reads or of the writes.
std::string Described(const std::vector<Access>& accesses, bool writes);

}  // namespace kora4::test

#endif  // KORA4_TESTS_CHECKS_DOCUMENTS_STORE_USE_H
