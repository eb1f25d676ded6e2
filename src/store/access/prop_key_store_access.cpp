// SPDX-License-Identifier: MIT
// Converts stored numbers and texts to typed values and back, with the trace lines of each
// read and write.
#include "store/access/prop_key_store_access.h"

#include <algorithm>

#include "contract/codec/float_text.h"
#include "store/access/task_memory.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

template <typename Element>
using Decoder = HRESULT (*)(const char16_t*, std::uint32_t*, Element*);

// An array that could not be read leaves nothing of an earlier one behind.
template <typename Element>
HRESULT ReadArray(KORA4KeyAccess& access, KORA4KeySet keySet, const PropertyKey& key,
                  Decoder<Element> decode, std::uint32_t* pCount, Element* pElements) {
    if (!pCount || !pElements)
        return result::cInvalidArg;
    TaskPtr<char16_t> text;
    const HRESULT hr = access.ReadText(keySet, key, text.Put());
    if (hr == result::cOk)
        return decode(text.Get(), pCount, pElements);
    *pCount = 0;
    std::fill_n(pElements, codec::cArrayCapacity, Element{});
    return hr;
}

// Decided once per text: the pieces outnumber everything else that is traced.
codec::ArrayFieldWriter FieldWriter() {
    return trace::IsEnabled(trace::Flags(), trace::eStoreExitResult)
               ? &KORA4PropKeyStoreAccess::WriteArrayNumericField
               : nullptr;
}

}  // namespace

HRESULT KORA4PropKeyStoreAccess::ReadUINT(KORA4KeySet keySet, const PropertyKey& key,
                                          std::uint32_t* pValue) {
    KALTRACE_RETURN("KORA4PropKeyStoreAccess::ReadUINT",
                    m_access.ReadUINT(keySet, key, pValue));
}

HRESULT KORA4PropKeyStoreAccess::ReadBool(KORA4KeySet keySet, const PropertyKey& key,
                                          bool* pValue) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4PropKeyStoreAccess::ReadBool");
    std::uint32_t number = 0;
    hr = m_access.ReadUINT(keySet, key, &number);
    if (hr == result::cOk)
        *pValue = number != 0;
    return hr;
}

HRESULT KORA4PropKeyStoreAccess::ReadFloat(KORA4KeySet keySet, const PropertyKey& key,
                                           float* pValue) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4PropKeyStoreAccess::ReadFloat");
    TaskPtr<char16_t> text;
    hr = m_access.ReadText(keySet, key, text.Put());
    if (hr == result::cOk && !codec::ParseFloat(text.Get(), pValue))
        hr = result::cFail;
    return hr;
}

HRESULT KORA4PropKeyStoreAccess::ReadNumericArray(KORA4KeySet keySet, const PropertyKey& key,
                                                  std::uint32_t* pCount, float* pElements) {
    KALTRACE_RETURN(
        "KORA4PropKeyStoreAccess::ReadNumericArray",
        ReadArray(m_access, keySet, key, &codec::DecodeNumericArray, pCount, pElements));
}

HRESULT KORA4PropKeyStoreAccess::ReadFlagArray(KORA4KeySet keySet, const PropertyKey& key,
                                               std::uint32_t* pCount, std::uint32_t* pFlags) {
    KALTRACE_RETURN("KORA4PropKeyStoreAccess::ReadFlagArray",
                    ReadArray(m_access, keySet, key, &codec::DecodeFlagArray, pCount, pFlags));
}

std::uint32_t KORA4PropKeyStoreAccess::UINTOr(KORA4KeySet keySet, const PropertyKey& key,
                                              std::uint32_t fallback) {
    std::uint32_t value = 0;
    return ReadUINT(keySet, key, &value) == result::cOk ? value : fallback;
}

bool KORA4PropKeyStoreAccess::BoolOr(KORA4KeySet keySet, const PropertyKey& key,
                                     bool fallback) {
    bool value = false;
    return ReadBool(keySet, key, &value) == result::cOk ? value : fallback;
}

HRESULT KORA4PropKeyStoreAccess::WriteUINT(KORA4KeySet keySet, const PropertyKey& key,
                                           std::uint64_t value) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4PropKeyStoreAccess::WriteUINT");
    const auto dwValue = static_cast<std::uint32_t>(value);
    KALASSERT(cSite, msg::cAssertSwitchValue, dwValue == value);
    return hr = m_access.WriteUINT(keySet, key, dwValue);
}

HRESULT KORA4PropKeyStoreAccess::WriteBool(KORA4KeySet keySet, const PropertyKey& key,
                                           bool value) {
    KALTRACE_RETURN("KORA4PropKeyStoreAccess::WriteBool",
                    m_access.WriteUINT(keySet, key, value ? 1 : 0));
}

HRESULT KORA4PropKeyStoreAccess::WriteFloat(KORA4KeySet keySet, const PropertyKey& key,
                                            float value) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4PropKeyStoreAccess::WriteFloat");
    char16_t text[codec::cFloatTextChars];
    codec::FormatFloat(value, text);
    return hr = m_access.WriteText(keySet, key, text);
}

HRESULT KORA4PropKeyStoreAccess::WriteNumericArray(KORA4KeySet keySet, const PropertyKey& key,
                                                   std::uint32_t scale, std::uint32_t count,
                                                   const float* pElements) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4PropKeyStoreAccess::WriteNumericArray");
    char16_t text[codec::cArrayTextChars];
    hr = codec::EncodeNumericArray(scale, count, pElements, text, FieldWriter());
    if (hr == result::cOk)
        hr = m_access.WriteText(keySet, key, text);
    return hr;
}

HRESULT KORA4PropKeyStoreAccess::WriteFlagArray(KORA4KeySet keySet, const PropertyKey& key,
                                                std::uint32_t count,
                                                const std::uint32_t* pFlags) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4PropKeyStoreAccess::WriteFlagArray");
    char16_t text[codec::cArrayTextChars];
    hr = codec::EncodeFlagArray(count, pFlags, text, FieldWriter());
    if (hr == result::cOk)
        hr = m_access.WriteText(keySet, key, text);
    return hr;
}

HRESULT KORA4PropKeyStoreAccess::WriteArrayNumericField(char16_t** ppCursor,
                                                        std::size_t* pCharsAvail,
                                                        codec::ArrayField field,
                                                        std::uint32_t value) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4PropKeyStoreAccess::WriteArrayNumericField");
    const char16_t* const pPiece = *ppCursor;
    const std::size_t charsAvail = *pCharsAvail;
    hr = codec::PutArrayField(ppCursor, pCharsAvail, field, value);
    const auto written = static_cast<std::size_t>(*ppCursor - pPiece);
    KALASSERT(cSite, msg::cAssertArrayFits, written <= charsAvail);
    return hr;
}

}  // namespace kora4
