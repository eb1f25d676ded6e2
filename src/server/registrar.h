// SPDX-License-Identifier: MIT
// Runs registrar scripts on the registry.
#pragma once

#include <windows.h>

#include <span>
#include <string_view>

#include "server/registrar_script.h"

namespace kora4 {

// Both check the whole script before they touch the registry. A registry error is E_FAIL
// and ends the work where it stands.

// Creates the keys and values of the script. A ForceRemove key is removed first, so that
// nothing of an older registration is left in it.
HRESULT RegisterScript(std::string_view script, std::span<const ScriptParameter> parameters);

// Removes what RegisterScript made: ForceRemove keys with their subtree, NoRemove keys not at
// all, other keys when no subkey is left in them. Missing keys are not an error.
HRESULT UnregisterScript(std::string_view script, std::span<const ScriptParameter> parameters);

}  // namespace kora4
