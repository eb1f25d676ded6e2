// SPDX-License-Identifier: MIT
// The base of every client of the settings store: the cross-process lock, the first full
// load, and finding out what has changed since.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

#include "contract/general_settings.h"
#include "contract/profiles.h"
#include "contract/property_key.h"
#include "contract/result.h"
#include "store/access/key_access.h"
#include "store/access/named_mutex.h"
#include "store/access/prop_key_store_access.h"
#include "store/access/task_memory.h"
#include "store/clients/change_set.h"
#include "store/patches/managed_patch_set.h"
#include "store/patches/own_write.h"

namespace kora4 {

// What this client last told its owner, or wrote itself: a notification pass announces
// the difference between this and the store. It is kept apart from the working records,
// so that neither a read nor an own write can hide a foreign change.
struct Baseline {
    std::uint32_t profile = cMovieProfile;
    bool enable = true;
    std::uint32_t tableCounter = 0;
    // The switches are those of `profile`.
    TechnologyWords words;
};

// Static settings that nothing depends on yet. They are part of the store all the same: every
// client loads them, in the order of their rows, and keeps them as they are.
struct StaticSetting {
    std::uint32_t pid;
    bool isSwitch;
    std::uint32_t defaultNumber;
};
inline constexpr auto cStaticSettings = [] {
    constexpr auto cCount =
        std::ranges::count_if(contract::cGeneralSettings, &contract::GeneralSetting::isKept);
    std::array<StaticSetting, static_cast<std::size_t>(cCount)> rows;
    auto row = rows.begin();
    for (const contract::GeneralSetting& setting : contract::cGeneralSettings)
        if (setting.isKept)
            *row++ = {setting.key.pid, setting.kind == ValueKind::eSwitch,
                      setting.defaultNumber};
    return rows;
}();

// The settings that are loaded and that nothing depends on yet; the static ones by their row.
struct StoreSettings {
    bool dynamicSwitch = true;
    std::uint32_t staticSettings[std::size(cStaticSettings)] = {};
};

// Holds the working records, the baseline and the mutex; the key access is borrowed and must
// outlive it. What is marked as guarded is used by whoever holds the named mutex, whichever
// thread that is.
class KORA4KeysClient : NonCopyable {
  public:
    explicit KORA4KeysClient(KORA4KeyAccess* pKeyAccess);

    // Creates the named mutex. An existing one is kept: S_OK.
    HRESULT ObjInitialize();

    // Loads everything and takes the baseline. APOERR_NOT_INITIALIZED before
    // ObjInitialize. Values that cannot be read take their defaults.
    HRESULT InitialKeysLoad();

    // Which technologies the installed engine carries, as of the initial load; no store access.
    std::uint32_t MasterEnables() const { return m_masterEnables; }

  protected:
    ~KORA4KeysClient() = default;

    // Compares the store with the baseline, reloads what changed and moves the baseline.
    HRESULT DynamicKeyUpdate(StoreChanges* pChanges) REQUIRES(m_regKeysMutex);

    // Writes the active preset and moves the baseline with it.
    HRESULT UpdateActivePreset(const Change<std::uint32_t>& activePreset)
        REQUIRES(m_regKeysMutex);

    // The typed view of the key access. Made for each use; it holds nothing.
    KORA4PropKeyStoreAccess Values() REQUIRES(m_regKeysMutex) {
        return KORA4PropKeyStoreAccess(*m_pKeyAccess);
    }

    // Hands the patch set what belongs to that profile, after a load.
    void RefreshPatches(std::uint32_t profile, bool enable) REQUIRES(m_regKeysMutex);

    // What a general setting is in the store now, or its default: a bool for a switch,
    // otherwise a number.
    template <std::uint32_t pid>
    auto ReadSetting() REQUIRES(m_regKeysMutex) {
        constexpr contract::GeneralSetting cRow = contract::GeneralSettingOf(pid);
        constexpr PropertyKey cKey = cRow.key;
        if constexpr (cRow.kind == ValueKind::eSwitch)
            return Values().BoolOr(cRow.keySet, cKey, cRow.defaultNumber != 0);
        else
            return Values().UINTOr(cRow.keySet, cKey, cRow.defaultNumber);
    }
    std::uint32_t ReadActivePreset() REQUIRES(m_regKeysMutex);
    bool ReadMasterEnable() REQUIRES(m_regKeysMutex);
    std::uint32_t ReadTableCounter() REQUIRES(m_regKeysMutex);

    std::uint32_t m_masterEnables = 0;
    KORA4ManagedPatchSet m_patches GUARDED_BY(m_regKeysMutex);
    KORA4KeyAccess* const m_pKeyAccess PT_GUARDED_BY(m_regKeysMutex);
    NamedMutex m_regKeysMutex;
    StoreSettings m_settings GUARDED_BY(m_regKeysMutex);
    Baseline m_baseline GUARDED_BY(m_regKeysMutex);
    // Profile editor, profile selector, demo application; null when none is stored.
    std::array<TaskPtr<char16_t>, 3> m_commands;

  private:
    // The parts of the initial load, in their order.
    void LoadMasterEnables() REQUIRES(m_regKeysMutex);
    void LoadStaticSettings() REQUIRES(m_regKeysMutex);
    void LoadDynamicSettings() REQUIRES(m_regKeysMutex);

    // Fills in which technologies have changed, and reloads those that a client may ask for.
    HRESULT DynamicPatchUpdates(const Baseline& stored, StoreChanges* pChanges)
        REQUIRES(m_regKeysMutex);
};

}  // namespace kora4
