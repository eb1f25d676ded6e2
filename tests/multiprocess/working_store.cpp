// SPDX-License-Identifier: MIT
// Calls every method of the API, and looks at what a dead writer has left.
#include "multiprocess/working_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "contract/store_mutex.h"
#include "kora4api_codes.h"
#include "multiprocess/api_commands.h"
#include "platform/handles.h"
#include "support/raw_store.h"

namespace kora4::test {
namespace {

constexpr DWORD cOnItsWay = 30;  // milliseconds
constexpr auto cLastTechnology = static_cast<std::uint32_t>(RawTechnology::eNGSurround);
constexpr std::uint32_t cLastGlobal = 2;

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

}  // namespace

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

// ---- What a dead writer leaves -------------------------------------------------------------

DWORD TakeTheStore() {
    const UniqueHandle mutex(
        OpenMutexW(SYNCHRONIZE, FALSE, reinterpret_cast<const wchar_t*>(cStoreMutexName)));
    const DWORD result = WaitForSingleObject(mutex.Get(), cAtOnce);
    EXPECT_NE(WAIT_TIMEOUT, result);
    ReleaseMutex(mutex.Get());
    return result;
}

void ExpectToldOfTheNextWrite(IVeltoKORA4API& writer, CallbackRecorder& survivor) {
    // The dead one's last write may still be on its way to the survivor.
    survivor.WaitForLines(1, cOnItsWay);
    survivor.ClearLog();
    constexpr LONG cSomeProfile = KORA4_PROFILE_LAST_CUSTOM;
    HRESULT hr = writer.SetCustomProfileName(cSomeProfile, L"announced");
    if (hr != S_OK)
        hr = writer.CreateCustomProfile(cSomeProfile, L"announced");
    EXPECT_EQ(S_OK, hr);
    EXPECT_TRUE(survivor.WaitForLine("OnCustomProfileTableChange()"));
}

StoreCounters StoreCounters::Now() {
    StoreCounters counters;
    const auto add = [&](const std::wstring& name) {
        counters.m_values[name] = RawStore::Number(cDynamic, name).value_or(0);
    };
    add(SettingName(cTablePid));
    for (std::uint32_t offset = 0; offset <= cLastTechnology; ++offset)
        add(TriggerName(static_cast<RawTechnology>(offset)));
    for (std::uint32_t offset = 0; offset <= cLastGlobal; ++offset)
        add(GlobalTriggerName(offset));
    return counters;
}

void StoreCounters::ExpectNoneFell(const StoreCounters& before) const {
    for (const auto& [name, value] : before.m_values)
        EXPECT_LE(value, m_values.at(name)) << std::string(name.begin(), name.end());
}

}  // namespace kora4::test
