// SPDX-License-Identifier: MIT
// The limits of what clients may set.
#ifndef KORA4_API_PATCH_LIMITS_H
#define KORA4_API_PATCH_LIMITS_H

#include <cstdint>

#include "contract/result.h"
#include "kora4api_constants.h"
#include "store/clients/api_records.h"

namespace kora4 {

// The volume leveler's amount is a whole number from 0 to this.
inline constexpr std::uint32_t cVeltoVolumeLevelerAmountMax = KORA4_VOLUME_LEVELER_MAX;
inline constexpr float cDialogEnhancerAmountMin = KORA4_DIALOG_ENHANCER_MIN;
inline constexpr float cDialogEnhancerAmountMax = KORA4_DIALOG_ENHANCER_MAX;
inline constexpr float cSurroundCompBoostMin = KORA4_VIRTUALIZER_MIN;
inline constexpr float cSurroundCompBoostMax = KORA4_VIRTUALIZER_MAX;
inline constexpr float cGraphicEQGainMin = KORA4_GRAPHIC_EQ_MIN_GAIN;  // dB
inline constexpr float cGraphicEQGainMax = KORA4_GRAPHIC_EQ_MAX_GAIN;  // dB

// E_INVALIDARG for a value outside its limits, for a `size` in bytes that is too small for the
// technology's value, and for a number that is not a technology. A trace line says what was
// accepted or refused. The graphic EQ passes: its values are limited instead.
HRESULT ValidatePatchField(ApiTechnology technology, std::uint32_t size, const void* pField);

// Limits the gains of the first m_bands bands, 40 at most. Always S_OK.
HRESULT ValidateAndLimitGraphicEQ(ApiGraphicEQ* pGraphicEQ);

}  // namespace kora4

#endif  // KORA4_API_PATCH_LIMITS_H
