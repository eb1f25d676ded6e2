// SPDX-License-Identifier: MIT
// The limits of what clients may set.
#pragma once

#include <cstdint>

#include "contract/patch_limits.h"
#include "contract/result.h"
#include "store/clients/api_records.h"

namespace kora4 {

// E_INVALIDARG for a value outside its limits, for a `size` in bytes that is too small for the
// technology's value, and for a number that is not a technology. A trace line says what was
// accepted or refused. The graphic EQ passes: its values are limited instead.
HRESULT ValidatePatchField(ApiTechnology technology, std::uint32_t size, const void* pField);

// Limits the gains of the first m_bands bands, 40 at most. Always S_OK.
HRESULT ValidateAndLimitGraphicEQ(ApiGraphicEQ* pGraphicEQ);

}  // namespace kora4
