// SPDX-License-Identifier: MIT
// Memory, an INI file in place of the store, and idle objects.
#include <windows.h>

#include <psapi.h>

#include <string>
#include <vector>

#include "windows/import_hook.h"
#include "windows/measure.h"

namespace kora4::bench {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::size_t cManyObjects = 50;

// What Windows calls private bytes stands in this member too; Wine 8 fills only this one.
double PrivateKilobytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.PagefileUsage) / 1024;
}

double FileKilobytes(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return static_cast<double>(data.nFileSizeLow) / 1024;
}

// Of a thread that does nothing but wait, as an object's monitor does.
double ThreadKilobytes() {
    const UniqueHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto wait = [](void* pEvent) -> DWORD {
        return WaitForSingleObject(pEvent, INFINITE);
    };
    std::vector<UniqueHandle> threads;
    const double before = PrivateKilobytes();
    while (threads.size() < cManyObjects)
        threads.emplace_back(CreateThread(nullptr, 0, wait, stop.Get(), 0, nullptr));
    Sleep(200);
    const double each = (PrivateKilobytes() - before) / cManyObjects;
    SetEvent(stop.Get());
    for (const UniqueHandle& thread : threads)
        WaitForSingleObject(thread.Get(), INFINITE);
    return each;
}

}  // namespace

Library MeasureMemory(Results& results) {
    const char* const group = "size and private memory";
    const double before = PrivateKilobytes();
    Library library;
    const double loaded = PrivateKilobytes();
    std::vector<ComPtr<IVeltoKORA4API>> objects;
    objects.push_back(library.Initialized());
    const double first = PrivateKilobytes();
    while (objects.size() < cManyObjects + 1)
        objects.push_back(library.Initialized());
    const double many = PrivateKilobytes();
    results.Value(group, "QXA64T.dll, the file", "KB", FileKilobytes(library.Path()));
    results.Value(group, "QXA64T.dll, loaded", "KB", loaded - before);
    results.Value(group, "first object, with what COM makes for it", "KB", first - loaded);
    results.Value(group, "one more idle object", "KB", (many - first) / cManyObjects);
    results.Value(group, "one more waiting thread, without an object", "KB", ThreadKilobytes());
    results.Value(group, "50 more idle objects", "KB", many - first);
    return library;
}

void MeasureIniFile(const Library& library, const Extent& extent, Results& results) {
    wchar_t path[MAX_PATH + 32];
    GetTempPathW(MAX_PATH, path);
    const std::wstring file = std::wstring(path) + L"kora4_bench.ini";
    WritePrivateProfileStringW(L"VolumeLeveler", L"Amount", L"5", file.c_str());
    const ComPtr<IVeltoKORA4API> spApi = library.Initialized();
    Samples read[2], written[2];
    const std::size_t rounds = extent.Of(2000, 10);
    for (std::size_t i = 0; i < rounds; ++i) {
        KORA4PatchValueUnion value{};
        value.m_technology = eVolumeLeveler;
        std::uint64_t begin = Ticks();
        spApi->GetSimplePatchValue(&value);
        read[0].Add(Ticks() - begin);
        begin = Ticks();
        GetPrivateProfileIntW(L"VolumeLeveler", L"Amount", 0, file.c_str());
        read[1].Add(Ticks() - begin);

        value.m_values.m_volumeSlider = static_cast<ULONG>(i % 10);
        begin = Ticks();
        spApi->SetSimplePatchValue(&value);
        written[0].Add(Ticks() - begin);
        begin = Ticks();
        WritePrivateProfileStringW(L"VolumeLeveler", L"Amount", std::to_wstring(i % 10).c_str(),
                                   file.c_str());
        written[1].Add(Ticks() - begin);
    }
    DeleteFileW(file.c_str());
    results.Compare("beside an INI file", "slider read", read[0], read[1]);
    results.Compare("beside an INI file", "slider written", written[0], written[1]);
}

void MeasureIdling(const Library& library, const Extent& extent, Results& results) {
    const DWORD seconds = extent.smoke ? 1 : 60;
    ImportHook hook(library.Module());
    hook.Start();
    const ComPtr<IVeltoKORA4API> spApi = library.Initialized();
    if (!hook.AwaitRest())
        Fail("the monitor does not come to rest");
    const UniqueHandle never(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    hook.Start();
    PumpUntil(never.Get(), seconds * 1000);
    hook.Stop();
    results.Value("idle", "platform calls in " + std::to_string(seconds) + " s", "calls",
                  static_cast<double>(hook.Calls().size()));
}

}  // namespace kora4::bench
