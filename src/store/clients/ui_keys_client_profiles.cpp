// SPDX-License-Identifier: MIT
// Profiles, demo mode and the table of custom profiles.
#include <algorithm>
#include <array>

#include "store/access/profile_key.h"
#include "store/clients/run_under_mutex.h"

namespace kora4 {

namespace {

// The preset technologies that have settings, in order.
constexpr std::array cSettableTechnologies = {
    eVolumeTech,    eEnhancementTech,     eDynamicEQTech, eStandardEQTech,
    eHeadphoneTech, eVirtualSurroundTech, eNGSurroundTech};
static_assert(cSettableTechnologies.size() == eNumberKORA4PresetTechnologies - 1);

}  // namespace

HRESULT KORA4UIKeysClient::GetActiveProfile(std::uint32_t* pProfile) {
    return RunUnderMutex("KORA4UIKeysClient::GetActiveProfile", true,
                         [&]() REQUIRES(m_regKeysMutex) {
                             *pProfile = ReadActivePreset();
                             return result::cOk;
                         });
}

HRESULT KORA4UIKeysClient::SetActiveProfile(std::uint32_t profile) {
    const bool argumentsGood = IsSelectableProfile(profile);
    return RunUnderMutex(
        "KORA4UIKeysClient::SetActiveProfile", argumentsGood, [&]() REQUIRES(m_regKeysMutex) {
            const std::uint32_t current = ReadActivePreset();
            if (IsDemoProfile(current))
                return KORA4_S_DEMO_MODE_ACTIVE;
            TaskPtr<char16_t> name;
            if (IsCustomProfile(profile) && ReadProfileName(profile, &name) != result::cOk)
                return KORA4_S_NO_SUCH_CUSTOM_PROFILE;
            return ProfileStateChange({current, profile}, nullptr);
        });
}

HRESULT KORA4UIKeysClient::RevertActiveProfile() {
    return RunUnderMutex(
        "KORA4UIKeysClient::RevertActiveProfile", true, [&]() REQUIRES(m_regKeysMutex) {
            const std::uint32_t profile = ReadActivePreset();
            if (!IsPresetProfile(profile))
                return KORA4_S_NOT_A_PRESET_PROFILE;

            // The paired demo profile stores the factory values.
            const std::uint32_t demoProfile = DemoProfileOf(profile);
            m_patches.LoadPresetPatches(*m_pKeyAccess, demoProfile, false);
            RefreshPatches(profile, m_baseline.enable);
            HRESULT hr = result::cOk;
            for (const KORA4PresetTechnology technology : cSettableTechnologies) {
                hr = m_patches.WritePresetPatch(*m_pKeyAccess, profile, technology, true,
                                                ReadKnown(profile, technology));
                if (result::Failed(hr))
                    break;
            }
            return Overtake(hr, profile, OvertakenItems::cTechnologies);
        });
}

HRESULT KORA4UIKeysClient::SetDemoProfileAndEnable(std::uint32_t demoProfile, bool enable) {
    return RunUnderMutex(
        "KORA4UIKeysClient::SetDemoProfileAndEnable", IsDemoProfile(demoProfile),
        [&]() REQUIRES(m_regKeysMutex) {
            const std::uint32_t current = ReadActivePreset();
            if (IsDemoProfile(current) && !m_demoMode)
                return KORA4_S_DEMO_MODE_ACTIVE;  // somebody else's demo
            const Change<bool> change{ReadMasterEnable(), enable};
            const HRESULT hr = ProfileStateChange({current, demoProfile}, &change);
            if (result::Succeeded(hr)) {
                // From one demo to another the first saved state is kept.
                if (!IsDemoProfile(current))
                    SaveStateBeforeDemo(current, change.before);
                m_demoMode = true;
            }
            return hr;
        });
}

HRESULT KORA4UIKeysClient::RevertFromDemoMode() {
    return RunUnderMutex("KORA4UIKeysClient::RevertFromDemoMode", true,
                         [&]() REQUIRES(m_regKeysMutex) {
                             if (!m_demoMode)
                                 return KORA4_S_DEMO_MODE_ACTIVE;
                             const std::uint32_t current = ReadActivePreset();
                             if (!IsDemoProfile(current))
                                 return KORA4_S_NOT_IN_DEMO_PROFILE;
                             return RestoreStateBeforeDemo(current);
                         });
}

HRESULT KORA4UIKeysClient::ForceRevertFromDemoMode() {
    return RunUnderMutex(
        "KORA4UIKeysClient::ForceRevertFromDemoMode", true, [&]() REQUIRES(m_regKeysMutex) {
            const std::uint32_t current = ReadActivePreset();
            return IsDemoProfile(current) ? RestoreStateBeforeDemo(current) : result::cOk;
        });
}

HRESULT KORA4UIKeysClient::GetProfileTable(char16_t** ppwNames) {
    std::array<TaskPtr<char16_t>, cSelectableProfileBound> names;
    for (std::size_t i = 0; i < names.size(); ++i)
        ppwNames[i] = nullptr;
    const HRESULT hr = RunUnderMutex(
        "KORA4UIKeysClient::GetProfileTable", true, [&]() REQUIRES(m_regKeysMutex) {
            for (std::uint32_t p = cFirstCustomProfile; p < cSelectableProfileBound; ++p) {
                const HRESULT hrName = ReadProfileName(p, &names[p]);
                if (result::Failed(hrName))
                    return hrName;
            }
            return result::cOk;
        });
    // The caller's memory is not touched while the mutex is held.
    for (std::size_t i = 0; i < names.size(); ++i)
        ppwNames[i] = names[i].Detach();
    return hr;
}

HRESULT KORA4UIKeysClient::CreateCustomProfile(std::uint32_t customProfile,
                                               const char16_t* pwName) {
    const bool argumentsGood = IsCustomProfile(customProfile) && pwName;
    return RunUnderMutex("KORA4UIKeysClient::CreateCustomProfile", argumentsGood,
                         [&]() REQUIRES(m_regKeysMutex) {
                             TaskPtr<char16_t> name;
                             const HRESULT hr = ReadProfileName(customProfile, &name);
                             if (hr == result::cOk)
                                 return result::cFail;  // exists
                             if (hr != result::cFalse)
                                 return hr;
                             // The name makes the profile exist, so it comes last. A profile
                             // whose values could not all be copied is still a profile: its
                             // missing values have defaults.
                             ActivePresetCopy(customProfile);
                             return WriteProfileName(customProfile, pwName);
                         });
}

HRESULT KORA4UIKeysClient::SetCustomProfileName(std::uint32_t customProfile,
                                                const char16_t* pwName) {
    const bool argumentsGood = IsCustomProfile(customProfile) && pwName;
    return RunUnderMutex("KORA4UIKeysClient::SetCustomProfileName", argumentsGood,
                         [&]() REQUIRES(m_regKeysMutex) {
                             TaskPtr<char16_t> name;
                             if (ReadProfileName(customProfile, &name) != result::cOk)
                                 return result::cFail;
                             return WriteProfileName(customProfile, pwName);
                         });
}

HRESULT KORA4UIKeysClient::DeleteCustomProfile(std::uint32_t customProfile) {
    const bool argumentsGood = IsCustomProfile(customProfile);
    return RunUnderMutex("KORA4UIKeysClient::DeleteCustomProfile", argumentsGood,
                         [&]() REQUIRES(m_regKeysMutex) {
                             if (ReadActivePreset() == customProfile)
                                 return result::cFail;
                             const HRESULT hr = m_pKeyAccess->Delete(
                                 eKeySetStatic, ProfileNameKey(customProfile));
                             return hr == result::cOk ? AnnounceTableChange() : hr;
                         });
}

HRESULT KORA4UIKeysClient::ReadProfileName(std::uint32_t customProfile,
                                           TaskPtr<char16_t>* pName) {
    return m_pKeyAccess->ReadText(eKeySetStatic, ProfileNameKey(customProfile), pName->Put());
}

HRESULT KORA4UIKeysClient::WriteProfileName(std::uint32_t customProfile,
                                            const char16_t* pwName) {
    const HRESULT hr =
        m_pKeyAccess->WriteText(eKeySetStatic, ProfileNameKey(customProfile), pwName);
    return result::Succeeded(hr) ? AnnounceTableChange() : hr;
}

HRESULT KORA4UIKeysClient::AnnounceTableChange() {
    const std::uint32_t before = ReadTableCounter();
    const Change<std::uint32_t> change{before, before + 1};
    return MoveOwn(
        Values().WriteUINT(eKeySetDynamic, pkey::Setting(pkey::cProfileTableCounterPid),
                           change.after),
        change, &m_baseline.tableCounter);
}

HRESULT KORA4UIKeysClient::ProfileStateChange(const Change<std::uint32_t>& profile,
                                              const Change<bool>* pEnable) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::ProfileStateChange");
    KALASSERT_TEXT(cSite, IsAllowableProfile(profile.after),
                   "IsAllowableProfile( newProfile )");

    const std::uint32_t knownProfile = m_baseline.profile;
    hr = UpdateActivePreset(profile);
    if (result::Failed(hr))
        return hr;
    if (pEnable)
        hr = WriteEnable(*pEnable);
    if (result::Succeeded(hr)) {
        m_patches.LoadPresetPatches(*m_pKeyAccess, profile.after, false);
        RefreshPatches(profile.after, m_baseline.enable);
    } else {
        m_patches.LoadPresetOnElseOff(*m_pKeyAccess, profile.after);
    }
    // The switches of the baseline are those of its profile.
    if (m_baseline.profile != knownProfile)
        std::ranges::copy(m_patches.m_dwPresetOnElseOff, m_baseline.words.m_dwPresetOnElseOff);
    if (result::Succeeded(hr) && profile.after != m_analysedProfile)
        m_overtaken.Add(OvertakenItems::cProfile | OvertakenItems::cTechnologies);
    return hr;
}

void KORA4UIKeysClient::SaveStateBeforeDemo(std::uint32_t profile, bool enable) {
    // The demo is entered even if the way back cannot be saved.
    Values().WriteUINT(eKeySetStatic, pkey::Setting(pkey::cSavedProfilePid), profile);
    Values().WriteBool(eKeySetStatic, pkey::Setting(pkey::cSavedEnablePid), enable);
}

HRESULT KORA4UIKeysClient::RestoreStateBeforeDemo(std::uint32_t demoProfile) {
    std::uint32_t profile =
        Values().UINTOr(eKeySetStatic, pkey::Setting(pkey::cSavedProfilePid), cMovieProfile);
    // A demo is left for a profile that a user can be in; a saved demo profile would keep
    // the user in the demo for good.
    if (!IsSelectableProfile(profile))
        profile = cMovieProfile;
    const bool enable =
        Values().BoolOr(eKeySetStatic, pkey::Setting(pkey::cSavedEnablePid), true);
    const Change<bool> change{ReadMasterEnable(), enable};
    const HRESULT hr = ProfileStateChange({demoProfile, profile}, &change);
    m_demoMode = false;
    return hr;
}

HRESULT KORA4UIKeysClient::ActivePresetCopy(std::uint32_t customProfile) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::ActivePresetCopy");
    KALASSERT_TEXT(cSite, IsCustomProfile(customProfile), "IsCustomProfile( customProfileID )");

    const std::uint32_t activeProfile = ReadActivePreset();
    m_patches.LoadPresetPatches(*m_pKeyAccess, activeProfile, false);
    for (const KORA4PresetTechnology technology : cSettableTechnologies) {
        hr = m_patches.WritePresetPatch(*m_pKeyAccess, customProfile, technology, false);
        if (result::Failed(hr))
            break;
    }
    return hr;
}

}  // namespace kora4
