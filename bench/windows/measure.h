// SPDX-License-Identifier: MIT
// What kora4_bench measures, each a group of rows.
#ifndef KORA4_BENCH_MEASURE_H
#define KORA4_BENCH_MEASURE_H

#include <functional>

#include "windows/client.h"
#include "windows/place.h"
#include "windows/results.h"

namespace kora4::bench {

// Must be the first: loads the library, and sees what that takes.
Library MeasureMemory(Results& results);

void MeasureMethods(const Library& library, Place& place, const Extent& extent,
                    Results& results);
void MeasureWrapper(const Library& library, Place& place, const Extent& extent,
                    Results& results);
void MeasureLife(const Library& library, Place& twin, const Extent& extent, Results& results);
void MeasureTelling(const Library& library, Place& place, Place& twin, const Extent& extent,
                    Results& results);
void MeasureWatching(const Library& library, Place& place, const Extent& extent,
                     Results& results);
void MeasureProcesses(const Extent& extent, Results& results);
void MeasureIniFile(const Library& library, const Extent& extent, Results& results);
void MeasureIdling(const Library& library, const Extent& extent, Results& results);

// Samples of a call and of what it is compared with, until there are enough or enough time is
// spent. Each function gives the ticks of `calls` calls.
void SampleInTurns(const Extent& extent, std::uint32_t calls,
                   const std::function<std::uint64_t()>& call,
                   const std::function<std::uint64_t()>& bare, Samples& callSamples,
                   Samples& bareSamples);

// The part of another process in MeasureProcesses.
int RunClientProcess(const wchar_t* name);

}  // namespace kora4::bench

#endif  // KORA4_BENCH_MEASURE_H
