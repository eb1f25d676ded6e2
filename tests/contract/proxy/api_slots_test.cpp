// SPDX-License-Identifier: MIT
// Every slot of IVeltoKORA4API through a real proxy: what goes in arrives, what comes out
// is what the object gave, and the result travels unchanged.
#include "contract/proxy/api_recorder.h"
#include "contract/proxy/border.h"

namespace kora4::test {
namespace {

using Api = Border<ApiRecorder, IVeltoKORA4API>;

TEST_P(Api, CallsRunOnTheThreadOfTheOwner) {
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->Initialize(); }));
    EXPECT_EQ("4 Initialize;", Log());
    EXPECT_EQ(m_owner.ThreadId(), m_object->m_threadId);
    EXPECT_NE(m_user.ThreadId(), m_object->m_threadId);
}

TEST_P(Api, VersionGivesItsFourNumbersInOrder) {
    ULONG v[4] = {};
    EXPECT_EQ(S_OK, Through([&](auto* api) {
                  return api->GetVeltoKORA4Version(&v[0], &v[1], &v[2], &v[3]);
              }));
    EXPECT_EQ("3 GetVeltoKORA4Version;", Log());
    EXPECT_EQ(7u, v[0]);
    EXPECT_EQ(0x80000002u, v[1]);
    EXPECT_EQ(7000u, v[2]);
    EXPECT_EQ(4u, v[3]);
}

TEST_P(Api, MethodsWithoutArgumentsReachTheirOwnSlots) {
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->UnregisterChangeNotifications(); }));
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->RevertActiveProfile(); }));
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->RevertFromDemoMode(); }));
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->ForceRevertFromDemoMode(); }));
    EXPECT_EQ(
        "6 UnregisterChangeNotifications;9 RevertActiveProfile;11 RevertFromDemoMode;"
        "12 ForceRevertFromDemoMode;",
        Log());
}

TEST_P(Api, RegisteredCallbackCanBeCalledBackThroughItsOwnProxy) {
    Microsoft::WRL::ComPtr<CallbackRecorder> callback;
    m_user.Run([&] { callback = new CallbackRecorder; });
    EXPECT_EQ(S_OK, Through([&](auto* api) {
                  return api->RegisterChangeNotifications(callback.Get());
              }));
    EXPECT_EQ("5 RegisterChangeNotifications set;", Log());

    HRESULT hr = E_UNEXPECTED;
    m_owner.Run([&] { hr = m_object->m_callback->OnActiveProfileChange(8); });
    EXPECT_EQ(S_OK, hr);
    EXPECT_EQ("3 OnActiveProfileChange 8;", callback->TakeLog());
    EXPECT_NE(m_owner.ThreadId(), callback->m_threadId);

    EXPECT_EQ(S_OK, Through([](auto* api) { return api->UnregisterChangeNotifications(); }));
    EXPECT_FALSE(m_object->m_callback);
    m_user.Run([&] { callback.Reset(); });
}

TEST_P(Api, NullCallbackArrivesAsNull) {
    m_object->m_result = E_INVALIDARG;
    EXPECT_EQ(E_INVALIDARG,
              Through([](auto* api) { return api->RegisterChangeNotifications(nullptr); }));
    EXPECT_EQ("5 RegisterChangeNotifications null;", Log());
}

TEST_P(Api, ProfileNumbersTravelSigned) {
    LONG id = 0;
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetActiveProfile(&id); }));
    EXPECT_EQ(-7, id);
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->SetActiveProfile(-2); }));
    EXPECT_EQ(S_OK, Through([](auto* api) {
                  return api->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, 5);
              }));
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->DeleteCustomProfile(8); }));
    EXPECT_EQ(
        "7 GetActiveProfile;8 SetActiveProfile -2;10 SetDemoProfileAndEnable 241 5;"
        "25 DeleteCustomProfile 8;",
        Log());
}

TEST_P(Api, SamplingPeriodTravelsUnsignedBothWays) {
    ULONG period = 0;
    EXPECT_EQ(S_OK,
              Through([&](auto* api) { return api->GetVisualizationSamplingPeriod(&period); }));
    EXPECT_EQ(0xFEDCBA98u, period);
    EXPECT_EQ(S_OK, Through([](auto* api) {
                  return api->SetVisualizationSamplingPeriod(0x90000001);
              }));
    EXPECT_EQ("13 GetVisualizationSamplingPeriod;14 SetVisualizationSamplingPeriod 2415919105;",
              Log());
}

TEST_P(Api, VisualizationArraysTravelInAndOutWhole) {
    float gain[KORA4_VISUALIZATION_BANDS];
    float excitation[KORA4_VISUALIZATION_BANDS];
    std::ostringstream in;
    for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i) {
        gain[i] = static_cast<float>(i);
        excitation[i] = static_cast<float>(-i) - 1;
        in << gain[i] << "/" << excitation[i] << ",";
    }
    EXPECT_EQ(S_OK,
              Through([&](auto* api) { return api->GetVisualizationData(gain, excitation); }));
    EXPECT_EQ("15 GetVisualizationData " + in.str() + ";", Log());
    for (int i = 0; i < KORA4_VISUALIZATION_BANDS; ++i) {
        EXPECT_EQ(-static_cast<float>(i) - 0.5f, gain[i]);
        EXPECT_EQ(static_cast<float>(i) + 100.25f, excitation[i]);
    }
}

struct Command {
    HRESULT (STDMETHODCALLTYPE IVeltoKORA4API::*method)(LPWSTR*);
    const char* log;
};
const Command cCommands[] = {
    {&IVeltoKORA4API::GetVeltoProfileEditorCommand, "16 GetVeltoProfileEditorCommand;"},
    {&IVeltoKORA4API::GetVeltoProfileSelectorCommand, "17 GetVeltoProfileSelectorCommand;"},
    {&IVeltoKORA4API::GetVeltoDemoAppCommand, "18 GetVeltoDemoAppCommand;"},
};

TEST_P(Api, CommandThatIsNotConfiguredComesOutAsNull) {
    for (const Command& command : cCommands) {
        LPWSTR text = const_cast<LPWSTR>(L"stale");
        EXPECT_EQ(S_OK, Through([&](auto* api) { return (api->*command.method)(&text); }));
        EXPECT_EQ(command.log, Log());
        EXPECT_EQ(nullptr, text);
    }
}

TEST_P(Api, CommandComesOutAsAStringOfTheCaller) {
    m_object->m_command = L"\"C:\\Program Files\\app.exe\" -x \x00E4\x4E2D";
    for (const Command& command : cCommands) {
        LPWSTR text = nullptr;
        EXPECT_EQ(S_OK, Through([&](auto* api) { return (api->*command.method)(&text); }));
        EXPECT_EQ(command.log, Log());
        ASSERT_NE(nullptr, text);
        EXPECT_STREQ(m_object->m_command->c_str(), text);
        CoTaskMemFree(text);
    }
}

TEST_P(Api, EmptyCommandIsAnEmptyStringAndNotNull) {
    m_object->m_command = L"";
    for (const Command& command : cCommands) {
        LPWSTR text = nullptr;
        EXPECT_EQ(S_OK, Through([&](auto* api) { return (api->*command.method)(&text); }));
        ASSERT_NE(nullptr, text);
        EXPECT_STREQ(L"", text);
        CoTaskMemFree(text);
    }
}

TEST_P(Api, FailedCommandLeavesNull) {
    m_object->m_result = E_OUTOFMEMORY;
    for (const Command& command : cCommands) {
        LPWSTR text = nullptr;
        EXPECT_EQ(E_OUTOFMEMORY,
                  Through([&](auto* api) { return (api->*command.method)(&text); }));
        EXPECT_EQ(command.log, Log());
        EXPECT_EQ(nullptr, text);
    }
}

TEST_P(Api, MasterEnableTravelsAsThirtyTwoBits) {
    m_object->m_bool = 0x12345678;
    BOOL enable = FALSE;
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetVeltoEnable(&enable); }));
    EXPECT_EQ(0x12345678, enable);
    m_object->m_bool = FALSE;
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->ToggleVeltoEnable(&enable); }));
    EXPECT_EQ(FALSE, enable);
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->SetVeltoEnable(-1); }));
    EXPECT_EQ("19 GetVeltoEnable;21 ToggleVeltoEnable;20 SetVeltoEnable -1;", Log());
}

TEST_P(Api, ProfileTableComesOutWithItsNulls) {
    m_object->m_names[3] = L"P1";
    m_object->m_names[5] = L"";
    m_object->m_names[8] = std::wstring(300, L'x');
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetProfileTable(names); }));
    EXPECT_EQ("22 GetProfileTable null,null,null,null,null,null,null,null,null,;", Log());
    for (size_t i = 0; i < KORA4_PROFILE_TABLE_ENTRIES; ++i) {
        if (m_object->m_names[i]) {
            ASSERT_NE(nullptr, names[i]) << i;
            EXPECT_STREQ(m_object->m_names[i]->c_str(), names[i]) << i;
        } else {
            EXPECT_EQ(nullptr, names[i]) << i;
        }
        CoTaskMemFree(names[i]);
    }
}

TEST_P(Api, ProfileTableCanBeAllNullAndAllNames) {
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetProfileTable(names); }));
    for (LPWSTR name : names)
        EXPECT_EQ(nullptr, name);
    for (size_t i = 0; i < KORA4_PROFILE_TABLE_ENTRIES; ++i)
        m_object->m_names[i] = L"name " + std::to_wstring(i);
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetProfileTable(names); }));
    for (size_t i = 0; i < KORA4_PROFILE_TABLE_ENTRIES; ++i) {
        ASSERT_NE(nullptr, names[i]) << i;
        EXPECT_STREQ(m_object->m_names[i]->c_str(), names[i]);
        CoTaskMemFree(names[i]);
    }
}

TEST_P(Api, ProfileTableTakesStringsIn) {
    m_object->m_leaveNames = true;
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    names[0] = TaskCopy(L"first");
    names[8] = TaskCopy(L"last");
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetProfileTable(names); }));
    EXPECT_EQ("22 GetProfileTable first,null,null,null,null,null,null,null,last,;", Log());
    EXPECT_STREQ(L"first", names[0]);
    EXPECT_STREQ(L"last", names[8]);
    for (LPWSTR name : names)
        CoTaskMemFree(name);
}

TEST_P(Api, NamesTravelIn) {
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->SetCustomProfileName(3, L"Night"); }));
    EXPECT_EQ(S_OK, Through([](auto* api) { return api->CreateCustomProfile(4, L""); }));
    EXPECT_EQ("23 SetCustomProfileName 3 Night;24 CreateCustomProfile 4 ;", Log());
}

TEST_P(Api, TechnologyMaskComesOut) {
    ULONG mask = 0;
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetTechnologyMasterEnables(&mask); }));
    EXPECT_EQ("26 GetTechnologyMasterEnables;", Log());
    EXPECT_EQ(0xFEDCBA98u, mask);
}

TEST_P(Api, EveryTechnologyNumberUpToTheCountReachesTheObject) {
    std::string expected;
    for (int i = eVolumeLeveler; i <= eNumberKORA4APITechnologies; ++i) {
        const auto technology = NumberAs<KORA4APITechnology>(i);
        m_object->m_bool = 40 + i;
        BOOL on = FALSE;
        EXPECT_EQ(S_OK, Through([&](auto* api) {
                      return api->GetTechnologyOnElseOff(technology, &on);
                  }));
        EXPECT_EQ(40 + i, on);
        EXPECT_EQ(S_OK, Through([&](auto* api) {
                      return api->SetTechnologyOnElseOff(technology, i - 3);
                  }));
        expected += "27 GetTechnologyOnElseOff " + std::to_string(i) + ";";
        expected += "28 SetTechnologyOnElseOff " + std::to_string(i) + " " +
                    std::to_string(i - 3) + ";";
    }
    EXPECT_EQ(expected, Log());
}

TEST_P(Api, LargestTechnologyNumberIsSixteenBitsWideAndSigned) {
    const auto largest = NumberAs<KORA4APITechnology>(0x7FFF);
    EXPECT_EQ(S_OK,
              Through([&](auto* api) { return api->SetTechnologyOnElseOff(largest, TRUE); }));
    EXPECT_EQ("28 SetTechnologyOnElseOff 32767 1;", Log());
}

TEST_P(Api, TechnologyNumberThatNeedsMoreBitsNeverLeaves) {
    for (int number : {0x8000, 0x10000, -1}) {
        const auto technology = NumberAs<KORA4APITechnology>(number);
        BOOL on = FALSE;
        EXPECT_EQ(cEnumTooLarge, Through([&](auto* api) {
                      return api->GetTechnologyOnElseOff(technology, &on);
                  }));
        EXPECT_EQ(cEnumTooLarge, Through([&](auto* api) {
                      return api->SetTechnologyOnElseOff(technology, TRUE);
                  }));
    }
    EXPECT_EQ("", Log());
}

constexpr KORA4APITechnology cUnionCases[] = {eVolumeLeveler, eDialogEnhancer, eVirtualizerHP,
                                              eVirtualizerSpkr, eIntelligentEQ};

TEST_P(Api, EveryCaseOfTheValueTravelsIn) {
    for (KORA4APITechnology technology : cUnionCases) {
        KORA4PatchValueUnion value = SampleValue(technology, 0xC1234500);
        EXPECT_EQ(S_OK, Through([&](auto* api) { return api->SetSimplePatchValue(&value); }));
        EXPECT_EQ("30 SetSimplePatchValue " + Text(value) + ";", Log());
    }
}

TEST_P(Api, EveryCaseOfTheValueTravelsInAndOut) {
    for (KORA4APITechnology technology : cUnionCases) {
        m_object->m_patch = SampleValue(technology, 0x42345600);
        KORA4PatchValueUnion value = SampleValue(technology, 0x11);
        const std::string in = Text(value);
        EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetSimplePatchValue(&value); }));
        EXPECT_EQ("29 GetSimplePatchValue " + in + ";", Log());
        EXPECT_EQ(technology, value.m_technology);
        EXPECT_EQ(Text(m_object->m_patch), Text(value));
    }
}

TEST_P(Api, ValueWithoutACaseFailsInTheProxy) {
    for (int number : {static_cast<int>(eGraphicEQ), 6, 7, 255, 0x7FFF}) {
        KORA4PatchValueUnion value{NumberAs<KORA4APITechnology>(number), {5}};
        EXPECT_EQ(cBadDiscriminant,
                  Through([&](auto* api) { return api->SetSimplePatchValue(&value); }))
            << number;
        EXPECT_EQ(cBadDiscriminant,
                  Through([&](auto* api) { return api->GetSimplePatchValue(&value); }))
            << number;
        EXPECT_EQ(5u, value.m_values.m_volumeSlider);
    }
    EXPECT_EQ("", Log());
}

TEST_P(Api, ValueWithoutACaseReachesAnObjectInTheSameApartment) {
    m_object->m_throughProxy = false;
    KORA4PatchValueUnion value{eGraphicEQ, {5}};
    m_object->m_result = E_INVALIDARG;
    HRESULT hr = S_OK;
    m_owner.Run([&] { hr = m_object->SetSimplePatchValue(&value); });
    EXPECT_EQ(E_INVALIDARG, hr);
    EXPECT_EQ("30 SetSimplePatchValue 1:5;", Log());
}

TEST_P(Api, GraphicEQTravelsInWhole) {
    GraphicEQData data = SampleEQ(4);
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->SetGraphicEQData(&data); }));
    EXPECT_EQ("31 SetGraphicEQData " + Text(SampleEQ(4)) + ";", Log());
    EXPECT_EQ(Text(SampleEQ(4)), Text(data));
}

TEST_P(Api, GraphicEQTravelsInAndOutWhole) {
    GraphicEQData data = SampleEQ(9);
    EXPECT_EQ(S_OK, Through([&](auto* api) { return api->GetGraphicEQData(&data); }));
    EXPECT_EQ("32 GetGraphicEQData " + Text(SampleEQ(9)) + ";", Log());
    EXPECT_EQ(Text(SampleEQ(3)), Text(data));
}

TEST_P(Api, ResultsOfTheLibraryTravelUnchanged) {
    for (HRESULT result : {S_FALSE, KORA4_S_DEMO_MODE_ACTIVE, KORA4_S_NOT_IN_DEMO_PROFILE,
                           KORA4_S_NO_SUCH_CUSTOM_PROFILE, KORA4_S_NOT_A_PRESET_PROFILE,
                           APOERR_NOT_INITIALIZED, E_INVALIDARG, E_FAIL}) {
        m_object->m_result = result;
        EXPECT_EQ(result, Through([](auto* api) { return api->SetActiveProfile(1); }));
    }
}

TEST_P(Api, NullReferencesFailInTheProxy) {
    ULONG v = 0;
    const auto expectRefused = [&](auto work) { EXPECT_EQ(cNullReference, Through(work)); };
    expectRefused([&](auto* a) { return a->GetVeltoKORA4Version(&v, &v, nullptr, &v); });
    expectRefused([](auto* a) { return a->GetActiveProfile(nullptr); });
    expectRefused([](auto* a) { return a->GetVisualizationSamplingPeriod(nullptr); });
    expectRefused([](auto* a) { return a->GetVeltoProfileEditorCommand(nullptr); });
    expectRefused([](auto* a) { return a->GetVeltoProfileSelectorCommand(nullptr); });
    expectRefused([](auto* a) { return a->GetVeltoDemoAppCommand(nullptr); });
    expectRefused([](auto* a) { return a->GetVeltoEnable(nullptr); });
    expectRefused([](auto* a) { return a->ToggleVeltoEnable(nullptr); });
    expectRefused([](auto* a) { return a->SetCustomProfileName(3, nullptr); });
    expectRefused([](auto* a) { return a->CreateCustomProfile(3, nullptr); });
    expectRefused([](auto* a) { return a->GetTechnologyMasterEnables(nullptr); });
    expectRefused([](auto* a) { return a->GetTechnologyOnElseOff(eGraphicEQ, nullptr); });
    expectRefused([](auto* a) { return a->GetSimplePatchValue(nullptr); });
    expectRefused([](auto* a) { return a->SetSimplePatchValue(nullptr); });
    expectRefused([](auto* a) { return a->SetGraphicEQData(nullptr); });
    expectRefused([](auto* a) { return a->GetGraphicEQData(nullptr); });
    EXPECT_EQ("", Log());
}

TEST_P(Api, NullArraysFailInTheProxy) {
    float levels[KORA4_VISUALIZATION_BANDS] = {};
    EXPECT_HRESULT_FAILED(
        Through([&](auto* a) { return a->GetVisualizationData(nullptr, levels); }));
    EXPECT_HRESULT_FAILED(
        Through([&](auto* a) { return a->GetVisualizationData(levels, nullptr); }));
    EXPECT_HRESULT_FAILED(Through([](auto* a) { return a->GetProfileTable(nullptr); }));
    EXPECT_EQ("", Log());
}

KORA4_BOTH_BORDERS(Api);

}  // namespace
}  // namespace kora4::test
