// SPDX-License-Identifier: MIT
// The public records and the store's have the same layout. It is checked here, and only here
// is one used as the other.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "kora4api_constants.h"
#include "store/clients/api_records.h"
#include "veltokora4api.h"

namespace kora4 {

#define KORA4_SAME_TECHNOLOGY(name)                     \
    static_assert(static_cast<std::uint32_t>(::name) == \
                  static_cast<std::uint32_t>(ApiTechnology::name))
KORA4_SAME_TECHNOLOGY(eVolumeLeveler);
KORA4_SAME_TECHNOLOGY(eGraphicEQ);
KORA4_SAME_TECHNOLOGY(eIntelligentEQ);
KORA4_SAME_TECHNOLOGY(eDialogEnhancer);
KORA4_SAME_TECHNOLOGY(eVirtualizerHP);
KORA4_SAME_TECHNOLOGY(eVirtualizerSpkr);
KORA4_SAME_TECHNOLOGY(eNumberKORA4APITechnologies);
#undef KORA4_SAME_TECHNOLOGY

static_assert(sizeof(::KORA4APITechnology) == sizeof(ApiTechnology));

static_assert(::eNumberKORA4APITechnologies == KORA4_TECHNOLOGIES);

static_assert(sizeof(KORA4PatchValueUnion) == sizeof(ApiPatchValue));
static_assert(alignof(KORA4PatchValueUnion) == alignof(ApiPatchValue));
static_assert(offsetof(KORA4PatchValueUnion, m_technology) ==
              offsetof(ApiPatchValue, m_technology));
static_assert(offsetof(KORA4PatchValueUnion, m_values) == offsetof(ApiPatchValue, m_values));
static_assert(sizeof(KORA4PatchValueUnion::m_values) == sizeof(ApiPatchValue::m_values));

static_assert(sizeof(GraphicEQData) == sizeof(ApiGraphicEQ));
static_assert(alignof(GraphicEQData) == alignof(ApiGraphicEQ));
static_assert(offsetof(GraphicEQData, m_bands) == offsetof(ApiGraphicEQ, m_bands));
static_assert(offsetof(GraphicEQData, m_freq) == offsetof(ApiGraphicEQ, m_freq));
static_assert(offsetof(GraphicEQData, m_gain) == offsetof(ApiGraphicEQ, m_gain));
static_assert(sizeof(GraphicEQData::m_gain) == sizeof(ApiGraphicEQ::m_gain));
static_assert(sizeof(GraphicEQData::m_freq) == sizeof(float) * KORA4_GRAPHIC_EQ_MAX_BANDS);

static_assert(sizeof(wchar_t) == sizeof(char16_t));

// Views of the same memory under the other name. Nothing is copied, and ownership stays.
inline KORA4PatchValueUnion* ToPublic(ApiPatchValue* pValue) {
    return reinterpret_cast<KORA4PatchValueUnion*>(pValue);
}
inline GraphicEQData* ToPublic(ApiGraphicEQ* pGraphicEQ) {
    return reinterpret_cast<GraphicEQData*>(pGraphicEQ);
}
constexpr ::KORA4APITechnology ToPublic(ApiTechnology technology) {
    return static_cast<::KORA4APITechnology>(technology);
}
constexpr ApiTechnology FromPublic(::KORA4APITechnology technology) {
    return static_cast<ApiTechnology>(technology);
}
inline const char16_t* FromPublic(LPCWSTR pwText) {
    return reinterpret_cast<const char16_t*>(pwText);
}
inline LPWSTR ToPublic(char16_t* pwText) {
    return reinterpret_cast<LPWSTR>(pwText);
}

}  // namespace kora4
