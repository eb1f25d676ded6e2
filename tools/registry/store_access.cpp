// SPDX-License-Identifier: MIT
// What all implementations of StoreAccess share, and the names of values and key sets.
#include "registry/store_access.h"

#include <charconv>

namespace kora4::tools {

void StoreAccess::Put(KORA4KeySet keySet, const PropertyKey& key,
                      const std::optional<StoredValue>& value) {
    if (value && value->unread == 0)
        Write(keySet, key, *value);
    else
        Delete(keySet, key);
}

std::uint32_t StoreAccess::Number(KORA4KeySet keySet, const PropertyKey& key,
                                  std::uint32_t absent) {
    const std::optional<StoredValue> value = Read(keySet, key);
    return value ? value->AsDword().value_or(absent) : absent;
}

void StoreAccess::WriteNumber(KORA4KeySet keySet, const PropertyKey& key,
                              std::uint32_t number) {
    Write(keySet, key, StoredValue::FromDword(number));
}

void StoreAccess::Bump(const PropertyKey& counter) {
    WriteNumber(eKeySetDynamic, counter, Number(eKeySetDynamic, counter, 0) + 1);
}

std::string ValueName(const PropertyKey& key) {
    char16_t name[cValueNameCapacity];
    const std::size_t length = FormatValueName(key, name);
    return {name, name + length};
}

std::optional<PropertyKey> ParseValueName(std::string_view name) {
    // The fields of the GUID: where their digits begin, in the order of a name.
    constexpr std::size_t cBytePlaces[] = {20, 22, 25, 27, 29, 31, 33, 35};
    constexpr std::size_t cPidPlace = 39;
    if (name.size() <= cPidPlace)
        return {};
    const auto read = [name](std::size_t place, std::size_t digits, int base, auto& number) {
        return std::from_chars(name.data() + place, name.data() + place + digits, number, base);
    };
    PropertyKey key{};
    read(1, 8, 16, key.fmtid.data1);
    read(10, 4, 16, key.fmtid.data2);
    read(15, 4, 16, key.fmtid.data3);
    for (std::size_t i = 0; i < std::size(cBytePlaces); ++i)
        read(cBytePlaces[i], 2, 16, key.fmtid.data4[i]);
    read(cPidPlace, name.size() - cPidPlace, 10, key.pid);
    // Anything but digits, or digits elsewhere, makes another name.
    if (ValueName(key) != name)
        return {};
    return key;
}

std::string KeySetName(KORA4KeySet keySet) {
    switch (keySet) {
        case eKeySetStatic:
            return "static";
        case eKeySetDynamic:
            return "dynamic";
        case eKeySetApp:
            return "app";
        default:
            return "unknown";
    }
}

}  // namespace kora4::tools
