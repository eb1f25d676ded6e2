// SPDX-License-Identifier: MIT
// Starts a tool with its pipes and environment, collects what it prints, and ends it when it
// takes too long.
#include "tools/support/tool_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

#include "platform/handles.h"
#include "support/desktop_hold.h"
#include "support/start_process.h"
#include "tools/support/child_pipe.h"

namespace kora4::test {
namespace {

std::wstring Wide(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

std::wstring ProgramPath(const std::string& program) {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    path.resize(path.find_last_of(L'\\') + 1);
    return path + Wide(program) + L".exe";
}

struct NoCaseLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
        return _wcsicmp(a.c_str(), b.c_str()) < 0;
    }
};

// The block that CreateProcess takes: this process's variables and the given ones.
std::wstring EnvironmentBlock(const Environment& changes) {
    std::map<std::wstring, std::wstring, NoCaseLess> variables;
    wchar_t* block = GetEnvironmentStringsW();
    for (const wchar_t* p = block; *p != L'\0'; p += wcslen(p) + 1) {
        const std::wstring variable = p;
        // The current folders of drives have names that begin with the sign.
        const std::size_t sign = variable.find(L'=', 1);
        variables[variable.substr(0, sign)] = variable.substr(sign + 1);
    }
    FreeEnvironmentStringsW(block);
    for (const auto& [name, value] : changes)
        variables[Wide(name)] = Wide(value);
    std::wstring result;
    for (const auto& [name, value] : variables) {
        if (!value.empty())
            result += name + L"=" + value + L'\0';
    }
    return result + L'\0';
}

// What all tools need of the test program. Tools do not outlive it, however it ends: the
// platform closes the job with it, and nobody may do so earlier, for it is in the job too.
void PrepareForTools() {
    static const DesktopHold s_desktop;
    static const HANDLE s_job = [] {
        const HANDLE job = CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
        AssignProcessToJobObject(job, GetCurrentProcess());
        return job;
    }();
    EXPECT_TRUE(s_desktop.IsHeld());
    EXPECT_NE(nullptr, s_job);
}

// Inheritable ends of pipes must not get into another tool that starts meanwhile.
std::mutex s_creation;

std::string WithoutReturn(std::string line) {
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

class Deadline {
  public:
    explicit Deadline(DWORD milliseconds) : m_end(GetTickCount64() + milliseconds) {}
    DWORD Left() const {
        const ULONGLONG now = GetTickCount64();
        return now >= m_end ? 0 : static_cast<DWORD>(m_end - now);
    }

  private:
    ULONGLONG m_end;
};

}  // namespace

// One process and the three pipes to it.
class RunningTool::Process {
  public:
    Process(const std::string& program, const std::vector<std::string>& arguments,
            const Environment& environment, DWORD flags)
        : m_name(program), m_begin(GetTickCount64()) {
        PrepareForTools();
        const std::lock_guard hold(s_creation);
        ChildPipe* const pipes[] = {&m_input, &m_out.pipe, &m_err.pipe};
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = m_input.ChildEnd().Get();
        startup.hStdOutput = m_out.pipe.ChildEnd().Get();
        startup.hStdError = m_err.pipe.ChildEnd().Get();
        const std::wstring path = ProgramPath(program);
        std::wstring command = CommandLineOf(path, arguments);
        std::wstring block = EnvironmentBlock(environment);
        PROCESS_INFORMATION process{};
        if (StartProcess([&] {
                return CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE,
                                      CREATE_UNICODE_ENVIRONMENT | flags, block.data(), nullptr,
                                      &startup, &process);
            })) {
            CloseHandle(process.hThread);
            m_process.Reset(process.hProcess);
            m_id = process.dwProcessId;
        } else {
            ADD_FAILURE() << program << " cannot be started, error " << GetLastError();
        }
        for (ChildPipe* pipe : pipes) {
            pipe->ChildEnd().Reset();
            pipe->Advance();
        }
    }

    ~Process() { Kill(); }

    struct Stream {
        ChildPipe pipe{ChildPipe::Direction::eFromChild};
        std::size_t taken = 0;

        // A line that is there, or what is left when no more comes.
        bool Take(std::string& line) {
            const std::string& text = pipe.Text();
            const std::size_t end = text.find('\n', taken);
            if (end == std::string::npos && (!pipe.IsOver() || taken == text.size()))
                return false;
            line = WithoutReturn(text.substr(taken, end - taken));
            taken = end == std::string::npos ? text.size() : end + 1;
            return true;
        }
        bool HasLine() const {
            return pipe.Text().find('\n', taken) != std::string::npos ||
                   (pipe.IsOver() && taken < pipe.Text().size());
        }
    };

    ChildPipe& Input() { return m_input; }
    Stream& Out() { return m_out; }
    Stream& Err() { return m_err; }
    DWORD Id() const { return m_id; }
    bool IsRunning() const {
        return m_process && WaitForSingleObject(m_process.Get(), 0) == WAIT_TIMEOUT;
    }

    // Moves text to and fro until that is so; false when the time is over.
    template <typename IsDone>
    bool PumpUntil(const Deadline& deadline, IsDone isDone) {
        for (;;) {
            ChildPipe* const pipes[] = {&m_input, &m_out.pipe, &m_err.pipe};
            std::vector<HANDLE> handles;
            for (ChildPipe* pipe : pipes) {
                pipe->Advance();
                if (pipe->IsBusy())
                    handles.push_back(pipe->Event());
            }
            if (isDone())
                return true;
            const DWORD left = deadline.Left();
            if (left == 0)
                return false;
            if (IsRunning())
                handles.push_back(m_process.Get());
            // Nothing comes any more; it may have ended just now.
            if (handles.empty())
                return isDone();
            WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), FALSE,
                                   left);
        }
    }

    bool NextLineOf(Stream& stream, const Deadline& deadline, std::string& line) {
        bool found = false;
        PumpUntil(deadline, [&] {
            found = stream.Take(line);
            return found || stream.pipe.IsOver();
        });
        return found;
    }

    ToolResult WaitForEnd(DWORD milliseconds) {
        const bool ended = PumpUntil(Deadline(milliseconds), [this] {
            return !IsRunning() && m_out.pipe.IsOver() && m_err.pipe.IsOver();
        });
        ToolResult result;
        result.exitCode = cNoExitCode;
        if (ended && m_process)
            GetExitCodeProcess(m_process.Get(), &result.exitCode);
        result.elapsed = static_cast<DWORD>(GetTickCount64() - m_begin);
        result.out = m_out.pipe.Text();
        result.err = m_err.pipe.Text();
        if (!ended) {
            ADD_FAILURE() << m_name << " has not ended after " << milliseconds << " ms\n"
                          << result;
            Kill();
        }
        return result;
    }

    void Kill() {
        if (!IsRunning())
            return;
        TerminateProcess(m_process.Get(), cNoExitCode);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_process.Get(), cToolWait))
            << m_name << " cannot be ended";
    }

    std::string Said() const {
        return m_name + " said:\n" + m_out.pipe.Text() + "\nand on standard error:\n" +
               m_err.pipe.Text();
    }

  private:
    const std::string m_name;
    const ULONGLONG m_begin;
    UniqueHandle m_process;
    DWORD m_id = 0;
    ChildPipe m_input{ChildPipe::Direction::eToChild};
    Stream m_out;
    Stream m_err;
};

RunningTool::RunningTool(const std::string& program, const std::vector<std::string>& arguments,
                         const Environment& environment)
    // With CREATE_NEW_PROCESS_GROUP the tool would not hear Ctrl-C, and with the test's own
    // console, if there is one, everybody in it would.
    : m_process(std::make_unique<Process>(program, arguments, environment, CREATE_NO_WINDOW)) {}

RunningTool::RunningTool(std::unique_ptr<Process> process) : m_process(std::move(process)) {}

RunningTool::~RunningTool() = default;

std::string RunningTool::NextLine(DWORD milliseconds) {
    std::string line;
    if (!m_process->NextLineOf(m_process->Out(), Deadline(milliseconds), line))
        ADD_FAILURE() << "no further line; " << m_process->Said();
    return line;
}

std::string RunningTool::NextErrorLine(DWORD milliseconds) {
    std::string line;
    if (!m_process->NextLineOf(m_process->Err(), Deadline(milliseconds), line))
        ADD_FAILURE() << "no further message; " << m_process->Said();
    return line;
}

std::string RunningTool::LineLike(const std::function<bool(const std::string&)>& isWanted,
                                  DWORD milliseconds) {
    const Deadline deadline(milliseconds);
    for (std::string line; m_process->NextLineOf(m_process->Out(), deadline, line);) {
        if (isWanted(line))
            return line;
    }
    ADD_FAILURE() << "no such line; " << m_process->Said();
    return {};
}

std::string RunningTool::LineWith(std::string_view text, DWORD milliseconds) {
    const Deadline deadline(milliseconds);
    for (std::string line; m_process->NextLineOf(m_process->Out(), deadline, line);) {
        if (line.find(text) != std::string::npos)
            return line;
    }
    ADD_FAILURE() << "no line with '" << text << "'; " << m_process->Said();
    return {};
}

std::string RunningTool::ErrorLineWith(std::string_view text, DWORD milliseconds) {
    const Deadline deadline(milliseconds);
    for (std::string line; m_process->NextLineOf(m_process->Err(), deadline, line);) {
        if (line.find(text) != std::string::npos)
            return line;
    }
    ADD_FAILURE() << "no message with '" << text << "'; " << m_process->Said();
    return {};
}

bool RunningTool::IsSilentFor(DWORD milliseconds) {
    return !m_process->PumpUntil(Deadline(milliseconds),
                                 [this] { return m_process->Out().HasLine(); });
}

void RunningTool::Send(std::string_view text) {
    m_process->Input().Write(text);
}

void RunningTool::EndInput() {
    m_process->Input().CloseWhenWritten();
}

void RunningTool::PressCtrlC() {
    const ToolResult result = RunTool("kora4_test_ctrl_c", {std::to_string(m_process->Id())});
    EXPECT_EQ(0u, result.exitCode) << "Ctrl-C did not reach the tool\n" << result;
}

void RunningTool::CloseOutput() {
    m_process->Out().pipe.Close();
}

void RunningTool::Kill() {
    m_process->Kill();
}

bool RunningTool::IsRunning() const {
    return m_process->IsRunning();
}

ToolResult RunningTool::WaitForEnd(DWORD milliseconds) {
    return m_process->WaitForEnd(milliseconds);
}

DWORD RunningTool::ProcessId() const {
    return m_process->Id();
}

ToolResult RunTool(const std::string& program, const std::vector<std::string>& arguments,
                   std::string_view input, const Environment& environment, DWORD milliseconds) {
    RunningTool tool(
        std::make_unique<RunningTool::Process>(program, arguments, environment, 0u));
    tool.Send(input);
    tool.EndInput();
    return tool.WaitForEnd(milliseconds);
}

std::vector<std::string> ToolResult::Lines() const {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < out.size();) {
        const std::size_t end = std::min(out.find('\n', begin), out.size());
        lines.push_back(WithoutReturn(out.substr(begin, end - begin)));
        begin = end + 1;
    }
    return lines;
}

std::ostream& operator<<(std::ostream& stream, const ToolResult& result) {
    return stream << "exit code " << result.exitCode << " after " << result.elapsed
                  << " ms\nstandard output:\n"
                  << result.out << "\nstandard error:\n"
                  << result.err;
}

// A run of backslashes counts double where a quote follows it, and only there.
std::wstring CommandLineOf(const std::wstring& program,
                           const std::vector<std::string>& arguments) {
    std::wstring line = L"\"" + program + L"\"";
    for (const std::string& argument : arguments) {
        line += L" \"";
        std::size_t backslashes = 0;
        for (const wchar_t c : Wide(argument)) {
            if (c == L'"')
                line.append(backslashes + 1, L'\\');
            backslashes = c == L'\\' ? backslashes + 1 : 0;
            line += c;
        }
        line.append(backslashes, L'\\') += L'"';
    }
    return line;
}

}  // namespace kora4::test
