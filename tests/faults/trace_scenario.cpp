// SPDX-License-Identifier: MIT
// The calls, good and bad, that make each module of the library write its lines.
#include "faults/trace_scenario.h"

#include <gtest/gtest.h>
#include <wrl/client.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <thread>

#include "kora4api.h"
#include "support/com_client.h"
#include "support/raw_store.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;
using Api = ComPtr<IVeltoKORA4API>;

void FillStore(std::uint32_t word) {
    RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), word);
    RawStore::SetNumber(cStatic, MasterEnablesName(), 0x03FF);
    RawStore::SetText(cStatic, ProfileNameName(3), L"Night");
    std::vector<std::uint8_t> blob(8 + 24 + 8);
    blob[4] = 1;
    blob[8 + 16] = 1;
    const float levels[] = {-3.0f, -4.5f};
    std::memcpy(blob.data() + 8 + 24, levels, sizeof levels);
    RawStore::SetBytes(cStatic, SettingName(cBlobPid), blob);
}

Api Create(const LoadedLibrary& library) {
    ComPtr<IClassFactory> factory;
    Api api;
    if (SUCCEEDED(library.GetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_IClassFactory,
                                         reinterpret_cast<void**>(factory.GetAddressOf()))))
        factory->CreateInstance(nullptr, IID_IVeltoKORA4API,
                                reinterpret_cast<void**>(api.GetAddressOf()));
    return api;
}

// Each method once, with nothing but nulls where it takes a pointer that it checks.
void CallWithNulls(IVeltoKORA4API* api) {
    ULONG v = 0;
    api->GetVeltoKORA4Version(&v, &v, &v, nullptr);
    api->RegisterChangeNotifications(nullptr);
    api->GetActiveProfile(nullptr);
    api->GetVisualizationSamplingPeriod(nullptr);
    api->GetVeltoProfileEditorCommand(nullptr);
    api->GetVeltoProfileSelectorCommand(nullptr);
    api->GetVeltoDemoAppCommand(nullptr);
    api->GetVeltoEnable(nullptr);
    api->ToggleVeltoEnable(nullptr);
    api->GetProfileTable(nullptr);
    api->SetCustomProfileName(3, nullptr);
    api->CreateCustomProfile(3, nullptr);
    api->GetTechnologyMasterEnables(nullptr);
    api->GetTechnologyOnElseOff(eGraphicEQ, nullptr);
    api->SetTechnologyOnElseOff(eNumberKORA4APITechnologies, TRUE);
    api->GetSimplePatchValue(nullptr);
    api->SetSimplePatchValue(nullptr);
    api->SetGraphicEQData(nullptr);
    api->GetGraphicEQData(nullptr);
}

void CallCommands(IVeltoKORA4API* api) {
    for (const auto method : {&IVeltoKORA4API::GetVeltoProfileEditorCommand,
                              &IVeltoKORA4API::GetVeltoProfileSelectorCommand,
                              &IVeltoKORA4API::GetVeltoDemoAppCommand}) {
        LPWSTR command = nullptr;
        (api->*method)(&command);
        CoTaskMemFree(command);
    }
}

void CallProfiles(IVeltoKORA4API* api) {
    LONG profile = 0;
    for (const LONG number : {1L, 77L})
        api->SetActiveProfile(number);
    api->GetActiveProfile(&profile);
    api->RevertActiveProfile();
    api->SetDemoProfileAndEnable(cDemoMusic, TRUE);
    api->RevertFromDemoMode();
    api->SetDemoProfileAndEnable(7, FALSE);
    api->ForceRevertFromDemoMode();
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    api->GetProfileTable(names);
    for (const LPWSTR name : names)
        CoTaskMemFree(name);
    api->CreateCustomProfile(4, L"Day");
    api->SetCustomProfileName(4, L"Noon");
    api->DeleteCustomProfile(4);
}

void CallSwitches(IVeltoKORA4API* api) {
    BOOL on = FALSE;
    ULONG mask = 0;
    ULONG period = 0;
    float gain[KORA4_VISUALIZATION_BANDS];
    float excitation[KORA4_VISUALIZATION_BANDS];
    api->GetVeltoEnable(&on);
    api->SetVeltoEnable(FALSE);
    api->ToggleVeltoEnable(&on);
    api->GetTechnologyOnElseOff(eGraphicEQ, &on);
    api->SetTechnologyOnElseOff(eVirtualizerSpkr, FALSE);
    api->GetTechnologyMasterEnables(&mask);
    api->SetVisualizationSamplingPeriod(40);
    api->GetVisualizationSamplingPeriod(&period);
    api->GetVisualizationData(gain, excitation);
}

void CallValue(IVeltoKORA4API* api, KORA4APITechnology technology, float real) {
    KORA4PatchValueUnion value{technology, {0}};
    value.m_values.m_enhancementSlider = real;
    api->SetSimplePatchValue(&value);
    api->GetSimplePatchValue(&value);
}

void CallValues(IVeltoKORA4API* api) {
    for (const std::uint32_t number : {4u, 11u})
        CallValue(api, eVolumeLeveler, std::bit_cast<float>(number));
    for (const std::uint32_t number : {5u, 6u})
        CallValue(api, eIntelligentEQ, std::bit_cast<float>(number));
    for (const KORA4APITechnology technology :
         {eDialogEnhancer, eVirtualizerHP, eVirtualizerSpkr}) {
        for (const float real : {0.5f, -1.0f, 7.0f})
            CallValue(api, technology, real);
    }
    CallValue(api, eGraphicEQ, 0);
    GraphicEQData eq{};
    eq.m_bands = 2;
    eq.m_gain[0] = 13.0f;
    eq.m_gain[1] = -20.0f;
    api->SetGraphicEQData(&eq);
    api->GetGraphicEQData(&eq);
}

void CallEverything(IVeltoKORA4API* api) {
    ULONG v = 0;
    api->GetVeltoKORA4Version(&v, &v, &v, &v);
    CallWithNulls(api);
    CallCommands(api);
    CallProfiles(api);
    CallSwitches(api);
    CallValues(api);
}

// A stored profile number that is none, and one that is negative.
void CallWithBadProfiles(IVeltoKORA4API* api) {
    for (const DWORD profile : {77ul, 0xFFFFFFF0ul}) {
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), profile);
        CallValue(api, eVolumeLeveler, 0);
    }
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 0);
}

void BeNotified(IVeltoKORA4API* api) {
    ComPtr<CallbackRecorder> recorder = CallbackRecorder::Create();
    api->RegisterChangeNotifications(recorder.Get());
    RawStore::Bump(SettingName(cTablePid));
    EXPECT_TRUE(recorder->WaitForLine("OnCustomProfileTableChange()"));
    // Values and flags of all kinds, as one change.
    recorder->ClearLog();
    {
        const RawTransaction transaction;
        RawStore::Bump(TriggerName(RawTechnology::eVolume));
        RawStore::Bump(TriggerName(RawTechnology::eStandardEQ));
    }
    EXPECT_TRUE(recorder->WaitForLines(2));
    api->UnregisterChangeNotifications();
}

void CallOnLostStore(IVeltoKORA4API* api) {
    float gain[KORA4_VISUALIZATION_BANDS];
    float excitation[KORA4_VISUALIZATION_BANDS];
    RawStore::DeleteKeys();
    api->SetVisualizationSamplingPeriod(40);
    api->GetVisualizationData(gain, excitation);
}

using Main = BOOL WINAPI(HINSTANCE, DWORD, void*);

void AttachOnceMore(HMODULE module) {
    const auto pMain =
        reinterpret_cast<Main*>(reinterpret_cast<void*>(GetProcAddress(module, "DllMain")));
    ASSERT_TRUE(pMain);
    EXPECT_TRUE(pMain(module, DLL_PROCESS_ATTACH, nullptr));
}

// Until then the library has the word that it was loaded with.
void TakeWord(const LoadedLibrary& library, std::uint32_t word) {
    FillStore(word);
    ASSERT_TRUE(library.IsLoaded());
    ASSERT_EQ(S_OK, Create(library)->Initialize());
}

}  // namespace

void DriveEveryLine(std::uint32_t word, DebugOutput& output) {
    const RawStore store;
    const LoadedLibrary library;
    TakeWord(library, word);
    output.Clear();

    AttachOnceMore(library.Module());
    std::thread([] {}).join();
    Api api = Create(library);
    float levels[KORA4_VISUALIZATION_BANDS] = {};
    CallEverything(api.Get());
    api->UnregisterChangeNotifications();
    api->RegisterChangeNotifications(CallbackRecorder::Create().Get());
    api->GetVisualizationData(levels, levels);
    EXPECT_EQ(S_OK, api->Initialize());
    CallEverything(api.Get());
    BeNotified(api.Get());
    CallWithBadProfiles(api.Get());
    CallOnLostStore(api.Get());
    api.Reset();
    EXPECT_EQ(S_OK, library.RegisterServer());
    EXPECT_EQ(S_OK, library.UnregisterServer());
    EXPECT_EQ(S_OK, library.CanUnloadNow());
}

void DriveFromOneThread(std::uint32_t word, DebugOutput& output,
                        const std::function<void()>& onReady,
                        const std::function<void()>& onDone) {
    const RawStore store;
    const LoadedLibrary library;
    TakeWord(library, word);
    Api api = Create(library);
    ASSERT_EQ(S_OK, api->Initialize());
    onReady();
    output.Clear();
    CallEverything(api.Get());
    CallWithBadProfiles(api.Get());
    EXPECT_EQ(S_OK, library.RegisterServer());
    EXPECT_EQ(S_OK, library.UnregisterServer());
    onDone();
    api.Reset();
}

}  // namespace kora4::test
