// SPDX-License-Identifier: MIT
// Removes the entries of a registration without any code of the library, whose file may be
// gone; and the settings.
#pragma once

#include "kora4ctl/registration/registration.h"

namespace kora4::tools {

// Class, application and type library, of the machine and of this user. What is absent is not
// an error. Failure with eFailed when an entry cannot be removed.
void RemoveEntries(const Registration& registration);

// The store with everything in it, and the tools' own backups and journals. A registry link is
// removed itself, never what it leads to. What is absent is not an error. Failure with eFailed
// when something cannot be removed.
void RemoveSettings();

}  // namespace kora4::tools
