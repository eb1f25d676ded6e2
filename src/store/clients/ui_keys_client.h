// The settings-store client behind the API object: every operation that a user interface
// needs, each under the named mutex and each on what is stored at that moment.
#ifndef KORA4_STORE_CLIENTS_UI_KEYS_CLIENT_H
#define KORA4_STORE_CLIENTS_UI_KEYS_CLIENT_H

#include <cstdint>

#include "store/clients/api_records.h"
#include "store/clients/change_set.h"
#include "store/clients/keys_client.h"

namespace kora4 {

// Between the two vocabularies of technologies. No mutex, no store.
KORA4PresetTechnology PresetTechOf(ApiTechnology technology);  // ePresetNoTech when none
ApiTechnology APITechOf(KORA4PresetTechnology technology);     // the count when none
std::uint32_t ASLPatchSizeOf(ApiTechnology technology);        // in bytes; 0 when none
// Size and place of a slider-type value inside its record. E_INVALIDARG, both outputs
// cleared, for the graphic EQ and for anything that is no technology.
HRESULT GetASLPatchUnionField(ApiTechnology technology, ApiPatchValue* pValue,
                              std::uint32_t* pSize, void** ppField);

enum class CompanionCommand { eProfileEditor, eProfileSelector, eDemoApp };

// Success codes 0x00040200 to 0x00040203 (kora4api_codes.h) mean that nothing changed.
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

    // Nine texts, of which 3 to 8 may be set; the caller frees them as task memory.
    HRESULT GetProfileTable(char16_t** ppNames);
    HRESULT CreateCustomProfile(std::uint32_t customProfile, const char16_t* pwName);
    HRESULT SetCustomProfileName(std::uint32_t customProfile, const char16_t* pwName);
    HRESULT DeleteCustomProfile(std::uint32_t customProfile);

    // Switches.
    HRESULT GetVeltoEnable(bool* pEnable);
    HRESULT SetVeltoEnable(bool enable);
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
    // A copy for the caller to free as task memory; null when no command is stored.
    HRESULT GetCommand(CompanionCommand command, char16_t** ppwCommand);

    // What changed since the last pass, or since the initial load.
    HRESULT OnKeyChangeNotify(ChangeSet* pChanges);

  private:
    // Reads the items that an operation is about to write; tells own from foreign.
    class OwnWrite;

    HRESULT ToASLPatch(ApiTechnology technology, std::uint32_t size, void* pValue);
    HRESULT FromASLPatch(ApiTechnology technology, std::uint32_t size, const void* pValue);
    void* WorkingField(ApiTechnology technology);
    HRESULT WriteOwnPatch(std::uint32_t profile, std::uint32_t storedProfile,
                          KORA4PresetTechnology technology, bool bumpTrigger);
    HRESULT ProfileStateChange(std::uint32_t newProfile, bool setEnable, bool enable);
    HRESULT RestoreFromDemo();
    HRESULT ActivePresetCopy(std::uint32_t customProfile);
    HRESULT ReadProfileName(std::uint32_t customProfile, TaskPtr<char16_t>* pName);
    HRESULT AnnounceTableChange();

    bool m_demoMode = false;
};

}  // namespace kora4

#endif  // KORA4_STORE_CLIENTS_UI_KEYS_CLIENT_H
