// SPDX-License-Identifier: MIT
// kora4sim: stands in for the audio engine, so that a user interface can be built and tested
// without one.
#include "kora4sim/command_line.h"
#include "process/program.h"

int wmain(int count, wchar_t** arguments) {
    return kora4::tools::sim::RunKora4Sim(kora4::tools::Arguments(count, arguments));
}
