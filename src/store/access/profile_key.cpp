// SPDX-License-Identifier: MIT
// The keys of a profile with the trace lines that the store leaves when it makes them.
#include "contract/property_key.h"
#include "trace/trace.h"

namespace kora4 {

void KORA4PropKeyBase::SetPresetField(std::int32_t profile) {
    static constexpr trace::Site cSite{"KORA4UIKeysClient", "KORA4PropKeyBase::SetPresetField"};
    const trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreEntry);
    KALASSERT(cSite, profile >= 0);
    PlaceProfile(static_cast<std::uint32_t>(profile));
}

PropertyKey PresetPatchKey(KORA4PresetTechnology technology, std::uint32_t profile,
                           std::uint32_t pid) {
    KORA4PropKeyBase key(pkey::PresetPatch(technology, 0, pid).fmtid, pid);
    const auto signedProfile = static_cast<std::int32_t>(profile);
    if (signedProfile >= 0)
        key.SetPresetField(signedProfile);
    return key.Key();
}

PropertyKey ProfileNameKey(std::uint32_t profile) {
    KORA4PropKeyBase key(pkey::cProfileNameGuid, pkey::cProfileNamePid);
    key.SetPresetField(static_cast<std::int32_t>(profile));
    return key.Key();
}

}  // namespace kora4
