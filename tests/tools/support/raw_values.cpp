// SPDX-License-Identifier: MIT
// Reads and replaces the content of all keys by registry calls, and damages values at random.
#include "tools/support/raw_values.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>

#include "platform/handles.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

using tools::Role;
using tools::StoredValue;

constexpr KORA4KeySet cKeySets[] = {eKeySetStatic, eKeySetDynamic, eKeySetApp};

UniqueRegKey Open(KORA4KeySet keySet, REGSAM access) {
    UniqueRegKey key;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, KeySetPath(keySet).c_str(), 0, access, key.Put());
    return key;
}

std::wstring Wide(const std::string& name) {
    return {name.begin(), name.end()};
}

// One value after the other; false behind the last.
bool ReadAt(HKEY hKey, DWORD index, std::string& name, StoredValue& value) {
    wchar_t buffer[16384];
    value.bytes.resize(64 * 1024);
    for (;;) {
        auto length = static_cast<DWORD>(std::size(buffer));
        auto size = static_cast<DWORD>(value.bytes.size());
        DWORD type = REG_NONE;
        const LSTATUS status = RegEnumValueW(hKey, index, buffer, &length, nullptr, &type,
                                             value.bytes.data(), &size);
        if (status == ERROR_NO_MORE_ITEMS)
            return false;
        if (status == ERROR_MORE_DATA) {
            value.bytes.resize(value.bytes.size() * 2);
            continue;
        }
        EXPECT_EQ(ERROR_SUCCESS, status);
        // The names of the store are plain.
        name.clear();
        for (DWORD i = 0; i < length; ++i)
            name += static_cast<char>(buffer[i]);
        value.type = type;
        value.bytes.resize(size);
        return status == ERROR_SUCCESS;
    }
}

void Write(HKEY hKey, const std::string& name, const StoredValue& value) {
    // What stands behind a text must not look like its terminator: it would be taken along.
    tools::Bytes guarded = value.bytes;
    guarded.resize(guarded.size() + 4, 0xFF);
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetValueExW(hKey, Wide(name).c_str(), 0, value.type, guarded.data(),
                             static_cast<DWORD>(value.bytes.size())));
}

bool IsCounter(const std::pair<KORA4KeySet, std::string>& place) {
    const auto key = tools::ParseValueName(place.second);
    const tools::SchemaValue* const value =
        key ? tools::FindInSchema(place.first, *key) : nullptr;
    return value && (value->role == Role::eTrigger || value->role == Role::eTableCounter);
}

std::string NameOf(const std::pair<KORA4KeySet, std::string>& place) {
    const auto key = tools::ParseValueName(place.second);
    const tools::SchemaValue* const value =
        key ? tools::FindInSchema(place.first, *key) : nullptr;
    return value ? tools::PlaceOf(*value) : place.second;
}

std::optional<StoredValue> Find(const StoreValues& values,
                                const std::pair<KORA4KeySet, std::string>& place) {
    const auto found = values.find(place);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

std::string Shown(const std::optional<StoredValue>& value) {
    return value ? tools::TypeName(value->type) + " " + tools::Describe(*value) : "absent";
}

std::optional<StoredValue> SomeValue(tools::RandomStore& random,
                                     const tools::SchemaValue& value) {
    switch (random.Pick(8)) {
        case 0:
        case 1:
            return {};
        case 2:
            return random.Garbage();
        default:
            return random.Right(value, random.Pick(2) == 0);
    }
}

void Put(StoreValues& values, const std::pair<KORA4KeySet, std::string>& place,
         const std::optional<StoredValue>& value) {
    if (value)
        values[place] = *value;
    else
        values.erase(place);
}

}  // namespace

StoreValues ReadStoreValues() {
    StoreValues values;
    for (const KORA4KeySet keySet : cKeySets) {
        const UniqueRegKey key = Open(keySet, KEY_READ);
        std::string name;
        StoredValue value;
        for (DWORD i = 0; key && ReadAt(key.Get(), i, name, value); ++i)
            values[{keySet, name}] = value;
    }
    return values;
}

void ReplaceStoreValues(const StoreValues& values) {
    const StoreValues present = ReadStoreValues();
    for (const KORA4KeySet keySet : cKeySets) {
        CreateKey(HKEY_LOCAL_MACHINE, KeySetPath(keySet));
        const UniqueRegKey key = Open(keySet, KEY_READ | KEY_WRITE);
        for (const auto& [place, value] : present) {
            if (place.first == keySet && !values.contains(place)) {
                EXPECT_EQ(ERROR_SUCCESS,
                          RegDeleteValueW(key.Get(), Wide(place.second).c_str()));
            }
        }
        for (const auto& [place, value] : values)
            if (place.first == keySet && Find(present, place) != value)
                Write(key.Get(), place.second, value);
    }
}

StoreValues WithoutCounters(const StoreValues& values) {
    StoreValues rest = values;
    std::erase_if(rest, [](const auto& entry) { return IsCounter(entry.first); });
    return rest;
}

std::string DifferencesOf(const StoreValues& expected, const StoreValues& actual) {
    StoreValues both = expected;
    both.insert(actual.begin(), actual.end());
    std::string words;
    for (const auto& [place, value] : both) {
        const std::optional<StoredValue> wanted = Find(expected, place);
        const std::optional<StoredValue> found = Find(actual, place);
        if (wanted != found)
            words +=
                NameOf(place) + ": " + Shown(found) + " instead of " + Shown(wanted) + "\n";
    }
    return words;
}

ExpectedLoad LoadOf(const StoreValues& before, const StoreValues& wanted, Scope scope) {
    ExpectedLoad load;
    const StoreValues covered = tools::Covered(wanted, scope);
    load.after = tools::NotCovered(before, scope);
    load.after.insert(covered.begin(), covered.end());
    for (const tools::SchemaValue& value : tools::Schema()) {
        const std::pair place(value.keySet, value.Name());
        if (IsCounter(place) || Find(before, place) == Find(load.after, place))
            continue;
        ++load.changes;
        const std::optional<PropertyKey> counter = value.Announcement();
        if (counter && std::find(load.counters.begin(), load.counters.end(), *counter) ==
                           load.counters.end())
            load.counters.push_back(*counter);
    }
    for (const PropertyKey& counter : load.counters) {
        const std::pair place(eKeySetDynamic, tools::ValueName(counter));
        const std::optional<StoredValue> old = Find(before, place);
        const std::uint32_t number = old ? old->AsDword().value_or(0) : 0;
        load.after[place] = StoredValue::FromDword(number + 1);
    }
    return load;
}

TwoStores DifferentStores(std::uint32_t seed) {
    tools::RandomStore random(seed);
    TwoStores stores;
    for (const tools::SchemaValue& value : tools::Schema()) {
        const std::pair place(value.keySet, value.Name());
        const std::optional<StoredValue> before = SomeValue(random, value);
        std::optional<StoredValue> after = SomeValue(random, value);
        while (after == before)
            after = SomeValue(random, value);
        Put(stores.before, place, before);
        Put(stores.after, place, after);
    }
    return stores;
}

std::string DocumentText(const StoreValues& values, Scope scope) {
    tools::MemoryStore store;
    store.values = values;
    return tools::Dump(store, scope).dump(2) + "\n";
}

}  // namespace kora4::test
