// SPDX-License-Identifier: MIT
// Runs the installers as a deployment tool does, and looks at what they leave.
#include "installer/installation.h"

#include <kora4api.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "platform/handles.h"
#include "support/registry_fixture.h"
#include "support/start_process.h"

namespace kora4::test {
namespace {

namespace fs = std::filesystem;

// A removal that is not waited for, a program that hangs: milliseconds.
constexpr DWORD cWait = 120000;

std::string Narrowed(const std::wstring& text) {
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                            bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

// Logs are UTF-16 with a mark, outputs of tools are not.
std::string TextOf(const fs::path& file) {
    const std::string bytes = BytesOf(file);
    if (!bytes.starts_with("\xFF\xFE"))
        return bytes;
    std::wstring text(bytes.size() / 2, L'\0');
    memcpy(text.data(), bytes.data(), text.size() * 2);
    return Narrowed(text.substr(1));
}

std::wstring GuidKey(const wchar_t* parent, REFGUID guid) {
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return parent + std::wstring(text);
}

// The exit code of a process, whose output goes to the file `out`, unless that is null.
DWORD RunProcess(const std::wstring& commandLine, HANDLE out, HANDLE token) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    if (out) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = out;
        startup.hStdError = out;
    }
    const BOOL inherits = out != nullptr;
    PROCESS_INFORMATION started{};
    std::wstring line = commandLine;
    if (!StartProcess([&] {
            return token
                       ? CreateProcessAsUserW(token, nullptr, line.data(), nullptr, nullptr,
                                              inherits, 0, nullptr, nullptr, &startup, &started)
                       : CreateProcessW(nullptr, line.data(), nullptr, nullptr, inherits, 0,
                                        nullptr, nullptr, &startup, &started);
        })) {
        ADD_FAILURE() << Narrowed(commandLine) << ": error " << GetLastError();
        return {};
    }
    const UniqueHandle process(started.hProcess);
    const UniqueHandle thread(started.hThread);
    if (WaitForSingleObject(process.Get(), cWait) != WAIT_OBJECT_0) {
        ADD_FAILURE() << Narrowed(commandLine) << " does not end";
        TerminateProcess(process.Get(), 1);
    }
    DWORD code = 0;
    GetExitCodeProcess(process.Get(), &code);
    return code;
}

}  // namespace

fs::path LogPath() {
    return fs::absolute(L"setup.log");
}

std::ostream& operator<<(std::ostream& stream, const Outcome& run) {
    return stream << "exit code " << run.code << ", log:\n" << run.log;
}

std::string BytesOf(const fs::path& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

Files FilesOf(const fs::path& folder) {
    Files files;
    std::error_code isAbsent;
    for (const auto& entry : fs::recursive_directory_iterator(folder, isAbsent))
        if (entry.is_regular_file())
            files[fs::relative(entry.path(), folder).wstring()] = BytesOf(entry.path());
    return files;
}

std::ptrdiff_t LibraryCount() {
    return std::ranges::count_if(
        FilesOf(), [](const auto& file) { return file.first.ends_with(L"QXA64T.dll"); });
}

Outcome RunToEnd(const std::wstring& commandLine, const fs::path& log, HANDLE token) {
    std::error_code isAbsent;
    fs::remove(log, isAbsent);
    Outcome run{RunProcess(commandLine, nullptr, token), {}};
    run.log = TextOf(log);
    return run;
}

fs::path Installer(const std::wstring& name) {
    const wchar_t* const folder = _wgetenv(L"KORA4_INSTALLERS");
    return fs::path(folder ? folder : L"") / name;
}

Outcome RunSetup(const std::wstring& version, const std::wstring& arguments, HANDLE token) {
    const fs::path program = Installer(L"kora4asl-" + version + L"-setup.exe");
    return RunToEnd(
        L"\"" + program.wstring() + L"\" /S /LOG=" + LogPath().wstring() + L" " + arguments,
        LogPath(), token);
}

Outcome RunRemoval(const std::wstring& arguments) {
    const fs::path program = Installer(L"kora4asl-" + std::wstring(cNew) + L"-setup.exe");
    return RunToEnd(L"\"" + program.wstring() + L"\" /LOG=" + LogPath().wstring() +
                        L" /UNINSTALL " + arguments,
                    LogPath());
}

Outcome RunMsi(const std::wstring& arguments) {
    return RunToEnd(L"msiexec.exe " + arguments + L" /qn /l* \"" + LogPath().wstring() + L"\"",
                    LogPath());
}

std::string Ctl(const std::wstring& arguments, DWORD code) {
    const fs::path path = fs::absolute(L"ctl.out");
    Outcome run{};
    {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        const UniqueHandle out(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                           &inherited, CREATE_ALWAYS, 0, nullptr));
        run.code =
            RunProcess(L"\"" + std::wstring(cFolder) + L"\\bin\\kora4ctl.exe\" " + arguments,
                       out.Get(), nullptr);
    }
    run.log = TextOf(path);
    EXPECT_EQ(code, run.code) << run;
    return run.log;
}

std::string Registration() {
    return DumpKey(HKEY_CLASSES_ROOT, GuidKey(L"CLSID\\", CLSID_VeltoKORA4APITestCoclass)) +
           DumpKey(HKEY_CLASSES_ROOT, L"AppID\\QXA64T.DLL") +
           DumpKey(HKEY_CLASSES_ROOT, GuidKey(L"TypeLib\\", LIBID_KORA4ASLLib));
}

void Installation::Clean() {
    std::error_code isAbsent;
    fs::remove_all(fs::path(cFolder).parent_path(), isAbsent);
    for (const wchar_t* folder : {L"C:\\ProgramData\\KORA4", L"C:\\Elsewhere", L"C:\\Moved"})
        fs::remove_all(folder, isAbsent);
    RemoveKey(HKEY_LOCAL_MACHINE, cProduct);
    RemoveKey(HKEY_CLASSES_ROOT, GuidKey(L"CLSID\\", CLSID_VeltoKORA4APITestCoclass));
    RemoveKey(HKEY_CLASSES_ROOT, L"AppID\\QXA64T.DLL");
    RemoveKey(HKEY_CLASSES_ROOT, GuidKey(L"TypeLib\\", LIBID_KORA4ASLLib));
    RemoveStore();
}

}  // namespace kora4::test
