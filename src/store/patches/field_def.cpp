// SPDX-License-Identifier: MIT
// Reads and writes one field of a record according to its row in the field table.
#include "store/patches/field_def.h"

#include <algorithm>

#include "contract/codec/array_text.h"
#include "contract/defaults.h"
#include "contract/patch_records.h"
#include "store/access/prop_key_store_access.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

constexpr char cTag[] = "KORA4PropKeyFields";

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

}  // namespace

struct KORA4FieldDef::Source {
    KORA4PropKeyStoreAccess& values;
    PropertyKey key;
    std::uint32_t defaultsIndex;
    bool defaultsOnly;

    // The scalar of the row when the store is not to be asked or does not answer S_OK.
    template <typename T, typename Read>
    T Scalar(const void* pRows, Read read) const {
        T value{};
        if (!defaultsOnly && read(&value) == result::cOk)
            return value;
        return static_cast<const T*>(pRows)[defaultsIndex];
    }

    const char16_t* const* Texts(const void* pRows) const {
        return static_cast<const char16_t* const* const*>(pRows)[defaultsIndex];
    }
};

HRESULT KORA4FieldDef::Load(KORA4KeyAccess& access, const PropertyKey& key,
                            std::uint32_t defaultsIndex, bool defaultsOnly,
                            void* pRecord) const {
    static constexpr trace::Site cSite{cTag, "KORA4FieldDef::Load"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    KORA4PropKeyStoreAccess values(access);
    const Source source{values, PropertyKey{key.fmtid, pid}, defaultsIndex, defaultsOnly};
    switch (typeCode) {
        case cUnsignedField:
            *MemberAt<std::uint32_t>(pRecord, valueMember) =
                source.Scalar<std::uint32_t>(pDefaults, [&](std::uint32_t* pValue) {
                    return values.ReadUINT(eKeySetStatic, source.key, pValue);
                });
            break;
        case cBooleanField:
            *MemberAt<std::uint32_t>(pRecord, valueMember) =
                source.Scalar<std::uint32_t>(pDefaults, [&](std::uint32_t* pValue) {
                    bool flag = false;
                    const HRESULT hrRead = values.ReadBool(eKeySetStatic, source.key, &flag);
                    *pValue = flag ? 1 : 0;
                    return hrRead;
                });
            break;
        case cFloatField:
            *MemberAt<float>(pRecord, valueMember) =
                source.Scalar<float>(pDefaults, [&](float* pValue) {
                    return values.ReadFloat(eKeySetStatic, source.key, pValue);
                });
            break;
        case cFloatArraysField:
            hr = LoadFloatArrays(source, pRecord);
            break;
        case cSelectedArrayField:
            hr = LoadSelectedFloatArray(source, pRecord);
            break;
        case cFlagArrayField:
            hr = LoadFlagArray(source, pRecord);
            break;
        default:
            KALASSERT_TEXT(cSite, false, "!\"Invalid field type\"");
            hr = result::cFail;
            break;
    }
    return hr;
}

HRESULT KORA4FieldDef::LoadFloatArrays(const Source& source, void* pRecord) const {
    static constexpr trace::Site cSite{cTag, "KORA4FieldDef::LoadFloatArrays"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    const char16_t* const* ppDefaults = source.Texts(pDefaults);
    auto* pCount = MemberAt<std::uint32_t>(pRecord, valueMember);
    auto* pElements = MemberAt<float>(pRecord, arrayMember);
    PropertyKey key = source.key;
    for (std::uint16_t i = 0; i < m_numArrays;
         ++i, ++key.pid, ++pCount, pElements += cMaxArrayElements) {
        *pCount = 0;
        if (!source.defaultsOnly && source.values.ReadNumericArray(eKeySetStatic, key, pCount,
                                                                   pElements) == result::cOk)
            continue;
        const char16_t* pwDefaultString = ppDefaults ? ppDefaults[i] : nullptr;
        KALASSERT_TEXT(cSite, pwDefaultString, "pwDefaultString != NULL");
        if (pwDefaultString)
            hr = codec::DecodeNumericArray(pwDefaultString, pCount, pElements);
    }
    return hr;
}

HRESULT KORA4FieldDef::LoadSelectedFloatArray(const Source& source, void* pRecord) const {
    static constexpr trace::Site cSite{cTag, "KORA4FieldDef::LoadSelectedFloatArray"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    const auto* pEnumFieldDef = static_cast<const EnumFieldDef*>(pDefaults);
    KALASSERT(cSite, 1 == m_numArrays);
    KALASSERT_TEXT(cSite, pEnumFieldDef, "pEnumFieldDef != NULL");
    if (!pEnumFieldDef)
        return hr = result::cFail;
    const auto& [pEnumDefaults, pEnumValues, enumLimit] = *pEnumFieldDef;
    const bool isUsable = pEnumDefaults && pEnumValues && enumLimit > 0;
    KALASSERT_TEXT(cSite, isUsable,
                   "(pEnumDefaults != NULL) && (pEnumValues != NULL) && (enumLimit > 0)");
    if (!isUsable)
        return hr = result::cFail;

    std::uint32_t index = enumLimit;
    if (source.defaultsOnly ||
        source.values.ReadUINT(eKeySetStatic, source.key, &index) != result::cOk ||
        index >= enumLimit)
        index = pEnumDefaults[source.defaultsIndex];
    *MemberAt<std::uint32_t>(pRecord, selectionMember) = index;
    return hr = codec::DecodeNumericArray(pEnumValues[index],
                                          MemberAt<std::uint32_t>(pRecord, valueMember),
                                          MemberAt<float>(pRecord, arrayMember));
}

HRESULT KORA4FieldDef::LoadFlagArray(const Source& source, void* pRecord) const {
    auto* pCount = MemberAt<std::uint32_t>(pRecord, valueMember);
    auto* pFlags = MemberAt<std::uint32_t>(pRecord, arrayMember);
    if (!source.defaultsOnly &&
        source.values.ReadFlagArray(eKeySetStatic, source.key, pCount, pFlags) == result::cOk)
        return result::cOk;
    return codec::DecodeFlagArray(source.Texts(pDefaults)[0], pCount, pFlags);
}

HRESULT KORA4FieldDef::Write(KORA4KeyAccess& access, const PropertyKey& key,
                             const void* pRecord) const {
    static constexpr trace::Site cSite{cTag, "KORA4FieldDef::Write"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    KORA4PropKeyStoreAccess values(access);
    const PropertyKey fieldKey{key.fmtid, pid};
    switch (typeCode) {
        case cUnsignedField:
            hr = values.WriteUINT(eKeySetStatic, fieldKey,
                                  *MemberAt<std::uint32_t>(pRecord, valueMember));
            break;
        case cBooleanField:
            hr = values.WriteBool(eKeySetStatic, fieldKey,
                                  *MemberAt<std::uint32_t>(pRecord, valueMember) != 0);
            break;
        case cFloatField:
            hr = values.WriteFloat(eKeySetStatic, fieldKey,
                                   *MemberAt<float>(pRecord, valueMember));
            break;
        case cFloatArraysField:
            hr = WriteFloatArrays(values, fieldKey, pRecord);
            break;
        case cSelectedArrayField:
            hr = values.WriteUINT(eKeySetStatic, fieldKey,
                                  *MemberAt<std::uint32_t>(pRecord, selectionMember));
            break;
        case cFlagArrayField:
            hr = values.WriteFlagArray(
                eKeySetStatic, fieldKey,
                CountToWrite(*MemberAt<std::uint32_t>(pRecord, valueMember)),
                MemberAt<std::uint32_t>(pRecord, arrayMember));
            break;
        default:
            KALASSERT_TEXT(cSite, false, "!\"Invalid field type\"");
            hr = result::cFail;
            break;
    }
    return hr;
}

HRESULT KORA4FieldDef::WriteFloatArrays(KORA4PropKeyStoreAccess& values, PropertyKey key,
                                        const void* pRecord) const {
    const auto* pCount = MemberAt<std::uint32_t>(pRecord, valueMember);
    const auto* pElements = MemberAt<float>(pRecord, arrayMember);
    HRESULT hr = result::cOk;
    for (std::uint16_t i = 0; i < m_numArrays && result::Succeeded(hr);
         ++i, ++key.pid, ++pCount, pElements += cMaxArrayElements)
        hr = values.WriteNumericArray(eKeySetStatic, key, scale, CountToWrite(*pCount),
                                      pElements);
    return hr;
}

}  // namespace kora4
