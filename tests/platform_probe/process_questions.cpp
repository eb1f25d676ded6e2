// SPDX-License-Identifier: MIT
// Questions about processes: the console, Ctrl-C, pipes, the clock, and which system it is.
#include <array>
#include <cstdlib>
#include <cstring>

#include "platform_probe/answers.h"
#include "platform_probe/question.h"
#include "platform_probe/roles.h"

namespace kora4::probe {

namespace {

constexpr wchar_t cWait[] = L"--wait-for-ctrl-c";
constexpr wchar_t cPress[] = L"--press-ctrl-c";
constexpr wchar_t cShow[] = L"--show-sequence";

// Milliseconds for another process.
constexpr DWORD cLong = 10000;

// This program again, in a role, in a console of its own.
class Process {
  public:
    explicit Process(const std::wstring& role) {
        wchar_t path[MAX_PATH * 4];
        GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
        std::wstring line = L"\"" + std::wstring(path) + L"\" " + role;
        STARTUPINFOW start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION made{};
        if (!CreateProcessW(path, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW,
                            nullptr, nullptr, &start, &made))
            return;
        CloseHandle(made.hThread);
        m_process.Reset(made.hProcess);
        m_id = made.dwProcessId;
    }
    ~Process() { TerminateProcess(m_process.Get(), 1); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    DWORD Id() const { return m_id; }
    bool Waited(DWORD milliseconds) const {
        return WaitForSingleObject(m_process.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    DWORD ExitCode() const {
        DWORD code = 0;
        GetExitCodeProcess(m_process.Get(), &code);
        return code;
    }

  private:
    UniqueHandle m_process;
    DWORD m_id = 0;
};

std::wstring ReadyName(DWORD process) {
    return L"Kora4PlatformProbeReady" + std::to_wstring(process);
}

std::string EndedByCtrlC() {
    const Process waiting(cWait);
    const UniqueHandle ready(
        CreateEventW(nullptr, TRUE, FALSE, ReadyName(waiting.Id()).c_str()));
    if (WaitForSingleObject(ready.Get(), cLong) != WAIT_OBJECT_0)
        return std::string(cCannotTell) + ": no process started";
    const Process pressing(std::wstring(cPress) + L" " + std::to_wstring(waiting.Id()));
    if (!pressing.Waited(cLong) || pressing.ExitCode() != 0)
        return std::string(cCannotTell) + ": no Ctrl-C was sent";
    return waiting.Waited(cLong) ? NameOf(static_cast<LONG>(waiting.ExitCode())) : "goes on";
}

std::string PipeWithoutReader() {
    UniqueHandle reader;
    UniqueHandle writer;
    CreatePipe(reader.Put(), writer.Put(), nullptr, 0);
    reader.Reset();
    DWORD written = 0;
    return WriteFile(writer.Get(), "x", 1, &written, nullptr)
               ? NameOf(ERROR_SUCCESS)
               : NameOf(static_cast<LONG>(GetLastError()));
}

std::string SequenceTakesColumns() {
    const Process showing(cShow);
    if (!showing.Waited(cLong) || showing.ExitCode() > 1)
        return std::string(cCannotTell) + ": it has no console";
    return YesOrNo(showing.ExitCode() == 1);
}

std::string StepOfClock() {
    ULONGLONG least = ~ULONGLONG{0};
    for (int i = 0; i < 20; ++i) {
        const ULONGLONG begin = GetTickCount64();
        ULONGLONG end = begin;
        while (end == begin)
            end = GetTickCount64();
        least = end - begin < least ? end - begin : least;
    }
    return least < 10 ? "less than 10 ms" : least <= 16 ? "10 to 16 ms" : "more than 16 ms";
}

std::string HasWineVersion() {
    return YesOrNo(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version"));
}

constexpr char cInterrupt[] = "tools/process/interrupt.cpp";
constexpr char cScreen[] = "tools/base/output.cpp tools/kora4ctl/terminal/text_layout.cpp";

constexpr std::array cQuestions{
    Question{"ctrl-c", "What is the exit code of a process that Ctrl-C ends?",
             "STATUS_CONTROL_C_EXIT", "NTSTATUS Values", cInterrupt, &EndedByCtrlC},
    Question{"pipe-without-reader", "What does writing to a pipe give that nobody reads?",
             "ERROR_BROKEN_PIPE", "WriteFile function (fileapi.h)", "tools/base/output.cpp",
             &PipeWithoutReader},
    Question{"sequence", "Does a colour sequence take columns of the console?", "no",
             "Console Virtual Terminal Sequences", cScreen, &SequenceTakesColumns},
    Question{"resized-terminal", "Does a program learn that its terminal was resized?", "yes",
             "Window Buffer Size Events", "tools/kora4ctl/terminal/terminal_screen.h", nullptr},
    Question{"clock", "In which steps does GetTickCount64 count?", "10 to 16 ms",
             "GetTickCount64 function (sysinfoapi.h)", "src/monitor/apartment.cpp",
             &StepOfClock},
    Question{"wine", "Does ntdll.dll export wine_get_version?", "no", "",
             "tools/process/privileges.cpp", &HasWineVersion},
};

int WaitForCtrlC() {
    const UniqueHandle ready(
        CreateEventW(nullptr, TRUE, FALSE, ReadyName(GetCurrentProcessId()).c_str()));
    SetEvent(ready.Get());
    Sleep(30000);
    return 1;
}

// 0: it takes no column, 1: it does, 2: there is no console.
int ShowSequence() {
    const HANDLE screen = CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                                    CONSOLE_TEXTMODE_BUFFER, nullptr);
    constexpr wchar_t cSequence[] = L"\x1b[0m";
    CONSOLE_SCREEN_BUFFER_INFO info{};
    DWORD mode = 0;
    DWORD written = 0;
    if (!GetConsoleMode(screen, &mode) ||
        !SetConsoleMode(screen, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) ||
        !WriteConsoleW(screen, cSequence, 4, &written, nullptr) ||
        !GetConsoleScreenBufferInfo(screen, &info))
        return 2;
    return info.dwCursorPosition.X != 0 ? 1 : 0;
}

int PressCtrlC(DWORD process) {
    FreeConsole();
    // This process is in that console, too.
    return AttachConsole(process) && SetConsoleCtrlHandler(nullptr, TRUE) &&
                   GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)
               ? 0
               : 1;
}

}  // namespace

std::span<const Question> ProcessQuestions() {
    return cQuestions;
}

std::optional<int> PlayRole(int count, char** arguments) {
    const std::wstring role = count > 1 ? Wide(arguments[1]) : L"";
    if (role == cWait)
        return WaitForCtrlC();
    if (role == cShow)
        return ShowSequence();
    if (role == cPress && count > 2)
        return PressCtrlC(std::strtoul(arguments[2], nullptr, 10));
    if (count > 2 && std::strcmp(arguments[1], cAnswerRole) == 0)
        return GiveAnswer(arguments[2]);
    return std::nullopt;
}

}  // namespace kora4::probe
