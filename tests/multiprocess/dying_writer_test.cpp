// SPDX-License-Identifier: MIT
// Writers that are killed at any moment leave a store that every method works with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "kora4api_codes.h"
#include "multiprocess/api_commands.h"
#include "multiprocess/child_process.h"
#include "multiprocess/owner_parameter.h"
#include "multiprocess/roles.h"
#include "multiprocess/watchdog.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr unsigned cKills = 200;
constexpr DWORD cLongestLife = 12;  // milliseconds of writing
constexpr DWORD cAtOnce = 1000;

void ExpectSuccess(IVeltoKORA4API& api, const std::string& command) {
    EXPECT_EQ(S_OK, RunApiCommand(api, command)) << command;
}

void ExpectTextsToBeGiven(IVeltoKORA4API& api) {
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    EXPECT_EQ(S_OK, api.GetProfileTable(names));
    for (LPWSTR name : names)
        CoTaskMemFree(name);
    for (const auto get : {&IVeltoKORA4API::GetVeltoProfileEditorCommand,
                           &IVeltoKORA4API::GetVeltoProfileSelectorCommand,
                           &IVeltoKORA4API::GetVeltoDemoAppCommand}) {
        LPWSTR command = nullptr;
        EXPECT_EQ(S_OK, (api.*get)(&command));
        CoTaskMemFree(command);
    }
}

void ExpectVisualizationToWork(IVeltoKORA4API& api) {
    ULONG period = 0;
    EXPECT_EQ(S_OK, api.GetVisualizationSamplingPeriod(&period));
    EXPECT_EQ(S_OK, api.SetVisualizationSamplingPeriod(period));
    float gain[KORA4_VISUALIZATION_BANDS] = {};
    float excitation[KORA4_VISUALIZATION_BANDS] = {};
    // Nobody has stored any.
    EXPECT_EQ(S_FALSE, api.GetVisualizationData(gain, excitation));
}

void ExpectSwitchesToWork(IVeltoKORA4API& api) {
    BOOL before = FALSE;
    BOOL toggled = FALSE;
    EXPECT_EQ(S_OK, api.GetVeltoEnable(&before));
    EXPECT_EQ(S_OK, api.ToggleVeltoEnable(&toggled));
    EXPECT_EQ(!before, toggled);
    ExpectSuccess(api, "SetVeltoEnable 1");
    ULONG mask = 0;
    EXPECT_EQ(S_OK, api.GetTechnologyMasterEnables(&mask));
    for (const auto technology : {eVolumeLeveler, eGraphicEQ, eIntelligentEQ, eDialogEnhancer,
                                  eVirtualizerHP, eVirtualizerSpkr}) {
        BOOL on = FALSE;
        EXPECT_EQ(S_OK, api.GetTechnologyOnElseOff(technology, &on));
        EXPECT_EQ(S_OK, api.SetTechnologyOnElseOff(technology, !on));
        BOOL now = FALSE;
        EXPECT_EQ(S_OK, api.GetTechnologyOnElseOff(technology, &now));
        EXPECT_EQ(!on, now);
    }
}

void ExpectValuesToWork(IVeltoKORA4API& api) {
    for (const auto technology :
         {eVolumeLeveler, eIntelligentEQ, eDialogEnhancer, eVirtualizerHP, eVirtualizerSpkr}) {
        KORA4PatchValueUnion value{};
        value.m_technology = technology;
        EXPECT_EQ(S_OK, api.GetSimplePatchValue(&value));
        ExpectSuccess(api, "SetSimplePatchValue " + std::to_string(technology) + " 1");
        EXPECT_EQ(S_OK, api.GetSimplePatchValue(&value));
        if (technology == eVolumeLeveler || technology == eIntelligentEQ) {
            EXPECT_EQ(1u, value.m_values.m_volumeSlider);
        } else {
            EXPECT_EQ(1.0f, value.m_values.m_enhancementSlider);
        }
    }
    GraphicEQData graphicEQ{};
    EXPECT_EQ(S_OK, api.GetGraphicEQData(&graphicEQ));
    EXPECT_GE(ULONG{KORA4_GRAPHIC_EQ_MAX_BANDS}, graphicEQ.m_bands);
    EXPECT_EQ(S_OK, api.SetGraphicEQData(&graphicEQ));
}

void ExpectCustomProfilesToWork(IVeltoKORA4API& api, unsigned profile) {
    const std::string number = std::to_string(profile);
    ExpectSuccess(api, "SetActiveProfile 0");
    EXPECT_HRESULT_SUCCEEDED(api.DeleteCustomProfile(static_cast<LONG>(profile)));
    ExpectSuccess(api, "CreateCustomProfile " + number + " new");
    ExpectSuccess(api, "SetCustomProfileName " + number + " other");
    ExpectSuccess(api, "SetActiveProfile " + number);
    ExpectValuesToWork(api);
}

void ExpectProfilesToWork(IVeltoKORA4API& api) {
    ExpectSuccess(api, "SetActiveProfile 1");
    ExpectSuccess(api, "RevertActiveProfile");
    ExpectSuccess(api,
                  "SetDemoProfileAndEnable " + std::to_string(KORA4_PROFILE_DEMO_GAMES) + " 0");
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, api.SetActiveProfile(0));
    ExpectSuccess(api, "RevertFromDemoMode");
    LONG profile = -1;
    EXPECT_EQ(S_OK, api.GetActiveProfile(&profile));
    EXPECT_EQ(1, profile);
    BOOL enable = FALSE;
    EXPECT_EQ(S_OK, api.GetVeltoEnable(&enable));
    EXPECT_TRUE(enable);
}

void ExpectEveryMethodToWork(IVeltoKORA4API& api, unsigned round) {
    ULONG version[4] = {};
    EXPECT_EQ(S_OK, api.GetVeltoKORA4Version(version, version + 1, version + 2, version + 3));
    EXPECT_EQ(S_OK, api.Initialize());
    LONG profile = -1;
    EXPECT_EQ(S_OK, api.GetActiveProfile(&profile));
    EXPECT_THAT(profile, testing::AnyOf(testing::AllOf(testing::Ge(0),
                                                       testing::Le(KORA4_PROFILE_LAST_CUSTOM)),
                                        testing::AllOf(testing::Ge(KORA4_PROFILE_DEMO_MOVIE),
                                                       testing::Le(KORA4_PROFILE_DEMO_GAMES))));
    ExpectSuccess(api, "ForceRevertFromDemoMode");
    EXPECT_EQ(S_OK, api.GetActiveProfile(&profile));
    EXPECT_GE(KORA4_PROFILE_LAST_CUSTOM, profile);
    ExpectTextsToBeGiven(api);
    ExpectVisualizationToWork(api);
    ExpectSwitchesToWork(api);
    ExpectValuesToWork(api);
    ExpectCustomProfilesToWork(api, 3 + round % 6);
    ExpectProfilesToWork(api);
}

class DyingWriters : public testing::Test {
  protected:
    DyingWriters() {
        // A client that survives them all.
        m_owner.Run([this] { EXPECT_EQ(S_OK, m_client.Start(m_library)); });
    }
    ~DyingWriters() override {
        m_owner.Run([this] { m_client = {}; });
    }

    // Kills a writer after a random time of writing.
    void KillOne() {
        // The next one starts while this one's traces are looked at.
        const std::unique_ptr<ChildProcess> upWriter =
            std::exchange(m_upNext, std::make_unique<ChildProcess>(cRestlessRole));
        EXPECT_EQ("ready", upWriter->Receive());
        upWriter->Send(std::to_string(m_random()));
        const DWORD life = static_cast<DWORD>(m_random() % (cLongestLife + 1));
        EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(upWriter->Process(), life));
        upWriter->Kill();
    }

    RawStore m_store;
    ApiLibrary m_library;
    ApartmentThread m_owner{OwnerKind::eStaPumping};
    WatchingClient m_client;
    std::mt19937 m_random{4711};
    std::unique_ptr<ChildProcess> m_upNext = std::make_unique<ChildProcess>(cRestlessRole);
};

// How the next waiter found the mutex: abandoned means that a write was cut off.
DWORD TakeTheStore() {
    const UniqueHandle mutex(
        OpenMutexW(SYNCHRONIZE, FALSE, L"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}"));
    const DWORD result = WaitForSingleObject(mutex.Get(), cAtOnce);
    ReleaseMutex(mutex.Get());
    return result;
}

TEST_F(DyingWriters, LeaveAStoreThatEveryMethodWorksWith) {
    AllowSeconds(240);
    unsigned cutOff = 0;
    for (unsigned kill = 0; kill < cKills && !HasFailure(); ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        KillOne();
        // By turns the first to come is a bare waiter, the survivor, and a new object.
        if (kill % 2 == 0) {
            const DWORD found = TakeTheStore();
            EXPECT_NE(WAIT_TIMEOUT, found);
            cutOff += found == WAIT_ABANDONED;
        }
        m_owner.Run([&] {
            ComPtr<IVeltoKORA4API> spApi = m_client.spApi;
            const ULONGLONG start = GetTickCount64();
            if (kill % 4 < 2) {
                spApi = m_library.Create();
                EXPECT_EQ(S_OK, spApi->Initialize());
            } else {
                LONG profile = -1;
                EXPECT_EQ(S_OK, spApi->GetActiveProfile(&profile));
            }
            EXPECT_GT(cAtOnce, GetTickCount64() - start);
            ExpectEveryMethodToWork(*spApi.Get(), kill);
        });
    }
    // Without any the test would have shown nothing. Half of the kills were looked at.
    EXPECT_LT(0u, cutOff);
    RecordProperty("CutOff", static_cast<int>(cutOff));
    m_client.spRecorder->ClearLog();
    RawStore::Bump(SettingName(cTablePid));
    EXPECT_TRUE(m_client.spRecorder->WaitForLine("OnCustomProfileTableChange()"));
}

}  // namespace
}  // namespace kora4::test
