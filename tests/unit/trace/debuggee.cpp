// SPDX-License-Identifier: MIT
// The debugger's loop around a child, and the choice of the scenario in the child.
#include "unit/trace/debuggee.h"

#include <windows.h>

#include "platform/handles.h"
#include "support/start_process.h"

namespace kora4::test {

namespace {

constexpr char cOption[] = "--scenario";
constexpr char cBegin[] = "scenario begins\n";
constexpr char cEnd[] = "scenario ends\n";
constexpr DWORD cPatience = 30000;  // ms

class Debugger {
  public:
    explicit Debugger(HANDLE process) : m_process(process) {}

    // Answers events until the process ends or nothing happens for too long.
    DebugRun Run() {
        DEBUG_EVENT event{};
        while (WaitForDebugEvent(&event, cPatience) != FALSE) {
            const DWORD answer = Handle(event);
            ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
            if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT)
                return m_run;
        }
        TerminateProcess(m_process, 99);
        m_run.exitCode = 99;
        return m_run;
    }

  private:
    DWORD Handle(const DEBUG_EVENT& event) {
        switch (event.dwDebugEventCode) {
            case CREATE_PROCESS_DEBUG_EVENT:
                CloseHandle(event.u.CreateProcessInfo.hFile);
                break;
            case LOAD_DLL_DEBUG_EVENT:
                CloseHandle(event.u.LoadDll.hFile);
                break;
            case OUTPUT_DEBUG_STRING_EVENT:
                TakeOutput(event.u.DebugString);
                break;
            case EXIT_PROCESS_DEBUG_EVENT:
                m_run.exitCode = event.u.ExitProcess.dwExitCode;
                break;
            case EXCEPTION_DEBUG_EVENT:
                return TakeException(event.u.Exception);
            default:
                break;
        }
        return DBG_CONTINUE;
    }

    // The loader breaks too, before the scenario begins.
    DWORD TakeException(const EXCEPTION_DEBUG_INFO& info) {
        if (info.ExceptionRecord.ExceptionCode != EXCEPTION_BREAKPOINT)
            return DBG_EXCEPTION_NOT_HANDLED;
        if (m_inside)
            ++m_run.breakpoints;
        return DBG_CONTINUE;
    }

    void TakeOutput(const OUTPUT_DEBUG_STRING_INFO& info) {
        std::string text(info.nDebugStringLength, '\0');
        SIZE_T read = 0;
        ReadProcessMemory(m_process, info.lpDebugStringData, text.data(), text.size(), &read);
        text.resize(read);
        while (text.ends_with('\0'))
            text.pop_back();
        if (text == cBegin) {
            m_inside = true;
        } else if (text == cEnd) {
            m_inside = false;
            m_run.ended = true;
        } else if (m_inside) {
            m_run.output.push_back(text);
        }
    }

    HANDLE m_process;
    bool m_inside = false;
    DebugRun m_run;
};

}  // namespace

DebugRun RunUnderDebugger(const std::string& scenario) {
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, sizeof program);
    std::string command = std::string("\"") + program + "\" " + cOption + " " + scenario;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION created{};
    if (!StartProcess([&] {
            return CreateProcessA(program, command.data(), nullptr, nullptr, FALSE,
                                  DEBUG_ONLY_THIS_PROCESS, nullptr, nullptr, &startup,
                                  &created);
        }))
        return {};
    const UniqueHandle process(created.hProcess);
    const UniqueHandle thread(created.hThread);
    return Debugger(process.Get()).Run();
}

std::optional<int> RunScenario(int argc, char** argv, const std::vector<Scenario>& scenarios) {
    if (argc != 3 || std::string(argv[1]) != cOption)
        return std::nullopt;
    for (const Scenario& scenario : scenarios) {
        if (std::string(argv[2]) != scenario.name)
            continue;
        OutputDebugStringA(cBegin);
        scenario.run();
        OutputDebugStringA(cEnd);
        return 0;
    }
    return 98;
}

}  // namespace kora4::test
