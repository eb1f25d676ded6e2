// SPDX-License-Identifier: MIT
// The panel costs nothing while nothing happens, and does not grow with what happens.
#include <windows.h>

#include <psapi.h>
#include <winternl.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

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
    std::size_t Windows() const {
        Count count{m_id, 0};
        EnumWindows(CountWithChildren, reinterpret_cast<LPARAM>(&count));
        return count.found;
    }
    // Wine does not count them for others, but has them in the same table as Windows.
    std::size_t DrawingObjects() const {
        if (const DWORD count = GetGuiResources(m_process, GR_GDIOBJECTS); count != 0)
            return count;
        PROCESS_BASIC_INFORMATION basic{};
        EXPECT_EQ(0, NtQueryInformationProcess(m_process, ProcessBasicInformation, &basic,
                                               sizeof basic, nullptr));
        constexpr std::size_t cTable = 0xF8;  // in the block of a 64-bit process
        const auto* const pBlock = reinterpret_cast<const char*>(basic.PebBaseAddress);
        const void* pTable = nullptr;
        EXPECT_TRUE(Read(pBlock + cTable, &pTable, sizeof pTable));
        std::vector<DrawingObject> objects(0x4000);
        EXPECT_TRUE(Read(pTable, objects.data(), objects.size() * sizeof objects[0]));
        return static_cast<std::size_t>(
            std::count_if(objects.begin(), objects.end(),
                          [](const DrawingObject& object) { return object.type != 0; }));
    }
    std::size_t Handles() const { return ProcessCounts::Of(m_id).handles; }

  private:
    struct Count {
        DWORD process;
        std::size_t found;
    };
    struct DrawingObject {
        std::uint64_t object;
        std::uint32_t owner;
        std::uint16_t generation;
        std::uint8_t type;  // 0: there is none
        std::uint8_t flags;
        std::uint64_t own;
    };

    static BOOL CALLBACK CountWithChildren(HWND window, LPARAM pCount) {
        auto& count = *reinterpret_cast<Count*>(pCount);
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        if (process != count.process)
            return TRUE;
        ++count.found;
        for (HWND child = GetWindow(window, GW_CHILD); child;
             child = GetWindow(child, GW_HWNDNEXT))
            ++count.found;
        return TRUE;
    }
    bool Read(const void* pFrom, void* pTo, std::size_t size) const {
        SIZE_T read = 0;
        return ReadProcessMemory(m_process, pFrom, pTo, size, &read) && read == size;
    }
    static double Ticks(const FILETIME& time) {
        return static_cast<double>(
            ULARGE_INTEGER{{time.dwLowDateTime, time.dwHighDateTime}}.QuadPart);
    }

    const HANDLE m_process;
    const DWORD m_id;
};

// What a process has grown by since the beginning of a scope.
class Growth {
  public:
    explicit Growth(const Process& process) : m_process(process) {}

    void ExpectNone() const {
        std::printf(
            "  handles %zu -> %zu, GDI objects %zu -> %zu, windows %zu -> %zu, memory "
            "%zu -> %zu KB\n",
            m_handles, m_process.Handles(), m_drawing, m_process.DrawingObjects(), m_windows,
            m_process.Windows(), m_memory / 1024, m_process.Memory() / 1024);
        // The platform makes one when two threads first meet at a lock, and a call that is not
        // over yet has its own.
        constexpr std::size_t cOnce = 3;
        EXPECT_TRUE(Becomes([&] { return m_process.Handles() <= m_handles + cOnce; }))
            << m_process.Handles();
        // It may be drawing.
        EXPECT_TRUE(Becomes([&] { return m_process.DrawingObjects() <= m_drawing; }))
            << m_process.DrawingObjects();
        EXPECT_GE(m_windows, m_process.Windows());
        // The heaps' own reserve goes up and down.
        constexpr std::size_t cReserve = 1 << 20;
        EXPECT_GE(m_memory + cReserve, m_process.Memory());
    }

  private:
    const Process& m_process;
    const std::size_t m_handles = m_process.Handles();
    const std::size_t m_memory = m_process.Memory();
    const std::size_t m_drawing = m_process.DrawingObjects();
    const std::size_t m_windows = m_process.Windows();
};

TEST(PanelGrowth, IsSeen) {
    const Process process(GetCurrentProcessId());
    const std::size_t drawing = process.DrawingObjects();
    const std::size_t windows = process.Windows();
    const HWND window =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    const HPEN pens[] = {CreatePen(PS_SOLID, 3, 1), CreatePen(PS_SOLID, 3, 2)};
    EXPECT_LE(drawing + std::size(pens), process.DrawingObjects());
    EXPECT_LE(windows + 1, process.Windows());
    for (const HPEN pen : pens)
        DeleteObject(pen);
    DestroyWindow(window);
}

class PanelSteady : public PanelTest {
  protected:
    static constexpr unsigned cSeldom = 20;

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
        if (number % cSeldom == cSeldom - 1)
            ChangeMore(number);
    }
    // What fills lists, and shows and hides parts of the window.
    void ChangeMore(unsigned number) {
        const std::wstring name = L"Profile " + std::to_wstring(number);
        EXPECT_TRUE(Others().CreateCustomProfile(KORA4_PROFILE_P1, name.c_str()));
        EXPECT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, true));
        EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerButton); }));
        EXPECT_TRUE(Others().RevertFromDemoMode());
        EXPECT_TRUE(Others().DeleteCustomProfile(KORA4_PROFILE_P1));
        EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerButton); }));
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
    const Growth growth(process);
    const double before = process.ProcessorTime();
    Sleep(g_idleSeconds * 1000);
    const double used = process.ProcessorTime() - before;
    std::printf("idle for %u s: %.0f ms of processor time\n", g_idleSeconds, used);
    // One tick of the clock by which processor time is counted.
    EXPECT_GE(20, used);
    growth.ExpectNone();
}

TEST_F(PanelSteady, DoesNotGrowWhileItDrawsLevels) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const HWND levels = Panel().Control(eLevels);
    const Picture silent = StillPicture(levels);
    RunningTool engine("kora4sim",
                       {"--for", std::to_string(g_idleSeconds + 60), "--quiet", "--seed", "1"});
    EXPECT_TRUE(Becomes([&] { return !(TakePicture(levels) == silent); }));
    Sleep(1000);
    const Process process(Panel().ProcessId());
    const Growth growth(process);
    Sleep(g_idleSeconds * 1000);
    engine.Kill();
    growth.ExpectNone();
}

// Whoever reads levels waits while another program holds the store; and a panel that is closed
// waits for its own reading, a second at most.
TEST_F(PanelSteady, ReadsLevelsUnlessItIsMinimised) {
    constexpr DWORD cSilentPeriod = 500;  // between two looks for an engine
    constexpr DWORD cLess = 900;          // than that second
    for (const bool isMinimised : {false, true}) {
        SCOPED_TRACE(isMinimised);
        ASSERT_NO_FATAL_FAILURE(Start());
        const HWND window = Panel().Window();
        if (isMinimised)
            ShowWindow(window, SW_MINIMIZE);
        ASSERT_TRUE(Becomes([&] { return (IsIconic(window) != FALSE) == isMinimised; }));
        Sleep(cSilentPeriod);
        const RawTransaction hold;
        Sleep(2 * cSilentPeriod);
        PostMessageW(window, WM_CLOSE, 0, 0);
        EXPECT_EQ(isMinimised, Becomes([&] { return !IsWindow(window); }, cLess));
        m_panel.reset();
    }
}

TEST_F(PanelSteady, DoesNotGrowWithForeignChanges) {
    ASSERT_NO_FATAL_FAILURE(StartWithoutLevels());
    // What is made once is there then, the history is full.
    MakeChanges(100);
    const Process process(Panel().ProcessId());
    const Growth growth(process);
    MakeChanges(g_changes);
    std::printf("%u foreign changes:\n", 3 * g_changes + g_changes / cSeldom * 4);
    growth.ExpectNone();
}

}  // namespace
}  // namespace kora4::test
