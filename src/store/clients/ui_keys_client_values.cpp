// SPDX-License-Identifier: MIT
// Switches, values, visualization, companion commands and the change analysis.
#include "contract/defaults.h"
#include "store/clients/ui_keys_client.h"
#include "trace/trace.h"

namespace kora4 {

HRESULT KORA4UIKeysClient::GetVeltoEnable(bool* pEnable) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetVeltoEnable");
    const MutexHold hold(m_regKeysMutex);
    *pEnable = ReadMasterEnable();
    return hr;
}

HRESULT KORA4UIKeysClient::SetVeltoEnable(bool enable) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::SetVeltoEnable");
    const MutexHold hold(m_regKeysMutex);
    return hr = WriteEnable({ReadMasterEnable(), enable});
}

HRESULT KORA4UIKeysClient::ToggleVeltoEnable(bool* pEnable) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::ToggleVeltoEnable");
    const MutexHold hold(m_regKeysMutex);
    const bool before = ReadMasterEnable();
    *pEnable = !before;
    return hr = WriteEnable({before, !before});
}

HRESULT KORA4UIKeysClient::WriteEnable(const Change<bool>& enable) {
    const HRESULT hr = MoveOwn(
        Values().WriteBool(eKeySetDynamic, pkey::Setting(pkey::cMasterEnablePid), enable.after),
        enable, &m_baseline.enable);
    if (result::Succeeded(hr))
        m_overtaken.Add(OvertakenItems::cEnable);
    return hr;
}

HRESULT KORA4UIKeysClient::GetTechnologyOnElseOff(KORA4PresetTechnology technology,
                                                  bool* pOnElseOff) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetTechnologyOnElseOff");
    if (!IsValidTechnology(technology))
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    // Switches are the stored ones in a demo profile too.
    hr = m_patches.LoadPresetPatchEnable(*m_pKeyAccess, ReadActivePreset(), false, technology);
    if (result::Succeeded(hr))
        *pOnElseOff = m_patches.m_dwPresetOnElseOff[technology] != 0;
    return hr;
}

HRESULT KORA4UIKeysClient::SetTechnologyOnElseOff(KORA4PresetTechnology technology,
                                                  bool onElseOff) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::SetTechnologyOnElseOff");
    if (!IsValidTechnology(technology))
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    const std::uint32_t profile = ReadActivePreset();
    const KnownWords known = ReadKnown(profile, technology);
    m_patches.m_dwPresetOnElseOff[technology] = onElseOff;
    hr = m_patches.WritePresetPatchEnable(*m_pKeyAccess, profile, technology, known);
    return hr = Overtake(hr, profile, OvertakenItems::Switch(technology));
}

HRESULT KORA4UIKeysClient::GetPatchValue(ApiTechnology technology, std::uint32_t size,
                                         void* pValue) {
    const KORA4PresetTechnology presetTech = PresetTechOf(technology);
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetPatchValue");
    if (presetTech == ePresetNoTech || !pValue || size == 0)
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    const std::uint32_t profile = ReadActivePreset();
    hr = m_patches.LoadPresetPatch(*m_pKeyAccess, profile, IsDemoProfile(profile), presetTech);
    if (result::Succeeded(hr))
        hr = ToASLPatch(m_patches.m_records, technology, size, pValue);
    return hr;
}

HRESULT KORA4UIKeysClient::SetPatchValue(ApiTechnology technology, std::uint32_t size,
                                         const void* pValue) {
    const KORA4PresetTechnology presetTech = PresetTechOf(technology);
    const bool argumentsGood =
        presetTech != ePresetNoTech && pValue && size >= ASLPatchSizeOf(technology);
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::SetPatchValue");
    if (!argumentsGood)
        return hr = result::cInvalidArg;
    const MutexHold hold(m_regKeysMutex);
    // The switch and the fields that the caller does not set are those of the store.
    const std::uint32_t profile = ReadActivePreset();
    const bool isDemo = IsDemoProfile(profile);
    hr = m_patches.LoadPresetPatchEnable(*m_pKeyAccess, profile, isDemo, presetTech);
    if (result::Succeeded(hr))
        hr = m_patches.LoadPresetPatchData(*m_pKeyAccess, profile, isDemo, presetTech,
                                           WorkingPartOf(technology));
    if (result::Succeeded(hr))
        hr = FromASLPatch(m_patches.m_records, technology, size, pValue);
    if (result::Succeeded(hr))
        hr = m_patches.WritePresetPatch(
            *m_pKeyAccess, profile, presetTech, true,
            // The switch is written back as it was read.
            {.pTrigger = &m_baseline.words.m_dwPresetTriggers[presetTech]});
    return hr = Overtake(hr, profile, OvertakenItems::Value(presetTech));
}

// What an own write of a technology is to move; reads the switch that it replaces. The
// switches that the client knows are those of one profile.
KnownWords KORA4UIKeysClient::ReadKnown(std::uint32_t profile,
                                        KORA4PresetTechnology technology) {
    TechnologyWords& words = m_baseline.words;
    return {profile == m_baseline.profile ? &words.m_dwPresetOnElseOff[technology] : nullptr,
            KORA4ManagedPatchSet::ReadPresetOnElseOff(*m_pKeyAccess, profile, technology),
            &words.m_dwPresetTriggers[technology]};
}

HRESULT KORA4UIKeysClient::GetSamplingPeriod(std::uint32_t* pMilliseconds) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetSamplingPeriod");
    const MutexHold hold(m_regKeysMutex);
    *pMilliseconds = ReadSetting<pkey::cSamplingPeriodPid>();
    return hr;
}

HRESULT KORA4UIKeysClient::SetSamplingPeriod(std::uint32_t milliseconds) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::SetSamplingPeriod");
    const MutexHold hold(m_regKeysMutex);
    return hr = Values().WriteUINT(eKeySetStatic, pkey::Setting(pkey::cSamplingPeriodPid),
                                   milliseconds);
}

HRESULT KORA4UIKeysClient::GetVisualizationBlob(std::uint32_t* pSize, std::uint8_t** ppData) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetVisualizationBlob");
    const MutexHold hold(m_regKeysMutex);
    return hr = m_pKeyAccess->ReadBlob(
               eKeySetStatic, pkey::Setting(pkey::cVisualizationDataPid), pSize, ppData);
}

HRESULT KORA4UIKeysClient::GetCommand(CompanionCommand command, char16_t** ppwCommand) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::GetCommand");
    *ppwCommand = nullptr;
    if (const char16_t* pwHeld = m_commands[static_cast<std::size_t>(command)].Get()) {
        *ppwCommand = DuplicateTaskText(pwHeld);
        hr = *ppwCommand ? result::cOk : result::cOutOfMemory;
    }
    return hr;
}

HRESULT KORA4UIKeysClient::AnalyseChanges(ChangeSet* pChanges) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4UIKeysClient::OnKeyChangeNotify");
    const MutexHold hold(m_regKeysMutex);
    *pChanges = {};
    pChanges->analysis = ++m_analyses;
    hr = DynamicKeyUpdate(pChanges);
    m_analysedProfile = pChanges->profile;
    m_overtaken.Clear();
    // The user left the demo by other means, for the profile that the client knows of too.
    if (!IsDemoProfile(m_analysedProfile))
        m_demoMode = false;
    for (const KORA4PresetTechnology t : cPresetTechnologies) {
        pChanges->onElseOff[t] = m_patches.m_dwPresetOnElseOff[t] != 0;
        if (pChanges->patchChanged[t] && result::Succeeded(hr))
            hr = DescribePatchChange(t, pChanges);
    }
    return hr;
}

HRESULT KORA4UIKeysClient::Overtake(HRESULT hr, std::uint32_t profile,
                                    OvertakenItems::Items items) {
    // In a profile that is not selectable nothing was stored.
    if (result::Succeeded(hr) && IsSelectableProfile(profile) && profile == m_analysedProfile)
        m_overtaken.Add(items);
    return hr;
}

// Enters the new value of a technology in the change set.
HRESULT KORA4UIKeysClient::DescribePatchChange(KORA4PresetTechnology technology,
                                               ChangeSet* pChanges) {
    static constexpr trace::Site cSite =
        trace::SiteOf("KORA4UIKeysClient::DescribePatchChange");
    const ApiTechnology apiTech = APITechOf(technology);
    if (apiTech == ApiTechnology::eNumberKORA4APITechnologies)
        return result::cOk;
    if (technology == eStandardEQTech) {
        KALASSERT(cSite, msg::cAssertGraphicEQ, apiTech == ApiTechnology::eGraphicEQ);
        return ToASLPatch(m_patches.m_records, apiTech, sizeof pChanges->graphicEQ,
                          &pChanges->graphicEQ);
    }
    ApiPatchValue& value = pChanges->presetPatchValues[technology];
    std::uint32_t size = 0;
    void* pField = nullptr;
    const HRESULT hr = GetASLPatchUnionField(apiTech, &value, &size, &pField);
    if (result::Failed(hr))
        return hr;
    value.m_technology = apiTech;
    return ToASLPatch(m_patches.m_records, apiTech, size, pField);
}

}  // namespace kora4
