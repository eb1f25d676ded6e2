// SPDX-License-Identifier: MIT
// Several processes with several threads each change the store at the same time: nothing
// is lost, nothing is mixed, and everybody knows the last state. An argument says for how
// many milliseconds.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "model/encodings.h"
#include "model/worker.h"
#include "support/com_client.h"
#include "support/desktop_hold.h"
#include "support/raw_store.h"

namespace kora4::test {
namespace {

constexpr DWORD cWorkerWait = 60000;  // milliseconds

DWORD s_workTime = 20000;  // milliseconds

// By API technology, and the one that the API does not know.
constexpr RawTechnology cRawTechnology[cRawTechnologies] = {
    RawTechnology::eVolume,      RawTechnology::eStandardEQ, RawTechnology::eDynamicEQ,
    RawTechnology::eEnhancement, RawTechnology::eHeadphone,  RawTechnology::eVirtualSurround,
    RawTechnology::eNGSurround};

class Concurrency : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_desktop.IsHeld());
        RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), 0);
        RawStore::SetText(cStatic, ProfileNameName(3), L"custom");
        for (std::size_t i = 0; i < cWorkers; ++i)
            m_processes[i] = StartChild(L"--worker=" + std::to_wstring(i) + L"," + m_name);
        for (std::size_t i = 0; i < cWorkers; ++i)
            ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_workshop.Ready(i), cWorkerWait));
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
        for (std::size_t i = 0; i < cWorkers; ++i)
            ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_workshop.Watching(i), cWorkerWait));
        // A worker that ends early has failed.
        HANDLE processes[cWorkers];
        for (std::size_t i = 0; i < cWorkers; ++i)
            processes[i] = m_processes[i].Get();
        SetEvent(m_workshop.Go());
        ASSERT_EQ(static_cast<DWORD>(WAIT_TIMEOUT),
                  WaitForMultipleObjects(cWorkers, processes, FALSE, s_workTime));
        SetEvent(m_workshop.Stop());
        for (std::size_t i = 0; i < cWorkers; ++i)
            ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_workshop.Stopped(i), cWorkerWait));
        SetEvent(m_workshop.Compare());
        for (std::size_t i = 0; i < cWorkers; ++i)
            ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(processes[i], cWorkerWait));
    }

    void TearDown() override {
        for (const UniqueHandle& process : m_processes) {
            if (process && WaitForSingleObject(process.Get(), 0) != WAIT_OBJECT_0)
                TerminateProcess(process.Get(), 1);
        }
    }

    template <typename Member>
    std::uint32_t Sum(Member member) {
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < cWorkers; ++i)
            sum += member(m_workshop.Report(i));
        return sum;
    }

    const std::wstring m_name = L"kora4-concurrency-" + std::to_wstring(GetCurrentProcessId());
    DesktopHold m_desktop;
    RawStore m_store;
    Workshop m_workshop{m_name};
    std::array<UniqueHandle, cWorkers> m_processes;
};

TEST_F(Concurrency, NoChangeIsLostNoValueIsMixedAndTheLastStateIsTold) {
    for (std::size_t i = 0; i < cWorkers; ++i) {
        const WorkerReport& report = m_workshop.Report(i);
        DWORD exitCode = 1;
        GetExitCodeProcess(m_processes[i].Get(), &exitCode);
        EXPECT_EQ(0u, exitCode) << "worker " << i;
        EXPECT_EQ(0u, report.failures) << "worker " << i << ": " << report.firstFailure;
        EXPECT_LT(0u, report.calls);
        EXPECT_LT(1u, report.itemsCompared) << "worker " << i << ", whose observer was told "
                                            << report.toldToObserver << " times";
    }

    for (std::size_t t = 0; t < cRawTechnologies; ++t) {
        EXPECT_EQ(Sum([t](const WorkerReport& r) { return r.announced[t].load(); }),
                  RawStore::Number(cDynamic, TriggerName(cRawTechnology[t])).value_or(0))
            << "technology " << t;
    }
    EXPECT_EQ(Sum([](const WorkerReport& r) { return r.tableChanges.load(); }),
              RawStore::Number(cDynamic, SettingName(cTablePid)).value_or(0));

    for (std::uint32_t profile = 0; profile < cUsedProfiles; ++profile) {
        const auto frequencies =
            RawStore::Text(cStatic, PatchName(RawTechnology::eStandardEQ, profile, 3));
        const auto gains =
            RawStore::Text(cStatic, PatchName(RawTechnology::eStandardEQ, profile, 4));
        ASSERT_EQ(frequencies.has_value(), gains.has_value());
        if (frequencies) {
            EXPECT_TRUE(IsWholeEQ(EQOf(*frequencies, *gains))) << "profile " << profile;
        }
    }

    std::printf("%u calls, %u told, %u equalizers seen, %u items of the last state compared\n",
                Sum([](const WorkerReport& r) { return r.calls.load(); }),
                Sum([](const WorkerReport& r) { return r.told.load(); }),
                Sum([](const WorkerReport& r) { return r.equalizersSeen.load(); }),
                Sum([](const WorkerReport& r) { return r.itemsCompared.load(); }));
}

}  // namespace
}  // namespace kora4::test

int main(int argc, char** argv) {
    const int worked = kora4::test::WorkIfAsked(argc, argv);
    if (worked >= 0)
        return worked;
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1)
        kora4::test::s_workTime = std::strtoul(argv[1], nullptr, 10);
    return RUN_ALL_TESTS();
}
