// SPDX-License-Identifier: MIT
// Switches, values, visualization, companion commands and the change analysis.
#include "contract/defaults.h"
#include "store/clients/run_under_mutex.h"

namespace kora4 {

HRESULT KORA4UIKeysClient::GetVeltoEnable(bool* pEnable) {
    return RunUnderMutex("KORA4UIKeysClient::GetVeltoEnable", true,
                         [&]() REQUIRES(m_regKeysMutex) {
                             *pEnable = ReadMasterEnable();
                             return result::cOk;
                         });
}

HRESULT KORA4UIKeysClient::SetVeltoEnable(bool enable) {
    return RunUnderMutex("KORA4UIKeysClient::SetVeltoEnable", true,
                         [&]() REQUIRES(m_regKeysMutex) {
                             return WriteEnable({ReadMasterEnable(), enable});
                         });
}

HRESULT KORA4UIKeysClient::ToggleVeltoEnable(bool* pEnable) {
    return RunUnderMutex("KORA4UIKeysClient::ToggleVeltoEnable", true,
                         [&]() REQUIRES(m_regKeysMutex) {
                             const bool before = ReadMasterEnable();
                             *pEnable = !before;
                             return WriteEnable({before, !before});
                         });
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
    const bool argumentsGood = IsValidTechnology(technology);
    return RunUnderMutex("KORA4UIKeysClient::GetTechnologyOnElseOff", argumentsGood,
                         [&]() REQUIRES(m_regKeysMutex) {
                             // Switches are the stored ones in a demo profile too.
                             const HRESULT hr = m_patches.LoadPresetPatchEnable(
                                 *m_pKeyAccess, ReadActivePreset(), false, technology);
                             if (result::Succeeded(hr))
                                 *pOnElseOff = m_patches.m_dwPresetOnElseOff[technology] != 0;
                             return hr;
                         });
}

HRESULT KORA4UIKeysClient::SetTechnologyOnElseOff(KORA4PresetTechnology technology,
                                                  bool onElseOff) {
    const bool argumentsGood = IsValidTechnology(technology);
    return RunUnderMutex("KORA4UIKeysClient::SetTechnologyOnElseOff", argumentsGood,
                         [&]() REQUIRES(m_regKeysMutex) {
                             const std::uint32_t profile = ReadActivePreset();
                             const KnownWords known = ReadKnown(profile, technology);
                             m_patches.m_dwPresetOnElseOff[technology] = onElseOff;
                             return Overtake(m_patches.WritePresetPatchEnable(
                                                 *m_pKeyAccess, profile, technology, known),
                                             profile, OvertakenItems::Switch(technology));
                         });
}

HRESULT KORA4UIKeysClient::GetPatchValue(ApiTechnology technology, std::uint32_t size,
                                         void* pValue) {
    const KORA4PresetTechnology presetTech = PresetTechOf(technology);
    const bool argumentsGood = presetTech != ePresetNoTech && pValue && size != 0;
    return RunUnderMutex(
        "KORA4UIKeysClient::GetPatchValue", argumentsGood, [&]() REQUIRES(m_regKeysMutex) {
            const std::uint32_t profile = ReadActivePreset();
            const HRESULT hr = m_patches.LoadPresetPatch(*m_pKeyAccess, profile,
                                                         IsDemoProfile(profile), presetTech);
            return result::Succeeded(hr)
                       ? ToASLPatch(m_patches.m_records, technology, size, pValue)
                       : hr;
        });
}

HRESULT KORA4UIKeysClient::SetPatchValue(ApiTechnology technology, std::uint32_t size,
                                         const void* pValue) {
    const KORA4PresetTechnology presetTech = PresetTechOf(technology);
    const bool argumentsGood = presetTech != ePresetNoTech && pValue && size != 0 &&
                               size >= ASLPatchSizeOf(technology);
    return RunUnderMutex(
        "KORA4UIKeysClient::SetPatchValue", argumentsGood, [&]() REQUIRES(m_regKeysMutex) {
            // The switch and the fields that the caller does not set are those of the store.
            const std::uint32_t profile = ReadActivePreset();
            const bool isDemo = IsDemoProfile(profile);
            HRESULT hr =
                m_patches.LoadPresetPatchEnable(*m_pKeyAccess, profile, isDemo, presetTech);
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
            return Overtake(hr, profile, OvertakenItems::Value(presetTech));
        });
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
    return RunUnderMutex(
        "KORA4UIKeysClient::GetSamplingPeriod", true, [&]() REQUIRES(m_regKeysMutex) {
            *pMilliseconds =
                Values().UINTOr(eKeySetStatic, pkey::Setting(pkey::cSamplingPeriodPid),
                                defaults::cSamplingPeriod);
            return result::cOk;
        });
}

HRESULT KORA4UIKeysClient::SetSamplingPeriod(std::uint32_t milliseconds) {
    return RunUnderMutex(
        "KORA4UIKeysClient::SetSamplingPeriod", true, [&]() REQUIRES(m_regKeysMutex) {
            return Values().WriteUINT(eKeySetStatic, pkey::Setting(pkey::cSamplingPeriodPid),
                                      milliseconds);
        });
}

HRESULT KORA4UIKeysClient::GetVisualizationBlob(std::uint32_t* pSize, std::uint8_t** ppData) {
    return RunUnderMutex(
        "KORA4UIKeysClient::GetVisualizationBlob", true, [&]() REQUIRES(m_regKeysMutex) {
            return m_pKeyAccess->ReadBlob(
                eKeySetStatic, pkey::Setting(pkey::cVisualizationDataPid), pSize, ppData);
        });
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
    return RunUnderMutex(
        "KORA4UIKeysClient::OnKeyChangeNotify", true, [&]() REQUIRES(m_regKeysMutex) {
            *pChanges = {};
            pChanges->analysis = ++m_analyses;
            HRESULT hr = DynamicKeyUpdate(pChanges);
            m_analysedProfile = pChanges->profile;
            m_overtaken.Clear();

            // The user left the demo by other means, for the profile that the client knows of
            // too.
            if (!IsDemoProfile(m_analysedProfile))
                m_demoMode = false;

            for (std::uint32_t t = eVolumeTech;
                 t < eNumberKORA4PresetTechnologies && result::Succeeded(hr); ++t) {
                pChanges->onElseOff[t] = m_patches.m_dwPresetOnElseOff[t] != 0;
                if (pChanges->patchChanged[t])
                    hr = DescribePatchChange(static_cast<KORA4PresetTechnology>(t), pChanges);
            }
            return hr;
        });
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
        KALASSERT_TEXT(cSite, apiTech == ApiTechnology::eGraphicEQ, "eGraphicEQ == APITech");
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
