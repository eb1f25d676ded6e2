// SPDX-License-Identifier: MIT
// Looks at the headers of the file, loads it and calls its entry points.
#include "kora4ctl/registration/library_file.h"

#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "process/files.h"

namespace kora4::tools {
namespace {

// As much of a file's head as its kind depends on.
template <typename Record>
bool ReadAt(HANDLE file, LONGLONG place, Record& record) {
    LARGE_INTEGER to;
    to.QuadPart = place;
    DWORD count = 0;
    return SetFilePointerEx(file, to, nullptr, FILE_BEGIN) &&
           ReadFile(file, &record, sizeof record, &count, nullptr) && count == sizeof record;
}

struct ProgramHead {
    DWORD signature;
    IMAGE_FILE_HEADER header;
};

}  // namespace

FileKind KindOfFile(const std::string& path) {
    const UniqueHandle file = OpenPath(path, GENERIC_READ, OPEN_EXISTING,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    if (!file) {
        const DWORD attributes = GetFileAttributesW(Widen(path).c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES)
            return FileKind::eAbsent;
        return attributes & FILE_ATTRIBUTE_DIRECTORY ? FileKind::eNoProgram
                                                     : FileKind::eUnreadable;
    }
    IMAGE_DOS_HEADER dos{};
    ProgramHead head{};
    if (!ReadAt(file.Get(), 0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE ||
        !ReadAt(file.Get(), dos.e_lfanew, head) || head.signature != IMAGE_NT_SIGNATURE)
        return FileKind::eNoProgram;
    if (!(head.header.Characteristics & IMAGE_FILE_DLL))
        return FileKind::eNoLibrary;
    return head.header.Machine == IMAGE_FILE_MACHINE_AMD64 ? FileKind::eLibrary
                                                           : FileKind::eOtherSystem;
}

std::string WhatIsWrong(FileKind kind) {
    switch (kind) {
        case FileKind::eAbsent:
            return "does not exist";
        case FileKind::eUnreadable:
            return "cannot be read by this user";
        case FileKind::eNoProgram:
            return "is not a library";
        case FileKind::eNoLibrary:
            return "is a program, not a library";
        case FileKind::eOtherSystem:
            return "is not a library for 64-bit x64 programs";
        case FileKind::eLibrary:
            break;
    }
    return {};
}

std::string VersionText(const ULONG (&parts)[4]) {
    std::vector<std::string> texts;
    for (const ULONG part : parts)
        texts.push_back(std::to_string(part));
    return Join(texts, ".");
}

std::string FileVersion(const std::string& path) {
    const std::wstring file = Widen(path);
    std::vector<BYTE> resource(GetFileVersionInfoSizeW(file.c_str(), nullptr));
    void* info = nullptr;
    UINT size = 0;
    if (resource.empty() ||
        !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(resource.size()),
                             resource.data()) ||
        !VerQueryValueW(resource.data(), L"\\", &info, &size))
        return {};
    const auto& version = *static_cast<const VS_FIXEDFILEINFO*>(info);
    return VersionText({HIWORD(version.dwFileVersionMS), LOWORD(version.dwFileVersionMS),
                        HIWORD(version.dwFileVersionLS), LOWORD(version.dwFileVersionLS)});
}

RegistrableLibrary::RegistrableLibrary(const std::string& path) {
    if (const FileKind kind = KindOfFile(path); kind != FileKind::eLibrary)
        throw BadInput("'" + path + "' " + WhatIsWrong(kind) + ".",
                       "Give the path of QXA64T.dll: kora4ctl register PATH");
    // A full path, and its folder for what it needs itself.
    m_module.Reset(LoadLibraryExW(Widen(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!m_module)
        throw Win32Failure(
            GetLastError(), "'" + path + "' cannot be loaded",
            "The file is damaged, or a library that it needs is missing; reinstall it.",
            ExitCode::eBadInput);
    m_register = Find("DllRegisterServer", path);
    m_unregister = Find("DllUnregisterServer", path);
}

RegistrableLibrary::Entry RegistrableLibrary::Find(const char* name,
                                                   const std::string& path) const {
    const auto found =
        reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(m_module.Get(), name)));
    if (!found)
        throw BadInput("'" + path + "' is not a self-registering library: it does not export " +
                           name + ".",
                       "Give the path of QXA64T.dll: kora4ctl register PATH");
    return found;
}

}  // namespace kora4::tools
