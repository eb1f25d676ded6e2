// SPDX-License-Identifier: MIT
// Builds the keys of technologies and profiles, and their value names in the registry. Value
// names are formatted on every access to the store, therefore with a table and without printf.
#include "contract/property_key.h"

#include "contract/hex_pairs.h"

namespace kora4 {

namespace {

char16_t* PutByte(char16_t* cursor, std::uint32_t value) {
    return codec::PutHexByte<codec::cUpperCase>(cursor, value);
}

char16_t* PutWord(char16_t* cursor, std::uint32_t value) {
    return PutByte(PutByte(cursor, value >> 8), value);
}

constexpr std::size_t cDecimalDigits = 10;  // of the largest 32-bit number

char16_t* PutDecimal(char16_t* cursor, std::uint32_t value) {
    if (value < 10) {
        *cursor = static_cast<char16_t>(u'0' + value);
        return cursor + 1;
    }
    char16_t reversed[cDecimalDigits];
    std::size_t count = 0;
    for (; value != 0; value /= 10)
        reversed[count++] = static_cast<char16_t>(u'0' + value % 10);
    while (count != 0)
        *cursor++ = reversed[--count];
    return cursor;
}

constexpr std::size_t cBracedGuidLength = 38;
static_assert(cBracedGuidLength + 1 + cDecimalDigits + 1 <= cValueNameCapacity);

constexpr std::uint32_t OffsetOf(KORA4PresetTechnology technology) {
    return technology < eNumberKORA4PresetTechnologies ? sm_presetTechGUIDOffset[technology]
                                                       : 0;
}

constexpr std::uint32_t OffsetOf(KORA4GlobalTechnology technology) {
    return technology < eNumberKORA4GlobalTechnologies ? sm_globalTechGUIDOffset[technology]
                                                       : 0;
}

// Only the preset patches and the profile names use bits 8 to 15.
static_assert((pkey::cPresetPatchGuid.data1 & 0xFFFF) == 0);
static_assert((pkey::cProfileNameGuid.data1 & 0xFFFF) == 0);
static_assert((pkey::cPresetTriggerGuid.data1 & 0xFF) == 0);
static_assert((pkey::cGlobalPatchGuid.data1 & 0xFF) == 0);
static_assert((pkey::cGlobalTriggerGuid.data1 & 0xFF) == 0);

template <typename Technology>
PropertyKey TechnologyKey(const KeyGuid& base, Technology technology, std::uint32_t pid) {
    KORA4PropKeyBase key(base, pid);
    key.SetTechField(OffsetOf(technology));
    return key.Key();
}

}  // namespace

PropertyKey pkey::PresetPatch(KORA4PresetTechnology technology, std::uint32_t profile,
                              std::uint32_t pid) {
    KORA4PropKeyBase key(cPresetPatchGuid, pid);
    key.SetTechField(OffsetOf(technology));
    if (static_cast<std::int32_t>(profile) >= 0)
        key.PlaceProfile(profile);
    return key.Key();
}

PropertyKey pkey::ProfileName(std::uint32_t profile) {
    KORA4PropKeyBase key(cProfileNameGuid, cProfileNamePid);
    key.PlaceProfile(profile);
    return key.Key();
}

PropertyKey PresetTriggerKey(KORA4PresetTechnology technology) {
    return TechnologyKey(pkey::cPresetTriggerGuid, technology, pkey::cTriggerPid);
}

PropertyKey GlobalPatchKey(KORA4GlobalTechnology technology, std::uint32_t pid) {
    return TechnologyKey(pkey::cGlobalPatchGuid, technology, pid);
}

PropertyKey GlobalTriggerKey(KORA4GlobalTechnology technology) {
    return TechnologyKey(pkey::cGlobalTriggerGuid, technology, pkey::cTriggerPid);
}

std::size_t FormatValueName(const PropertyKey& key, char16_t (&name)[cValueNameCapacity]) {
    const KeyGuid& guid = key.fmtid;
    char16_t* cursor = name;
    *cursor++ = u'{';
    cursor = PutWord(cursor, guid.data1 >> 16);
    cursor = PutWord(cursor, guid.data1);
    *cursor++ = u'-';
    cursor = PutWord(cursor, guid.data2);
    *cursor++ = u'-';
    cursor = PutWord(cursor, guid.data3);
    *cursor++ = u'-';
    cursor = PutByte(cursor, guid.data4[0]);
    cursor = PutByte(cursor, guid.data4[1]);
    *cursor++ = u'-';
    for (std::size_t i = 2; i < sizeof guid.data4; ++i)
        cursor = PutByte(cursor, guid.data4[i]);
    *cursor++ = u'}';
    *cursor++ = u',';
    cursor = PutDecimal(cursor, key.pid);
    *cursor = u'\0';
    return static_cast<std::size_t>(cursor - name);
}

}  // namespace kora4
