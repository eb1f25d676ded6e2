// SPDX-License-Identifier: MIT
// Appends lines to log files, and refuses to follow links on the way to them.
#include "trace/log_file.h"

#include <cstddef>
#include <cstring>

#include "contract/messages/trace_files.h"
#include "trace/line_text.h"

namespace kora4::trace {

namespace {

constexpr std::size_t cFolderChars = sizeof cLogFolder - 1;
constexpr std::size_t cDriveChars = 2;  // "C:", which the name of an opened file lacks
constexpr DWORD cShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The platform puts the name after the structure.
union FileName {
    FILE_NAME_INFO info;
    char room[sizeof(FILE_NAME_INFO) + MAX_PATH * sizeof(WCHAR)];
};

constexpr unsigned Folded(unsigned c) {
    return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c;
}

// Whether the name is this path, all of it.
bool IsNameOf(const FILE_NAME_INFO& name, const char* pPath) {
    std::size_t length = name.FileNameLength / sizeof name.FileName[0];
    for (const WCHAR* pName = name.FileName; length > 0; --length, ++pName, ++pPath)
        if (*pPath == '\0' || Folded(*pName) != Folded(static_cast<unsigned char>(*pPath)))
            return false;
    return *pPath == '\0';
}

// The file or folder at a path; a link is opened itself.
class Opened {
  public:
    Opened(const FileCalls& calls, const char* pPath, DWORD access, DWORD disposition,
           DWORD flags)
        : m_calls(calls),
          m_pPath(pPath),
          m_handle(calls.pCreateFile(pPath, access | FILE_READ_ATTRIBUTES, cShareAll, nullptr,
                                     disposition, flags | FILE_FLAG_OPEN_REPARSE_POINT,
                                     nullptr)) {}
    ~Opened() {
        if (m_handle != INVALID_HANDLE_VALUE)
            m_calls.pCloseHandle(m_handle);
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    HANDLE Get() const { return m_handle; }

    // Whether it was reached without any link. Windows shows a link at the end of the path by
    // its attribute; Wine resolves links by itself and shows them by the name alone.
    bool IsNoLink() const {
        FILE_BASIC_INFO basic;
        FILE_STANDARD_INFO standard;
        FileName name;
        return m_handle != INVALID_HANDLE_VALUE && Tells(FileNameInfo, &name, sizeof name) &&
               IsNameOf(name.info, m_pPath + cDriveChars) &&
               Tells(FileBasicInfo, &basic, sizeof basic) &&
               (basic.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 &&
               Tells(FileStandardInfo, &standard, sizeof standard) &&
               standard.NumberOfLinks <= 1;
    }

  private:
    bool Tells(FILE_INFO_BY_HANDLE_CLASS about, void* pInformation, DWORD size) const {
        return m_calls.pGetInformation(m_handle, about, pInformation, size) != FALSE;
    }

    const FileCalls& m_calls;
    const char* const m_pPath;
    const HANDLE m_handle;
};

// One write, which the platform puts at the end whatever others append meanwhile.
void AppendToLog(const FileCalls& calls, const char* pName, const char* pText, DWORD length) {
    char path[MAX_PATH];
    const std::size_t nameChars = std::strlen(pName);
    if (nameChars > sizeof path - cFolderChars - sizeof cLogExtension)
        return;
    std::memcpy(path, cLogFolder, cFolderChars);
    std::memcpy(path + cFolderChars, pName, nameChars);
    std::memcpy(path + cFolderChars + nameChars, cLogExtension, sizeof cLogExtension);
    const Opened file(calls, path, FILE_APPEND_DATA, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    DWORD written = 0;
    if (file.IsNoLink())
        calls.pWriteFile(file.Get(), pText, length, &written, nullptr);
}

}  // namespace

void AppendToLogs(const char* pModule, const char* pLine, const FileCalls& calls) {
    char folder[cFolderChars] = {};
    std::memcpy(folder, cLogFolder, cFolderChars - 1);
    const Opened opened(calls, folder, 0, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (!opened.IsNoLink())
        return;
    char text[2 * cLineChars];
    DWORD length = 0;
    for (; *pLine != '\0'; ++pLine) {
        if (*pLine == '\n')
            text[length++] = '\r';
        text[length++] = *pLine;
    }
    AppendToLog(calls, pModule, text, length);
    AppendToLog(calls, cSharedLog, text, length);
}

}  // namespace kora4::trace
