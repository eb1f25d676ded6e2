// SPDX-License-Identifier: MIT
// The steps of a trial, one for each method, with the checks of results and of what was
// written.
#include "faults/store_trial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

namespace kora4::test {

using Microsoft::WRL::ComPtr;

namespace {

constexpr std::uint32_t cOwnDemoPids[] = {7, 8};  // the enable and the profile before it

std::uint32_t Stored(const StoreReader& reader, StoreKeys::Key key, const std::wstring& name) {
    const auto number = reader.Number(key, name);
    EXPECT_TRUE(number.has_value()) << "a written number cannot be read";
    return number.value_or(0xDEAD);
}

}  // namespace

std::map<std::string, unsigned>& StoreTrial::Outcomes() {
    static std::map<std::string, unsigned> outcomes;
    return outcomes;
}

void StoreTrial::Note(const char* method, HRESULT hr) {
    char text[80];
    std::snprintf(text, sizeof text, "%-32s 0x%08x", method, static_cast<unsigned>(hr));
    ++Outcomes()[text];
}

const std::vector<StoreTrial::NamedStep>& StoreTrial::Steps() {
    static const std::vector<NamedStep> steps = {
        {"GetVeltoKORA4Version", &StoreTrial::CheckVersion},
        {"Initialize", &StoreTrial::CheckInitialize},
        {"RegisterChangeNotifications", &StoreTrial::CheckRegister},
        {"UnregisterChangeNotifications", &StoreTrial::CheckUnregister},
        {"GetActiveProfile", &StoreTrial::CheckGetActiveProfile},
        {"SetActiveProfile", &StoreTrial::CheckSetActiveProfile},
        {"RevertActiveProfile", &StoreTrial::CheckRevertActiveProfile},
        {"SetDemoProfileAndEnable", &StoreTrial::CheckSetDemo},
        {"RevertFromDemoMode", &StoreTrial::CheckRevertFromDemo},
        {"ForceRevertFromDemoMode", &StoreTrial::CheckForceRevert},
        {"GetVisualizationSamplingPeriod", &StoreTrial::CheckGetPeriod},
        {"SetVisualizationSamplingPeriod", &StoreTrial::CheckSetPeriod},
        {"GetVisualizationData", &StoreTrial::CheckLevels},
        {"GetVeltoProfileEditorCommand", &StoreTrial::CheckEditorCommand},
        {"GetVeltoProfileSelectorCommand", &StoreTrial::CheckSelectorCommand},
        {"GetVeltoDemoAppCommand", &StoreTrial::CheckDemoCommand},
        {"GetVeltoEnable", &StoreTrial::CheckGetEnable},
        {"SetVeltoEnable", &StoreTrial::CheckSetEnable},
        {"ToggleVeltoEnable", &StoreTrial::CheckToggleEnable},
        {"GetProfileTable", &StoreTrial::CheckTable},
        {"SetCustomProfileName", &StoreTrial::CheckRename},
        {"CreateCustomProfile", &StoreTrial::CheckCreate},
        {"DeleteCustomProfile", &StoreTrial::CheckDelete},
        {"GetTechnologyMasterEnables", &StoreTrial::CheckMask},
        {"GetTechnologyOnElseOff", &StoreTrial::CheckGetSwitch},
        {"SetTechnologyOnElseOff", &StoreTrial::CheckSetSwitch},
        {"GetSimplePatchValue", &StoreTrial::CheckGetValue},
        {"SetSimplePatchValue", &StoreTrial::CheckSetValue},
        {"SetGraphicEQData", &StoreTrial::CheckSetEQ},
        {"GetGraphicEQData", &StoreTrial::CheckGetEQ},
    };
    return steps;
}

void StoreTrial::DamageSome(unsigned count) {
    static const std::vector<SchemaValue> whole = WholeSchema();
    static const std::vector<SchemaValue> common = CommonSchema();
    const std::uint32_t profile = m_reader.Profile();
    const std::vector<SchemaValue> active =
        SchemaOfProfile(IsSelectable(profile) || IsDemo(profile) ? profile : 0);
    for (unsigned i = 0; i < count; ++i) {
        const std::uint32_t kind = m_damage.Pick(4);
        const std::vector<SchemaValue>& values = kind < 2 ? active : kind < 3 ? common : whole;
        m_damage.Apply(m_keys,
                       values[m_damage.Pick(static_cast<std::uint32_t>(values.size()))]);
    }
}

void StoreTrial::Run(ComPtr<IVeltoKORA4API> spApi) {
    m_spApi = std::move(spApi);
    DamageSome(40);
    m_mask = m_reader.NumberOr(StoreKeys::eStatic, MasterEnablesName(), 0);
    for (std::uint32_t i = 0; i < 3; ++i)
        m_commands[i] = m_reader.Text(StoreKeys::eApp, SettingName(61 + i));
    ASSERT_EQ(S_OK, m_spApi->Initialize());

    std::vector<NamedStep> steps = Steps();
    ASSERT_EQ(30u, steps.size());
    for (std::size_t left = steps.size(); left > 1; --left)
        std::swap(steps[left - 1], steps[m_damage.Pick(static_cast<std::uint32_t>(left))]);
    for (const NamedStep& step : steps) {
        SCOPED_TRACE(step.name);
        if (m_damage.OneIn(3))
            DamageSome(1 + m_damage.Pick(4));
        (this->*step.step)();
        if (testing::Test::HasFailure())
            return;
    }
}

void StoreTrial::RunNotification() {
    ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
    ASSERT_EQ(S_OK, m_spApi->RegisterChangeNotifications(spRecorder.Get()));
    DamageSome(10);
    m_keys.WriteNumber(StoreKeys::eDynamic, SettingName(cTablePid), m_damage.Number());
    EXPECT_TRUE(spRecorder->WaitForLine("OnCustomProfileTableChange()"));
    EXPECT_EQ(S_OK, m_spApi->UnregisterChangeNotifications());
}

StoreTrial::Snapshot StoreTrial::SometimesEverything() {
    return m_damage.OneIn(50) ? std::optional(m_keys.Everything()) : std::nullopt;
}

void StoreTrial::ExpectUntouched(const Snapshot& before) {
    if (before) {
        EXPECT_TRUE(*before == m_keys.Everything()) << "the store has changed";
    }
}

// ---- Start, version, callback -----------------------------------------------------------

void StoreTrial::CheckVersion() {
    ULONG v[4] = {};
    EXPECT_EQ(S_OK, m_spApi->GetVeltoKORA4Version(&v[0], &v[1], &v[2], &v[3]));
    EXPECT_EQ(7u, v[0]);
    EXPECT_EQ(2u, v[1]);
    EXPECT_EQ(7000u, v[2]);
    EXPECT_EQ(4u, v[3]);
}

void StoreTrial::CheckInitialize() {
    const auto before = SometimesEverything();
    EXPECT_EQ(S_OK, m_spApi->Initialize());
    ExpectUntouched(before);
}

void StoreTrial::CheckRegister() {
    EXPECT_EQ(S_OK, m_spApi->RegisterChangeNotifications(CallbackRecorder::Create().Get()));
}

void StoreTrial::CheckUnregister() {
    EXPECT_EQ(S_OK, m_spApi->UnregisterChangeNotifications());
}

// ---- Profiles and demo mode -------------------------------------------------------------

void StoreTrial::CheckGetActiveProfile() {
    const auto before = SometimesEverything();
    LONG profile = -77;
    EXPECT_EQ(S_OK, m_spApi->GetActiveProfile(&profile));
    EXPECT_EQ(m_reader.Profile(), static_cast<std::uint32_t>(profile));
    ExpectUntouched(before);
}

void StoreTrial::CheckSetActiveProfile() {
    const std::uint32_t target = m_damage.OneIn(8) ? m_damage.SomeNumber() : m_damage.Pick(9);
    HRESULT expected = S_OK;
    if (!IsSelectable(target))
        expected = E_INVALIDARG;
    else if (IsDemo(m_reader.Profile()))
        expected = KORA4_S_DEMO_MODE_ACTIVE;
    else if (target >= 3 && m_reader.Text(StoreKeys::eStatic, ProfileNameName(target)).state !=
                                TextState::eReadable)
        expected = KORA4_S_NO_SUCH_CUSTOM_PROFILE;
    const auto before = expected == S_OK ? std::nullopt : SometimesEverything();
    const HRESULT hr = m_spApi->SetActiveProfile(static_cast<LONG>(target));
    EXPECT_EQ(expected, hr);
    Note("SetActiveProfile", hr);
    if (expected == S_OK) {
        EXPECT_EQ(target, Stored(m_reader, StoreKeys::eDynamic, SettingName(cProfilePid)));
    }
    ExpectUntouched(before);
}

void StoreTrial::CheckRevertActiveProfile() {
    const std::uint32_t profile = m_reader.Profile();
    std::vector<Values> factory;
    std::vector<bool> flags;
    std::vector<std::uint32_t> triggers;
    if (profile < 3) {
        for (const Technology& technology : Technologies()) {
            factory.push_back(ValuesOf(technology, cDemoMovie + profile));
            flags.push_back(m_reader.Flag(technology, cDemoMovie + profile));
            triggers.push_back(
                m_reader.NumberOr(StoreKeys::eDynamic, TriggerName(technology.offset), 0));
        }
    }
    const auto before = profile < 3 ? std::nullopt : SometimesEverything();
    const HRESULT hr = m_spApi->RevertActiveProfile();
    EXPECT_EQ(profile < 3 ? S_OK : KORA4_S_NOT_A_PRESET_PROFILE, hr);
    Note("RevertActiveProfile", hr);
    for (std::size_t i = 0; i < factory.size(); ++i) {
        const Technology& technology = Technologies()[i];
        ExpectStored(technology, profile, flags[i], factory[i]);
        EXPECT_EQ(triggers[i] + 1,
                  Stored(m_reader, StoreKeys::eDynamic, TriggerName(technology.offset)));
    }
    ExpectUntouched(before);
}

void StoreTrial::CheckSetDemo() {
    const std::uint32_t target =
        m_damage.OneIn(8) ? m_damage.SomeNumber() : cDemoMovie + m_damage.Pick(3);
    const bool enable = m_damage.OneIn(2);
    const std::uint32_t profile = m_reader.Profile();
    const bool enableBefore = m_reader.Enable();
    HRESULT expected = S_OK;
    if (!IsDemo(target))
        expected = E_INVALIDARG;
    else if (IsDemo(profile) && !m_demo)
        expected = KORA4_S_DEMO_MODE_ACTIVE;
    const auto before = expected == S_OK ? std::nullopt : SometimesEverything();
    const HRESULT hr = m_spApi->SetDemoProfileAndEnable(static_cast<LONG>(target), enable);
    EXPECT_EQ(expected, hr);
    Note("SetDemoProfileAndEnable", hr);
    ExpectUntouched(before);
    if (expected != S_OK)
        return;
    m_demo = true;
    EXPECT_EQ(target, Stored(m_reader, StoreKeys::eDynamic, SettingName(cProfilePid)));
    EXPECT_EQ(enable ? 1u : 0u, Stored(m_reader, StoreKeys::eDynamic, SettingName(cEnablePid)));
    if (!IsDemo(profile)) {
        EXPECT_EQ(enableBefore ? 1u : 0u,
                  Stored(m_reader, StoreKeys::eStatic, SettingName(cOwnDemoPids[0])));
        EXPECT_EQ(profile, Stored(m_reader, StoreKeys::eStatic, SettingName(cOwnDemoPids[1])));
    }
}

void StoreTrial::ExpectRestored(std::uint32_t profile, bool enable) {
    EXPECT_EQ(profile, Stored(m_reader, StoreKeys::eDynamic, SettingName(cProfilePid)));
    EXPECT_EQ(enable ? 1u : 0u, Stored(m_reader, StoreKeys::eDynamic, SettingName(cEnablePid)));
}

namespace {

// A saved number that is not a selectable profile counts as Movie.
std::uint32_t ProfileToRestore(const StoreReader& reader) {
    const std::uint32_t saved =
        reader.NumberOr(StoreKeys::eStatic, SettingName(cOwnDemoPids[1]), 0);
    return IsSelectable(saved) ? saved : 0;
}

bool EnableToRestore(const StoreReader& reader) {
    return reader.NumberOr(StoreKeys::eStatic, SettingName(cOwnDemoPids[0]), 1) != 0;
}

}  // namespace

void StoreTrial::CheckRevertFromDemo() {
    const bool inDemo = IsDemo(m_reader.Profile());
    const HRESULT expected = !m_demo  ? KORA4_S_DEMO_MODE_ACTIVE
                             : inDemo ? S_OK
                                      : KORA4_S_NOT_IN_DEMO_PROFILE;
    const std::uint32_t profile = ProfileToRestore(m_reader);
    const bool enable = EnableToRestore(m_reader);
    const auto before = expected == S_OK ? std::nullopt : SometimesEverything();
    const HRESULT hr = m_spApi->RevertFromDemoMode();
    EXPECT_EQ(expected, hr);
    Note("RevertFromDemoMode", hr);
    ExpectUntouched(before);
    if (expected == S_OK) {
        m_demo = false;
        ExpectRestored(profile, enable);
    }
}

void StoreTrial::CheckForceRevert() {
    const bool inDemo = IsDemo(m_reader.Profile());
    const std::uint32_t profile = ProfileToRestore(m_reader);
    const bool enable = EnableToRestore(m_reader);
    const auto before = inDemo ? std::nullopt : SometimesEverything();
    EXPECT_EQ(S_OK, m_spApi->ForceRevertFromDemoMode());
    Note(inDemo ? "ForceRevertFromDemoMode in demo" : "ForceRevertFromDemoMode", S_OK);
    ExpectUntouched(before);
    if (inDemo) {
        m_demo = false;
        ExpectRestored(profile, enable);
    }
}

// ---- Custom profiles --------------------------------------------------------------------

void StoreTrial::CheckTable() {
    // The first name that cannot be read ends the table.
    HRESULT expected = S_OK;
    StoredText names[KORA4_PROFILE_TABLE_ENTRIES];
    for (std::uint32_t profile = cFirstCustom; profile < cProfileBound && expected == S_OK;
         ++profile) {
        names[profile] = m_reader.Text(StoreKeys::eStatic, ProfileNameName(profile));
        if (names[profile].state == TextState::eUnreadable)
            expected = E_FAIL;
    }
    const auto before = SometimesEverything();
    LPWSTR table[KORA4_PROFILE_TABLE_ENTRIES] = {};
    const HRESULT hr = m_spApi->GetProfileTable(table);
    EXPECT_EQ(expected, hr);
    Note("GetProfileTable", hr);
    ExpectUntouched(before);
    for (std::uint32_t profile = 0; profile < cProfileBound; ++profile) {
        const bool named = names[profile].state == TextState::eReadable;
        EXPECT_EQ(named, table[profile] != nullptr) << profile;
        if (named && table[profile]) {
            EXPECT_EQ(names[profile].text, table[profile]) << profile;
        }
        CoTaskMemFree(table[profile]);
    }
}

void StoreTrial::CheckRename() {
    const std::uint32_t profile = m_damage.Pick(10);
    const std::wstring name = m_damage.SomeText(60);
    const std::wstring valueName = ProfileNameName(profile);
    const bool custom = IsCustom(profile);
    const bool exists =
        custom && m_reader.Text(StoreKeys::eStatic, valueName).state == TextState::eReadable;
    const HRESULT expected = !custom ? E_INVALIDARG : exists ? S_OK : E_FAIL;
    const std::uint32_t counter = m_reader.TableCounter();
    const auto before = exists ? std::nullopt : SometimesEverything();
    const HRESULT hr = m_spApi->SetCustomProfileName(static_cast<LONG>(profile), name.c_str());
    EXPECT_EQ(expected, hr);
    Note("SetCustomProfileName", hr);
    ExpectUntouched(before);
    if (exists) {
        EXPECT_EQ(name, m_reader.Text(StoreKeys::eStatic, valueName).text);
        EXPECT_EQ(counter + 1, Stored(m_reader, StoreKeys::eDynamic, SettingName(cTablePid)));
    }
}

void StoreTrial::CheckCreate() {
    const std::uint32_t profile = m_damage.Pick(10);
    const std::wstring name = m_damage.SomeText(60);
    const std::wstring valueName = ProfileNameName(profile);
    const bool custom = IsCustom(profile);
    const bool absent =
        custom && m_reader.Text(StoreKeys::eStatic, valueName).state == TextState::eAbsent;
    const std::uint32_t source = m_reader.Profile();
    std::vector<Values> values;
    std::vector<bool> flags;
    for (const Technology& technology : Technologies()) {
        values.push_back(ValuesOf(technology, source));
        flags.push_back(m_reader.Flag(technology, source));
    }
    const std::uint32_t counter = m_reader.TableCounter();
    const auto before = absent ? std::nullopt : SometimesEverything();
    const HRESULT hr = m_spApi->CreateCustomProfile(static_cast<LONG>(profile), name.c_str());
    EXPECT_EQ(!custom ? E_INVALIDARG : absent ? S_OK : E_FAIL, hr);
    Note("CreateCustomProfile", hr);
    ExpectUntouched(before);
    if (!absent)
        return;
    EXPECT_EQ(name, m_reader.Text(StoreKeys::eStatic, valueName).text);
    EXPECT_EQ(counter + 1, Stored(m_reader, StoreKeys::eDynamic, SettingName(cTablePid)));
    for (std::size_t i = 0; i < values.size(); ++i)
        ExpectStored(Technologies()[i], profile, flags[i], values[i]);
}

void StoreTrial::CheckDelete() {
    const std::uint32_t profile = m_damage.Pick(10);
    const std::wstring valueName = ProfileNameName(profile);
    HRESULT expected = S_OK;
    if (profile < 3 || profile > 8)
        expected = E_INVALIDARG;
    else if (m_reader.Profile() == profile)
        expected = E_FAIL;
    else if (!m_keys.Read(StoreKeys::eStatic, valueName))
        expected = S_FALSE;
    const std::uint32_t counter = m_reader.TableCounter();
    const auto before = expected == S_OK ? std::nullopt : SometimesEverything();
    const HRESULT hr = m_spApi->DeleteCustomProfile(static_cast<LONG>(profile));
    EXPECT_EQ(expected, hr);
    Note("DeleteCustomProfile", hr);
    ExpectUntouched(before);
    if (expected == S_OK) {
        EXPECT_FALSE(m_keys.Read(StoreKeys::eStatic, valueName));
        EXPECT_EQ(counter + 1, Stored(m_reader, StoreKeys::eDynamic, SettingName(cTablePid)));
    }
}

}  // namespace kora4::test
