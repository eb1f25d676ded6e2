// SPDX-License-Identifier: MIT
// Profiles, demo mode and the table of custom profiles.
#include <algorithm>
#include <array>

#include "store/access/profile_key.h"
#include "store/clients/ui_keys_client.h"
#include "trace/trace.h"

namespace kora4 {

HRESULT KORA4UIKeysClient::GetActiveProfile(std::uint32_t* pProfile) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetActiveProfile");
    const MutexHold hold(m_regKeysMutex);
    *pProfile = ReadActivePreset();
    return hr;
}

HRESULT KORA4UIKeysClient::SetActiveProfile(std::uint32_t profile) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::SetActiveProfile");
    if (!IsSelectableProfile(profile))
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    const std::uint32_t current = ReadActivePreset();
    if (IsDemoProfile(current))
        return hr = KORA4_S_DEMO_MODE_ACTIVE;
    TaskPtr<char16_t> name;
    if (IsCustomProfile(profile) && ReadProfileName(profile, &name) != result::cOk)
        return hr = KORA4_S_NO_SUCH_CUSTOM_PROFILE;
    return hr = ProfileStateChange({current, profile}, nullptr);
}

HRESULT KORA4UIKeysClient::RevertActiveProfile() {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::RevertActiveProfile");
    const MutexHold hold(m_regKeysMutex);
    const std::uint32_t profile = ReadActivePreset();
    if (!IsPresetProfile(profile))
        return hr = KORA4_S_NOT_A_PRESET_PROFILE;

    // The paired demo profile stores the factory values.
    const std::uint32_t demoProfile = DemoProfileOf(profile);
    m_patches.LoadPresetPatches(*m_pKeyAccess, demoProfile, false);
    RefreshPatches(profile, m_baseline.enable);
    for (const KORA4PresetTechnology technology : cPresetTechnologies)
        if (result::Succeeded(hr))
            hr = m_patches.WritePresetPatch(*m_pKeyAccess, profile, technology, true,
                                            ReadKnown(profile, technology));
    return hr = Overtake(hr, profile, OvertakenItems::cTechnologies);
}

HRESULT KORA4UIKeysClient::SetDemoProfileAndEnable(std::uint32_t demoProfile, bool enable) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::SetDemoProfileAndEnable");
    if (!IsDemoProfile(demoProfile))
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    const std::uint32_t current = ReadActivePreset();
    if (IsDemoProfile(current) && !m_demoMode)
        return hr = KORA4_S_DEMO_MODE_ACTIVE;  // somebody else's demo
    const Change<bool> change{ReadMasterEnable(), enable};
    hr = ProfileStateChange({current, demoProfile}, &change);
    if (result::Succeeded(hr)) {
        // From one demo to another the first saved state is kept.
        if (!IsDemoProfile(current))
            SaveStateBeforeDemo(current, change.before);
        m_demoMode = true;
    }
    return hr;
}

HRESULT KORA4UIKeysClient::RevertFromDemoMode() {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::RevertFromDemoMode");
    const MutexHold hold(m_regKeysMutex);
    if (!m_demoMode)
        return hr = KORA4_S_DEMO_MODE_ACTIVE;
    const std::uint32_t current = ReadActivePreset();
    if (!IsDemoProfile(current))
        return hr = KORA4_S_NOT_IN_DEMO_PROFILE;
    return hr = RestoreStateBeforeDemo(current);
}

HRESULT KORA4UIKeysClient::ForceRevertFromDemoMode() {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::ForceRevertFromDemoMode");
    const MutexHold hold(m_regKeysMutex);
    const std::uint32_t current = ReadActivePreset();
    if (IsDemoProfile(current))
        hr = RestoreStateBeforeDemo(current);
    return hr;
}

HRESULT KORA4UIKeysClient::GetProfileTable(char16_t** ppwNames) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetProfileTable");
    std::array<TaskPtr<char16_t>, cSelectableProfileBound> names;
    std::fill_n(ppwNames, names.size(), nullptr);
    {
        const MutexHold hold(m_regKeysMutex);
        for (std::uint32_t p = cFirstCustomProfile;
             p < cSelectableProfileBound && result::Succeeded(hr); ++p)
            hr = ReadProfileName(p, &names[p]);
    }
    // The caller's memory is not touched while the mutex is held.
    for (std::size_t i = 0; i < names.size(); ++i)
        ppwNames[i] = names[i].Detach();
    // A profile that does not exist is no failure.
    return hr = result::Failed(hr) ? hr : result::cOk;
}

HRESULT KORA4UIKeysClient::CreateCustomProfile(std::uint32_t customProfile,
                                               const char16_t* pwName) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::CreateCustomProfile");
    if (!IsCustomProfile(customProfile) || !pwName)
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    TaskPtr<char16_t> name;
    hr = ReadProfileName(customProfile, &name);
    if (hr == result::cOk)
        return hr = result::cFail;  // exists
    if (hr != result::cFalse)
        return hr;
    // The name makes the profile exist, so it comes last. A profile whose values could not all
    // be copied is still a profile: its missing values have defaults.
    ActivePresetCopy(customProfile);
    return hr = WriteProfileName(customProfile, pwName);
}

HRESULT KORA4UIKeysClient::SetCustomProfileName(std::uint32_t customProfile,
                                                const char16_t* pwName) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::SetCustomProfileName");
    if (!IsCustomProfile(customProfile) || !pwName)
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    TaskPtr<char16_t> name;
    if (ReadProfileName(customProfile, &name) != result::cOk)
        return hr = result::cFail;
    return hr = WriteProfileName(customProfile, pwName);
}

HRESULT KORA4UIKeysClient::DeleteCustomProfile(std::uint32_t customProfile) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::DeleteCustomProfile");
    if (!IsCustomProfile(customProfile))
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    if (ReadActivePreset() == customProfile)
        return hr = result::cFail;
    hr = m_pKeyAccess->Delete(eKeySetStatic, ProfileNameKey(customProfile));
    if (hr == result::cOk)
        hr = AnnounceTableChange();
    return hr;
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
    KALASSERT(cSite, msg::cAssertNewProfile, IsAllowableProfile(profile.after));

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
    std::uint32_t profile = ReadSetting<pkey::cSavedProfilePid>();
    // A demo is left for a profile that a user can be in; a saved demo profile would keep
    // the user in the demo for good.
    if (!IsSelectableProfile(profile))
        profile = cMovieProfile;
    const bool enable = ReadSetting<pkey::cSavedEnablePid>();
    const Change<bool> change{ReadMasterEnable(), enable};
    const HRESULT hr = ProfileStateChange({demoProfile, profile}, &change);
    m_demoMode = false;
    return hr;
}

HRESULT KORA4UIKeysClient::ActivePresetCopy(std::uint32_t customProfile) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::ActivePresetCopy");
    KALASSERT(cSite, msg::cAssertCustomProfile, IsCustomProfile(customProfile));

    const std::uint32_t activeProfile = ReadActivePreset();
    m_patches.LoadPresetPatches(*m_pKeyAccess, activeProfile, false);
    for (const KORA4PresetTechnology technology : cPresetTechnologies)
        if (result::Succeeded(hr))
            hr = m_patches.WritePresetPatch(*m_pKeyAccess, customProfile, technology, false);
    return hr;
}

}  // namespace kora4
