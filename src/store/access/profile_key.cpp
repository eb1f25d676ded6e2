// SPDX-License-Identifier: MIT
// The keys of a profile with the trace lines that the store leaves when it makes them.
#include "store/access/profile_key.h"

#include "trace/trace.h"

namespace kora4 {

void SetPresetField(KORA4PropKeyBase& key, std::int32_t profile) {
    KALTRACE_SCOPE("KORA4PropKeyBase::SetPresetField");
    KALASSERT(cSite, msg::cAssertKeyProfile, profile >= 0);
    key.PlaceProfile(static_cast<std::uint32_t>(profile));
}

PropertyKey PresetPatchKey(KORA4PresetTechnology technology, std::uint32_t profile,
                           std::uint32_t pid) {
    KORA4PropKeyBase key(pkey::PresetPatch(technology, 0, pid).fmtid, pid);
    const auto signedProfile = static_cast<std::int32_t>(profile);
    if (signedProfile >= 0)
        SetPresetField(key, signedProfile);
    return key.Key();
}

PropertyKey ProfileNameKey(std::uint32_t profile) {
    KORA4PropKeyBase key(pkey::cProfileNameGuid, pkey::cProfileNamePid);
    SetPresetField(key, static_cast<std::int32_t>(profile));
    return key.Key();
}

}  // namespace kora4
