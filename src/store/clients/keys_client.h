// The base of every client of the settings store: the cross-process lock, the first full
// load, and finding out what has changed since.
#ifndef KORA4_STORE_CLIENTS_KEYS_CLIENT_H
#define KORA4_STORE_CLIENTS_KEYS_CLIENT_H

#include <array>
#include <cstdint>

#include "store/access/key_access.h"
#include "store/access/named_mutex.h"
#include "store/access/prop_key_store_access.h"
#include "store/access/task_memory.h"
#include "store/model/profiles.h"
#include "store/model/result.h"
#include "store/patches/managed_patch_set.h"

namespace kora4 {

// Which technologies the installed engine carries: the stored mask and one flag for each
// of its bits; flag 0 (no technology) is always 0, flag n is bit n - 1.
struct TechnologyMasterEnables {
    std::uint32_t mask = 0;
    std::uint32_t flags[11] = {};
};

// What this client last told its owner, or wrote itself: a notification pass announces
// the difference between this and the store. It is kept apart from the working records,
// so that neither a read nor an own write can hide a foreign change.
struct Baseline {
    std::uint32_t profile = cMovieProfile;
    bool enable = true;
    std::uint32_t tableCounter = 0;
    std::uint32_t presetTriggers[eNumberKORA4PresetTechnologies] = {};
    std::uint32_t globalTriggers[eNumberKORA4GlobalTechnologies] = {};
    // The on/off flags of `profile`, and the global enables.
    std::uint32_t presetOnElseOff[eNumberKORA4PresetTechnologies] = {};
    std::uint32_t globalOnElseOff[eNumberKORA4GlobalTechnologies] = {};
};

// Settings that are loaded and kept as they are. The ones that a user interface changes
// are the state of the store at the last load; no write ever starts from them.
struct StoreSettings {
    std::uint32_t activePreset;
    bool masterEnable;
    std::uint32_t tableCounter;
    bool dynamicSwitch;         // pid 6
    bool refreshSwitch[2];      // pids 50, 52: ordinary profiles
    bool demoRefreshSwitch[2];  // pids 51, 53: demo profiles
    bool staticSwitch54;
    bool staticSwitch55;
    bool staticSwitch56;
    std::uint32_t staticNumber57;
    std::uint32_t staticNumber58;
    bool staticSwitch59;
};

class KORA4KeysClient {
  public:
    explicit KORA4KeysClient(KORA4KeyAccess* pKeyAccess);
    KORA4KeysClient(const KORA4KeysClient&) = delete;
    KORA4KeysClient& operator=(const KORA4KeysClient&) = delete;

    // Creates the named mutex. An existing one is kept: S_OK.
    HRESULT ObjInitialize();

    // Loads everything and takes the baseline. APOERR_NOT_INITIALIZED before
    // ObjInitialize. Values that cannot be read take their defaults.
    HRESULT InitialKeysLoad();

    static constexpr bool IsAllowableProfile(std::uint32_t profile) {
        return kora4::IsAllowableProfile(profile);
    }

    // The mask as of the initial load; no store access.
    const TechnologyMasterEnables& MasterEnables() const { return m_masterEnables; }

  protected:
    ~KORA4KeysClient() = default;

    struct DynamicChanges {
        bool activePresetChanged = false;
        std::uint32_t newActivePreset = cNoProfile;
        bool enableChanged = false;
        bool newEnable = false;
        bool tableChanged = false;
        bool onElseOffChanged[eNumberKORA4PresetTechnologies] = {};
        bool effectiveChanged[eNumberKORA4PresetTechnologies] = {};
        bool patchChanged[eNumberKORA4PresetTechnologies] = {};
    };

    // Compares the store with the baseline, reloads what changed and moves the baseline.
    HRESULT DynamicKeyUpdate(DynamicChanges* pChanges) REQUIRES(m_regKeysMutex);

    // Writes the active preset.
    HRESULT UpdateActivePreset(std::uint32_t newActivePreset) REQUIRES(m_regKeysMutex);

    // Hands the refresh switches to the patch set, which derives its effective flags.
    void Refresh() REQUIRES(m_regKeysMutex);

    // An own write moves its item of the baseline only when what was read just before the
    // write was what the baseline knew: otherwise a foreign change is still to be told.
    template <typename T>
    static void MoveOwn(T& item, T before, T after) {
        if (item == before)
            item = after;
    }

    KORA4PropKeyStoreAccess Values() REQUIRES(m_regKeysMutex) {
        return KORA4PropKeyStoreAccess(*m_pKeyAccess);
    }
    std::uint32_t ReadActivePreset() REQUIRES(m_regKeysMutex);
    bool ReadMasterEnable() REQUIRES(m_regKeysMutex);
    std::uint32_t ReadTableCounter() REQUIRES(m_regKeysMutex);

    TechnologyMasterEnables m_masterEnables;
    KORA4ManagedPatchSet m_patches GUARDED_BY(m_regKeysMutex);
    KORA4KeyAccess* const m_pKeyAccess PT_GUARDED_BY(m_regKeysMutex);
    NamedMutex m_regKeysMutex;
    StoreSettings m_settings GUARDED_BY(m_regKeysMutex){};
    Baseline m_baseline GUARDED_BY(m_regKeysMutex);
    // Profile editor, profile selector, demo application; null when none is stored.
    std::array<TaskPtr<char16_t>, 3> m_commands;

  private:
    void LoadMasterEnables() REQUIRES(m_regKeysMutex);
    void LoadStaticSettings() REQUIRES(m_regKeysMutex);
    void LoadDynamicSettings() REQUIRES(m_regKeysMutex);
    // The record of a technology in the active profile; in a demo profile the built-in one.
    HRESULT ReloadPresetData(KORA4PresetTechnology technology) REQUIRES(m_regKeysMutex);
    // Profile, enable and counter as just read; flags and trigger words from the patch set.
    void MoveBaselineToStore() REQUIRES(m_regKeysMutex);
    HRESULT DynamicPatchUpdates(bool forced, DynamicChanges* pChanges) REQUIRES(m_regKeysMutex);
};

}  // namespace kora4

#endif  // KORA4_STORE_CLIENTS_KEYS_CLIENT_H
