// SPDX-License-Identifier: MIT
// The field table of every technology, and the place of each record in the patch set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "contract/defaults.h"
#include "contract/field_def.h"
#include "contract/field_ids.h"
#include "contract/patch_records.h"
#include "contract/property_key.h"
#include "contract/technologies.h"
#include "kora4api_constants.h"

namespace kora4::fields {

// Preset technologies have a default for each of the preset profiles, global ones have
// one. The builders take the tables by reference so that a wrong one does not compile.
template <std::size_t Rows>
inline constexpr bool cIsDefaultsTable = Rows == 1 || Rows == cDefaultedProfileBound;

// A position as the tables hold it; every record is shorter than 64 KB.
constexpr std::uint16_t Position(std::size_t offset) {
    return static_cast<std::uint16_t>(offset);
}

// The builders of one row each: `pid` is the property id, the other numbers are offsets of
// members in the record.
template <std::size_t Rows>
constexpr KORA4FieldDef Unsigned(std::uint16_t pid, std::size_t value,
                                 const std::uint32_t (&rows)[Rows]) {
    static_assert(cIsDefaultsTable<Rows>);
    return {rows, cUnsignedField, Position(value), 0, 0, pid, 0, 0};
}

template <std::size_t Rows>
constexpr KORA4FieldDef Boolean(std::uint16_t pid, std::size_t value,
                                const std::uint32_t (&rows)[Rows]) {
    static_assert(cIsDefaultsTable<Rows>);
    return {rows, cBooleanField, Position(value), 0, 0, pid, 0, 0};
}

template <std::size_t Rows>
constexpr KORA4FieldDef Float(std::uint16_t pid, std::size_t value, const float (&rows)[Rows]) {
    static_assert(cIsDefaultsTable<Rows>);
    return {rows, cFloatField, Position(value), 0, 0, pid, 0, 0};
}

template <std::size_t Rows>
constexpr KORA4FieldDef FloatArrays(std::uint16_t pid, std::size_t count, std::size_t elements,
                                    std::uint16_t numArrays, std::uint16_t scale,
                                    const defaults::TextList (&rows)[Rows]) {
    static_assert(cIsDefaultsTable<Rows>);
    return {rows, cFloatArraysField, Position(count), Position(elements), 0, pid, numArrays,
            scale};
}

constexpr KORA4FieldDef SelectedArray(std::uint16_t pid, std::size_t count,
                                      std::size_t elements, std::size_t selection,
                                      const EnumFieldDef& enumeration) {
    return {&enumeration,
            cSelectedArrayField,
            Position(count),
            Position(elements),
            Position(selection),
            pid,
            1,
            0};
}

template <std::size_t Rows>
constexpr KORA4FieldDef FlagArray(std::uint16_t pid, std::size_t count, std::size_t elements,
                                  const defaults::TextList (&rows)[Rows]) {
    static_assert(cIsDefaultsTable<Rows>);
    return {rows, cFlagArrayField, Position(count), Position(elements), 0, pid, 1, 0};
}

// Text scales: frequencies are stored in whole hertz, levels as 1/256 dB.
inline constexpr std::uint16_t cHertz = 1;
inline constexpr std::uint16_t cQ8 = KORA4_GRAPHIC_EQ_STEPS_PER_DB;

inline constexpr KORA4FieldDef cVolume[] = {
    Unsigned(pkey::cVolumeAmountPid, offsetof(VolumePatch, amount), defaults::cVolumeAmount),
    Boolean(4, offsetof(VolumePatch, switch4), defaults::cVolumeSwitch4),
    Boolean(5, offsetof(VolumePatch, switch5), defaults::cVolumeSwitch5),
    Float(6, offsetof(VolumePatch, level6), defaults::cVolumeLevel6),
    Float(7, offsetof(VolumePatch, level7), defaults::cVolumeLevel7),
    Float(8, offsetof(VolumePatch, level8), defaults::cVolumeLevel8),
};

inline constexpr KORA4FieldDef cEnhancement[] = {
    Float(pkey::cEnhancementAmountPid, offsetof(EnhancementPatch, amount),
          defaults::cEnhancementAmount),
    Float(4, offsetof(EnhancementPatch, value4), defaults::cEnhancementValue4),
};

inline constexpr KORA4FieldDef cDynamicEQ[] = {
    Float(pkey::cDynamicEQLevelPid, offsetof(DynamicEQPatch, level), defaults::cDynamicEQLevel),
    FloatArrays(pkey::cDynamicEQFreqPid, offsetof(DynamicEQPatch, freqCount),
                offsetof(DynamicEQPatch, freq), 1, cHertz, defaults::cDynamicEQFreq),
    SelectedArray(pkey::cDynamicEQCurvePid, offsetof(DynamicEQPatch, curveCount),
                  offsetof(DynamicEQPatch, curve), offsetof(DynamicEQPatch, curveIndex),
                  defaults::cDynamicEQCurve),
};

inline constexpr KORA4FieldDef cStandardEQ[] = {
    FloatArrays(pkey::cStandardEQFreqPid, offsetof(StandardEQPatch, freqCount),
                offsetof(StandardEQPatch, stdEqFreq), 1, cHertz, defaults::cStandardEQFreq),
    FloatArrays(pkey::cStandardEQGainPid, offsetof(StandardEQPatch, gainCount),
                offsetof(StandardEQPatch, stdEqGain), 1, cQ8, defaults::cStandardEQGain),
};

inline constexpr KORA4FieldDef cHeadphone[] = {
    Float(pkey::cHeadphoneSurroundBoostPid, offsetof(HeadphonePatch, surroundBoost),
          defaults::cHeadphoneSurroundBoost),
    Float(4, offsetof(HeadphonePatch, value4), defaults::cHeadphoneValue4),
};

inline constexpr KORA4FieldDef cVirtualSurround[] = {
    Float(pkey::cVirtualSurroundBoostPid, offsetof(VirtualSurroundPatch, surroundBoost),
          defaults::cVirtualSurroundBoost),
    Float(4, offsetof(VirtualSurroundPatch, value4), defaults::cVirtualSurroundValue4),
};

inline constexpr KORA4FieldDef cPeakLimiter[] = {
    Float(3, offsetof(PeakLimiterPatch, value3), defaults::cPeakLimiterValue3),
};

inline constexpr KORA4FieldDef cAudioRegulator[] = {
    Float(3, offsetof(AudioRegulatorPatch, value3), defaults::cAudioRegulatorValue3),
    Float(4, offsetof(AudioRegulatorPatch, value4), defaults::cAudioRegulatorValue4),
    FloatArrays(pkey::cRegulatorFreqPid, offsetof(AudioRegulatorPatch, freqCount),
                offsetof(AudioRegulatorPatch, freq), 1, cHertz, defaults::cAudioRegulatorFreq),
    FloatArrays(pkey::cRegulatorThresholdPid, offsetof(AudioRegulatorPatch, thresholdCount),
                offsetof(AudioRegulatorPatch, threshold), eRegulatorThresholds, cQ8,
                defaults::cAudioRegulatorThreshold),
    FlagArray(pkey::cRegulatorIsolatePid, offsetof(AudioRegulatorPatch, isolateCount),
              offsetof(AudioRegulatorPatch, isolate), defaults::cAudioRegulatorIsolate),
};

inline constexpr KORA4FieldDef cAudioOptimizer[] = {
    Unsigned(3, offsetof(AudioOptimizerPatch, value3), defaults::cAudioOptimizerValue3),
    FloatArrays(pkey::cOptimizerFreqPid, offsetof(AudioOptimizerPatch, freqCount),
                offsetof(AudioOptimizerPatch, freq), 1, cHertz, defaults::cAudioOptimizerFreq),
    FloatArrays(pkey::cOptimizerGainPid, offsetof(AudioOptimizerPatch, gainCount),
                offsetof(AudioOptimizerPatch, gain), eAudioOptimizerMaxChannels, cQ8,
                defaults::cAudioOptimizerGain),
};

// A technology's record inside PatchRecords, its size, and its fields.
struct RecordDef {
    std::uint32_t position;
    std::uint32_t size;  // 0: no record
    const KORA4FieldDef* pFields;
    std::uint32_t numberFields;
};

// The entry for a technology whose record has fields.
template <std::size_t Count>
constexpr RecordDef Record(std::size_t position, std::size_t size,
                           const KORA4FieldDef (&table)[Count]) {
    return {static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(size), table,
            Count};
}

// The entry of no technology.
inline constexpr RecordDef cNoRecord{0, 0, nullptr, 0};

inline constexpr RecordDef cPresetRecords[] = {
    cNoRecord,
    Record(offsetof(PatchRecords, volume), sizeof(VolumePatch), cVolume),
    Record(offsetof(PatchRecords, enhancement), sizeof(EnhancementPatch), cEnhancement),
    Record(offsetof(PatchRecords, dynamicEQ), sizeof(DynamicEQPatch), cDynamicEQ),
    Record(offsetof(PatchRecords, standardEQ), sizeof(StandardEQPatch), cStandardEQ),
    Record(offsetof(PatchRecords, headphone), sizeof(HeadphonePatch), cHeadphone),
    Record(offsetof(PatchRecords, virtualSurround), sizeof(VirtualSurroundPatch),
           cVirtualSurround),
    {offsetof(PatchRecords, ngSurround), sizeof(NGSurroundPatch), nullptr, 0},
};

inline constexpr RecordDef cGlobalRecords[] = {
    cNoRecord,
    Record(offsetof(PatchRecords, peakLimiter), sizeof(PeakLimiterPatch), cPeakLimiter),
    Record(offsetof(PatchRecords, audioRegulator), sizeof(AudioRegulatorPatch),
           cAudioRegulator),
    Record(offsetof(PatchRecords, audioOptimizer), sizeof(AudioOptimizerPatch),
           cAudioOptimizer),
};

static_assert(std::size(cPresetRecords) == eNumberKORA4PresetTechnologies);
static_assert(std::size(cGlobalRecords) == eNumberKORA4GlobalTechnologies);

// Every member lies inside its record, behind the version word, and the arrays of a
// field stand next to each other, as do their counts.
constexpr bool IsWithinRecord(const RecordDef& record, const KORA4FieldDef& field) {
    const std::uint32_t arrays = field.m_numArrays;
    const std::uint32_t words = arrays == 0 ? 1 : arrays;
    const std::uint32_t firstWord = sizeof(std::uint32_t);
    if (field.valueMember < firstWord || field.valueMember + 4 * words > record.size)
        return false;
    if (arrays != 0 && (field.arrayMember < firstWord ||
                        field.arrayMember + 4 * cMaxArrayElements * arrays > record.size))
        return false;
    return field.typeCode != cSelectedArrayField ||
           (field.selectionMember >= firstWord &&
            field.selectionMember + firstWord <= record.size);
}

// Property ids are unique, 0 belongs to the switch, and several arrays take consecutive ones;
// tables are in ascending order.
template <std::size_t Count>
constexpr bool IsConsistent(const RecordDef (&records)[Count]) {
    for (const RecordDef& record : records) {
        std::uint32_t nextPid = pkey::cSwitchPid + 1;
        for (std::uint32_t i = 0; i < record.numberFields; ++i) {
            const KORA4FieldDef& field = record.pFields[i];
            if (field.pid < nextPid || !IsWithinRecord(record, field))
                return false;
            const bool isScaled = field.scale == cHertz || field.scale == cQ8;
            if ((field.typeCode == cFloatArraysField) != isScaled)
                return false;
            nextPid = field.pid + (field.m_numArrays == 0 ? 1u : field.m_numArrays);
        }
    }
    return true;
}

static_assert(IsConsistent(cPresetRecords));
static_assert(IsConsistent(cGlobalRecords));

}  // namespace kora4::fields
