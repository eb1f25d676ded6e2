// SPDX-License-Identifier: MIT
// Removes the entries of a registration without any code of the library: the file may be gone.
#pragma once

#include "kora4ctl/registration/registration.h"

namespace kora4::tools {

// Class, application and type library, of the machine and of this user. What is absent is not
// an error. Failure with eFailed when an entry cannot be removed.
void RemoveEntries(const Registration& registration);

}  // namespace kora4::tools
