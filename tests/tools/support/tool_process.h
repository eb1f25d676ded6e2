// SPDX-License-Identifier: MIT
// The built tools as a person runs them: in processes of their own, with arguments, input
// and environment, and what they print. Every wait is bounded: a tool that takes longer is
// ended, and the test fails with what it had printed.
#ifndef KORA4_TESTS_TOOLS_SUPPORT_TOOL_PROCESS_H
#define KORA4_TESTS_TOOLS_SUPPORT_TOOL_PROCESS_H

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::test {

// Milliseconds. Nothing that works takes nearly as long, on a busy machine either.
inline constexpr DWORD cToolWait = 60000;

// UTF-8, in addition to that of the test or in place of it. An empty value removes one.
using Environment = std::map<std::string, std::string>;

// The exit code of a process that Ctrl-C has ended.
inline constexpr DWORD cEndedByCtrlC = 0xC000013A;

// What a tool has left behind.
struct ToolResult {
    // Of a tool that was ended by the test: cNoExitCode.
    DWORD exitCode = 0;
    // The bytes as they came; lines end in \n or \r\n, as the tool wrote them.
    std::string out;
    std::string err;
    DWORD elapsed = 0;  // milliseconds

    // What went to standard output, line by line without the line ends.
    std::vector<std::string> Lines() const;
};
inline constexpr DWORD cNoExitCode = 0xFFFFFFFF;

// For messages of failed tests.
std::ostream& operator<<(std::ostream& stream, const ToolResult& result);

// Runs a program of the folder of the test program ("kora4ctl") to its end. Its input is the
// text and then ends.
ToolResult RunTool(const std::string& program, const std::vector<std::string>& arguments,
                   std::string_view input = {}, const Environment& environment = {},
                   DWORD milliseconds = cToolWait);

inline ToolResult RunCtl(const std::vector<std::string>& arguments, std::string_view input = {},
                         const Environment& environment = {}) {
    return RunTool("kora4ctl", arguments, input, environment);
}
inline ToolResult RunSim(const std::vector<std::string>& arguments, std::string_view input = {},
                         const Environment& environment = {}) {
    return RunTool("kora4sim", arguments, input, environment);
}

// A tool that runs on while the test goes on, in a console of its own that nobody sees. Used
// by one thread at a time; what the tool prints is taken in while the test waits for
// something. One that still runs at the end is ended.
class RunningTool {
  public:
    RunningTool(const std::string& program, const std::vector<std::string>& arguments,
                const Environment& environment = {});
    ~RunningTool();
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    // The next line of standard output or of standard error, without its end. Empty, and a
    // failure of the test, when none comes in time or the tool ends without one.
    std::string NextLine(DWORD milliseconds = cToolWait);
    std::string NextErrorLine(DWORD milliseconds = cToolWait);
    // The next line with that text in it, or that is as wanted; those before are skipped.
    std::string LineWith(std::string_view text, DWORD milliseconds = cToolWait);
    std::string LineLike(const std::function<bool(const std::string&)>& isWanted,
                         DWORD milliseconds = cToolWait);
    std::string ErrorLineWith(std::string_view text, DWORD milliseconds = cToolWait);
    // Whether no line came within that time; a line that is there stays.
    bool IsSilentFor(DWORD milliseconds);

    // To its standard input.
    void Send(std::string_view text);
    void EndInput();

    // What a person does who presses Ctrl-C. The tool must be past its start: wait for
    // something that it prints.
    void PressCtrlC();
    // Nobody reads its standard output any more.
    void CloseOutput();
    // Ends it in the middle of whatever it does; returns when it is gone.
    void Kill();
    bool IsRunning() const;
    // Waits for its end; the result has everything that it printed since its start.
    ToolResult WaitForEnd(DWORD milliseconds = cToolWait);

    DWORD ProcessId() const;

  private:
    friend ToolResult RunTool(const std::string&, const std::vector<std::string>&,
                              std::string_view, const Environment&, DWORD);
    class Process;

    explicit RunningTool(std::unique_ptr<Process> process);

    std::unique_ptr<Process> m_process;
};

// The arguments as one command line that the C run-time takes apart into the same arguments.
std::wstring CommandLineOf(const std::wstring& program,
                           const std::vector<std::string>& arguments);

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_SUPPORT_TOOL_PROCESS_H
