// SPDX-License-Identifier: MIT
// kora4_test_ctrl_c PROCESS: Ctrl-C in the console of that process, for all who are in it.
// Only a process that is in a console itself can do that, and a test must not leave its own.
#include <windows.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    const DWORD process = argc == 2 ? std::strtoul(argv[1], nullptr, 10) : 0;
    FreeConsole();
    if (!AttachConsole(process)) {
        std::printf("no console of process %lu, error %lu\n", process, GetLastError());
        return 1;
    }
    // This process is in that console, too.
    SetConsoleCtrlHandler(nullptr, TRUE);
    if (!GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) {
        std::printf("no Ctrl-C, error %lu\n", GetLastError());
        return 1;
    }
    return 0;
}
