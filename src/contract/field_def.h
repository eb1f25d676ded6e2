// SPDX-License-Identifier: MIT
// One field of a technology record: its type, its place in the record, the property id under
// which it is stored, and its default.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/defaults.h"
#include "contract/value_kind.h"

namespace kora4 {

// A kind as the character in the field tables.
constexpr char16_t TypeCodeOf(ValueKind kind) {
    return static_cast<char16_t>(kind);
}

// Type codes. The record consists of 32-bit words; an array has cMaxArrayElements elements and
// a count.
inline constexpr char16_t cUnsignedField = TypeCodeOf(ValueKind::eNumber);
// 0 or 1 in the record.
inline constexpr char16_t cBooleanField = TypeCodeOf(ValueKind::eSwitch);
inline constexpr char16_t cFloatField = TypeCodeOf(ValueKind::eFloat);
// One text per array.
inline constexpr char16_t cFloatArraysField = TypeCodeOf(ValueKind::eNumericArray);
// The index is stored, the curve is built in.
inline constexpr char16_t cSelectedArrayField = TypeCodeOf(ValueKind::eCurveIndex);
inline constexpr char16_t cFlagArrayField = TypeCodeOf(ValueKind::eFlagArray);

// A row of a technology's field table (field_tables.h). All positions are in bytes from
// the start of the record.
struct KORA4FieldDef {
    // 'u', 'b': one 32-bit number per defaults row. 'f': one float per row. 'F', 'B': one
    // pointer per row to a list of texts, one per array. 'S': an EnumFieldDef.
    const void* pDefaults;
    char16_t typeCode;
    std::uint16_t valueMember;      // the scalar, or the first array's count
    std::uint16_t arrayMember;      // the first array's elements; further ones follow
    std::uint16_t selectionMember;  // 'S': the index of the selected curve
    std::uint16_t pid;              // of the first array; further ones count up
    std::uint16_t m_numArrays;      // 0 for scalars
    std::uint16_t scale;            // 'F': fixed-point divisor of the text, 1 or 256

    // The place of what the store has of the field: a scalar, a count, or an index.
    constexpr std::size_t StoredMember() const {
        return typeCode == cSelectedArrayField ? selectionMember : valueMember;
    }
};

static_assert(offsetof(KORA4FieldDef, pDefaults) == 0);
static_assert(offsetof(KORA4FieldDef, typeCode) == 8);
static_assert(offsetof(KORA4FieldDef, valueMember) == 10);
static_assert(offsetof(KORA4FieldDef, arrayMember) == 12);
static_assert(offsetof(KORA4FieldDef, selectionMember) == 14);
static_assert(offsetof(KORA4FieldDef, pid) == 16);
static_assert(offsetof(KORA4FieldDef, m_numArrays) == 18);
static_assert(offsetof(KORA4FieldDef, scale) == 20);
static_assert(sizeof(KORA4FieldDef) == 24);

// The default of a field, or of one of its arrays; the members of other types stay 0. A
// selected array has a number, its index; an array has a text, null if there is none.
struct FieldDefault {
    std::uint32_t number = 0;
    float real = 0;
    const char16_t* pwText = nullptr;
};

inline FieldDefault DefaultOf(const KORA4FieldDef& field, std::uint32_t row,
                              std::uint32_t array = 0) {
    FieldDefault value;
    switch (field.typeCode) {
        case cUnsignedField:
        case cBooleanField:
            value.number = static_cast<const std::uint32_t*>(field.pDefaults)[row];
            break;
        case cFloatField:
            value.real = static_cast<const float*>(field.pDefaults)[row];
            break;
        case cSelectedArrayField:
            value.number =
                static_cast<const EnumFieldDef*>(field.pDefaults)->pEnumDefaults[row];
            break;
        case cFloatArraysField:
        case cFlagArrayField:
            if (const auto texts = static_cast<const defaults::TextList*>(field.pDefaults)[row])
                value.pwText = texts[array];
            break;
        default:
            break;
    }
    return value;
}

}  // namespace kora4
