// SPDX-License-Identifier: MIT
// The settings-store client behind the API object: every operation that a user interface
// needs, each under the named mutex and each on what is stored at that moment.
#ifndef KORA4_STORE_CLIENTS_UI_KEYS_CLIENT_H
#define KORA4_STORE_CLIENTS_UI_KEYS_CLIENT_H

#include <atomic>
#include <cstdint>

#include "store/clients/api_conversion.h"
#include "store/clients/api_records.h"
#include "store/clients/change_set.h"
#include "store/clients/keys_client.h"
#include "store/clients/overtaken_items.h"

namespace kora4 {

namespace trace {
struct Site;
}

// The applications whose command lines the store carries, in the order of their keys.
enum class CompanionCommand { eProfileEditor, eProfileSelector, eDemoApp };

inline constexpr std::uint32_t cSamplingPeriodDefault = 50;  // milliseconds

// Success codes 0x00040200 to 0x00040203 (kora4api_codes.h) mean that nothing changed.
// May be called from any thread once InitialKeysLoad has succeeded; the named mutex keeps
// the threads apart.
class KORA4UIKeysClient : public KORA4KeysClient {
  public:
    using KORA4KeysClient::KORA4KeysClient;

    // Profiles.
    HRESULT GetActiveProfile(std::uint32_t* pProfile);
    HRESULT SetActiveProfile(std::uint32_t profile);
    HRESULT RevertActiveProfile();
    HRESULT SetDemoProfileAndEnable(std::uint32_t demoProfile, bool enable);
    HRESULT RevertFromDemoMode();
    HRESULT ForceRevertFromDemoMode();

    // Nine texts, of which 3 to 8 may be set; the caller frees them as task memory, also those
    // that stand before a name that could not be read.
    HRESULT GetProfileTable(char16_t** ppwNames);
    HRESULT CreateCustomProfile(std::uint32_t customProfile, const char16_t* pwName);
    HRESULT SetCustomProfileName(std::uint32_t customProfile, const char16_t* pwName);
    HRESULT DeleteCustomProfile(std::uint32_t customProfile);

    // Switches.
    HRESULT GetVeltoEnable(bool* pEnable);
    HRESULT SetVeltoEnable(bool enable);
    // Hands out the new value even when writing it failed.
    HRESULT ToggleVeltoEnable(bool* pEnable);
    HRESULT GetTechnologyOnElseOff(KORA4PresetTechnology technology, bool* pOnElseOff);
    HRESULT SetTechnologyOnElseOff(KORA4PresetTechnology technology, bool onElseOff);

    // Values. `size` is that of the buffer in bytes.
    HRESULT GetPatchValue(ApiTechnology technology, std::uint32_t size, void* pValue);
    HRESULT SetPatchValue(ApiTechnology technology, std::uint32_t size, const void* pValue);

    // Visualization and companion applications.
    HRESULT GetSamplingPeriod(std::uint32_t* pMilliseconds);
    HRESULT SetSamplingPeriod(std::uint32_t milliseconds);
    // The caller frees the data as task memory.
    HRESULT GetVisualizationBlob(std::uint32_t* pSize, std::uint8_t** ppData);
    // A copy for the caller to free as task memory; null when no command is stored. Takes
    // no mutex: the texts do not change after the initial load.
    HRESULT GetCommand(CompanionCommand command, char16_t** ppwCommand);

    // What changed since the last pass, or since the initial load. Its lines in the log carry
    // the name of what it serves, OnKeyChangeNotify.
    HRESULT AnalyseChanges(ChangeSet* pChanges);

    // The items of the last analysis that are no longer to be told. From any thread, without
    // the mutex.
    const OvertakenItems& Overtaken() const { return m_overtaken; }

    // How many analyses have begun; the count wraps. What a client reads from the store after
    // this was asked is not older than what analyses up to here have found. From any thread,
    // without the mutex.
    std::uint32_t Analyses() const { return m_analyses; }

  private:
    // The frame of a store operation: entry line, E_INVALIDARG for bad arguments, the
    // body under the mutex, exit line.
    template <typename Body>
    HRESULT RunUnderMutex(const trace::Site& site, int line, bool argumentsGood, Body&& body);

    HRESULT WriteEnable(const Change<bool>& enable) REQUIRES(m_regKeysMutex);
    // `pEnable`: null when the enable stays as it is.
    HRESULT ProfileStateChange(const Change<std::uint32_t>& profile,
                               const Change<bool>* pEnable) REQUIRES(m_regKeysMutex);
    KnownWords ReadKnown(std::uint32_t profile, KORA4PresetTechnology technology)
        REQUIRES(m_regKeysMutex);
    void SaveStateBeforeDemo(std::uint32_t profile, bool enable) REQUIRES(m_regKeysMutex);
    HRESULT RestoreStateBeforeDemo(std::uint32_t demoProfile) REQUIRES(m_regKeysMutex);
    HRESULT ActivePresetCopy(std::uint32_t customProfile) REQUIRES(m_regKeysMutex);
    HRESULT ReadProfileName(std::uint32_t customProfile, TaskPtr<char16_t>* pName)
        REQUIRES(m_regKeysMutex);
    HRESULT WriteProfileName(std::uint32_t customProfile, const char16_t* pwName)
        REQUIRES(m_regKeysMutex);
    HRESULT AnnounceTableChange() REQUIRES(m_regKeysMutex);
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

#endif  // KORA4_STORE_CLIENTS_UI_KEYS_CLIENT_H
