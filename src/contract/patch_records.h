// SPDX-License-Identifier: MIT
// The in-memory record of every technology: a structure version word, then the fields.
// The order of the members is part of the store's contract with the field tables.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kora4api_constants.h"

namespace kora4 {

// The capacity of every array in a record. The count next to an array says how many elements
// are in use.
inline constexpr std::uint32_t cMaxArrayElements = KORA4_GRAPHIC_EQ_MAX_BANDS;
// Threshold arrays of the audio regulator.
inline constexpr std::uint32_t eRegulatorThresholds = 2;
// Gain arrays of the audio optimizer, one per channel.
inline constexpr std::uint32_t eAudioOptimizerMaxChannels = 8;
// Built-in curves of the dynamic EQ, which clients know as the intelligent EQ.
inline constexpr std::uint32_t eNumberIEQPatches = KORA4_INTELLIGENT_EQ_CURVES;

// What clients know as the volume leveler.
struct VolumePatch {
    std::uint32_t structVersion;
    std::uint32_t amount;  // the volume leveler's slider
    std::uint32_t switch4;
    std::uint32_t switch5;
    float level6;
    float level7;
    float level8;
};

// What clients know as the dialog enhancer.
struct EnhancementPatch {
    std::uint32_t structVersion;
    float amount;  // the dialog enhancer's slider
    float value4;
};

// What clients know as the intelligent EQ. The curve is built in; the store has its index.
struct DynamicEQPatch {
    std::uint32_t structVersion;
    std::uint32_t freqCount;
    std::uint32_t curveCount;
    float level;
    float freq[cMaxArrayElements];   // Hz
    float curve[cMaxArrayElements];  // dB
    std::uint32_t curveIndex;        // the intelligent EQ's patch index
};

// What clients know as the graphic EQ: a gain for each frequency.
struct StandardEQPatch {
    std::uint32_t structVersion;
    std::uint32_t freqCount;
    std::uint32_t gainCount;
    float stdEqFreq[cMaxArrayElements];  // Hz
    float stdEqGain[cMaxArrayElements];  // dB
};

// What clients know as the virtualizer for headphones.
struct HeadphonePatch {
    std::uint32_t structVersion;
    float surroundBoost;  // the headphone virtualizer's slider
    float value4;
};

// What clients know as the virtualizer for speakers.
struct VirtualSurroundPatch {
    std::uint32_t structVersion;
    float surroundBoost;  // the speaker virtualizer's slider
    float value4;
};

// Next-generation surround: a switch and no values, and no method of the API reaches it.
struct NGSurroundPatch {
    std::uint32_t structVersion;
};

// The global technologies follow. No method of the API reaches them; the engine reads them
// from the store.
struct PeakLimiterPatch {
    std::uint32_t structVersion;
    float value3;
};

// Two threshold curves, and a flag for each band.
struct AudioRegulatorPatch {
    std::uint32_t structVersion;
    std::uint32_t freqCount;
    std::uint32_t thresholdCount[eRegulatorThresholds];
    std::uint32_t isolateCount;
    float value3;
    float value4;
    float freq[cMaxArrayElements];                             // Hz
    float threshold[eRegulatorThresholds][cMaxArrayElements];  // dB
    std::uint32_t isolate[cMaxArrayElements];                  // 0 or 1
};

// A gain curve for each channel.
struct AudioOptimizerPatch {
    std::uint32_t structVersion;
    std::uint32_t value3;
    std::uint32_t freqCount;
    std::uint32_t gainCount[eAudioOptimizerMaxChannels];
    float freq[cMaxArrayElements];                              // Hz
    float gain[eAudioOptimizerMaxChannels][cMaxArrayElements];  // dB
};

// All records, preset technologies first, each family in technology order.
struct PatchRecords {
    VolumePatch volume;
    EnhancementPatch enhancement;
    DynamicEQPatch dynamicEQ;
    StandardEQPatch standardEQ;
    HeadphonePatch headphone;
    VirtualSurroundPatch virtualSurround;
    NGSurroundPatch ngSurround;
    PeakLimiterPatch peakLimiter;
    AudioRegulatorPatch audioRegulator;
    AudioOptimizerPatch audioOptimizer;
};

}  // namespace kora4
