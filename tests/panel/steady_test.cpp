// SPDX-License-Identifier: MIT
// The panel costs nothing while nothing happens, and does not grow with what happens.
#include <windows.h>

#include <psapi.h>

#include <cstdio>

#include "multiprocess/process_counts.h"
#include "panel/panel_fixture.h"
#include "panel/pictures.h"
#include "support/program_arguments.h"

namespace kora4::test {
namespace {

using namespace ::panel;

// How many foreign changes, and how many seconds of idling.
const unsigned g_changes = ProgramArgument(1, 300);
const unsigned g_idleSeconds = ProgramArgument(2, 3);

class Process {
  public:
    explicit Process(DWORD id)
        : m_process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id)),
          m_id(id) {
        EXPECT_NE(nullptr, m_process);
    }
    ~Process() { CloseHandle(m_process); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Milliseconds.
    double ProcessorTime() const {
        FILETIME begin{}, end{}, kernel{}, user{};
        EXPECT_TRUE(GetProcessTimes(m_process, &begin, &end, &kernel, &user));
        return (Ticks(kernel) + Ticks(user)) / 10000.0;
    }
    std::size_t Memory() const {
        PROCESS_MEMORY_COUNTERS_EX counters{};
        EXPECT_TRUE(GetProcessMemoryInfo(
            m_process, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters));
        return counters.WorkingSetSize;
    }
    DWORD DrawingObjects() const { return GetGuiResources(m_process, GR_GDIOBJECTS); }
    DWORD Windows() const { return GetGuiResources(m_process, GR_USEROBJECTS); }
    std::size_t Handles() const { return ProcessCounts::Of(m_id).handles; }

  private:
    static double Ticks(const FILETIME& time) {
        return static_cast<double>(
            ULARGE_INTEGER{{time.dwLowDateTime, time.dwHighDateTime}}.QuadPart);
    }

    const HANDLE m_process;
    const DWORD m_id;
};

class PanelSteady : public PanelTest {
  protected:
    // Levels are off: nothing is to be drawn.
    void StartWithoutLevels() {
        ASSERT_NO_FATAL_FAILURE(Start());
        Panel().TabTo(eLevelBox);
        Press(VK_SPACE);
        ASSERT_TRUE(Becomes([&] { return !Panel().IsChecked(eLevelBox); }));
    }
    void Change(unsigned number) {
        const auto value = static_cast<ULONG>(number % (KORA4_VOLUME_LEVELER_MAX + 1));
        Bands bands = *Others().GetGraphicEQData();
        bands[number % bands.size()].gain = static_cast<float>(number % 24) / 2 - 6;
        EXPECT_TRUE(Others().SetGraphicEQData(bands));
        EXPECT_TRUE(Others().SetTechnologyOnElseOff(eGraphicEQ, number % 2 == 0));
        EXPECT_TRUE(Others().SetVolumeLeveler(value));
    }
    void MakeChanges(unsigned count) {
        for (unsigned i = 0; i < count; ++i)
            Change(i);
        const auto last = static_cast<LRESULT>((count - 1) % (KORA4_VOLUME_LEVELER_MAX + 1));
        EXPECT_TRUE(
            Becomes([&] { return Panel().Position(IdFor(eSlider, eVolumeLeveler)) == last; }));
        Sleep(300);
    }
};

TEST_F(PanelSteady, UsesNoProcessorTimeWhileNothingHappens) {
    ASSERT_NO_FATAL_FAILURE(StartWithoutLevels());
    Sleep(1000);
    const Process process(Panel().ProcessId());
    const std::size_t handles = process.Handles();
    const double before = process.ProcessorTime();
    Sleep(g_idleSeconds * 1000);
    const double used = process.ProcessorTime() - before;
    std::printf("idle for %u s: %.0f ms of processor time\n", g_idleSeconds, used);
    // One tick of the clock by which processor time is counted.
    EXPECT_GE(20, used);
    EXPECT_TRUE(Becomes([&] { return process.Handles() == handles; }));
}

TEST_F(PanelSteady, ReadsAndDrawsNoLevelsWhileItIsMinimised) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const HWND levels = Panel().Control(eLevels);
    const Picture silent = StillPicture(levels);
    RunningTool engine("kora4sim", {"--for", "60", "--quiet", "--seed", "1"});
    const Process process(Panel().ProcessId());
    EXPECT_TRUE(Becomes([&] { return !(TakePicture(levels) == silent); }));
    ShowWindow(Panel().Window(), SW_MINIMIZE);
    ASSERT_TRUE(Becomes([&] { return IsIconic(Panel().Window()) != FALSE; }));
    Sleep(500);
    const double minimised = process.ProcessorTime();
    Sleep(1500);
    std::printf("minimised for 1.5 s while the engine plays: %.0f ms of processor time\n",
                process.ProcessorTime() - minimised);
    EXPECT_GE(20, process.ProcessorTime() - minimised);
    ShowWindow(Panel().Window(), SW_RESTORE);
    EXPECT_TRUE(Becomes([&] { return !IsIconic(Panel().Window()); }));
    engine.Kill();
}

TEST_F(PanelSteady, DoesNotGrowWithForeignChanges) {
    ASSERT_NO_FATAL_FAILURE(StartWithoutLevels());
    // What is made once is there then, the history is full.
    MakeChanges(100);
    const Process process(Panel().ProcessId());
    const std::size_t handles = process.Handles();
    const std::size_t memory = process.Memory();
    const DWORD drawing = process.DrawingObjects();
    const DWORD windows = process.Windows();
    MakeChanges(g_changes);
    std::printf(
        "%u foreign changes: handles %zu -> %zu, GDI objects %lu -> %lu, windows %lu -> "
        "%lu, memory %zu -> %zu KB\n",
        3 * g_changes, handles, process.Handles(), drawing, process.DrawingObjects(), windows,
        process.Windows(), memory / 1024, process.Memory() / 1024);
    // The platform makes one when two threads first meet at a lock, and a call that is not over
    // yet has its own.
    constexpr std::size_t cOnce = 3;
    EXPECT_TRUE(Becomes([&] { return process.Handles() <= handles + cOnce; }))
        << process.Handles();
    EXPECT_GE(drawing, process.DrawingObjects());
    EXPECT_GE(windows, process.Windows());
    // The heaps' own reserve goes up and down.
    constexpr std::size_t cReserve = 1 << 20;
    EXPECT_GE(memory + cReserve, process.Memory());
}

}  // namespace
}  // namespace kora4::test
