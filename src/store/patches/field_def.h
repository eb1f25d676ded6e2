// SPDX-License-Identifier: MIT
// One field of a technology record: what it is, where it lies in the record, under which
// property id it is stored, and what it is when the store does not say.
#ifndef KORA4_STORE_PATCHES_FIELD_DEF_H
#define KORA4_STORE_PATCHES_FIELD_DEF_H

#include <cstddef>
#include <cstdint>

#include "contract/property_key.h"
#include "contract/result.h"
#include "contract/value_kind.h"
#include "store/access/key_access.h"

namespace kora4 {

class KORA4PropKeyStoreAccess;

// A kind as the one character that stands in the field tables.
constexpr char16_t TypeCodeOf(ValueKind kind) {
    return static_cast<char16_t>(kind);
}

// Type codes. The record holds 32-bit words; an array has 40 places and a count.
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
// the start of the record. Stateless; the caller holds the store's named mutex.
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

    // Reads the field under `key` (its pid is replaced) from the static keys. Whatever cannot
    // be read takes the default of row `defaultsIndex`, and so does everything with
    // `defaultsOnly`, without asking the store. E_FAIL when a default is broken or the type
    // code is unknown.
    HRESULT Load(KORA4KeyAccess& access, const PropertyKey& key, std::uint32_t defaultsIndex,
                 bool defaultsOnly, void* pRecord) const;

    // Where the record holds what the store has of the field: a scalar, a count, or an index.
    constexpr std::size_t StoredMember() const {
        return typeCode == cSelectedArrayField ? selectionMember : valueMember;
    }

    // Writes the field; of several arrays none after the first failure.
    HRESULT Write(KORA4KeyAccess& access, const PropertyKey& key, const void* pRecord) const;

  private:
    // One load: the place, the row and whether to ask the store.
    struct Source;

    HRESULT LoadFloatArrays(const Source& source, void* pRecord) const;
    HRESULT LoadSelectedFloatArray(const Source& source, void* pRecord) const;
    HRESULT LoadFlagArray(const Source& source, void* pRecord) const;
    HRESULT WriteFloatArrays(KORA4PropKeyStoreAccess& values, PropertyKey key,
                             const void* pRecord) const;
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

}  // namespace kora4

#endif  // KORA4_STORE_PATCHES_FIELD_DEF_H
