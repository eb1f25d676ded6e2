// SPDX-License-Identifier: MIT
// Finds the program once, and starts it without a shell.
#include "kora4ctl/notifications/hook_program.h"

#include <algorithm>
#include <cstdlib>

#include "base/shown_text.h"
#include "base/text.h"
#include "process/win32_failure.h"

namespace kora4::tools {
namespace {

// The path of a program, looked for as the platform looks for programs; empty for none.
std::wstring PathOf(const std::string& program) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD needed = SearchPathW(nullptr, Widen(program).c_str(), L".exe",
                                         static_cast<DWORD>(path.size()), path.data(), nullptr);
        const bool fits = needed < path.size();
        path.resize(needed);
        if (fits)
            return path;
    }
}

bool IsBatchFile(const std::wstring& path) {
    std::string name = Lower(Narrow(path));
    // Windows finds the file without them.
    name.erase(name.find_last_not_of(". ") + 1);
    return name.ends_with(".bat") || name.ends_with(".cmd");
}

void SetVariable(const wchar_t* name, const std::string& value) {
    if (!SetEnvironmentVariableW(name, Widen(value).c_str()))
        SetEnvironmentVariableW(name, nullptr);
}

}  // namespace

HookProgram::HookProgram(const std::string& command) {
    const bool isQuoted = command.starts_with('"');
    const std::size_t end =
        std::min(command.find(isQuoted ? '"' : ' ', isQuoted ? 1 : 0), command.size());
    const std::string program = command.substr(isQuoted, end - isQuoted);
    if (!program.empty())
        m_path = PathOf(program);
    if (m_path.empty())
        throw BadInput("There is no program '" + program + "'.",
                       "Put the name of a program with blanks in it between quotation marks; "
                       "what is behind it are its arguments.");
    if (IsBatchFile(m_path))
        throw BadInput("'" + program + "' is a batch file, which a shell reads.",
                       "Start one that does not mind what values contain with 'cmd /c'.");
    m_commandLine = L"\"" + m_path + L"\"" +
                    Widen(command.substr(std::min(end + isQuoted, command.size())));
}

bool HookProgram::Run(const Context& context, const Notification& told) const {
    SetVariable(L"KORA4_TIME", told.time.Iso());
    SetVariable(L"KORA4_EVENT", told.event);
    SetVariable(L"KORA4_NAME", told.name);
    SetVariable(L"KORA4_VALUE", told.text);
    SetVariable(L"KORA4_JSON", ShownText(told.Document().dump()));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    std::wstring commandLine = m_commandLine;
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(m_path.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        nullptr, &startup, &started))
        throw Win32Failure(GetLastError(), "'" + Narrow(m_path) + "' cannot be started");
    const UniqueHandle thread(started.hThread);
    const UniqueHandle process(started.hProcess);
    const auto isOver = [&] { return WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0; };
    if (WaitWithMessages(context.interrupt.Event(), {}, isOver, process.Get()) != Wake::eDone) {
        // It has heard Ctrl-C as well. Left behind, it would hold what this process writes to.
        constexpr DWORD cPatience = 1000;
        if (WaitForSingleObject(process.Get(), cPatience) != WAIT_OBJECT_0)
            TerminateProcess(process.Get(), EXIT_FAILURE);
        return false;
    }
    DWORD code = 0;
    GetExitCodeProcess(process.Get(), &code);
    if (code != 0)
        context.output.Say("'" + Narrow(m_path) + "' ended with exit code " +
                           std::to_string(code) + ".");
    return true;
}

}  // namespace kora4::tools
