// SPDX-License-Identifier: MIT
// Starts this program as a child, and exchanges lines with it over pipes.
#include "multiprocess/child_process.h"

#include <gtest/gtest.h>

#include "multiprocess/roles.h"
#include "support/com_client.h"
#include "support/start_process.h"

namespace kora4::test {
namespace {

// An end of a pipe stays with one process: the other's child ends would keep it open.
std::mutex s_creation;

struct Pipe {
    UniqueHandle read;
    UniqueHandle write;
};

Pipe MakePipe() {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    Pipe pipe;
    EXPECT_TRUE(CreatePipe(pipe.read.Put(), pipe.write.Put(), &inheritable, 0));
    return pipe;
}

void KeepToThisProcess(const UniqueHandle& handle) {
    SetHandleInformation(handle.Get(), HANDLE_FLAG_INHERIT, 0);
}

std::wstring CommandLine(const std::string& role) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::string argument = cRoleArgument + role;
    return L"\"" + std::wstring(path) + L"\" " + std::wstring(argument.begin(), argument.end());
}

}  // namespace

ChildProcess::ChildProcess(const std::string& role)
    : m_answered(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    const std::lock_guard hold(s_creation);
    Pipe input = MakePipe();
    Pipe output = MakePipe();
    KeepToThisProcess(input.write);
    KeepToThisProcess(output.read);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.read.Get();
    startup.hStdOutput = output.write.Get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    std::wstring command = CommandLine(role);
    PROCESS_INFORMATION process{};
    if (!StartProcess([&] {
            return CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                  nullptr, &startup, &process);
        })) {
        ADD_FAILURE() << "no child process, error " << GetLastError();
        m_ended = true;
        return;
    }
    CloseHandle(process.hThread);
    m_process.Reset(process.hProcess);
    m_input = std::move(input.write);
    m_output = std::move(output.read);
    m_reader = std::thread([this] { ReadLines(); });
}

ChildProcess::~ChildProcess() {
    m_input.Reset();
    if (m_process && WaitForSingleObject(m_process.Get(), cBoundedWait) != WAIT_OBJECT_0) {
        ADD_FAILURE() << "a child did not end with its input";
        Kill();
    }
    if (m_reader.joinable())
        m_reader.join();
}

void ChildProcess::ReadLines() {
    char text[512];
    DWORD length = 0;
    while (ReadFile(m_output.Get(), text, sizeof text, &length, nullptr) && length != 0)
        AddText(text, length);
    const std::lock_guard hold(m_mutex);
    m_ended = true;
    SetEvent(m_answered.Get());
}

void ChildProcess::AddText(const char* text, std::size_t length) {
    for (const char c : std::string(text, length)) {
        if (c == '\n') {
            const std::lock_guard hold(m_mutex);
            m_lines.push_back(std::exchange(m_partial, {}));
            SetEvent(m_answered.Get());
        } else if (c != '\r') {
            m_partial += c;
        }
    }
}

void ChildProcess::Send(const std::string& line) {
    const std::string text = line + "\n";
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(m_input.Get(), text.data(), static_cast<DWORD>(text.size()), &written,
                          nullptr))
        << "a child is gone; it was to be sent: " << line;
}

std::string ChildProcess::Receive() {
    const ULONGLONG end = GetTickCount64() + cBoundedWait;
    for (;;) {
        {
            const std::lock_guard hold(m_mutex);
            if (!m_lines.empty()) {
                std::string line = std::move(m_lines.front());
                m_lines.pop_front();
                return line;
            }
            if (m_ended) {
                ADD_FAILURE() << "a child ended without an answer";
                return {};
            }
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= end) {
            ADD_FAILURE() << "a child does not answer";
            return {};
        }
        WaitForSingleObject(m_answered.Get(), static_cast<DWORD>(end - now));
    }
}

void ChildProcess::Kill() {
    TerminateProcess(m_process.Get(), 1);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_process.Get(), cBoundedWait));
}

}  // namespace kora4::test
