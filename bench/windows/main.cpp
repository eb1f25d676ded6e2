// SPDX-License-Identifier: MIT
// kora4_bench --out FILE [--smoke]: measures the library beside the program, and writes the
// figures as JSON. scripts/bench.sh pins it, and puts the figures into words.
#include <cstdio>
#include <string>

#include "windows/measure.h"

namespace {

using namespace kora4::bench;

constexpr char cUsage[] = "use: kora4_bench --out FILE [--smoke]";

void Say(const char* what) {
    std::fprintf(stderr, "   %s\n", what);
    std::fflush(stderr);
}

void MeasureAll(const Extent& extent, Results& results) {
    Place place = Place::Library();
    Place twin = Place::Twin();
    place.Fill();
    Say("memory");
    const Library library = MeasureMemory(results);
    Say("methods");
    MeasureMethods(library, place, extent, results);
    Say("kora4.hpp");
    MeasureWrapper(library, place, extent, results);
    Say("objects that come and go");
    MeasureLife(library, twin, extent, results);
    Say("foreign writes");
    MeasureTelling(library, place, twin, extent, results);
    Say("many watching objects");
    MeasureWatching(library, place, extent, results);
    Say("many processes");
    place.Fill();
    MeasureProcesses(extent, results);
    Say("an INI file");
    MeasureIniFile(library, extent, results);
    Say("idle");
    MeasureIdling(library, extent, results);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::wstring out;
    Extent extent;
    for (int i = 1; i < count; ++i) {
        const std::wstring argument = arguments[i];
        const bool hasNext = i + 1 < count;
        if (argument == L"--client" && hasNext)
            return RunClientProcess(arguments[i + 1]);
        if (argument == L"--smoke")
            extent.smoke = true;
        else if (argument == L"--out" && hasNext)
            out = arguments[++i];
        else
            Fail(cUsage);
    }
    if (out.empty())
        Fail(cUsage);
    Results results;
    MeasureAll(extent, results);
    results.WriteTo(out);
    return 0;
}
