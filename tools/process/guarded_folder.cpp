// SPDX-License-Identifier: MIT
// Looks at the folder and at each file before it is used.
#include "process/guarded_folder.h"

#include <windows.h>

#include <sddl.h>
#include <shlobj.h>

#include <algorithm>

#include "base/text.h"
#include "base/utc_time.h"
#include "process/files.h"

namespace kora4::tools {
namespace {

bool IsAbsent(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

// The shell's library is loaded on demand: few verbs need it, and it takes long to start.
std::string KnownFolder(REFKNOWNFOLDERID id, const char* usual) {
    struct ModuleTraits {
        using Type = HMODULE;
        static void Close(HMODULE module) { FreeLibrary(module); }
    };
    const UniqueResource<ModuleTraits> shell(
        LoadLibraryExW(L"shell32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    const auto ask =
        shell ? reinterpret_cast<decltype(&SHGetKnownFolderPath)>(reinterpret_cast<void*>(
                    GetProcAddress(shell.Get(), "SHGetKnownFolderPath")))
              : nullptr;
    wchar_t* path = nullptr;
    const bool isKnown = ask && SUCCEEDED(ask(id, 0, nullptr, &path));
    std::string folder = isKnown ? Narrow(path) : std::string(usual);
    CoTaskMemFree(path);
    return folder;
}

// The access list for something new, as the platform takes it.
class ListForNew {
  public:
    explicit ListForNew(const FileSecurity& security) {
        if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(
                security.ListForNew().c_str(), SDDL_REVISION_1, m_descriptor.Put(), nullptr))
            throw Win32Failure(GetLastError(), "An access list cannot be created");
        m_attributes.lpSecurityDescriptor = m_descriptor.Get();
    }
    SECURITY_ATTRIBUTES* Get() { return &m_attributes; }

  private:
    UniqueLocalMemory m_descriptor;
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

// Renames what stands at the path: a link itself, not what it leads to.
std::string MoveAway(const std::string& path, const FileSecurity& security) {
    constexpr char cNext[] = "Find out who created it, and remove it as an administrator.";
    {
        // Wine renames what a link leads to.
        const UniqueHandle itself = OpenItself(path, 0, cShareAll);
        if (itself && security.FactsOf(itself.Get(), path).isElsewhere)
            throw Failure(ExitCode::eFailed, "'" + path + "' is a link.", cNext);
    }
    std::string target = path + ".moved-" + UtcTime::Now().FileStamp();
    if (!MoveFileExW(Widen(path).c_str(), Widen(target).c_str(), 0))
        throw Win32Failure(
            GetLastError(),
            "'" + path + "' was not created by this program and cannot be moved aside", cNext);
    return target;
}

}  // namespace

std::string DataFolder(const FileSecurity& security) {
    return (security.IsForMachine()
                ? KnownFolder(FOLDERID_ProgramData, "C:\\ProgramData")
                : KnownFolder(FOLDERID_LocalAppData, "C:\\Users\\Default\\AppData\\Local")) +
           "\\KORA4";
}

// A trusted folder stays one: its list lets nobody else rename it or delete what is in it.
Standing GuardedFolder::FindFolder() const {
    const UniqueHandle folder = OpenItself(m_path, 0, cShareAll);
    if (!folder)
        return IsAbsent(GetLastError()) ? Standing::eAbsent : Standing::eStrange;
    return m_security.FactsOf(folder.Get(), m_path).IsTrustedFolder() ? Standing::eTrusted
                                                                      : Standing::eStrange;
}

std::string GuardedFolder::Prepare() const {
    std::string moved;
    Standing standing = FindFolder();
    if (standing == Standing::eStrange)
        moved = MoveAway(m_path, m_security);
    if (standing != Standing::eTrusted) {
        if (!CreateDirectoryW(Widen(m_path).c_str(), ListForNew(m_security).Get()))
            throw Win32Failure(GetLastError(), "The folder '" + m_path + "' cannot be created");
        standing = FindFolder();
    }
    if (standing != Standing::eTrusted)
        throw Failure(ExitCode::eFailed,
                      "The folder '" + m_path + "' cannot be protected from other users.");
    return moved;
}

Standing GuardedFolder::Find(const std::string& name, UniqueHandle* file) const {
    if (const Standing standing = FindFolder(); standing != Standing::eTrusted)
        return standing;
    const std::string path = PathOf(name);
    UniqueHandle opened = OpenItself(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE);
    if (!opened)
        return IsAbsent(GetLastError()) ? Standing::eAbsent : Standing::eStrange;
    if (!m_security.FactsOf(opened.Get(), path).IsTrustedFile())
        return Standing::eStrange;
    if (file)
        *file = std::move(opened);
    return Standing::eTrusted;
}

std::string GuardedFolder::Read(const std::string& name) const {
    UniqueHandle file;
    const std::string path = PathOf(name);
    if (Find(name, &file) != Standing::eTrusted)
        throw Failure(ExitCode::eFailed,
                      "'" + path + "' does not exist, or was not created by this program.");
    std::string text;
    if (!ReadToEnd(file.Get(), text))
        throw CannotBe("read", path, GetLastError());
    return text;
}

void GuardedFolder::Write(const std::string& name, std::string_view content) const {
    Prepare();
    const std::string unfinished = UnfinishedPath(name);
    Remove(unfinished);
    if (Find(name) == Standing::eStrange)
        MoveAside(name);
    ListForNew list(m_security);
    const std::string path = PathOf(unfinished);
    {
        // Never opens what somebody has put there since.
        const HANDLE made = CreateFileW(Widen(path).c_str(), GENERIC_WRITE, 0, list.Get(),
                                        CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        const UniqueHandle file(made == INVALID_HANDLE_VALUE ? nullptr : made);
        if (!file)
            throw CannotBe("created", path, GetLastError());
        WriteAndFlush(file.Get(), path, content);
    }
    if (MoveFileExW(Widen(path).c_str(), Widen(PathOf(name)).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return;
    const DWORD error = GetLastError();
    DeleteFileW(Widen(path).c_str());
    throw CannotBe("created", PathOf(name), error);
}

void GuardedFolder::Remove(const std::string& name) const {
    switch (Find(name)) {
        case Standing::eAbsent:
            return;
        case Standing::eStrange:
            MoveAside(name);
            return;
        case Standing::eTrusted:
            if (!DeleteFileW(Widen(PathOf(name)).c_str()) && !IsAbsent(GetLastError()))
                throw CannotBe("removed", PathOf(name), GetLastError());
    }
}

std::string GuardedFolder::MoveAside(const std::string& name) const {
    return MoveAway(FindFolder() == Standing::eTrusted ? PathOf(name) : m_path, m_security);
}

std::vector<std::string> GuardedFolder::Names(std::string_view begin) const {
    struct SearchTraits {
        using Type = HANDLE;
        static void Close(HANDLE search) { FindClose(search); }
    };
    std::vector<std::string> names;
    WIN32_FIND_DATAW found{};
    const HANDLE first =
        FindFirstFileW(Widen(PathOf(std::string(begin) + "*")).c_str(), &found);
    const UniqueResource<SearchTraits> search(first == INVALID_HANDLE_VALUE ? nullptr : first);
    for (bool isThere = search.Get() != nullptr; isThere;
         isThere = FindNextFileW(search.Get(), &found))
        if (std::string name = Narrow(found.cFileName); Find(name) == Standing::eTrusted)
            names.push_back(std::move(name));
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace kora4::tools
