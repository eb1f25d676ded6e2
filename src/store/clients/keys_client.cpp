// SPDX-License-Identifier: MIT
// Loading of all settings, and the comparison of the store with the baseline.
#include "store/clients/keys_client.h"

#include "contract/messages/trace_messages_store.h"
#include "contract/store_mutex.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

// What the engine acts on.
constexpr bool IsEffective(std::uint32_t onElseOff, bool masterEnable) {
    return onElseOff != 0 && masterEnable;
}

}  // namespace

KORA4KeysClient::KORA4KeysClient(KORA4KeyAccess* pKeyAccess) : m_pKeyAccess(pKeyAccess) {}

HRESULT KORA4KeysClient::ObjInitialize() {
    KALTRACE_RESULT(hr, result::cOk, msg::cMutexMade.function);
    if (!m_regKeysMutex.IsCreated()) {
        hr = m_regKeysMutex.Create(cStoreMutexName);
        KALTRACE(msg::cMutexMade, cStoreMutexName, hr);
    }
    return hr;
}

HRESULT KORA4KeysClient::InitialKeysLoad() {
    KALTRACE_RESULT(hr, result::cOk, "KORA4KeysClient::InitialKeysLoad");
    if (!m_regKeysMutex.IsCreated())
        return hr = APOERR_NOT_INITIALIZED;

    const MutexHold hold(m_regKeysMutex);
    m_patches.Reset();
    LoadMasterEnables();
    LoadStaticSettings();
    LoadDynamicSettings();
    return hr;
}

void KORA4KeysClient::LoadMasterEnables() {
    m_masterEnables = Values().UINTOr(
        eKeySetStatic, PropertyKey{pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid}, 0);
}

void KORA4KeysClient::LoadStaticSettings() {
    for (std::size_t i = 0; i < std::size(cStaticSettings); ++i) {
        const auto& [pid, isSwitch, defaultNumber] = cStaticSettings[i];
        const PropertyKey key = pkey::Setting(pid);
        m_settings.staticSettings[i] =
            isSwitch ? Values().BoolOr(eKeySetStatic, key, defaultNumber != 0)
                     : Values().UINTOr(eKeySetStatic, key, defaultNumber);
    }

    constexpr std::uint32_t cCommandPids[] = {pkey::cProfileEditorCommandPid,
                                              pkey::cProfileSelectorCommandPid,
                                              pkey::cDemoAppCommandPid};
    static_assert(std::size(cCommandPids) == std::tuple_size_v<decltype(m_commands)>);
    for (std::size_t i = 0; i < std::size(cCommandPids); ++i) {
        char16_t* pwCommand = nullptr;
        if (m_pKeyAccess->ReadText(eKeySetApp, pkey::Setting(cCommandPids[i]), &pwCommand) !=
            result::cOk)
            pwCommand = nullptr;
        m_commands[i].Reset(pwCommand);
    }

    m_patches.LoadGlobalPatches(*m_pKeyAccess);
}

void KORA4KeysClient::LoadDynamicSettings() {
    m_baseline.profile = ReadActivePreset();
    m_baseline.enable = ReadMasterEnable();
    m_settings.dynamicSwitch = ReadSetting<pkey::cDynamicSwitchPid>();
    m_baseline.tableCounter = ReadTableCounter();
    // Trigger words before the data they announce: a writer changes them last.
    m_patches.LoadTriggers(*m_pKeyAccess);
    const bool isDemo = IsDemoProfile(m_baseline.profile);
    m_patches.LoadPresetPatches(*m_pKeyAccess, m_baseline.profile, isDemo);
    // The values of a demo profile are the built-in ones, its switches those of the store.
    if (isDemo)
        m_patches.LoadPresetOnElseOff(*m_pKeyAccess, m_baseline.profile);
    RefreshPatches(m_baseline.profile, m_baseline.enable);
    m_baseline.words = m_patches;
}

void KORA4KeysClient::RefreshPatches(std::uint32_t profile, bool enable) {
    // Each switch has a second one behind it, for demo profiles.
    static_assert(cStaticSettings[0].pid == pkey::cFirstRefreshSwitchPid);
    static_assert(cStaticSettings[1].pid == pkey::cFirstRefreshSwitchDemoPid);
    static_assert(cStaticSettings[2].pid == pkey::cSecondRefreshSwitchPid);
    static_assert(cStaticSettings[3].pid == pkey::cSecondRefreshSwitchDemoPid);
    const std::uint32_t* const pSwitches =
        m_settings.staticSettings + (IsDemoProfile(profile) ? 1 : 0);
    m_patches.Refresh({enable, pSwitches[0] != 0, pSwitches[2] != 0});
}

std::uint32_t KORA4KeysClient::ReadActivePreset() {
    return ReadSetting<pkey::cActivePresetPid>();
}

bool KORA4KeysClient::ReadMasterEnable() {
    return ReadSetting<pkey::cMasterEnablePid>();
}

std::uint32_t KORA4KeysClient::ReadTableCounter() {
    return ReadSetting<pkey::cProfileTableCounterPid>();
}

HRESULT KORA4KeysClient::UpdateActivePreset(const Change<std::uint32_t>& activePreset) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4KeysClient::UpdateActivePreset");
    KALASSERT(cSite, msg::cAssertActiveProfile, IsAllowableProfile(activePreset.after));
    hr = Values().WriteUINT(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid),
                            activePreset.after);
    return MoveOwn(hr, activePreset, &m_baseline.profile);
}

HRESULT KORA4KeysClient::DynamicKeyUpdate(StoreChanges* pChanges) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4KeysClient::DynamicKeyUpdate");
    KALASSERT(cSite, msg::cAssertStoreMutex, m_regKeysMutex.IsAcquired());

    Baseline stored;
    stored.profile = pChanges->profile = ReadActivePreset();
    stored.enable = pChanges->enable = ReadMasterEnable();
    stored.tableCounter = ReadTableCounter();
    pChanges->profileChanged = stored.profile != m_baseline.profile;
    pChanges->enableChanged = stored.enable != m_baseline.enable;
    pChanges->tableChanged = stored.tableCounter != m_baseline.tableCounter;

    hr = DynamicPatchUpdates(stored, pChanges);
    // A pass that failed announces nothing, so it must not move the baseline either.
    if (result::Succeeded(hr)) {
        stored.words = m_patches;
        m_baseline = stored;
    }
    return hr;
}

// `stored`: all but the words, which are loaded here.
HRESULT KORA4KeysClient::DynamicPatchUpdates(const Baseline& stored, StoreChanges* pChanges) {
    KALTRACE_RESULT(hr, result::cOk, "KORA4KeysClient::DynamicPatchUpdates");
    KALASSERT(cSite, msg::cAssertStoreMutex, m_regKeysMutex.IsAcquired());

    // Trigger words before the data they announce: a writer changes them last.
    m_patches.LoadTriggers(*m_pKeyAccess);
    m_patches.LoadPresetOnElseOff(*m_pKeyAccess, stored.profile);
    m_patches.LoadGlobalOnElseOff(*m_pKeyAccess);

    const TechnologyWords& known = m_baseline.words;
    const TechnologyWords& now = m_patches;
    const auto becameEffective = [&](std::uint32_t oldFlag,
                                     std::uint32_t newFlag) REQUIRES(m_regKeysMutex) {
        return !IsEffective(oldFlag, m_baseline.enable) && IsEffective(newFlag, stored.enable);
    };
    for (const KORA4PresetTechnology t : cPresetTechnologies) {
        const std::uint32_t oldFlag = known.m_dwPresetOnElseOff[t];
        const std::uint32_t newFlag = now.m_dwPresetOnElseOff[t];
        pChanges->onElseOffChanged[t] = oldFlag != newFlag;
        pChanges->patchChanged[t] = known.m_dwPresetTriggers[t] != now.m_dwPresetTriggers[t];
        if (pChanges->profileChanged || pChanges->patchChanged[t] ||
            becameEffective(oldFlag, newFlag)) {
            const HRESULT hrLoad = m_patches.LoadPresetPatchData(
                *m_pKeyAccess, stored.profile, IsDemoProfile(stored.profile), t);
            if (result::Succeeded(hr))
                hr = hrLoad;
        }
    }
    for (const KORA4GlobalTechnology t : cGlobalTechnologies) {
        if (pChanges->profileChanged ||
            known.m_dwGlobalTriggers[t] != now.m_dwGlobalTriggers[t] ||
            becameEffective(known.m_dwGlobalOnElseOff[t], now.m_dwGlobalOnElseOff[t]))
            m_patches.LoadGlobalPatchData(*m_pKeyAccess, t);
    }
    RefreshPatches(stored.profile, stored.enable);
    return hr;
}

}  // namespace kora4
