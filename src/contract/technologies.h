// SPDX-License-Identifier: MIT
// The two families of technologies of the store: preset technologies, whose settings
// belong to a profile, and global technologies, whose settings do not.
#pragma once

#include <cstdint>
#include <iterator>

namespace kora4 {

// Technologies with a record per profile. The numbers index every table; stored keys use the
// offsets below.
enum KORA4PresetTechnology : std::uint32_t {
    ePresetNoTech = 0,
    eVolumeTech,
    eEnhancementTech,
    eDynamicEQTech,
    eStandardEQTech,
    eHeadphoneTech,
    eVirtualSurroundTech,
    eNGSurroundTech,
    eNumberKORA4PresetTechnologies
};

// Technologies with one record for the whole machine.
enum KORA4GlobalTechnology : std::uint32_t {
    eGlobalNoTech = 0,
    ePeakLimiterTech,
    eAudioRegulatorTech,
    eAudioOptimizerTech,
    eNumberKORA4GlobalTechnologies
};

// All technologies of each family, in the order of their numbers.
inline constexpr KORA4PresetTechnology cPresetTechnologies[] = {
    eVolumeTech,    eEnhancementTech,     eDynamicEQTech, eStandardEQTech,
    eHeadphoneTech, eVirtualSurroundTech, eNGSurroundTech};
inline constexpr KORA4GlobalTechnology cGlobalTechnologies[] = {
    ePeakLimiterTech, eAudioRegulatorTech, eAudioOptimizerTech};
static_assert(std::size(cPresetTechnologies) == eNumberKORA4PresetTechnologies - 1);
static_assert(std::size(cGlobalTechnologies) == eNumberKORA4GlobalTechnologies - 1);

// Whether the number is that of a technology; the number of no technology is not.
constexpr bool IsValidTechnology(KORA4PresetTechnology technology) {
    return technology > ePresetNoTech && technology < eNumberKORA4PresetTechnologies;
}
constexpr bool IsValidTechnology(KORA4GlobalTechnology technology) {
    return technology > eGlobalNoTech && technology < eNumberKORA4GlobalTechnologies;
}

// The offset that each technology puts into the low eight bits of its property-key GUIDs. The
// offsets do not follow the enumerations, because they are older.
inline constexpr std::uint32_t KORA4_PKEY_VOLUME_GUID_OFFSET = 0;
inline constexpr std::uint32_t KORA4_PKEY_STD_EQ_GUID_OFFSET = 1;
inline constexpr std::uint32_t KORA4_PKEY_DYN_EQ_GUID_OFFSET = 2;
inline constexpr std::uint32_t KORA4_PKEY_ENHANCEMENT_GUID_OFFSET = 3;
inline constexpr std::uint32_t KORA4_PKEY_HEADPHONE_GUID_OFFSET = 4;
inline constexpr std::uint32_t KORA4_PKEY_VIRTUAL_SURROUND_GUID_OFFSET = 5;
inline constexpr std::uint32_t KORA4_PKEY_NEXT_GEN_SURROUND_GUID_OFFSET = 6;

inline constexpr std::uint32_t KORA4_PKEY_AUDIO_OPTIMIZER_GUID_OFFSET = 0;
inline constexpr std::uint32_t KORA4_PKEY_AUDIO_REGULATOR_GUID_OFFSET = 1;
inline constexpr std::uint32_t KORA4_PKEY_PEAK_LIMITER_GUID_OFFSET = 2;

inline constexpr std::uint32_t sm_presetTechGUIDOffset[] = {
    0,  // ePresetNoTech
    KORA4_PKEY_VOLUME_GUID_OFFSET,
    KORA4_PKEY_ENHANCEMENT_GUID_OFFSET,
    KORA4_PKEY_DYN_EQ_GUID_OFFSET,
    KORA4_PKEY_STD_EQ_GUID_OFFSET,
    KORA4_PKEY_HEADPHONE_GUID_OFFSET,
    KORA4_PKEY_VIRTUAL_SURROUND_GUID_OFFSET,
    KORA4_PKEY_NEXT_GEN_SURROUND_GUID_OFFSET,
};
inline constexpr std::uint32_t sm_globalTechGUIDOffset[] = {
    0,  // eGlobalNoTech
    KORA4_PKEY_PEAK_LIMITER_GUID_OFFSET,
    KORA4_PKEY_AUDIO_REGULATOR_GUID_OFFSET,
    KORA4_PKEY_AUDIO_OPTIMIZER_GUID_OFFSET,
};
static_assert(sizeof sm_presetTechGUIDOffset / sizeof *sm_presetTechGUIDOffset ==
              eNumberKORA4PresetTechnologies);
static_assert(sizeof sm_globalTechGUIDOffset / sizeof *sm_globalTechGUIDOffset ==
              eNumberKORA4GlobalTechnologies);

}  // namespace kora4
