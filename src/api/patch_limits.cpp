// SPDX-License-Identifier: MIT
// The checks of values that clients set, each with the lines that tell what was accepted or
// refused.
#include "api/patch_limits.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

#include "contract/messages/log_texts.h"
#include "contract/messages/trace_messages_api.h"
#include "store/clients/api_conversion.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

struct FloatLimits {
    float lowest;
    float highest;
    const char* lowestName;
    const char* highestName;
};

constexpr FloatLimits cDialogEnhancerLimits = {
    cDialogEnhancerAmountMin, cDialogEnhancerAmountMax, "cDialogEnhancerAmountMin",
    "cDialogEnhancerAmountMax"};
constexpr FloatLimits cVirtualizerLimits = {cSurroundCompBoostMin, cSurroundCompBoostMax,
                                            "cSurroundCompBoostMin", "cSurroundCompBoostMax"};

template <typename Value>
Value ReadField(const void* pField) {
    Value value;
    std::memcpy(&value, pField, sizeof value);
    return value;
}

HRESULT ValidateVolumeLeveler(std::uint32_t value) {
    if (value > cVeltoVolumeLevelerAmountMax) {
        KALTRACE(msg::cVolumeTooLarge, value, cVeltoVolumeLevelerAmountMax);
        return E_INVALIDARG;
    }
    KALTRACE(msg::cVolumeAccepted, value);
    return S_OK;
}

HRESULT ValidateIntelligentEQ(std::uint32_t value) {
    if (value >= eNumberIEQPatches) {
        // The limit has always been printed as 0; log readers know it so.
        KALTRACE(msg::cNoSuchCurve, value, 0);
        return E_INVALIDARG;
    }
    KALTRACE(msg::cCurveAccepted, text::cIntelligentEQNames[value], value);
    return S_OK;
}

// What is not a number is below the lowest value.
HRESULT ValidateFloat(ApiTechnology technology, float value, const FloatLimits& limits) {
    const char* const name = text::OfTechnology(static_cast<std::uint32_t>(technology));
    if (value > limits.highest) {
        KALTRACE(msg::cFloatTooLarge, name, value, limits.highestName, limits.highest);
        return E_INVALIDARG;
    }
    if (!(value >= limits.lowest)) {
        KALTRACE(msg::cFloatTooSmall, name, value, limits.lowestName, limits.lowest);
        return E_INVALIDARG;
    }
    KALTRACE(msg::cFloatAccepted, name, value);
    return S_OK;
}

void LimitGain(std::uint32_t band, float* pGain) {
    const float gain = *pGain;
    if (gain >= cGraphicEQGainMin && gain <= cGraphicEQGainMax)
        return;
    *pGain = gain > cGraphicEQGainMax ? cGraphicEQGainMax : cGraphicEQGainMin;
    KALTRACE(msg::cGainLimited, band, *pGain, gain);
}

}  // namespace

HRESULT ValidatePatchField(ApiTechnology technology, std::uint32_t size, const void* pField) {
    if (size < ASLPatchSizeOf(technology))
        return E_INVALIDARG;
    switch (technology) {
        case ApiTechnology::eVolumeLeveler:
            return ValidateVolumeLeveler(ReadField<std::uint32_t>(pField));
        case ApiTechnology::eGraphicEQ:
            return S_OK;
        case ApiTechnology::eIntelligentEQ:
            return ValidateIntelligentEQ(ReadField<std::uint32_t>(pField));
        case ApiTechnology::eDialogEnhancer:
            return ValidateFloat(technology, ReadField<float>(pField), cDialogEnhancerLimits);
        case ApiTechnology::eVirtualizerHP:
        case ApiTechnology::eVirtualizerSpkr:
            return ValidateFloat(technology, ReadField<float>(pField), cVirtualizerLimits);
        case ApiTechnology::eNumberKORA4APITechnologies:
            break;
    }
    KALASSERT(trace::cSiteOf<msg::cVolumeTooLarge>, msg::cAssertWritable, false);
    return E_INVALIDARG;
}

HRESULT ValidateAndLimitGraphicEQ(ApiGraphicEQ* pGraphicEQ) {
    const std::uint32_t bands = std::min(pGraphicEQ->m_bands, cMaxArrayElements);
    for (std::uint32_t band = 0; band < bands; ++band)
        LimitGain(band, &pGraphicEQ->m_gain[band]);
    return S_OK;
}

}  // namespace kora4
