// SPDX-License-Identifier: MIT
// The runs of a trial, what is looked at after each, and the count of all faults.
#include "faults/fault_matrix.h"

#include <algorithm>
#include <array>
#include <map>

#include "contract/profiles.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

std::map<std::string, std::map<std::uint32_t, std::size_t>> s_injected;
unsigned s_each = 1;
unsigned s_untilNext = 0;

bool IsSelected() {
    if (s_untilNext != 0) {
        --s_untilNext;
        return false;
    }
    s_untilNext = s_each - 1;
    return true;
}

// What a process needs once, it gets in the first runs.
constexpr int cWarmRuns = 3;
// A leak grows with each run.
constexpr unsigned cLeakRuns = 4;

constexpr KORA4PresetTechnology cVolume = eVolumeTech;
constexpr std::size_t cVolumeSlider = 0;  // the place among its fields

bool IsMore(const ProcessCounts& now, const ProcessCounts& before, std::size_t by) {
    return now.handles >= before.handles + by || now.threads >= before.threads + by;
}

}  // namespace

FaultMatrix::FaultMatrix(DWORD apartment) {
    CoInitializeEx(nullptr, apartment);
    m_place.Fill();
}

FaultMatrix::~FaultMatrix() {
    CoUninitialize();
}

void FaultMatrix::Run(const Trial& trial) {
    SCOPED_TRACE(trial.name);
    for (int run = 0; run < cWarmRuns; ++run)
        Succeed(trial);
    const ProcessCounts before = ProcessCounts::Now();
    trial.prepare();
    m_injector.Count();
    EXPECT_EQ(trial.expected, trial.call());
    m_injector.Disarm();
    const std::vector<FailingCall> calls = m_injector.Calls();
    EXPECT_LT(0u, before.handles);
    EXPECT_LT(0u, before.threads);
    trial.end();
    FailAll(trial, calls, Look::eAtMemory);
    if (!HasFailure() && IsMore(ProcessCounts::AtMost(before), before, 1))
        FailAll(trial, calls, Look::eAtEverything);
}

void FaultMatrix::FailAll(const Trial& trial, const std::vector<FailingCall>& calls,
                          Look look) {
    for (std::size_t call = 0; call < calls.size(); ++call)
        for (std::size_t code = 0; code < calls[call].codes.size(); ++code)
            for (const Repeat repeat : {Repeat::eOnce, Repeat::eFromThenOn}) {
                if ((repeat == Repeat::eFromThenOn && calls[call].isOnceOnly) || !IsSelected())
                    continue;
                const auto fail = [&] { return Fail(trial, call, code, repeat); };
                if (look == Look::eAtEverything) {
                    const ProcessCounts before = ProcessCounts::Now();
                    if (fail())
                        ExpectNoLeak(fail, before);
                } else {
                    fail();
                }
                if (HasFailure())
                    return;
            }
}

void FaultMatrix::Succeed(const Trial& trial) {
    trial.prepare();
    EXPECT_EQ(trial.expected, trial.call());
    if (trial.afterSuccess)
        trial.afterSuccess();
    trial.end();
}

bool FaultMatrix::Fail(const Trial& trial, std::size_t call, std::size_t code, Repeat repeat) {
    const long blocks = m_injector.Blocks();
    trial.prepare();
    m_injector.Arm(call, code, repeat);
    const HRESULT hr = trial.call();
    m_injector.Disarm();
    const bool isFault = m_injector.Injected() != 0;
    if (isFault) {
        const Fault fault = m_injector.First();
        SCOPED_TRACE("call " + std::to_string(call) + ": " + Text(fault));
        ++s_injected[fault.function][fault.code];
        EXPECT_TRUE(hr == trial.expected || std::ranges::count(trial.allowed, hr) != 0)
            << std::hex << hr;
        ExpectFreeMutex();
        if (trial.afterFault)
            trial.afterFault(fault, hr);
        trial.end();
        Succeed(trial);
        EXPECT_TRUE(WaitForBlocks(blocks)) << m_injector.Blocks() - blocks << " blocks leaked";
    } else {
        trial.end();
    }
    return isFault;
}

// A thread of a monitor may free its last ones a little later.
bool FaultMatrix::WaitForBlocks(long blocks) const {
    for (int wait = 0; m_injector.Blocks() > blocks && wait < 200; ++wait)
        Sleep(10);
    return m_injector.Blocks() <= blocks;
}

// An object's monitor may hold it for a moment.
void FaultMatrix::ExpectFreeMutex() const {
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_place.Mutex(), cToldMilliseconds));
    ReleaseMutex(m_place.Mutex());
}

// COM keeps a thing or two from time to time; what it keeps does not grow with each run.
void FaultMatrix::ExpectNoLeak(const std::function<void()>& again,
                               const ProcessCounts& before) {
    const ProcessCounts first = ProcessCounts::AtMost(before);
    if (!IsMore(first, before, 1))
        return;
    for (unsigned run = 0; run < cLeakRuns; ++run)
        again();
    const ProcessCounts now = ProcessCounts::AtMost(first);
    EXPECT_FALSE(IsMore(now, first, cLeakRuns - 1))
        << Text(m_injector.First()) << " leaks: " << before << ", then " << first << ", after "
        << cLeakRuns << " more " << now;
}

ComPtr<IVeltoKORA4API> FaultMatrix::Initialized() const {
    ComPtr<IVeltoKORA4API> spApi = m_library.Create();
    EXPECT_EQ(S_OK, spApi->Initialize());
    return spApi;
}

void FaultMatrix::SwitchProfile() const {
    Put(m_place.profile, (bench::Get(m_place.profile, 0) + 1) % cFirstCustomProfile);
}

void FaultMatrix::ExpectUsable(IVeltoKORA4API& api) {
    Put(m_place.profile, ++m_uses % 2);
    Put(m_place.enable, m_uses % 3 == 0);
    LONG profile = -1;
    EXPECT_EQ(S_OK, api.GetActiveProfile(&profile));
    EXPECT_EQ(static_cast<LONG>(m_uses % 2), profile);
    BOOL enable = -1;
    EXPECT_EQ(S_OK, api.GetVeltoEnable(&enable));
    EXPECT_EQ(m_uses % 3 == 0, enable);
    const std::uint32_t level = m_uses % 5;
    KORA4PatchValueUnion value{};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = level;
    EXPECT_EQ(S_OK, api.SetSimplePatchValue(&value));
    value.m_values.m_volumeSlider = 99;
    EXPECT_EQ(S_OK, api.GetSimplePatchValue(&value));
    EXPECT_EQ(level, value.m_values.m_volumeSlider);
    const bench::PatchValues& stored = m_place.Patch(m_uses % 2, cVolume);
    EXPECT_EQ(level, bench::Get(stored.fields[cVolumeSlider], 99));
}

void FaultMatrix::ExpectToldOfTheNextChange(const Told& told) const {
    told.Forget();
    SwitchProfile();
    EXPECT_TRUE(told.Wait(cToldMilliseconds)) << "no notification any more";
}

void SelectFaults(unsigned each, unsigned first) {
    s_each = each;
    s_untilNext = first;
}

std::size_t InjectedFaults() {
    std::size_t all = 0;
    for (const auto& [function, codes] : s_injected)
        for (const auto& [code, faults] : codes)
            all += faults;
    return all;
}

std::string InjectedFaultsText() {
    std::string lines;
    for (const auto& [function, codes] : s_injected) {
        lines += "  " + function + ":";
        for (const auto& [code, faults] : codes)
            lines += " " + std::to_string(faults) + " x " + CodeText(code);
        lines += "\n";
    }
    return lines + "  " + std::to_string(InjectedFaults()) + " faults in all\n";
}

}  // namespace kora4::test
