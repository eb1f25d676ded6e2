#include "store/clients/keys_client.h"

#include <algorithm>

#include "trace/trace.h"

namespace kora4 {
namespace {

constexpr char cTag[] = "KORA4KeysClient";

constexpr std::uint32_t cStaticNumber57Default = 200;

}  // namespace

KORA4KeysClient::KORA4KeysClient(KORA4KeyAccess* pKeyAccess) : m_pKeyAccess(pKeyAccess) {}

HRESULT KORA4KeysClient::ObjInitialize() {
    static constexpr trace::Site cSite{cTag, "KORA4KeysClient::ObjInitialize"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    if (!m_regKeysMutex.IsCreated()) {
        hr = m_regKeysMutex.Create(cStoreMutexName);
        KALTRACE(trace::eExitResult, cSite, "Create on named muxtex %S hr: 0x%08x\n",
                 cStoreMutexName, static_cast<unsigned>(hr));
    }
    return hr;
}

HRESULT KORA4KeysClient::InitialKeysLoad() {
    static constexpr trace::Site cSite{cTag, "KORA4KeysClient::InitialKeysLoad"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    if (!m_regKeysMutex.IsCreated())
        return hr = APOERR_NOT_INITIALIZED;

    const MutexHold hold(m_regKeysMutex);
    m_patches.Reset();
    LoadMasterEnables();
    LoadStaticSettings();
    LoadDynamicSettings();
    MoveBaselineToStore();
    return hr;
}

void KORA4KeysClient::LoadMasterEnables() {
    m_masterEnables = {};
    const PropertyKey key{pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid};
    m_masterEnables.mask = Values().UINTOr(eKeySetStatic, key, 0);
    for (std::uint32_t n = 1; n < std::size(m_masterEnables.flags); ++n)
        m_masterEnables.flags[n] = (m_masterEnables.mask >> (n - 1)) & 1;
}

void KORA4KeysClient::LoadStaticSettings() {
    const auto readSwitch = [this](std::uint32_t pid) REQUIRES(m_regKeysMutex) {
        return Values().BoolOr(eKeySetStatic, pkey::Setting(pid), false);
    };
    const auto readNumber = [this](std::uint32_t pid,
                                   std::uint32_t fallback) REQUIRES(m_regKeysMutex) {
        return Values().UINTOr(eKeySetStatic, pkey::Setting(pid), fallback);
    };
    m_settings.refreshSwitch[0] = readSwitch(pkey::cFirstRefreshSwitchPid);
    m_settings.demoRefreshSwitch[0] = readSwitch(pkey::cFirstRefreshSwitchDemoPid);
    m_settings.refreshSwitch[1] = readSwitch(pkey::cSecondRefreshSwitchPid);
    m_settings.demoRefreshSwitch[1] = readSwitch(pkey::cSecondRefreshSwitchDemoPid);
    m_settings.staticSwitch54 = readSwitch(pkey::cStaticSwitch54Pid);
    m_settings.staticSwitch55 = readSwitch(pkey::cStaticSwitch55Pid);
    m_settings.staticSwitch56 = readSwitch(pkey::cStaticSwitch56Pid);
    m_settings.staticNumber57 = readNumber(pkey::cStaticNumber57Pid, cStaticNumber57Default);
    m_settings.staticNumber58 = readNumber(pkey::cStaticNumber58Pid, 0);
    m_settings.staticSwitch59 = readSwitch(pkey::cStaticSwitch59Pid);

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
    m_settings.activePreset = ReadActivePreset();
    m_settings.masterEnable = ReadMasterEnable();
    m_settings.dynamicSwitch =
        Values().BoolOr(eKeySetDynamic, pkey::Setting(pkey::cDynamicSwitchPid), true);
    m_settings.tableCounter = ReadTableCounter();
    // Trigger words before the data they announce: a writer changes them last.
    m_patches.LoadTriggers(*m_pKeyAccess);
    const bool isDemo = IsDemoProfile(m_settings.activePreset);
    m_patches.LoadPresetPatches(*m_pKeyAccess, m_settings.activePreset, isDemo);
    // The values of a demo profile are the built-in ones, its switches those of the store.
    if (isDemo)
        m_patches.LoadPresetOnElseOff(*m_pKeyAccess, m_settings.activePreset);
    Refresh();
}

HRESULT KORA4KeysClient::ReloadPresetData(KORA4PresetTechnology technology) {
    return m_patches.LoadPresetPatchData(*m_pKeyAccess, m_settings.activePreset,
                                         IsDemoProfile(m_settings.activePreset), technology);
}

void KORA4KeysClient::MoveBaselineToStore() {
    m_baseline.profile = m_settings.activePreset;
    m_baseline.enable = m_settings.masterEnable;
    m_baseline.tableCounter = m_settings.tableCounter;
    std::ranges::copy(m_patches.m_dwPresetTriggers, m_baseline.presetTriggers);
    std::ranges::copy(m_patches.m_dwGlobalTriggers, m_baseline.globalTriggers);
    std::ranges::copy(m_patches.m_dwPresetOnElseOff, m_baseline.presetOnElseOff);
    std::ranges::copy(m_patches.m_dwGlobalOnElseOff, m_baseline.globalOnElseOff);
}

void KORA4KeysClient::Refresh() {
    const bool demo = IsDemoProfile(m_settings.activePreset);
    const bool(&switches)[2] = demo ? m_settings.demoRefreshSwitch : m_settings.refreshSwitch;
    m_patches.Refresh(m_settings.masterEnable, switches[0], switches[1]);
}

std::uint32_t KORA4KeysClient::ReadActivePreset() {
    return Values().UINTOr(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid),
                           cMovieProfile);
}

bool KORA4KeysClient::ReadMasterEnable() {
    return Values().BoolOr(eKeySetDynamic, pkey::Setting(pkey::cMasterEnablePid), true);
}

std::uint32_t KORA4KeysClient::ReadTableCounter() {
    return Values().UINTOr(eKeySetDynamic, pkey::Setting(pkey::cProfileTableCounterPid), 0);
}

HRESULT KORA4KeysClient::UpdateActivePreset(std::uint32_t newActivePreset) {
    static constexpr trace::Site cSite{"KORA4UIKeysClient",
                                       "KORA4KeysClient::UpdateActivePreset"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    KALASSERT_TEXT(cSite, IsAllowableProfile(newActivePreset),
                   "IsAllowableProfile( newActivePreset )");
    hr = Values().WriteUINT(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid),
                            newActivePreset);
    if (result::Succeeded(hr))
        m_settings.activePreset = newActivePreset;
    return hr;
}

HRESULT KORA4KeysClient::DynamicKeyUpdate(DynamicChanges* pChanges) {
    static constexpr trace::Site cSite{cTag, "KORA4KeysClient::DynamicKeyUpdate"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    KALASSERT(cSite, m_regKeysMutex.IsAcquired());
    *pChanges = {};

    m_settings.activePreset = ReadActivePreset();
    m_settings.masterEnable = ReadMasterEnable();
    m_settings.tableCounter = ReadTableCounter();
    pChanges->enableChanged = m_settings.masterEnable != m_baseline.enable;
    pChanges->tableChanged = m_settings.tableCounter != m_baseline.tableCounter;
    pChanges->activePresetChanged = m_settings.activePreset != m_baseline.profile;
    if (pChanges->enableChanged)
        pChanges->newEnable = m_settings.masterEnable;
    if (pChanges->activePresetChanged)
        pChanges->newActivePreset = m_settings.activePreset;

    hr = DynamicPatchUpdates(pChanges->activePresetChanged, pChanges);
    // A pass that failed announces nothing, so it must not move the baseline either.
    if (result::Succeeded(hr))
        MoveBaselineToStore();
    return hr;
}

HRESULT KORA4KeysClient::DynamicPatchUpdates(bool forced, DynamicChanges* pChanges) {
    static constexpr trace::Site cSite{cTag, "KORA4KeysClient::DynamicPatchUpdates"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eEntry, trace::eExitResult, &hr);
    KALASSERT(cSite, m_regKeysMutex.IsAcquired());
    static_assert(sizeof m_baseline.presetTriggers == sizeof m_patches.m_dwPresetTriggers);
    static_assert(sizeof m_baseline.globalTriggers == sizeof m_patches.m_dwGlobalTriggers);

    // Trigger words before the data they announce: a writer changes them last.
    m_patches.LoadTriggers(*m_pKeyAccess);
    m_patches.LoadPresetOnElseOff(*m_pKeyAccess, m_settings.activePreset);
    m_patches.LoadGlobalOnElseOff(*m_pKeyAccess);

    // A technology is effective when its own flag and the master enable are set.
    const bool oldEnable = m_baseline.enable;
    const bool newEnable = m_settings.masterEnable;

    for (std::uint32_t t = eVolumeTech; t < eNumberKORA4PresetTechnologies; ++t) {
        const bool oldFlag = m_baseline.presetOnElseOff[t] != 0;
        const bool newFlag = m_patches.m_dwPresetOnElseOff[t] != 0;
        const bool nowEffective = newFlag && newEnable;
        pChanges->patchChanged[t] =
            m_baseline.presetTriggers[t] != m_patches.m_dwPresetTriggers[t];
        pChanges->onElseOffChanged[t] = oldFlag != newFlag;
        pChanges->effectiveChanged[t] = (oldFlag && oldEnable) != nowEffective;
        if (forced || pChanges->patchChanged[t] ||
            (pChanges->effectiveChanged[t] && nowEffective)) {
            const HRESULT hrLoad = ReloadPresetData(static_cast<KORA4PresetTechnology>(t));
            if (result::Succeeded(hr))
                hr = hrLoad;
        }
    }
    for (std::uint32_t t = ePeakLimiterTech; t < eNumberKORA4GlobalTechnologies; ++t) {
        const bool wasEffective = m_baseline.globalOnElseOff[t] && oldEnable;
        const bool nowEffective = m_patches.m_dwGlobalOnElseOff[t] && newEnable;
        if (forced || m_baseline.globalTriggers[t] != m_patches.m_dwGlobalTriggers[t] ||
            (nowEffective && !wasEffective)) {
            m_patches.LoadGlobalPatchData(*m_pKeyAccess, static_cast<KORA4GlobalTechnology>(t));
        }
    }
    Refresh();
    return hr;
}

}  // namespace kora4
