// SPDX-License-Identifier: MIT
// Names of errors, the probe's own keys and files, and the process in which a question is
// asked.
#include "platform_probe/answers.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

#include "platform_probe/question.h"
#include "platform_probe/roles.h"
#include "platform_probe/table.h"

namespace kora4::probe {

namespace {

// Milliseconds; no answer takes nearly as long.
constexpr DWORD cPatience = 15000;

struct NamedCode {
    LONG code;
    const char* name;
};

constexpr std::array cNames{
    NamedCode{S_OK, "success"},
    NamedCode{ERROR_FILE_NOT_FOUND, "ERROR_FILE_NOT_FOUND"},
    NamedCode{ERROR_ACCESS_DENIED, "ERROR_ACCESS_DENIED"},
    NamedCode{ERROR_BROKEN_PIPE, "ERROR_BROKEN_PIPE"},
    NamedCode{ERROR_MOD_NOT_FOUND, "ERROR_MOD_NOT_FOUND"},
    NamedCode{ERROR_BAD_EXE_FORMAT, "ERROR_BAD_EXE_FORMAT"},
    NamedCode{ERROR_NO_DATA, "ERROR_NO_DATA"},
    NamedCode{ERROR_PIPE_NOT_CONNECTED, "ERROR_PIPE_NOT_CONNECTED"},
    NamedCode{ERROR_KEY_DELETED, "ERROR_KEY_DELETED"},
    NamedCode{CO_E_NOTINITIALIZED, "CO_E_NOTINITIALIZED"},
    NamedCode{RPC_E_CALL_REJECTED, "RPC_E_CALL_REJECTED"},
    NamedCode{RPC_E_CALL_CANCELED, "RPC_E_CALL_CANCELED"},
    NamedCode{RPC_E_SERVERCALL_RETRYLATER, "RPC_E_SERVERCALL_RETRYLATER"},
    NamedCode{RPC_E_SERVER_DIED, "RPC_E_SERVER_DIED"},
    NamedCode{RPC_E_SERVER_DIED_DNE, "RPC_E_SERVER_DIED_DNE"},
    NamedCode{RPC_E_DISCONNECTED, "RPC_E_DISCONNECTED"},
    NamedCode{TYPE_E_LIBNOTREGISTERED, "TYPE_E_LIBNOTREGISTERED"},
    NamedCode{static_cast<LONG>(STATUS_CONTROL_C_EXIT), "STATUS_CONTROL_C_EXIT"},
};

}  // namespace

std::string NameOf(LONG code) {
    const auto found =
        std::find_if(cNames.begin(), cNames.end(),
                     [code](const NamedCode& named) { return named.code == code; });
    if (found != cNames.end())
        return found->name;
    char number[16];
    std::snprintf(number, sizeof number, "0x%08lX", static_cast<unsigned long>(code));
    return number;
}

bool IsSignalled(HANDLE event) {
    return WaitForSingleObject(event, cMoment) == WAIT_OBJECT_0;
}

std::wstring Wide(const std::string& text) {
    return {text.begin(), text.end()};
}

ProbeKey::ProbeKey(HKEY root, std::wstring path, const SECURITY_ATTRIBUTES* pSecurity)
    : m_root(root), m_path(std::move(path)) {
    RegDeleteTreeW(m_root, m_path.c_str());
    RegCreateKeyExW(m_root, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                    const_cast<SECURITY_ATTRIBUTES*>(pSecurity), m_key.Put(), nullptr);
}

ProbeKey::~ProbeKey() {
    RegDeleteTreeW(m_root, m_path.c_str());
}

ProbeFile::ProbeFile(const wchar_t* name) {
    wchar_t folder[MAX_PATH + 1] = L"";
    GetTempPathW(MAX_PATH, folder);
    m_path = std::wstring(folder) + L"kora4-probe-" + name;
    DeleteFileW(m_path.c_str());
}

void ProbeFile::Write(const std::string& bytes) const {
    const UniqueHandle file(CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

std::string Answer(const Question& question) {
    if (!question.ask)
        return cCannotTell;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    UniqueHandle reader;
    UniqueHandle writer;
    CreatePipe(reader.Put(), writer.Put(), &inherited, 0);
    wchar_t path[MAX_PATH * 4];
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    std::wstring line =
        L"\"" + std::wstring(path) + L"\" " + Wide(cAnswerRole) + L" " + Wide(question.name);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = writer.Get();
    PROCESS_INFORMATION made{};
    if (!CreateProcessW(path, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                        &made))
        return std::string(cCannotTell) + ": no process started";
    CloseHandle(made.hThread);
    const UniqueHandle process(made.hProcess);
    WaitForSingleObject(process.Get(), cPatience);
    TerminateProcess(process.Get(), 1);
    char answer[1024];
    DWORD length = 0;
    PeekNamedPipe(reader.Get(), answer, sizeof answer, &length, nullptr, nullptr);
    return length > 0 ? std::string(answer, length) : cNoAnswer;
}

std::optional<int> GiveAnswer(const std::string& name) {
    for (const auto& questions : AllQuestions()) {
        for (const Question& question : questions) {
            if (name != question.name || !question.ask)
                continue;
            std::printf("%s", question.ask().c_str());
            std::fflush(stdout);
            // Threads that may never end are left behind.
            TerminateProcess(GetCurrentProcess(), 0);
        }
    }
    return std::nullopt;
}

const char* Verdict(const Question& question, const std::string& answer) {
    if (*question.expected == '\0' || answer.starts_with(cCannotTell))
        return "not known";
    return answer == question.expected ? "same" : "different";
}

}  // namespace kora4::probe
