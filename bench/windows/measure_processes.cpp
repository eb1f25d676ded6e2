// SPDX-License-Identifier: MIT
// Slider reads of many processes at a time, beside the same number of bare loops.
#include <cstdio>
#include <vector>

#include "windows/bare_methods.h"
#include "windows/measure.h"

namespace kora4::bench {
namespace {

constexpr std::size_t cMostProcesses = 16;

enum Phase : LONG { eRest, eCalls, eBareCalls, eEnd };

// In memory that all processes share.
struct Shared {
    volatile LONG phase;
    volatile LONG present;  // processes that are ready for the next phase
    volatile LONG64 calls;  // of all processes in this phase
};

class Meeting {
  public:
    explicit Meeting(const std::wstring& name)
        : m_go(CreateEventW(nullptr, TRUE, FALSE, (name + L".go").c_str())),
          m_mapping(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                       sizeof(Shared), (name + L".shared").c_str())),
          m_pShared(static_cast<Shared*>(
              MapViewOfFile(m_mapping.Get(), FILE_MAP_WRITE, 0, 0, sizeof(Shared)))) {
        if (!m_go || !m_pShared)
            Fail("no memory to share");
    }
    ~Meeting() { UnmapViewOfFile(m_pShared); }
    Meeting(const Meeting&) = delete;
    Meeting& operator=(const Meeting&) = delete;

    Shared& Memory() { return *m_pShared; }
    HANDLE Go() const { return m_go.Get(); }

    void AwaitPresent(LONG count) {
        const ULONGLONG end = GetTickCount64() + 60000;
        while (m_pShared->present < count) {
            if (GetTickCount64() > end)
                Fail("a client process did not come");
            Sleep(5);
        }
    }

  private:
    UniqueHandle m_go, m_mapping;
    Shared* const m_pShared;
};

UniqueHandle StartClient(const std::wstring& name) {
    wchar_t path[MAX_PATH * 4];
    GetModuleFileNameW(nullptr, path, ARRAYSIZE(path));
    std::wstring line = L"\"" + std::wstring(path) + L"\" --client " + name;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &process))
        Fail("a client process cannot be started");
    CloseHandle(process.hThread);
    return UniqueHandle(process.hProcess);
}

// Calls in a second of all processes together.
double RateOf(Meeting& meeting, Phase phase, std::size_t processes, DWORD milliseconds) {
    Shared& shared = meeting.Memory();
    meeting.AwaitPresent(static_cast<LONG>(processes));
    shared.present = 0;
    shared.calls = 0;
    shared.phase = phase;
    const std::uint64_t begin = Ticks();
    SetEvent(meeting.Go());
    Sleep(milliseconds);
    ResetEvent(meeting.Go());
    shared.phase = eRest;
    const double seconds = static_cast<double>(Ticks() - begin) * MicrosecondsPerTick() / 1e6;
    meeting.AwaitPresent(static_cast<LONG>(processes));
    return static_cast<double>(shared.calls) / seconds;
}

}  // namespace

void MeasureProcesses(const Extent& extent, Results& results) {
    const std::size_t most = extent.Of(cMostProcesses, 2);
    const std::size_t rounds = extent.Of(5, 1);
    const DWORD milliseconds = extent.smoke ? 100 : 500;
    for (std::size_t count = 1; count <= most; count *= 2) {
        const std::wstring name = L"kora4_bench." + std::to_wstring(GetCurrentProcessId()) +
                                  L"." + std::to_wstring(count);
        Meeting meeting(name);
        std::vector<UniqueHandle> processes;
        for (std::size_t i = 0; i < count; ++i)
            processes.push_back(StartClient(name));
        std::vector<double> rates[2];
        for (std::size_t i = 0; i < rounds; ++i)
            for (const std::size_t which : {i % 2, 1 - i % 2})
                rates[which].push_back(
                    RateOf(meeting, which == 0 ? eCalls : eBareCalls, count, milliseconds));
        meeting.AwaitPresent(static_cast<LONG>(count));
        meeting.Memory().phase = eEnd;
        SetEvent(meeting.Go());
        for (const UniqueHandle& process : processes)
            WaitForSingleObject(process.Get(), INFINITE);
        results.Compare("client processes, slider reads", std::to_string(count), "1/s",
                        MedianOf(rates[0]), MedianOf(rates[1]));
    }
}

int RunClientProcess(const wchar_t* name) {
    Meeting meeting(name);
    Shared& shared = meeting.Memory();
    Place place = Place::Existing();
    Bare bare(place);
    const Library library;
    const Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi = library.Initialized();
    for (;;) {
        InterlockedIncrement(&shared.present);
        WaitForSingleObject(meeting.Go(), INFINITE);
        const LONG phase = shared.phase;
        if (phase == eEnd)
            return 0;
        LONG64 calls = 0;
        for (; phase != eRest && shared.phase == phase; ++calls) {
            if (phase == eCalls) {
                KORA4PatchValueUnion value{};
                value.m_technology = eVolumeLeveler;
                spApi->GetSimplePatchValue(&value);
            } else {
                bare::GetPatch(bare, eVolumeTech);
            }
        }
        InterlockedAdd64(&shared.calls, calls);
    }
}

}  // namespace kora4::bench
