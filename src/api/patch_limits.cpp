// SPDX-License-Identifier: MIT
// The checks of values that clients set, each with the lines that tell what was accepted or
// refused.
#include "api/patch_limits.h"

#include <algorithm>
#include <cstring>

#include "api/log_texts.h"
#include "api/method_frame.h"
#include "store/clients/api_conversion.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

constexpr trace::Site cFieldSite{cApiTag, "CKORA4ASL::ValidatePatchField"};

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
        KALTRACE(trace::eMessages, cFieldSite,
                 "**** Error: eVolumeLeveler value of %d > cVeltoVolumeLevelerAmountMax (%d). "
                 "Returning E_INVALIDARG\n",
                 static_cast<int>(value), static_cast<int>(cVeltoVolumeLevelerAmountMax));
        return E_INVALIDARG;
    }
    KALTRACE(trace::eMessages, cFieldSite, "eVolumeLeveler set to %d\n",
             static_cast<int>(value));
    return S_OK;
}

HRESULT ValidateIntelligentEQ(std::uint32_t value) {
    if (value >= eNumberIEQPatches) {
        // The limit has always been printed as 0; log readers know it so.
        KALTRACE(trace::eMessages, cFieldSite,
                 "**** Error: eIntelligentEQ value of %d >= eNumberIEQPatches (%d). "
                 "Returning E_INVALIDARG\n",
                 static_cast<int>(value), 0);
        return E_INVALIDARG;
    }
    KALTRACE(trace::eMessages, cFieldSite, "Intelligent EQ patch set to %s  (%d)\n",
             text::cIntelligentEQNames[value], static_cast<int>(value));
    return S_OK;
}

// What is not a number is below the lowest value.
HRESULT ValidateFloat(ApiTechnology technology, float value, const FloatLimits& limits) {
    const char* const name = text::OfTechnology(static_cast<std::uint32_t>(technology));
    if (value > limits.highest) {
        KALTRACE(trace::eMessages, cFieldSite,
                 "**** Error: %s value of %f > %s (%f). Returning E_INVALIDARG\n", name,
                 static_cast<double>(value), limits.highestName,
                 static_cast<double>(limits.highest));
        return E_INVALIDARG;
    }
    if (!(value >= limits.lowest)) {
        KALTRACE(trace::eMessages, cFieldSite,
                 "**** Error: %s value of %f < %s (%f). Returning E_INVALIDARG\n", name,
                 static_cast<double>(value), limits.lowestName,
                 static_cast<double>(limits.lowest));
        return E_INVALIDARG;
    }
    KALTRACE(trace::eMessages, cFieldSite, "%s set to %f\n", name, static_cast<double>(value));
    return S_OK;
}

void LimitGain(std::uint32_t band, float* pGain) {
    static constexpr trace::Site cSite{cApiTag, "CKORA4ASL::ValidateAndLimitGraphicEQ"};
    const float gain = *pGain;
    if (gain >= cGraphicEQGainMin && gain <= cGraphicEQGainMax)
        return;
    *pGain = gain > cGraphicEQGainMax ? cGraphicEQGainMax : cGraphicEQGainMin;
    KALTRACE(trace::eMessages, cSite, "Graphic EQ gain band %u limited to %f (was %f).\n",
             static_cast<unsigned>(band), static_cast<double>(*pGain),
             static_cast<double>(gain));
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
    KALASSERT_TEXT(cFieldSite, false, "!\"Invalid ASL patch field.\"");
    return E_INVALIDARG;
}

HRESULT ValidateAndLimitGraphicEQ(ApiGraphicEQ* pGraphicEQ) {
    const std::uint32_t bands = std::min(pGraphicEQ->m_bands, cMaxArrayElements);
    for (std::uint32_t band = 0; band < bands; ++band)
        LimitGain(band, &pGraphicEQ->m_gain[band]);
    return S_OK;
}

}  // namespace kora4
