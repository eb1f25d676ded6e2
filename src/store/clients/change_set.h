// SPDX-License-Identifier: MIT
// What one notification pass found changed, in the API's terms. It lives for the pass.
#pragma once

#include "contract/profiles.h"
#include "contract/technologies.h"
#include "store/clients/api_records.h"

namespace kora4 {

// What the store holds now that it did not hold before. The arrays are indexed by preset
// technology; entry 0 is not used.
struct StoreChanges {
    std::uint32_t profile = cNoProfile;  // the stored one, changed or not
    bool profileChanged = false;
    bool enable = false;  // the stored one, changed or not
    bool enableChanged = false;
    bool tableChanged = false;
    bool onElseOffChanged[eNumberKORA4PresetTechnologies] = {};
    bool patchChanged[eNumberKORA4PresetTechnologies] = {};
};

// The same with the new values.
struct ChangeSet : StoreChanges {
    // The number of the analysis, see KORA4UIKeysClient::Analyses.
    std::uint32_t analysis = 0;
    bool onElseOff[eNumberKORA4PresetTechnologies] = {};
    ApiPatchValue presetPatchValues[eNumberKORA4PresetTechnologies] = {};
    ApiGraphicEQ graphicEQ = {};
};

}  // namespace kora4
