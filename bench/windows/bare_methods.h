// SPDX-License-Identifier: MIT
// What each method needs of the platform, each value read once. A write reads each item that
// it replaces just before, and what the caller does not set.
#ifndef KORA4_BENCH_BARE_METHODS_H
#define KORA4_BENCH_BARE_METHODS_H

#include <cstdint>

#include "windows/bare.h"

namespace kora4::bench::bare {

// One number or text under the mutex.
void GetSetting(Bare& bare, const Value& value);
void SetSetting(Bare& bare, const Value& value, std::uint32_t number);
// The same where the old number matters too.
void ReplaceSetting(Bare& bare, const Value& value, std::uint32_t number);
void ToggleSetting(Bare& bare, const Value& value);

void SwitchProfile(Bare& bare, std::uint32_t profile);
void Revert(Bare& bare);
void EnterDemo(Bare& bare, std::uint32_t demoProfile);
void LeaveDemo(Bare& bare);

void GetTable(Bare& bare);
void Rename(Bare& bare, std::uint32_t profile);
void Create(Bare& bare, std::uint32_t profile);
void Delete(Bare& bare, std::uint32_t profile);

void GetLevels(Bare& bare);
void GetCommand(Bare& bare);

void GetSwitch(Bare& bare, KORA4PresetTechnology technology);
void SetSwitch(Bare& bare, KORA4PresetTechnology technology, std::uint32_t flag);
void GetPatch(Bare& bare, KORA4PresetTechnology technology);
// `own`: the property id of the field that the caller sets.
void SetSlider(Bare& bare, KORA4PresetTechnology technology, std::uint32_t own,
               std::uint32_t number);
void SetEqualizer(Bare& bare, std::uint32_t number);

// The first load, the trace word not among it.
void LoadAll(Bare& bare);
// What has changed? `changed` is the technology whose trigger word moved; none: nothing.
void Analyse(Bare& bare, KORA4PresetTechnology changed);

}  // namespace kora4::bench::bare

#endif  // KORA4_BENCH_BARE_METHODS_H
