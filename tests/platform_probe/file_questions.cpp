// SPDX-License-Identifier: MIT
// Questions about files: sharing, appending, links and names, owners, how libraries are found.
#include <aclapi.h>

#include <array>
#include <thread>
#include <vector>

#include "platform_probe/answers.h"
#include "platform_probe/question.h"

namespace kora4::probe {

namespace {

constexpr DWORD cShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE OpenToAppend(const ProbeFile& file) {
    return CreateFileW(file.Path().c_str(), FILE_APPEND_DATA, cShareAll, nullptr, OPEN_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool IsFile(HANDLE file) {
    return file != INVALID_HANDLE_VALUE;
}

std::string SecondOpener() {
    const ProbeFile path(L"shared");
    const UniqueHandle first(OpenToAppend(path));
    const HANDLE second = OpenToAppend(path);
    const UniqueHandle closing(IsFile(second) ? second : nullptr);
    return YesOrNo(IsFile(second));
}

std::string LinesOfMany() {
    constexpr int cThreads = 4;
    constexpr int cLines = 500;
    constexpr char cLine[] = "a line of thirty-two characters\n";
    const ProbeFile path(L"lines");
    std::vector<std::thread> threads;
    for (int t = 0; t < cThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < cLines; ++i) {
                const UniqueHandle file(OpenToAppend(path));
                DWORD written = 0;
                WriteFile(file.Get(), cLine, sizeof cLine - 1, &written, nullptr);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    WIN32_FILE_ATTRIBUTE_DATA found{};
    GetFileAttributesExW(path.Path().c_str(), GetFileExInfoStandard, &found);
    return found.nFileSizeLow == cThreads * cLines * (sizeof cLine - 1) ? "all lines there"
                                                                        : "lines lost";
}

std::string OpenedLink() {
    const ProbeFile target(L"target");
    const ProbeFile link(L"link");
    target.Write("x");
    if (!CreateSymbolicLinkW(link.Path().c_str(), target.Path().c_str(), 0) ||
        GetFileAttributesW(link.Path().c_str()) == INVALID_FILE_ATTRIBUTES)
        return std::string(cCannotTell) + ": it cannot make a link";
    const HANDLE file = CreateFileW(link.Path().c_str(), 0, cShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    const UniqueHandle closing(IsFile(file) ? file : nullptr);
    FILE_BASIC_INFO facts{};
    GetFileInformationByHandleEx(file, FileBasicInfo, &facts, sizeof facts);
    return facts.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT ? "the link" : "its target";
}

std::string SecondName() {
    const ProbeFile first(L"first");
    const ProbeFile second(L"second");
    first.Write("x");
    if (!CreateHardLinkW(second.Path().c_str(), first.Path().c_str(), nullptr))
        return std::string(cCannotTell) + ": it cannot make a second name";
    const UniqueHandle file(OpenToAppend(first));
    FILE_STANDARD_INFO facts{};
    GetFileInformationByHandleEx(file.Get(), FileStandardInfo, &facts, sizeof facts);
    return std::to_string(facts.NumberOfLinks);
}

std::string OwnerOfNewFile() {
    const ProbeFile path(L"owned");
    path.Write("x");
    PSID owner = nullptr;
    UniqueLocalMemory memory;
    if (GetNamedSecurityInfoW(path.Path().c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION,
                              &owner, nullptr, nullptr, nullptr, memory.Put()) != ERROR_SUCCESS)
        return cCannotTell;
    return IsWellKnownSid(owner, WinBuiltinAdministratorsSid) ? "the administrators"
                                                              : "its user";
}

std::string TrailingDots() {
    const ProbeFile path(L"script.cmd");
    path.Write("x");
    const HANDLE file = CreateFileW((path.Path() + L". .").c_str(), 0, cShareAll, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    const UniqueHandle closing(IsFile(file) ? file : nullptr);
    return YesOrNo(IsFile(file));
}

LONG Load(const wchar_t* path, DWORD flags) {
    const HMODULE library = LoadLibraryExW(path, nullptr, flags);
    const LONG error = library ? ERROR_SUCCESS : static_cast<LONG>(GetLastError());
    if (library)
        FreeLibrary(library);
    return error;
}

// A file that is no library, in the working folder.
std::string LibraryOfSystem() {
    const ProbeFile planted(L"planted.dll");
    planted.Write("no library");
    const std::wstring& path = planted.Path();
    const std::size_t slash = path.find_last_of(L'\\');
    wchar_t before[MAX_PATH + 1] = L"";
    GetCurrentDirectoryW(MAX_PATH, before);
    SetCurrentDirectoryW(path.substr(0, slash).c_str());
    const LONG error = Load(path.substr(slash + 1).c_str(), LOAD_LIBRARY_SEARCH_SYSTEM32);
    SetCurrentDirectoryW(before);
    return YesOrNo(error != ERROR_MOD_NOT_FOUND);
}

std::string LibraryOfFolder() {
    const ProbeFile file(L"full.dll");
    file.Write("no library");
    return NameOf(Load(file.Path().c_str(), LOAD_WITH_ALTERED_SEARCH_PATH));
}

constexpr char cLog[] = "src/trace/log_file.cpp";
constexpr char cCreate[] = "CreateFileW function (fileapi.h)";
constexpr char cLoad[] = "LoadLibraryExW function (libloaderapi.h)";

constexpr std::array cQuestions{
    Question{"second-opener", "May a second program open a log file to append?", "yes", cCreate,
             cLog, &SecondOpener},
    Question{"appended-lines",
             "Are all lines there that several writers append through FILE_APPEND_DATA?",
             "all lines there", "File Access Rights Constants", cLog, &LinesOfMany},
    Question{"file-link", "What does FILE_FLAG_OPEN_REPARSE_POINT open?", "the link", cCreate,
             "src/trace/log_file.cpp tools/process/file_security.cpp "
             "tools/process/file_security.h tools/process/guarded_folder.cpp",
             &OpenedLink},
    Question{"second-name", "How many links does a file with a second name count?", "2",
             "FILE_STANDARD_INFO structure (winbase.h)",
             "src/trace/log_file.cpp tools/process/file_security.cpp", &SecondName},
    Question{"owner-of-new-file", "Who owns the new file of an elevated program?",
             "the administrators", "Owner of a New Object", "tools/process/file_security.cpp",
             &OwnerOfNewFile},
    Question{"trailing-dots", "Are dots and blanks behind a file name ignored?", "yes",
             "Naming Files, Paths, and Namespaces",
             "tools/kora4ctl/notifications/hook_program.cpp", &TrailingDots},
    Question{"system-library",
             "Does LOAD_LIBRARY_SEARCH_SYSTEM32 find a library in the working folder?", "no",
             cLoad, "tools/process/guarded_folder.cpp", &LibraryOfSystem},
    Question{"library-by-path", "What does loading a file give that is no library?",
             "ERROR_BAD_EXE_FORMAT", "System Error Codes (0-499)",
             "tools/kora4ctl/registration/library_file.cpp sdk/include/kora4.hpp",
             &LibraryOfFolder},
};

}  // namespace

std::span<const Question> FileQuestions() {
    return cQuestions;
}

}  // namespace kora4::probe
