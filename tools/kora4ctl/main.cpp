// SPDX-License-Identifier: MIT
// kora4ctl: everything that a client of the KORA4 API can do, at the command line.
#include "kora4ctl/command_line/command_line.h"

int wmain(int count, wchar_t** arguments) {
    return kora4::tools::RunKora4Ctl(kora4::tools::Arguments(count, arguments));
}
