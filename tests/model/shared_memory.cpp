// SPDX-License-Identifier: MIT
// Starts children, maps shared memory, and ends the program with a message.
#include "model/shared_memory.h"
#include "support/start_process.h"

#include <cstdio>
#include <cstdlib>

namespace kora4::test {

UniqueHandle StartChild(const std::wstring& argument) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring line = L"\"" + std::wstring(path) + L"\" " + argument;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!StartProcess([&] {
            return CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                  nullptr, &startup, &process);
        }))
        Die("a child process cannot be started: error " + std::to_string(GetLastError()));
    CloseHandle(process.hThread);
    return UniqueHandle(process.hProcess);
}

void Die(const std::string& what) {
    std::printf("%s\n", what.c_str());
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 1);
    std::abort();
}

void* MapShared(HANDLE section, std::size_t size) {
    void* const pMemory =
        section ? MapViewOfFile(section, FILE_MAP_ALL_ACCESS, 0, 0, size) : nullptr;
    if (!pMemory)
        Die("no shared memory for the processes of the test");
    return pMemory;
}

}  // namespace kora4::test
