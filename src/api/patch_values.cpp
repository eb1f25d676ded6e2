// SPDX-License-Identifier: MIT
// The slider-type values and the graphic EQ of the active profile.
#include <cstring>

#include "api/kora4asl.h"
#include "api/patch_limits.h"
#include "api/public_records.h"
#include "contract/messages/log_texts.h"

namespace kora4 {
namespace {

void TraceValue(const ApiPatchValue& value) {
    const char* const name = text::OfTechnology(static_cast<std::uint32_t>(value.m_technology));
    if (value.m_technology == ApiTechnology::eVolumeLeveler ||
        value.m_technology == ApiTechnology::eIntelligentEQ)
        KALTRACE(msg::cGetWholeValue, name, value.m_values.m_volumeSlider);
    else
        KALTRACE(msg::cGetFloatValue, name, value.m_values.m_enhancementSlider);
}

}  // namespace

// All four methods work on a copy of the record: the caller's is written only with a value
// that was read, and its memory is not touched while the named mutex is held.

STDMETHODIMP CKORA4ASL::GetSimplePatchValue(KORA4PatchValueUnion* pGetPatchValue) {
    static constexpr Method cMethod{msg::cGetWholeValue.function};
    return RunMethod(cMethod, m_initialized, pGetPatchValue != nullptr, [&] {
        ApiPatchValue value{FromPublic(pGetPatchValue->m_technology), {}};
        std::uint32_t size = 0;
        void* pField = nullptr;
        HRESULT hr = GetASLPatchUnionField(value.m_technology, &value, &size, &pField);
        if (SUCCEEDED(hr))
            hr = m_uiKeysClient.GetPatchValue(value.m_technology, size, pField);
        if (SUCCEEDED(hr)) {
            std::memcpy(&pGetPatchValue->m_values, pField, size);
            TraceValue(value);
        }
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetSimplePatchValue(KORA4PatchValueUnion* pSetPatchValue) {
    static constexpr Method cMethod{"CKORA4ASL::SetSimplePatchValue"};
    return RunMethod(cMethod, m_initialized, pSetPatchValue != nullptr, [&] {
        ApiPatchValue value{};
        std::memcpy(&value, pSetPatchValue, sizeof value);
        std::uint32_t size = 0;
        void* pField = nullptr;
        HRESULT hr = GetASLPatchUnionField(value.m_technology, &value, &size, &pField);
        if (SUCCEEDED(hr))
            hr = ValidatePatchField(value.m_technology, size, pField);
        if (SUCCEEDED(hr))
            hr = m_uiKeysClient.SetPatchValue(value.m_technology, size, pField);
        return hr;
    });
}

STDMETHODIMP CKORA4ASL::SetGraphicEQData(GraphicEQData* pGraphicEQData) {
    static constexpr Method cMethod{"CKORA4ASL::SetGraphicEQData"};
    return RunMethod(cMethod, m_initialized, pGraphicEQData != nullptr, [&] {
        ApiGraphicEQ graphicEQ;
        std::memcpy(&graphicEQ, pGraphicEQData, sizeof graphicEQ);
        ValidateAndLimitGraphicEQ(&graphicEQ);
        return m_uiKeysClient.SetPatchValue(ApiTechnology::eGraphicEQ, sizeof graphicEQ,
                                            &graphicEQ);
    });
}

STDMETHODIMP CKORA4ASL::GetGraphicEQData(GraphicEQData* pGraphicEQData) {
    static constexpr Method cMethod{"CKORA4ASL::GetGraphicEQData"};
    return RunMethod(cMethod, m_initialized, pGraphicEQData != nullptr, [&] {
        ApiGraphicEQ graphicEQ;
        const HRESULT hr = m_uiKeysClient.GetPatchValue(ApiTechnology::eGraphicEQ,
                                                        sizeof graphicEQ, &graphicEQ);
        if (SUCCEEDED(hr))
            std::memcpy(pGraphicEQData, &graphicEQ, sizeof graphicEQ);
        return hr;
    });
}

}  // namespace kora4
