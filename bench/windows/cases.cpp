// SPDX-License-Identifier: MIT
// The table of cases: how each method is called, what goes before it, and its bare equivalent.
#include "windows/cases.h"

#include "contract/defaults.h"
#include "contract/profiles.h"
#include "kora4api_codes.h"
#include "windows/bare_methods.h"

namespace kora4::bench {
namespace {

constexpr std::uint32_t cSomeCustomProfile = 5;
constexpr std::uint32_t cNewCustomProfile = 8;

void Nothing(Scene&) {}

// Another sampling period in each round.
std::uint32_t Period(const Scene& scene) {
    return defaults::cSamplingPeriod + static_cast<std::uint32_t>(scene.round % 10);
}

void InMovie(Scene& scene) {
    Put(scene.place.profile, cMovieProfile);
}
void InDemo(Scene& scene) {
    Put(scene.place.profile, cDemoMovieProfile);
}
// The object has entered the demo itself.
void InOwnDemo(Scene& scene) {
    Put(scene.place.profile, cMovieProfile);
    scene.pApi->SetDemoProfileAndEnable(static_cast<LONG>(cDemoMovieProfile), TRUE);
}
void WithoutNewProfile(Scene& scene) {
    Put(scene.place.profile, cMovieProfile);
    Remove(scene.place.names[cNewCustomProfile]);
}
void WithNewProfile(Scene& scene) {
    Put(scene.place.profile, cMovieProfile);
    Put(scene.place.names[cNewCustomProfile], u"A profile of my own");
}

template <typename Getter>
HRESULT FreeCommand(Scene& scene, Getter getter) {
    LPWSTR pwCommand = nullptr;
    const HRESULT hr = (scene.pApi->*getter)(&pwCommand);
    CoTaskMemFree(pwCommand);
    return hr;
}

HRESULT GetTable(Scene& scene) {
    LPWSTR names[cSelectableProfileBound] = {};
    const HRESULT hr = scene.pApi->GetProfileTable(names);
    for (LPWSTR name : names)
        CoTaskMemFree(name);
    return hr;
}

HRESULT GetSlider(Scene& scene, KORA4APITechnology technology) {
    KORA4PatchValueUnion value{};
    value.m_technology = technology;
    return scene.pApi->GetSimplePatchValue(&value);
}

HRESULT SetWhole(Scene& scene, KORA4APITechnology technology) {
    KORA4PatchValueUnion value{};
    value.m_technology = technology;
    value.m_values.m_volumeSlider = scene.round % 5;
    return scene.pApi->SetSimplePatchValue(&value);
}

HRESULT SetFloat(Scene& scene, KORA4APITechnology technology) {
    KORA4PatchValueUnion value{};
    value.m_technology = technology;
    value.m_values.m_enhancementSlider = static_cast<float>(scene.round % 10) / 10;
    return scene.pApi->SetSimplePatchValue(&value);
}

HRESULT GetEqualizer(Scene& scene) {
    GraphicEQData data;
    return scene.pApi->GetGraphicEQData(&data);
}

HRESULT SetEqualizer(Scene& scene) {
    GraphicEQData data{};
    data.m_bands = 10;
    for (ULONG band = 0; band < data.m_bands; ++band)
        data.m_freq[band] = 288;
    data.m_gain[0] = static_cast<float>(scene.round % 10);
    return scene.pApi->SetGraphicEQData(&data);
}

// The cases in the order of the interface; the texts are the first column of the list.
std::vector<Case> ProfileCases() {
    using S = Scene&;
    return {
        {"GetActiveProfile", S_OK, nullptr,
         [](S s) {
             LONG profile = 0;
             return s.pApi->GetActiveProfile(&profile);
         },
         [](S s) { bare::GetSetting(s.bare, s.place.profile); }},
        {"SetActiveProfile to a preset", S_OK, InMovie,
         [](S s) { return s.pApi->SetActiveProfile(1 + static_cast<LONG>(s.round % 2)); },
         [](S s) { bare::SwitchProfile(s.bare, 1 + s.round % 2); }},
        {"SetActiveProfile to a custom profile", S_OK, InMovie,
         [](S s) { return s.pApi->SetActiveProfile(3 + static_cast<LONG>(s.round % 2)); },
         [](S s) { bare::SwitchProfile(s.bare, 3 + s.round % 2); }},
        {"RevertActiveProfile", S_OK, InMovie,
         [](S s) { return s.pApi->RevertActiveProfile(); }, [](S s) { bare::Revert(s.bare); }},
        {"SetDemoProfileAndEnable", S_OK, InMovie,
         [](S s) {
             return s.pApi->SetDemoProfileAndEnable(
                 static_cast<LONG>(cDemoMovieProfile + s.round % 3), TRUE);
         },
         [](S s) { bare::EnterDemo(s.bare, cDemoMovieProfile + s.round % 3); }},
        {"RevertFromDemoMode", S_OK, InOwnDemo,
         [](S s) { return s.pApi->RevertFromDemoMode(); },
         [](S s) { bare::LeaveDemo(s.bare); }},
        {"ForceRevertFromDemoMode in a demo", S_OK, InDemo,
         [](S s) { return s.pApi->ForceRevertFromDemoMode(); },
         [](S s) { bare::LeaveDemo(s.bare); }},
        {"ForceRevertFromDemoMode outside", S_OK, InMovie,
         [](S s) { return s.pApi->ForceRevertFromDemoMode(); },
         [](S s) { bare::GetSetting(s.bare, s.place.profile); }},
    };
}

std::vector<Case> EngineCases() {
    using S = Scene&;
    return {
        {"GetVisualizationSamplingPeriod", S_OK, nullptr,
         [](S s) {
             ULONG period = 0;
             return s.pApi->GetVisualizationSamplingPeriod(&period);
         },
         [](S s) { bare::GetSetting(s.bare, s.place.period); }},
        {"SetVisualizationSamplingPeriod", S_OK, nullptr,
         [](S s) { return s.pApi->SetVisualizationSamplingPeriod(Period(s)); },
         [](S s) { bare::SetSetting(s.bare, s.place.period, Period(s)); }},
        {"GetVisualizationData", S_OK, nullptr,
         [](S s) {
             float gains[KORA4_VISUALIZATION_BANDS];
             float excitations[KORA4_VISUALIZATION_BANDS];
             return s.pApi->GetVisualizationData(gains, excitations);
         },
         [](S s) { bare::GetLevels(s.bare); }},
        {"GetVeltoProfileEditorCommand", S_OK, nullptr,
         [](S s) { return FreeCommand(s, &IVeltoKORA4API::GetVeltoProfileEditorCommand); },
         [](S s) { bare::GetCommand(s.bare); }},
        {"GetVeltoProfileSelectorCommand", S_OK, nullptr,
         [](S s) { return FreeCommand(s, &IVeltoKORA4API::GetVeltoProfileSelectorCommand); },
         [](S s) { bare::GetCommand(s.bare); }},
        {"GetVeltoDemoAppCommand", S_OK, nullptr,
         [](S s) { return FreeCommand(s, &IVeltoKORA4API::GetVeltoDemoAppCommand); },
         [](S s) { bare::GetCommand(s.bare); }},
        {"GetVeltoEnable", S_OK, nullptr,
         [](S s) {
             BOOL enable = FALSE;
             return s.pApi->GetVeltoEnable(&enable);
         },
         [](S s) { bare::GetSetting(s.bare, s.place.enable); }},
        {"SetVeltoEnable", S_OK, nullptr,
         [](S s) { return s.pApi->SetVeltoEnable(s.round % 2 == 0); },
         [](S s) { bare::ReplaceSetting(s.bare, s.place.enable, s.round % 2 == 0); }},
        {"ToggleVeltoEnable", S_OK, nullptr,
         [](S s) {
             BOOL enable = FALSE;
             return s.pApi->ToggleVeltoEnable(&enable);
         },
         [](S s) { bare::ToggleSetting(s.bare, s.place.enable); }},
    };
}

std::vector<Case> TableCases() {
    using S = Scene&;
    return {
        {"GetProfileTable", S_OK, nullptr, GetTable, [](S s) { bare::GetTable(s.bare); }},
        {"SetCustomProfileName", S_OK, nullptr,
         [](S s) { return s.pApi->SetCustomProfileName(cSomeCustomProfile, L"A short name"); },
         [](S s) { bare::Rename(s.bare, cSomeCustomProfile); }},
        {"CreateCustomProfile", S_OK, WithoutNewProfile,
         [](S s) { return s.pApi->CreateCustomProfile(cNewCustomProfile, L"A short name"); },
         [](S s) { bare::Create(s.bare, cNewCustomProfile); }},
        {"DeleteCustomProfile", S_OK, WithNewProfile,
         [](S s) { return s.pApi->DeleteCustomProfile(cNewCustomProfile); },
         [](S s) { bare::Delete(s.bare, cNewCustomProfile); }},
    };
}

std::vector<Case> TechnologyCases() {
    using S = Scene&;
    return {
        {"GetTechnologyMasterEnables", S_OK, nullptr,
         [](S s) {
             ULONG mask = 0;
             return s.pApi->GetTechnologyMasterEnables(&mask);
         },
         Nothing},
        {"GetTechnologyOnElseOff", S_OK, InMovie,
         [](S s) {
             BOOL on = FALSE;
             return s.pApi->GetTechnologyOnElseOff(eDialogEnhancer, &on);
         },
         [](S s) { bare::GetSwitch(s.bare, eEnhancementTech); }},
        {"SetTechnologyOnElseOff", S_OK, InMovie,
         [](S s) { return s.pApi->SetTechnologyOnElseOff(eDialogEnhancer, s.round % 2 == 0); },
         [](S s) { bare::SetSwitch(s.bare, eEnhancementTech, s.round % 2 == 0); }},
        {"GetSimplePatchValue, eVolumeLeveler", S_OK, InMovie,
         [](S s) { return GetSlider(s, eVolumeLeveler); },
         [](S s) { bare::GetPatch(s.bare, eVolumeTech); }},
        {"GetSimplePatchValue, eIntelligentEQ", S_OK, InMovie,
         [](S s) { return GetSlider(s, eIntelligentEQ); },
         [](S s) { bare::GetPatch(s.bare, eDynamicEQTech); }},
        {"GetSimplePatchValue, eDialogEnhancer", S_OK, InMovie,
         [](S s) { return GetSlider(s, eDialogEnhancer); },
         [](S s) { bare::GetPatch(s.bare, eEnhancementTech); }},
        {"GetSimplePatchValue, eVirtualizerHP", S_OK, InMovie,
         [](S s) { return GetSlider(s, eVirtualizerHP); },
         [](S s) { bare::GetPatch(s.bare, eHeadphoneTech); }},
        {"GetSimplePatchValue, eVirtualizerSpkr", S_OK, InMovie,
         [](S s) { return GetSlider(s, eVirtualizerSpkr); },
         [](S s) { bare::GetPatch(s.bare, eVirtualSurroundTech); }},
        {"SetSimplePatchValue, eVolumeLeveler", S_OK, InMovie,
         [](S s) { return SetWhole(s, eVolumeLeveler); },
         [](S s) { bare::SetSlider(s.bare, eVolumeTech, 3, s.round % 5); }},
        {"SetSimplePatchValue, eIntelligentEQ", S_OK, InMovie,
         [](S s) { return SetWhole(s, eIntelligentEQ); },
         [](S s) { bare::SetSlider(s.bare, eDynamicEQTech, 5, s.round % 5); }},
        {"SetSimplePatchValue, eDialogEnhancer", S_OK, InMovie,
         [](S s) { return SetFloat(s, eDialogEnhancer); },
         [](S s) { bare::SetSlider(s.bare, eEnhancementTech, 3, s.round); }},
        {"SetSimplePatchValue, eVirtualizerHP", S_OK, InMovie,
         [](S s) { return SetFloat(s, eVirtualizerHP); },
         [](S s) { bare::SetSlider(s.bare, eHeadphoneTech, 3, s.round); }},
        {"SetSimplePatchValue, eVirtualizerSpkr", S_OK, InMovie,
         [](S s) { return SetFloat(s, eVirtualizerSpkr); },
         [](S s) { bare::SetSlider(s.bare, eVirtualSurroundTech, 3, s.round); }},
        {"SetGraphicEQData", S_OK, InMovie, SetEqualizer,
         [](S s) { bare::SetEqualizer(s.bare, s.round); }},
        {"GetGraphicEQData", S_OK, InMovie, GetEqualizer,
         [](S s) { bare::GetPatch(s.bare, eStandardEQTech); }},
    };
}

}  // namespace

const std::vector<Case>& Cases() {
    static const std::vector<Case> cases = [] {
        using S = Scene&;
        std::vector<Case> all = {
            {"GetVeltoKORA4Version", S_OK, nullptr,
             [](S s) {
                 ULONG numbers[4];
                 return s.pApi->GetVeltoKORA4Version(&numbers[0], &numbers[1], &numbers[2],
                                                     &numbers[3]);
             },
             Nothing},
            {"RegisterChangeNotifications", S_OK, nullptr,
             [](S s) { return s.pApi->RegisterChangeNotifications(s.pCallback); }, Nothing},
            {"UnregisterChangeNotifications", S_OK,
             [](S s) { s.pApi->RegisterChangeNotifications(s.pCallback); },
             [](S s) { return s.pApi->UnregisterChangeNotifications(); }, Nothing},
        };
        for (const std::vector<Case>& some :
             {ProfileCases(), EngineCases(), TableCases(), TechnologyCases()})
            all.insert(all.end(), some.begin(), some.end());
        return all;
    }();
    return cases;
}

}  // namespace kora4::bench
