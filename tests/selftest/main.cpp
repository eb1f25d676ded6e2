// SPDX-License-Identifier: MIT
// kora4_selftest VERB [ARGUMENT...]: what selftest.cmd cannot do by itself, in its folder.
//   check [/force]        exit code 3, with the reason, if this machine may not be touched
//   guard [PROGRAM...]    saves what the tests change, calls "selftest.cmd :run PROGRAM...",
//   and
//                         restores it however that ends; its exit code, or 4
//   restore               restores what an earlier guard has saved
//   versions              a line for each library
//   run POSITION PROGRAM SECONDS [ARGUMENT...]
//                         runs a program: a line here, its result in report.txt; exit code 0
//                         passed, 1 failed, 3 interrupted
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/text.h"
#include "platform/handles.h"
#include "process/program.h"
#include "selftest/program_run.h"
#include "selftest/saved_state.h"

namespace {

using namespace kora4;
using namespace kora4::selftest;
using tools::Narrow;
using tools::Widen;

constexpr int cMayNotBeTouched = 3;
constexpr int cNotSaved = 4;

std::wstring Kit() {
    wchar_t path[MAX_PATH * 4];
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return std::filesystem::path(path).parent_path().wstring();
}

std::wstring StateFile() {
    return Kit() + L"\\saved.state";
}

bool IsThere(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// By doing what the tests do: only an administrator creates keys there.
bool MayWriteMachine() {
    constexpr wchar_t cTrial[] = L"SOFTWARE\\Kora4SelfTest";
    UniqueRegKey key;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, cTrial, 0, nullptr, 0, KEY_WRITE | KEY_WOW64_64KEY,
                        nullptr, key.Put(), nullptr) != ERROR_SUCCESS)
        return false;
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, cTrial, KEY_WOW64_64KEY, 0);
    return true;
}

int Check(bool isForced) {
    if (IsThere(StateFile())) {
        std::printf(
            "An earlier run has not given back what it saved. Run: selftest.cmd "
            "/restore\n");
        return cMayNotBeTouched;
    }
    if (!MayWriteMachine()) {
        std::printf(
            "Registering needs administrator rights. Run this in a command prompt that "
            "was started as administrator.\n");
        return cMayNotBeTouched;
    }
    const std::vector<std::wstring> there = WhatIsThere();
    if (isForced || there.empty())
        return 0;
    std::printf("KORA4 ASL is registered or has settings on this machine:\n");
    for (const std::wstring& key : there)
        std::printf("    %s\n", Narrow(key).c_str());
    std::printf(
        "Nothing was changed. With /force the tests run all the same; what is there is "
        "saved first and restored at the end.\n");
    return cMayNotBeTouched;
}

int Restore() {
    if (!IsThere(StateFile())) {
        std::printf("Nothing is saved here; there is nothing to restore.\n");
        return 0;
    }
    if (RestoreState(StateFile())) {
        std::printf("Everything is as it was before.\n");
        return 0;
    }
    std::printf(
        "Not everything could be restored; the message above says why. It is still in "
        "saved.state: remove the cause and run: selftest.cmd /restore\n");
    return cNotSaved;
}

// Ctrl-C is for the test that runs. When the console is closed, everything in it ends, and so
// does the wait for the batch file; Windows ends this process, too, when this returns or after
// five seconds.
BOOL WINAPI OnControl(DWORD event) {
    constexpr int cTimes = 45;
    for (int i = 0; event == CTRL_CLOSE_EVENT && IsThere(StateFile()) && i < cTimes; ++i)
        Sleep(100);
    return TRUE;
}

// Without a shell's own quotes there is nothing that needs more than these.
int CallBatchFile(const std::vector<std::string>& programs) {
    wchar_t shell[MAX_PATH + 1] = L"";
    GetEnvironmentVariableW(L"ComSpec", shell, MAX_PATH);
    std::wstring line =
        L"\"" + std::wstring(shell) + L"\" /d /c \"\"" + Kit() + L"\\selftest.cmd\" :run";
    for (const std::string& program : programs)
        line += L" " + Widen(program);
    line += L"\"";
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    if (!CreateProcessW(shell, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                        &made)) {
        std::printf("%s cannot be started: error %lu\n", Narrow(shell).c_str(), GetLastError());
        return 1;
    }
    CloseHandle(made.hThread);
    const UniqueHandle process(made.hProcess);
    WaitForSingleObject(process.Get(), INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(process.Get(), &code);
    return static_cast<int>(code);
}

int Guard(const std::vector<std::string>& programs) {
    SetConsoleCtrlHandler(&OnControl, TRUE);
    if (!SaveState(StateFile())) {
        std::printf("What is there cannot be saved, so nothing was changed.\n");
        if (IsThere(StateFile()))
            Restore();
        return cNotSaved;
    }
    const int result = CallBatchFile(programs);
    const int restored = Restore();
    return restored != 0 ? restored : result;
}

std::string VersionOf(const std::wstring& path) {
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
    std::vector<char> block(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (size == 0 || !GetFileVersionInfoW(path.c_str(), 0, size, block.data()) ||
        !VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&info), &length))
        return "no version";
    char text[64];
    std::snprintf(text, sizeof text, "%lu.%lu.%lu.%lu", info->dwFileVersionMS >> 16,
                  info->dwFileVersionMS & 0xFFFF, info->dwFileVersionLS >> 16,
                  info->dwFileVersionLS & 0xFFFF);
    return text;
}

int Versions() {
    for (const wchar_t* file : {L"QXA64T.dll", L"KORA4Proxies.dll"})
        std::printf("%s %s\n", Narrow(file).c_str(), VersionOf(Kit() + L"\\" + file).c_str());
    return 0;
}

// "{kit}" in an argument is the kit's folder.
std::wstring Arguments(const std::vector<std::string>& arguments, std::size_t from) {
    std::wstring line;
    for (std::size_t i = from; i < arguments.size(); ++i) {
        std::wstring argument = Widen(arguments[i]);
        if (const std::size_t at = argument.find(L"{kit}"); at != std::wstring::npos)
            argument.replace(at, 5, Kit());
        line += L"\"" + argument + L"\" ";
    }
    return line;
}

void Report(const std::string& name, const ProgramRun& run) {
    std::ofstream report(std::filesystem::path(Kit() + L"\\report.txt"),
                         std::ios::binary | std::ios::app);
    report << name << ": " << InWords(run) << "\r\n";
    for (const std::string& test : run.failed)
        report << "    failed: " << test << "\r\n";
    for (const std::string& test : run.skipped)
        report << "    skipped: " << test << "\r\n";
    report << run.output;
}

int Run(const std::vector<std::string>& arguments) {
    const std::string& name = arguments[2];
    std::printf("[%s] %s ... ", arguments[1].c_str(), name.c_str());
    std::fflush(stdout);
    // The program gets Ctrl-C, too, and shows it by its exit code.
    SetConsoleCtrlHandler([](DWORD event) -> BOOL { return event == CTRL_C_EVENT; }, TRUE);
    const std::wstring folder = Kit() + L"\\results\\" + Widen(name);
    const ProgramRun run = RunProgram(
        Kit() + L"\\" + Widen(name) + L".exe", Arguments(arguments, 4), folder,
        folder + L".txt", static_cast<DWORD>(std::strtoul(arguments[3].c_str(), nullptr, 10)));
    std::printf("%s\n", InWords(run).c_str());
    Report(name, run);
    return run.IsInterrupted() ? 3 : run.HasPassed() ? 0 : 1;
}

}  // namespace

int wmain(int count, wchar_t** values) {
    const std::vector<std::string> arguments = tools::Arguments(count, values);
    const std::string verb = arguments.empty() ? "" : arguments[0];
    const std::size_t size = arguments.size();
    if (verb == "check")
        return Check(size > 1 && arguments[1] == "/force");
    if (verb == "guard")
        return Guard({arguments.begin() + 1, arguments.end()});
    if (verb == "restore")
        return Restore();
    if (verb == "versions")
        return Versions();
    if (verb == "run" && size > 3)
        return Run(arguments);
    std::printf("kora4_selftest is called by selftest.cmd.\n");
    return 2;
}
