// SPDX-License-Identifier: MIT
// Finds, decodes and follows log files while the library goes on writing them.
#include "kora4ctl/explain/trace_log.h"

#include <algorithm>

#include "base/failure.h"
#include "base/text.h"
#include "base/utc_time.h"
#include "contract/messages/trace_files.h"
#include "process/files.h"

namespace kora4::tools {
namespace {

// None for bytes outside the code page, if `flags` ask for that check.
std::optional<std::string> Decoded(const std::string& bytes, unsigned codePage, DWORD flags) {
    const int length = static_cast<int>(bytes.size());
    const int count = MultiByteToWideChar(codePage, flags, bytes.data(), length, nullptr, 0);
    if (count == 0)
        return {};
    std::wstring wide(static_cast<std::size_t>(count), L'\0');
    MultiByteToWideChar(codePage, flags, bytes.data(), length, wide.data(), count);
    return Narrow(wide);
}

// Bytes kept from the end of the last read, to tell one file from another.
constexpr std::size_t cTailBytes = 256;

UniqueHandle OpenToRead(const std::string& path) {
    UniqueHandle file = OpenPath(path, GENERIC_READ, OPEN_EXISTING,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    const DWORD error = GetLastError();
    if (file)
        return file;
    // One that is being removed, or that somebody has for himself at this moment.
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
        error == ERROR_SHARING_VIOLATION || error == ERROR_DELETE_PENDING)
        return {};
    throw Win32Failure(error, "'" + path + "' cannot be read");
}

// What is in the file from that place on.
std::string ReadFrom(HANDLE file, std::uint64_t offset) {
    LARGE_INTEGER place;
    place.QuadPart = static_cast<LONGLONG>(offset);
    std::string text;
    if (SetFilePointerEx(file, place, nullptr, FILE_BEGIN))
        ReadToEnd(file, text);
    return text;
}

}  // namespace

std::optional<contract::TraceHead> ParseTraceLine(std::string_view line) {
    contract::TraceHead head;
    if (!contract::ParseTraceHead(line, &head) || head.tag.data() != line.data())
        return {};
    return head;
}

std::string TextOfLine(const std::string& bytes, unsigned codePage) {
    constexpr unsigned cWestern = 1252;
    std::optional<std::string> text;
    if (codePage == cWestern)
        text = Decoded(bytes, CP_UTF8, MB_ERR_INVALID_CHARS);
    if (!text)
        text = Decoded(bytes, codePage, 0);
    return text.value_or(std::string());
}

std::string LogFolder() {
    const std::string folder = trace::cLogFolder;
    return folder.substr(0, folder.size() - 1);
}

bool HasLogFolder() {
    const DWORD attributes = GetFileAttributesW(Widen(LogFolder()).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY;
}

std::string LogPath(std::string_view tag) {
    return trace::cLogFolder + std::string(tag.empty() ? trace::cSharedLog : tag) +
           trace::cLogExtension;
}

std::vector<LogFile> LogFiles() {
    std::vector<LogFile> files;
    WIN32_FIND_DATAW found{};
    const std::string pattern = std::string(trace::cLogFolder) + "*" + trace::cLogExtension;
    const HANDLE search = FindFirstFileW(Widen(pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return files;
    do {
        LogFile file;
        file.name = Narrow(found.cFileName);
        file.bytes = std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow;
        file.changed = UtcTime(found.ftLastWriteTime).Iso();
        files.push_back(std::move(file));
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(files.begin(), files.end(),
              [](const LogFile& a, const LogFile& b) { return a.name < b.name; });
    return files;
}

std::vector<std::string> LogReader::NewLines() {
    const UniqueHandle file = OpenToRead(m_path);
    const bool wasThere = std::exchange(m_isThere, static_cast<bool>(file));
    m_beganAnew = false;
    BY_HANDLE_FILE_INFORMATION info{};
    if (!file || !GetFileInformationByHandle(file.Get(), &info))
        return {};
    const std::uint64_t size = std::uint64_t{info.nFileSizeHigh} << 32 | info.nFileSizeLow;
    const std::uint64_t identity =
        std::uint64_t{info.nFileIndexHigh} << 32 | info.nFileIndexLow;
    std::string added;
    bool isSame = wasThere && identity == m_identity && size >= m_offset;
    if (isSame) {
        added = ReadFrom(file.Get(), m_offset - m_tail.size());
        isSame = added.starts_with(m_tail);
        added.erase(0, m_tail.size());
    }
    if (!isSame) {
        m_beganAnew = m_offset != 0;
        m_identity = identity;
        m_offset = 0;
        m_tail.clear();
        m_incomplete.clear();
        added = ReadFrom(file.Get(), 0);
    }
    m_offset += added.size();
    m_tail += added;
    if (m_tail.size() > cTailBytes)
        m_tail.erase(0, m_tail.size() - cTailBytes);
    m_incomplete += added;
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = m_incomplete.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        std::string line = m_incomplete.substr(begin, end - begin);
        while (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty())
            lines.push_back(TextOfLine(line, GetACP()));
    }
    m_incomplete.erase(0, begin);
    return lines;
}

}  // namespace kora4::tools
