// SPDX-License-Identifier: MIT
// What kora4_bench measures, each a group of rows.
#ifndef KORA4_BENCH_MEASURE_H
#define KORA4_BENCH_MEASURE_H

#include "windows/client.h"
#include "windows/place.h"
#include "windows/results.h"

namespace kora4::bench {

// Must be the first: loads the library, and sees what that takes.
Library MeasureMemory(Results& results);

void MeasureMethods(const Library& library, Place& place, const Extent& extent,
                    Results& results);
void MeasureLife(const Library& library, Place& twin, const Extent& extent, Results& results);
void MeasureTelling(const Library& library, Place& place, Place& twin, const Extent& extent,
                    Results& results);
void MeasureWatching(const Library& library, Place& place, const Extent& extent,
                     Results& results);
void MeasureProcesses(const Extent& extent, Results& results);
void MeasureIniFile(const Library& library, const Extent& extent, Results& results);
void MeasureIdling(const Library& library, const Extent& extent, Results& results);

// The part of another process in MeasureProcesses.
int RunClientProcess(const wchar_t* name);

}  // namespace kora4::bench

#endif  // KORA4_BENCH_MEASURE_H
