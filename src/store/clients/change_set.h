// What one notification pass found changed, in the API's terms. It lives for the pass.
#ifndef KORA4_STORE_CLIENTS_CHANGE_SET_H
#define KORA4_STORE_CLIENTS_CHANGE_SET_H

#include "store/clients/api_records.h"
#include "store/model/profiles.h"
#include "store/model/technologies.h"

namespace kora4 {

// The arrays are indexed by preset technology; entry 0 is not used.
struct ChangeSet {
    // The number of the analysis, see KORA4UIKeysClient::Analyses.
    std::uint32_t analysis = 0;
    bool profileChanged = false;
    std::uint32_t newProfile = cNoProfile;
    bool enableChanged = false;
    bool enable = false;
    bool tableChanged = false;
    bool onElseOffChanged[eNumberKORA4PresetTechnologies] = {};
    bool onElseOff[eNumberKORA4PresetTechnologies] = {};
    bool patchChanged[eNumberKORA4PresetTechnologies] = {};
    ApiPatchValue presetPatchValues[eNumberKORA4PresetTechnologies] = {};
    ApiGraphicEQ graphicEQ = {};
};

}  // namespace kora4

#endif  // KORA4_STORE_CLIENTS_CHANGE_SET_H
