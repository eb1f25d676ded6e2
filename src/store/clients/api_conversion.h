// SPDX-License-Identifier: MIT
// Between the two vocabularies of technologies: the API's and the store's. One table
// holds the mapping. No mutex, no store.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/patch_records.h"
#include "contract/result.h"
#include "contract/technologies.h"
#include "store/clients/api_records.h"
#include "store/patches/managed_patch_set.h"

namespace kora4 {

// ePresetNoTech when the number is not an API technology.
KORA4PresetTechnology PresetTechOf(ApiTechnology technology);

// eNumberKORA4APITechnologies when there is none: for eNGSurroundTech silently, for anything
// that is not a preset technology with an assertion.
ApiTechnology APITechOf(KORA4PresetTechnology technology);

// Bytes that the API value of a technology takes; 0 for a number that is not a technology.
std::uint32_t ASLPatchSizeOf(ApiTechnology technology);

// Size and place of a slider-type value inside its record. For the graphic EQ, which has
// operations of its own, and for a number that is not a technology: E_INVALIDARG, both outputs
// cleared.
HRESULT GetASLPatchUnionField(ApiTechnology technology, ApiPatchValue* pValue,
                              std::uint32_t* pSize, void** ppField);

// Where the working records hold the value; empty for a number that is not a technology.
RecordPart WorkingPartOf(ApiTechnology technology);

// Copy one technology's value out of and into the working records. E_INVALIDARG when `size` is
// less than ASLPatchSizeOf. A number that is not a technology fails an assertion, copies
// nothing and gives S_OK.
HRESULT ToASLPatch(const PatchRecords& records, ApiTechnology technology, std::uint32_t size,
                   void* pValue);
HRESULT FromASLPatch(PatchRecords& records, ApiTechnology technology, std::uint32_t size,
                     const void* pValue);

}  // namespace kora4
