// SPDX-License-Identifier: MIT
// The settings document: settings as one JSON text, version 1.
//
//   { "format": "kora4-settings", "version": 1, "scope": "user",
//     "general":  { "profile": "music", "enable": true },
//     "profiles": { "music": { "volume-leveler": 7 }, "p1": { "name": "Late evening" } },
//     "global":   { "peak-limiter.on": true } }
//
// Members are the names of the settings table. A stored value is in the document and an
// absent one is not. A value is true or false, a number, a text or an array when writing it
// back gives exactly the stored bytes; otherwise {"text": "..."} for a REG_SZ of another
// wording, and {"type": 4, "data": "02"} for anything else.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/checked_json.h"
#include "base/output.h"
#include "registry/store_access.h"
#include "settings/settings_table.h"

namespace kora4::tools {

inline constexpr char cDocumentFormat[] = "kora4-settings";
inline constexpr int cDocumentVersion = 1;

// User: active profile, enable, sampling period, and names, switches and fields of the
// profiles 0 to 8. All: everything that is a setting. Trigger words, the table counter, the
// saved demo state and the levels belong to neither.
enum class Scope { eUser, eAll };

// One value in these forms; Failure with eBadInput names the place.
Json StoredToJson(const Setting& setting, const StoredValue& stored);
StoredValue StoredFromJson(const Setting& setting, const CheckedJson& json);

// What a store shall hold at one place. None: nothing.
struct PlannedValue {
    SchemaValue value;
    std::optional<StoredValue> wanted;
};

// What shall be stored after a document is applied, value by value.
struct Plan {
    Scope scope = Scope::eUser;
    std::vector<PlannedValue> values;
};

// What a document made in a demo holds of the profile and the enable.
enum class InDemo {
    eReturn,  // what the demo returns to, so that loading the document enters no demo
    eStored,  // the demo
};

// The document of what is stored now. The caller holds the store's mutex.
Json Dump(StoreAccess& store, Scope scope, InDemo inDemo = InDemo::eReturn);

// What becomes of values that the document does not have.
enum class Completeness {
    eExact,  // what the document does not have shall not be stored
    eMerge,  // what it does not have stays as it is
};

// Reads and checks a whole document. Failure with eBadInput names the place:
// "profiles.music.volume-leveler: ...". Nothing else is asked or changed.
Plan ReadDocument(std::string_view text, Completeness completeness = Completeness::eExact);
Plan CheckDocument(const Json& document, Completeness completeness = Completeness::eExact);

// One value that differs from what is wanted.
struct Difference {
    SchemaValue value;
    std::optional<StoredValue> stored;
    std::optional<StoredValue> wanted;

    // "music: volume-leveler: 7 -> 5"
    std::string Line() const;
    // {"name": ..., "profile": ..., "stored": ..., "wanted": ...}, absent: null.
    Json Document() const;
};

// What differs between the plan and the store, in the plan's order. The caller holds the
// store's mutex.
std::vector<Difference> Compare(const Plan& plan, StoreAccess& store);

}  // namespace kora4::tools
