// SPDX-License-Identifier: MIT
// Which programs have loaded a library, so that an update can name them.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace kora4::tools {

struct ModuleUser {
    DWORD process = 0;
    std::string program;  // its path, UTF-8
};

// The programs but this one that have loaded that file, by number. A library that was renamed
// meanwhile counts under the name by which it was loaded. Programs that this one may not look
// into are left out: those of other users unless it runs elevated, and protected ones.
std::vector<ModuleUser> UsersOfModule(const std::string& path);

}  // namespace kora4::tools
