// SPDX-License-Identifier: MIT
// Removes the entries of a registration without any code of the library, whose file may be
// gone; and the settings.
#pragma once

#include "kora4ctl/registration/registration.h"

namespace kora4::tools {

enum class EntriesOf { eMachine, eMachineAndUser };

// Class, application and type library. What is absent is not an error. Failure with eFailed
// when an entry cannot be removed.
void RemoveEntries(const Registration& registration, EntriesOf whose);

// The store with everything in it, and the tools' own backups and journals. A registry link is
// removed itself, never what it leads to. What is absent is not an error. False when the folder
// of the backups stays, because it holds what is not of these programs, or is open in another
// one. Failure with eFailed when something else cannot be removed.
bool RemoveSettings();

}  // namespace kora4::tools
