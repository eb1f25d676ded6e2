// SPDX-License-Identifier: MIT
// The settings-store client behind the API object: every operation that a user interface
// needs, each under the named mutex and each on what is stored at that moment.
#pragma once

#include <atomic>
#include <cstdint>

#include "store/clients/api_conversion.h"
#include "store/clients/api_records.h"
#include "store/clients/change_set.h"
#include "store/clients/keys_client.h"
#include "store/clients/overtaken_items.h"

namespace kora4 {

// The applications whose command lines the store carries, in the order of their keys.
enum class CompanionCommand { eProfileEditor, eProfileSelector, eDemoApp };

// Every operation answers E_INVALIDARG for an argument that is out of range, before it touches
// the store, and otherwise what the store answers. Success codes 0x00040200 to 0x00040203
// (kora4api_codes.h) mean that nothing changed. Pointers are not tested for null where the API
// object tests them.
//
// May be called from any thread once InitialKeysLoad has succeeded; the named mutex keeps the
// threads apart.
class KORA4UIKeysClient : public KORA4KeysClient {
  public:
    using KORA4KeysClient::KORA4KeysClient;

    // Profiles. The active one is stored; what a client remembers plays no part.
    HRESULT GetActiveProfile(std::uint32_t* pProfile);

    // A selectable profile. KORA4_S_DEMO_MODE_ACTIVE in a demo, KORA4_S_NO_SUCH_CUSTOM_PROFILE
    // for a custom profile without a readable name.
    HRESULT SetActiveProfile(std::uint32_t profile);

    // Gives a preset profile its factory values back, which are those of its demo profile.
    // KORA4_S_NOT_A_PRESET_PROFILE for any other.
    HRESULT RevertActiveProfile();

    // Enters a demo, or changes to another one, and saves profile and enable from before the
    // first. KORA4_S_DEMO_MODE_ACTIVE in a demo that another client entered.
    HRESULT SetDemoProfileAndEnable(std::uint32_t demoProfile, bool enable);

    // Restores what was saved. KORA4_S_DEMO_MODE_ACTIVE when this client entered no demo,
    // KORA4_S_NOT_IN_DEMO_PROFILE when somebody else has ended it.
    HRESULT RevertFromDemoMode();

    // The same, whoever entered the demo; S_OK outside one.
    HRESULT ForceRevertFromDemoMode();

    // Nine texts, of which 3 to 8 may be set; the caller frees them as task memory, also those
    // that stand before a name that could not be read.
    HRESULT GetProfileTable(char16_t** ppwNames);

    // Copies the active profile's values under a new number and name. E_FAIL when the profile
    // exists.
    HRESULT CreateCustomProfile(std::uint32_t customProfile, const char16_t* pwName);

    // E_FAIL when the profile does not exist, or its name cannot be read.
    HRESULT SetCustomProfileName(std::uint32_t customProfile, const char16_t* pwName);

    // Removes the name, and with it the profile; its values stay in the store. E_FAIL for the
    // active profile, S_FALSE when there is none of that number.
    HRESULT DeleteCustomProfile(std::uint32_t customProfile);

    // Switches: the master enable and, of the active profile, the technologies' switches.
    HRESULT GetVeltoEnable(bool* pEnable);
    HRESULT SetVeltoEnable(bool enable);
    // Hands out the new value even when writing it failed.
    HRESULT ToggleVeltoEnable(bool* pEnable);
    HRESULT GetTechnologyOnElseOff(KORA4PresetTechnology technology, bool* pOnElseOff);
    HRESULT SetTechnologyOnElseOff(KORA4PresetTechnology technology, bool onElseOff);

    // Values of the active profile: an ApiPatchValue's union, or an ApiGraphicEQ. `size` is
    // that of the buffer in bytes. A demo profile has its built-in values, and a write to it
    // stores nothing.
    HRESULT GetPatchValue(ApiTechnology technology, std::uint32_t size, void* pValue);
    HRESULT SetPatchValue(ApiTechnology technology, std::uint32_t size, const void* pValue);

    // Visualization and companion applications. The period is how often a display should read
    // the levels.
    HRESULT GetSamplingPeriod(std::uint32_t* pMilliseconds);
    HRESULT SetSamplingPeriod(std::uint32_t milliseconds);
    // The caller frees the data as task memory. S_FALSE when the engine has published none.
    HRESULT GetVisualizationBlob(std::uint32_t* pSize, std::uint8_t** ppData);
    // A copy for the caller to free as task memory; null when no command is stored. Takes
    // no mutex: the texts do not change after the initial load.
    HRESULT GetCommand(CompanionCommand command, char16_t** ppwCommand);

    // What changed since the last pass, or since the initial load. Its lines in the log carry
    // the name of what it serves, OnKeyChangeNotify.
    HRESULT AnalyseChanges(ChangeSet* pChanges);

    // The items of the last analysis that must not be told any more. Any thread, without the
    // mutex.
    const OvertakenItems& Overtaken() const { return m_overtaken; }

    // How many analyses have begun; the count wraps. What a client reads from the store after
    // this was asked is not older than what analyses up to here have found. From any thread,
    // without the mutex.
    std::uint32_t Analyses() const { return m_analyses; }

  private:
    // Writes the master enable and moves the baseline by the rule of MoveOwn.
    HRESULT WriteEnable(const Change<bool>& enable) REQUIRES(m_regKeysMutex);
    // Stores another profile, with the enable if one is given, and reloads the working
    // records. `pEnable`: null when the enable stays as it is.
    HRESULT ProfileStateChange(const Change<std::uint32_t>& profile,
                               const Change<bool>* pEnable) REQUIRES(m_regKeysMutex);

    // What the client knows of a technology's words, with the switch as it is stored now.
    KnownWords ReadKnown(std::uint32_t profile, KORA4PresetTechnology technology)
        REQUIRES(m_regKeysMutex);

    // Entering and leaving a demo: the profile and the enable from before it.
    void SaveStateBeforeDemo(std::uint32_t profile, bool enable) REQUIRES(m_regKeysMutex);
    HRESULT RestoreStateBeforeDemo(std::uint32_t demoProfile) REQUIRES(m_regKeysMutex);

    // Copies the active profile's values to `customProfile`; the name is not part of it.
    HRESULT ActivePresetCopy(std::uint32_t customProfile) REQUIRES(m_regKeysMutex);

    // S_FALSE when the profile does not exist.
    HRESULT ReadProfileName(std::uint32_t customProfile, TaskPtr<char16_t>* pName)
        REQUIRES(m_regKeysMutex);
    // Stores the name and announces it.
    HRESULT WriteProfileName(std::uint32_t customProfile, const char16_t* pwName)
        REQUIRES(m_regKeysMutex);
    // Announces a change of the table of custom profiles by its counter.
    HRESULT AnnounceTableChange() REQUIRES(m_regKeysMutex);

    // Enters a technology's new value into the change set, in the API's terms.
    HRESULT DescribePatchChange(KORA4PresetTechnology technology, ChangeSet* pChanges)
        REQUIRES(m_regKeysMutex);

    // Ends an own call that writes `items` of `profile` with `hr`, its result, which is handed
    // on.
    HRESULT Overtake(HRESULT hr, std::uint32_t profile, OvertakenItems::Items items)
        REQUIRES(m_regKeysMutex);

    // This client entered a demo.
    bool m_demoMode GUARDED_BY(m_regKeysMutex) = false;
    // The stored profile at the last analysis.
    std::uint32_t m_analysedProfile GUARDED_BY(m_regKeysMutex) = cMovieProfile;

    OvertakenItems m_overtaken;
    std::atomic<std::uint32_t> m_analyses{0};
};

}  // namespace kora4
