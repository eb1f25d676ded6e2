// SPDX-License-Identifier: MIT
// The key with the command lines of companion programs: other people's panels start them, so
// only administrators write it.
#pragma once

#include <windows.h>

#include "platform/handles.h"

namespace kora4::tools {

// Creates the key with a list of its own: administrators and the system write, everyone reads.
// One that is there stays as it is. ERROR_ACCESS_DENIED when this process does not run
// elevated: a key that another user made would be that user's.
LSTATUS CreateAppKeys(REGSAM access, UniqueRegKey& key);

// Gives keys that are there their owner and list again. The values stay. ERROR_ACCESS_DENIED
// for a registry link, and as above.
LSTATUS ResetAppKeys();

// Whether somebody besides administrators and the system may write the key, or owns it. False
// when it is absent; what cannot be asked counts as open.
bool AreAppKeysOpenToOthers();

}  // namespace kora4::tools
