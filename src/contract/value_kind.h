// SPDX-License-Identifier: MIT
// The kinds of values in the store, and how each is stored.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kora4api_constants.h"

namespace kora4 {

// The registry's types of values, for code without a platform header.
inline constexpr std::uint32_t cTextType = 1;    // REG_SZ
inline constexpr std::uint32_t cBinaryType = 3;  // REG_BINARY
inline constexpr std::uint32_t cDwordType = 4;   // REG_DWORD

// The numbers of those that fields may be are the type codes of the field tables.
enum class ValueKind : char16_t {
    eSwitch = u'b',  // every number but 0 is on, the library writes 0 or 1
    eNumber = u'u',
    eCurveIndex = u'S',  // below the number of curves
    eFloat = u'f',       // one decimal number
    eNumericArray = u'F',
    eFlagArray = u'B',
    eText = u't',
    eBlob = u'x',
};

// How a kind is stored, and what the documents and `kora4ctl describe` call it.
struct KindDef {
    ValueKind kind;
    std::uint32_t type;
    const char* name;
};

inline constexpr KindDef cKindDefs[] = {
    {ValueKind::eSwitch, cDwordType, "switch"},
    {ValueKind::eNumber, cDwordType, "number"},
    {ValueKind::eCurveIndex, cDwordType, "curve"},
    {ValueKind::eFloat, cTextType, "float"},
    {ValueKind::eNumericArray, cTextType, "numbers"},
    {ValueKind::eFlagArray, cTextType, "flags"},
    {ValueKind::eText, cTextType, "text"},
    {ValueKind::eBlob, cBinaryType, "blob"},
};

constexpr const KindDef& DefOf(ValueKind kind) {
    for (const KindDef& def : cKindDefs)
        if (def.kind == kind)
            return def;
    return cKindDefs[0];
}
constexpr const char* NameOf(ValueKind kind) {
    return DefOf(kind).name;
}
constexpr std::uint32_t TypeOf(ValueKind kind) {
    return DefOf(kind).type;
}

// The largest REG_SZ that a reader accepts, terminator included; longer ones count as absent.
inline constexpr std::size_t cMaxTextBytes = 4096;
// The same in UTF-16 characters, without the terminator.
inline constexpr std::size_t cMaxTextChars = cMaxTextBytes / sizeof(char16_t) - 1;
static_assert(cMaxTextChars == KORA4_CUSTOM_NAME_MAX_LENGTH);

}  // namespace kora4
