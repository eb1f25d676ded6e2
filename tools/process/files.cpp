// SPDX-License-Identifier: MIT
// Reads and replaces whole files; what a file held before is there until everything new is on
// disk.
#include "process/files.h"

#include <algorithm>

#include "base/text.h"

namespace kora4::tools {

namespace {

void WriteNewFile(const std::string& path, std::string_view content) {
    const UniqueHandle file = OpenPath(path, GENERIC_WRITE, CREATE_ALWAYS);
    if (!file)
        throw CannotBe("created", path, GetLastError());
    WriteAndFlush(file.Get(), path, content);
}

}  // namespace

void WriteAndFlush(HANDLE file, const std::string& path, std::string_view content) {
    while (!content.empty()) {
        DWORD written = 0;
        const auto chunk = static_cast<DWORD>(std::min<std::size_t>(content.size(), 1 << 20));
        if (!WriteFile(file, content.data(), chunk, &written, nullptr) || written == 0)
            throw CannotBe("written", path, GetLastError());
        content.remove_prefix(written);
    }
    if (!FlushFileBuffers(file))
        throw CannotBe("written", path, GetLastError());
}

Win32Failure CannotBe(const char* done, const std::string& path, DWORD error, ExitCode code) {
    return Win32Failure(error, "'" + path + "' cannot be " + done,
                        error == ERROR_ACCESS_DENIED
                            ? "The file may belong to another user: run this as that user or "
                              "as an administrator."
                            : "",
                        code);
}

UniqueHandle OpenPath(const std::string& path, DWORD access, DWORD disposition, DWORD share) {
    const HANDLE file = CreateFileW(Widen(path).c_str(), access, share, nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    return UniqueHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

bool ReadToEnd(HANDLE file, std::string& content, std::size_t most) {
    char chunk[16384];
    for (DWORD read = 1; read != 0 && content.size() <= most;) {
        // A pipe whose writer is gone is at its end.
        if (!ReadFile(file, chunk, sizeof chunk, &read, nullptr))
            return GetLastError() == ERROR_BROKEN_PIPE || GetLastError() == ERROR_HANDLE_EOF;
        content.append(chunk, read);
    }
    return true;
}

std::string ReadWholeFile(const std::string& path) {
    UniqueHandle file;
    HANDLE source = GetStdHandle(STD_INPUT_HANDLE);
    if (!IsStream(path)) {
        file = OpenPath(path, GENERIC_READ, OPEN_EXISTING);
        source = file.Get();
        if (!file)
            throw CannotBe("opened", path, GetLastError(), ExitCode::eBadInput);
    }
    std::string content;
    if (!ReadToEnd(source, content, cMaxFileBytes))
        throw CannotBe("read", NameOfInput(path), GetLastError(), ExitCode::eBadInput);
    if (content.size() > cMaxFileBytes)
        throw BadInput("'" + NameOfInput(path) + "' is larger than " +
                       std::to_string(cMaxFileBytes >> 20) + " MB.");
    return DecodedText(content);
}

bool InputLines::Next(std::string& line) {
    std::size_t end = m_text.find('\n');
    while (end == std::string::npos && !m_isAtEnd) {
        char chunk[8192];
        DWORD read = 0;
        m_isAtEnd =
            !ReadFile(GetStdHandle(STD_INPUT_HANDLE), chunk, sizeof chunk, &read, nullptr) ||
            read == 0;
        m_text += m_isAtEnd ? m_decoder.End() : m_decoder.Take({chunk, read});
        end = m_text.find('\n');
    }
    if (end == std::string::npos && m_text.empty())
        return false;
    line = m_text.substr(0, end);
    m_text.erase(0, end == std::string::npos ? end : end + 1);
    if (line.ends_with('\r'))
        line.pop_back();
    return true;
}

std::string UnfinishedPath(const std::string& path) {
    return path + ".new";
}

void WriteWholeFile(const std::string& path, std::string_view content) {
    const std::string unfinished = UnfinishedPath(path);
    WriteNewFile(unfinished, content);
    if (MoveFileExW(Widen(unfinished).c_str(), Widen(path).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return;
    const DWORD error = GetLastError();
    DeleteFileW(Widen(unfinished).c_str());
    throw CannotBe("created", path, error);
}

}  // namespace kora4::tools
