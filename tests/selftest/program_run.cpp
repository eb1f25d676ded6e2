// SPDX-License-Identifier: MIT
// Runs a program and reads the lines of the test framework.
#include "selftest/program_run.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/handles.h"

namespace kora4::selftest {

namespace {

// "Suite.Name (12 ms)" and "Suite.Name, where ..." without what follows the name.
void AddName(const std::string& text, std::vector<std::string>& names) {
    const std::string name = text.substr(0, text.find_first_of(" ,\r"));
    const bool isName = name.find('.') != std::string::npos;
    if (isName && std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
}

}  // namespace

void ReadTests(const std::string& text, ProgramRun& run) {
    constexpr char cRan[] = "[==========] ";
    constexpr char cFailed[] = "[  FAILED  ] ";
    constexpr char cSkipped[] = "[  SKIPPED ] ";
    std::istringstream lines(text);
    bool isReported = false;
    for (std::string line; std::getline(lines, line);) {
        const std::string rest = line.substr(std::min<std::size_t>(line.size(), 13));
        if (line.starts_with(cFailed)) {
            AddName(rest, run.failed);
        } else if (line.starts_with(cSkipped)) {
            AddName(rest, run.skipped);
        } else if (line.starts_with(cRan)) {
            isReported = true;
            if (rest.find(" ran.") != std::string::npos)
                run.tests = std::atoi(rest.c_str());
        }
    }
    if (!isReported)
        run.output = text;
}

std::string InWords(const ProgramRun& run) {
    char time[32];
    std::snprintf(time, sizeof time, ", %llu.%llu s", run.milliseconds / 1000,
                  run.milliseconds / 100 % 10);
    const std::string tests = std::to_string(run.tests) + (run.tests == 1 ? " test" : " tests");
    if (run.HasPassed()) {
        const std::string skipped =
            run.skipped.empty() ? "" : ", " + std::to_string(run.skipped.size()) + " skipped";
        return "passed" + (run.output.empty() ? ", " + tests + skipped : "") + time;
    }
    if (run.isOverdue)
        return std::string("FAILED (ended, it took too long)") + time;
    char code[16];
    std::snprintf(code, sizeof code, run.exitCode > 0xFFFF ? "0x%08lX" : "%lu", run.exitCode);
    return "FAILED (exit code " + std::string(code) + "), " +
           std::to_string(run.failed.size()) + " of " + tests + time;
}

ProgramRun RunProgram(const std::wstring& path, const std::wstring& arguments,
                      const std::wstring& folder, const std::wstring& log, DWORD seconds) {
    ProgramRun run;
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    UniqueHandle output(CreateFileW(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const UniqueHandle input(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, &inherited,
                                         OPEN_EXISTING, 0, nullptr));
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.Get();
    start.hStdOutput = start.hStdError = output.Get();
    std::wstring line = L"\"" + path + L"\" " + arguments;
    PROCESS_INFORMATION made{};
    const ULONGLONG begin = GetTickCount64();
    if (!CreateProcessW(path.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        folder.c_str(), &start, &made)) {
        run.exitCode = GetLastError();
        return run;
    }
    CloseHandle(made.hThread);
    const UniqueHandle process(made.hProcess);
    run.isOverdue = WaitForSingleObject(process.Get(), seconds * 1000) == WAIT_TIMEOUT;
    if (run.isOverdue) {
        TerminateProcess(process.Get(), 1);
        WaitForSingleObject(process.Get(), 5000);
    }
    GetExitCodeProcess(process.Get(), &run.exitCode);
    run.milliseconds = GetTickCount64() - begin;
    output.Reset();
    std::ostringstream text;
    text << std::ifstream(std::filesystem::path(log), std::ios::binary).rdbuf();
    ReadTests(text.str(), run);
    return run;
}

}  // namespace kora4::selftest
