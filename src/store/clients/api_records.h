// SPDX-License-Identifier: MIT
// The records and technology numbers that cross the API, as the store sees them. The API
// object asserts at compile time that they are the public ones, bit for bit.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/patch_records.h"

namespace kora4 {

// Technologies as clients number them. The order is that of the public enumeration.
enum class ApiTechnology : std::uint32_t {
    eVolumeLeveler = 0,
    eGraphicEQ,
    eIntelligentEQ,
    eDialogEnhancer,
    eVirtualizerHP,
    eVirtualizerSpkr,
    eNumberKORA4APITechnologies
};

// Whether a client's number is that of a technology.
constexpr bool IsValidASLTechnology(std::uint32_t technology) {
    return technology < static_cast<std::uint32_t>(ApiTechnology::eNumberKORA4APITechnologies);
}

// One slider-type value.
struct ApiPatchValue {
    ApiTechnology m_technology;
    union {
        std::uint32_t m_volumeSlider;
        float m_enhancementSlider;
        float m_headphoneVirtualizerSlider;
        float m_speakerVirtualizerSlider;
        std::uint32_t m_dynamicEQPatchIndex;
    } m_values;
};
static_assert(sizeof(ApiPatchValue) == 8);
static_assert(offsetof(ApiPatchValue, m_values) == 4);

// The graphic EQ: m_bands entries of each array are in use.
struct ApiGraphicEQ {
    std::uint32_t m_bands;
    float m_freq[cMaxArrayElements];
    float m_gain[cMaxArrayElements];
};
static_assert(sizeof(ApiGraphicEQ) == 324);
static_assert(offsetof(ApiGraphicEQ, m_gain) == 164);

}  // namespace kora4
