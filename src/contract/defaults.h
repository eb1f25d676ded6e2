// SPDX-License-Identifier: MIT
// The built-in values that replace everything the store does not hold. Rows are indexed by
// defaults index: Movie, Music, Games.
#pragma once

#include <cstdint>
#include <iterator>

#include "contract/patch_records.h"
#include "contract/profiles.h"
#include "contract/technologies.h"
#include "kora4api_constants.h"

namespace kora4 {

// The choices of a field with a selected array: one text per index, and the index of each
// defaults row.
struct EnumFieldDef {
    const std::uint16_t* pEnumDefaults;
    const char16_t* const* pEnumValues;
    std::uint16_t enumLimit;
};

namespace defaults {

// One value per defaults row. The Movie amount of the volume leveler differs from the other two
// on purpose: readers of the store rely on it.
inline constexpr std::uint32_t cVolumeAmount[] = {KORA4_VOLUME_LEVELER_MOVIE_DEFAULT, 0, 0};
inline constexpr std::uint32_t cVolumeSwitch4[] = {1, 1, 1};
inline constexpr std::uint32_t cVolumeSwitch5[] = {0, 0, 0};
inline constexpr float cVolumeLevel6[] = {-20.0f, -20.0f, -20.0f};
inline constexpr float cVolumeLevel7[] = {-20.0f, -20.0f, -20.0f};
inline constexpr float cVolumeLevel8[] = {0.0f, 0.0f, 0.0f};

inline constexpr float cEnhancementAmount[] = {0.33f, 0.33f, 0.33f};
inline constexpr float cEnhancementValue4[] = {0.0f, 0.0f, 0.0f};

inline constexpr float cDynamicEQLevel[] = {0.6f, 0.6f, 0.6f};

inline constexpr float cHeadphoneSurroundBoost[] = {6.0f, 3.0f, 0.0f};
inline constexpr float cHeadphoneValue4[] = {0.0f, 0.0f, 0.0f};

inline constexpr float cVirtualSurroundBoost[] = {KORA4_SPEAKER_VIRTUALIZER_DEFAULT,
                                                  KORA4_SPEAKER_VIRTUALIZER_DEFAULT,
                                                  KORA4_SPEAKER_VIRTUALIZER_DEFAULT};
inline constexpr float cVirtualSurroundValue4[] = {6.0f, 0.0f, 0.0f};

// Global technologies have a single row.
inline constexpr float cPeakLimiterValue3[] = {9.0f};
inline constexpr float cAudioRegulatorValue3[] = {0.0f};
inline constexpr float cAudioRegulatorValue4[] = {1.0f};
inline constexpr std::uint32_t cAudioOptimizerValue3[] = {2};

// Lists of texts, one text per array of the field, in the encodings of the store.
inline constexpr const char16_t* DynEQFreqDefault[] = {
    u"0001,0014,0041,0088,00DF,014C,01D3,027A,0349,044A,0588,0714,08FE,0B5D,0E4F,11F6,"
    u"167C,1C1A,2310,2BB2,3667,43AE"};

// The tab is part of the text; the reader takes any white space as a separator.
inline constexpr const char16_t* StdEQFreqDefault[] = {
    u"0001,000A,0020,0040,007D,00FA\t01F4,03E8,07D0,0FA0,1F40,3E80"};
inline constexpr const char16_t* StdEQGainDefault[] = {
    u"0100,000A,0000,0000,0000,0000,0000,0000,0000,0000,0000,0000"};

inline constexpr const char16_t* AudioRegFreqDefault[] = {
    u"0001, 0014, 002F, 008D, 00EA, 0148, 01D5, 0290, 034C, 0407, 0521, 0698, 08CA, 0BB8, "
    u"0EA6, 1250, 16B5, 1BD5, 2328, 2BF2, 3633, 4CE8"};
inline constexpr const char16_t* AudioRegThresholdDefaults[] = {
    u"0100,0014,F400,F400,F400,F400,F400,F400,F400,F400,F400,F400,F400,F400,F400,F400,"
    u"F400,F400,F400,F400,F400,F400",
    u"0100,0014,0000,0000,0000,0000,0000,0000,0000,0000,0000,0000,0000,0000,0000,0000,"
    u"0000,0000,0000,0000,0000,0000"};
inline constexpr const char16_t* AudioRegIsolateDefault[] = {
    u"14,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0"};

inline constexpr const char16_t* AudioOptimizerFreqDefault[] = {AudioRegFreqDefault[0]};
inline constexpr const char16_t* cFlatGain = AudioRegThresholdDefaults[1];
inline constexpr const char16_t* AudioOptimizerGainDefaults[] = {
    cFlatGain, cFlatGain, cFlatGain, cFlatGain, cFlatGain, cFlatGain, cFlatGain, cFlatGain};

static_assert(std::size(DynEQFreqDefault) == 1 && std::size(StdEQFreqDefault) == 1 &&
              std::size(StdEQGainDefault) == 1);
static_assert(std::size(AudioRegFreqDefault) == 1);
static_assert(std::size(AudioRegThresholdDefaults) == eRegulatorThresholds);
static_assert(std::size(AudioRegIsolateDefault) == 1);
static_assert(std::size(AudioOptimizerFreqDefault) == 1);
static_assert(std::size(AudioOptimizerGainDefaults) == eAudioOptimizerMaxChannels);

// Array fields: the list of texts of each defaults row.
using TextList = const char16_t* const*;
inline constexpr TextList cDynamicEQFreq[] = {DynEQFreqDefault, DynEQFreqDefault,
                                              DynEQFreqDefault};
inline constexpr TextList cStandardEQFreq[] = {StdEQFreqDefault, StdEQFreqDefault,
                                               StdEQFreqDefault};
inline constexpr TextList cStandardEQGain[] = {StdEQGainDefault, StdEQGainDefault,
                                               StdEQGainDefault};
inline constexpr TextList cAudioRegulatorFreq[] = {AudioRegFreqDefault};
inline constexpr TextList cAudioRegulatorThreshold[] = {AudioRegThresholdDefaults};
inline constexpr TextList cAudioRegulatorIsolate[] = {AudioRegIsolateDefault};
inline constexpr TextList cAudioOptimizerFreq[] = {AudioOptimizerFreqDefault};
inline constexpr TextList cAudioOptimizerGain[] = {AudioOptimizerGainDefaults};

// The built-in curves of the dynamic EQ.
inline constexpr const char16_t* cDynamicEQCurves[] = {
    u"0100,0014,095E,08C0,0B94,0DA1,0BD7,0C33,0CAE,0C66,0D78,0E66,0E63,0ED7,0EB5,0ED1,"
    u"0D91,0A35,070F,0330,FE71,F274",
    u"0100,0014,0757,0854,0BBA,0AFA,08CC,0951,0AEB,0B8C,0B8C,0C7A,0EC2,0F21,0E45,0D57,"
    u"0B63,0845,06D9,043D,FE55,F100",
    u"0100,0014,E5D2,F908,04B3,0747,070F,09F8,0A51,0507,03D4,04F3,061C,0794,0402,0461,"
    u"02C0,FB8B,FDF6,F9BE,F11A,E652",
    u"0100,0014,03AE,0719,0C80,0CFA,09F8,08C0,0791,0833,08C5,0938,0A40,0B78,0A4A,0A23,"
    u"0AAE,09E6,0894,0563,033D,FC4D",
    u"0100,0014,0428,05F0,0ABA,0A2E,0A7D,0C97,0BD1,0F26,0C45,0DD1,0C07,0B99,0A80,08AB,"
    u"065E,0391,022B,008C,FC8B,F152",
    u"0100,0014,097A,0A14,0DF5,0D05,0AF5,0B1C,0A33,0945,0A61,0982,0A8C,0AF5,09CF,0759,"
    u"0387,005E,FD9D,F9D0,F2A9,E769"};
inline constexpr std::uint16_t cDynamicEQCurveIndex[] = {0, 1, 0};
inline constexpr EnumFieldDef cDynamicEQCurve{cDynamicEQCurveIndex, cDynamicEQCurves,
                                              std::size(cDynamicEQCurves)};
static_assert(std::size(cDynamicEQCurves) == eNumberIEQPatches);

// Non-zero defaults of general settings.
inline constexpr std::uint32_t cSamplingPeriod = KORA4_SAMPLING_PERIOD_DEFAULT;  // milliseconds
inline constexpr std::uint32_t cStaticNumber57 = 200;

// Built-in switches of the preset technologies, one per preset profile.
inline constexpr std::uint32_t VeltoVolumeOnElseOffDefaults[] = {1, 1, 1};
inline constexpr std::uint32_t DialogEnhancementOnElseOffDefaults[] = {1, 0, 0};
inline constexpr std::uint32_t DynamicEQOnElseOffDefaults[] = {0, 1, 0};
inline constexpr std::uint32_t StdEQOnElseOffDefaults[] = {1, 1, 1};
inline constexpr std::uint32_t HeadphoneOnElseOffDefaults[] = {1, 1, 1};
inline constexpr std::uint32_t VirtualSurroundOnElseOffDefaults[] = {1, 0, 1};
inline constexpr std::uint32_t cNGSurroundOnElseOff[] = {1, 1, 1};

static_assert(std::size(VeltoVolumeOnElseOffDefaults) == cDefaultedProfileBound);
static_assert(std::size(DialogEnhancementOnElseOffDefaults) == cDefaultedProfileBound);
static_assert(std::size(DynamicEQOnElseOffDefaults) == cDefaultedProfileBound);
static_assert(std::size(StdEQOnElseOffDefaults) == cDefaultedProfileBound);
static_assert(std::size(HeadphoneOnElseOffDefaults) == cDefaultedProfileBound);
static_assert(std::size(VirtualSurroundOnElseOffDefaults) == cDefaultedProfileBound);
static_assert(std::size(cNGSurroundOnElseOff) == cDefaultedProfileBound);

// The switches by technology, then by preset profile; null for the number of no technology.
inline constexpr const std::uint32_t* sm_presetOnElseOffDefaults[] = {
    nullptr,  // ePresetNoTech
    VeltoVolumeOnElseOffDefaults,
    DialogEnhancementOnElseOffDefaults,
    DynamicEQOnElseOffDefaults,
    StdEQOnElseOffDefaults,
    HeadphoneOnElseOffDefaults,
    VirtualSurroundOnElseOffDefaults,
    cNGSurroundOnElseOff,
};
static_assert(std::size(sm_presetOnElseOffDefaults) == eNumberKORA4PresetTechnologies);

// A technology whose switch is missing is on, unless the row of the profile says otherwise.
constexpr bool IsOn(KORA4PresetTechnology technology, std::uint32_t profile) {
    const std::uint32_t row = WithoutDemo(profile);
    if (!IsValidTechnology(technology) || !IsPresetProfile(row))
        return true;
    return sm_presetOnElseOffDefaults[technology][row] != 0;
}

// Whether a global technology is on when its switch is missing: always. There is a function for
// it because the trace has a line for it.
constexpr bool IsOn(KORA4GlobalTechnology) {
    return true;
}

}  // namespace defaults

}  // namespace kora4
