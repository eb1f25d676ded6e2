// SPDX-License-Identifier: MIT
// Telling the client what one notification pass found.
#pragma once

#include <windows.h>

#include <cstdint>

#include "store/clients/change_set.h"
#include "store/clients/overtaken_items.h"
#include "veltokora4api.h"

namespace kora4 {

// Makes the calls for `changes`, in this order: the enable; then the active profile, or else
// for each technology the switch before the value; then the profile table. Ends with the first
// call that fails, and as soon as `registration`, a count that moves with each change of the
// registered callback, differs from its start. What own writes have overtaken at the moment of
// its call is left out; the table carries no state and is always told. Returns the last
// result; S_OK when there was no call to make.
//
// The caller holds the callback lock and a reference to the callback.
HRESULT CallbackNotifications(IVeltoKORA4APICallback* pICallback, ChangeSet& changes,
                              const std::uint32_t& registration,
                              const OvertakenItems& overtaken);

}  // namespace kora4
