// SPDX-License-Identifier: MIT
// The way of a field between its record and the store, by the type of the field.
#include "store/patches/field_access.h"

#include <algorithm>

#include "contract/codec/array_text.h"
#include "contract/patch_records.h"
#include "store/access/prop_key_store_access.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

template <typename T>
T* MemberAt(void* pRecord, std::uint16_t position) {
    return reinterpret_cast<T*>(static_cast<std::byte*>(pRecord) + position);
}

template <typename T>
const T* MemberAt(const void* pRecord, std::uint16_t position) {
    return reinterpret_cast<const T*>(static_cast<const std::byte*>(pRecord) + position);
}

// The record's own count never exceeds the capacity; whoever writes beyond it would store
// what every reader refuses.
std::uint32_t CountToWrite(std::uint32_t count) {
    return std::min(count, cMaxArrayElements);
}

HRESULT UnknownType(const trace::Site& site) {
    KALASSERT(site, msg::cAssertFieldType, false);
    return result::cFail;
}

// One load: where from, which row of defaults, and whether to ask the store.
struct FieldLoad {
    const KORA4FieldDef& field;
    KORA4PropKeyStoreAccess values;
    PropertyKey key;
    std::uint32_t row;
    bool defaultsOnly;
    void* pRecord;

    template <typename T>
    T* Value() const {
        return MemberAt<T>(pRecord, field.valueMember);
    }

    HRESULT Run();
    HRESULT LoadFloatArrays();
    HRESULT LoadSelectedFloatArray();
    HRESULT LoadFlagArray();
};

HRESULT FieldLoad::Run() {
    KALTRACE_RESULT(hr, result::cOk, "KORA4FieldDef::Load");
    switch (field.typeCode) {
        case cUnsignedField:
            if (defaultsOnly ||
                values.ReadUINT(eKeySetStatic, key, Value<std::uint32_t>()) != result::cOk)
                *Value<std::uint32_t>() = DefaultOf(field, row).number;
            break;
        case cBooleanField: {
            bool flag = false;
            if (defaultsOnly || values.ReadBool(eKeySetStatic, key, &flag) != result::cOk)
                flag = DefaultOf(field, row).number != 0;
            *Value<std::uint32_t>() = flag;
            break;
        }
        case cFloatField:
            if (defaultsOnly ||
                values.ReadFloat(eKeySetStatic, key, Value<float>()) != result::cOk)
                *Value<float>() = DefaultOf(field, row).real;
            break;
        case cFloatArraysField:
            hr = LoadFloatArrays();
            break;
        case cSelectedArrayField:
            hr = LoadSelectedFloatArray();
            break;
        case cFlagArrayField:
            hr = LoadFlagArray();
            break;
        default:
            hr = UnknownType(cSite);
            break;
    }
    return hr;
}

HRESULT FieldLoad::LoadFloatArrays() {
    KALTRACE_RESULT(hr, result::cOk, "KORA4FieldDef::LoadFloatArrays");
    auto* pCount = Value<std::uint32_t>();
    auto* pElements = MemberAt<float>(pRecord, field.arrayMember);
    for (std::uint16_t i = 0; i < field.m_numArrays;
         ++i, ++key.pid, ++pCount, pElements += cMaxArrayElements) {
        *pCount = 0;
        if (!defaultsOnly &&
            values.ReadNumericArray(eKeySetStatic, key, pCount, pElements) == result::cOk)
            continue;
        const char16_t* pwDefaultString = DefaultOf(field, row, i).pwText;
        KALASSERT(cSite, msg::cAssertArrayDefault, pwDefaultString);
        if (pwDefaultString)
            hr = codec::DecodeNumericArray(pwDefaultString, pCount, pElements);
    }
    return hr;
}

HRESULT FieldLoad::LoadSelectedFloatArray() {
    KALTRACE_RESULT(hr, result::cFail, "KORA4FieldDef::LoadSelectedFloatArray");
    const auto* pEnumFieldDef = static_cast<const EnumFieldDef*>(field.pDefaults);
    KALASSERT(cSite, msg::cAssertOneArray, 1 == field.m_numArrays);
    KALASSERT(cSite, msg::cAssertCurves, pEnumFieldDef);
    if (!pEnumFieldDef)
        return hr;
    const auto& [pEnumDefaults, pEnumValues, enumLimit] = *pEnumFieldDef;
    const bool isUsable = pEnumDefaults && pEnumValues && enumLimit > 0;
    KALASSERT(cSite, msg::cAssertCurveTables, isUsable);
    if (!isUsable)
        return hr;

    std::uint32_t index = enumLimit;
    if (defaultsOnly || values.ReadUINT(eKeySetStatic, key, &index) != result::cOk ||
        index >= enumLimit)
        index = DefaultOf(field, row).number;
    *MemberAt<std::uint32_t>(pRecord, field.selectionMember) = index;
    return hr = codec::DecodeNumericArray(pEnumValues[index], Value<std::uint32_t>(),
                                          MemberAt<float>(pRecord, field.arrayMember));
}

HRESULT FieldLoad::LoadFlagArray() {
    auto* pCount = Value<std::uint32_t>();
    auto* pFlags = MemberAt<std::uint32_t>(pRecord, field.arrayMember);
    if (!defaultsOnly &&
        values.ReadFlagArray(eKeySetStatic, key, pCount, pFlags) == result::cOk)
        return result::cOk;
    return codec::DecodeFlagArray(DefaultOf(field, row).pwText, pCount, pFlags);
}

HRESULT WriteFloatArrays(const KORA4FieldDef& field, KORA4PropKeyStoreAccess& values,
                         PropertyKey key, const void* pRecord) {
    const auto* pCount = MemberAt<std::uint32_t>(pRecord, field.valueMember);
    const auto* pElements = MemberAt<float>(pRecord, field.arrayMember);
    HRESULT hr = result::cOk;
    for (std::uint16_t i = 0; i < field.m_numArrays && result::Succeeded(hr);
         ++i, ++key.pid, ++pCount, pElements += cMaxArrayElements)
        hr = values.WriteNumericArray(eKeySetStatic, key, field.scale, CountToWrite(*pCount),
                                      pElements);
    return hr;
}

}  // namespace

HRESULT LoadField(const KORA4FieldDef& field, KORA4KeyAccess& access, const PropertyKey& key,
                  std::uint32_t defaultsIndex, bool defaultsOnly, void* pRecord) {
    return FieldLoad{field,
                     KORA4PropKeyStoreAccess(access),
                     {key.fmtid, field.pid},
                     defaultsIndex,
                     defaultsOnly,
                     pRecord}
        .Run();
}

HRESULT WriteField(const KORA4FieldDef& field, KORA4KeyAccess& access, const PropertyKey& key,
                   const void* pRecord) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4FieldDef::Write");
    KORA4PropKeyStoreAccess values(access);
    const PropertyKey fieldKey{key.fmtid, field.pid};
    // A scalar, a count, or the index of a selected array.
    const auto* const pStored =
        MemberAt<std::uint32_t>(pRecord, static_cast<std::uint16_t>(field.StoredMember()));
    switch (field.typeCode) {
        case cUnsignedField:
        case cSelectedArrayField:
            hr = values.WriteUINT(eKeySetStatic, fieldKey, *pStored);
            break;
        case cBooleanField:
            hr = values.WriteBool(eKeySetStatic, fieldKey, *pStored != 0);
            break;
        case cFloatField:
            hr = values.WriteFloat(eKeySetStatic, fieldKey,
                                   *MemberAt<float>(pRecord, field.valueMember));
            break;
        case cFloatArraysField:
            hr = WriteFloatArrays(field, values, fieldKey, pRecord);
            break;
        case cFlagArrayField:
            hr = values.WriteFlagArray(eKeySetStatic, fieldKey, CountToWrite(*pStored),
                                       MemberAt<std::uint32_t>(pRecord, field.arrayMember));
            break;
        default:
            hr = UnknownType(cSite);
            break;
    }
    return hr;
}

}  // namespace kora4
