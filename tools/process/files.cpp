// SPDX-License-Identifier: MIT
// Reads and replaces whole files; what a file held before is there until everything new is on
// disk.
#include "process/files.h"

#include <windows.h>

#include <algorithm>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "process/handles.h"

namespace kora4::tools {

namespace {

std::string Because(DWORD error) {
    return ": " + InWords(HRESULT_FROM_WIN32(error)) + ".";
}

// A pipe whose writer is gone is at its end.
bool IsAtEnd(DWORD error) {
    return error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF;
}

std::string ReadAll(HANDLE file, const std::string& name) {
    std::string content;
    char chunk[16384];
    for (DWORD read = 1; read != 0;) {
        if (!ReadFile(file, chunk, sizeof chunk, &read, nullptr)) {
            const DWORD error = GetLastError();
            if (IsAtEnd(error))
                break;
            throw Failure(ExitCode::eBadInput, name + " cannot be read" + Because(error));
        }
        content.append(chunk, read);
        if (content.size() > cMaxFileBytes)
            throw Failure(ExitCode::eBadInput, name + " is larger than 16 MB.");
    }
    return content;
}

UniqueHandle Open(const std::string& path, DWORD access, DWORD disposition) {
    const HANDLE file =
        CreateFileW(Widen(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                    disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return UniqueHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

}  // namespace

std::string ReadWholeFile(const std::string& path) {
    if (path == "-")
        return ReadAll(GetStdHandle(STD_INPUT_HANDLE), "Standard input");
    const UniqueHandle file = Open(path, GENERIC_READ, OPEN_EXISTING);
    if (!file)
        throw Failure(ExitCode::eBadInput,
                      "'" + path + "' cannot be opened" + Because(GetLastError()));
    return ReadAll(file.Get(), "'" + path + "'");
}

namespace {

void WriteNewFile(const std::string& path, std::string_view content) {
    const UniqueHandle file = Open(path, GENERIC_WRITE, CREATE_ALWAYS);
    if (!file)
        throw Failure(ExitCode::eFailed,
                      "'" + path + "' cannot be made" + Because(GetLastError()));
    while (!content.empty()) {
        DWORD written = 0;
        const auto chunk = static_cast<DWORD>(std::min<std::size_t>(content.size(), 1 << 20));
        if (!WriteFile(file.Get(), content.data(), chunk, &written, nullptr) || written == 0)
            throw Failure(ExitCode::eFailed,
                          "'" + path + "' cannot be written" + Because(GetLastError()));
        content.remove_prefix(written);
    }
    if (!FlushFileBuffers(file.Get()))
        throw Failure(ExitCode::eFailed,
                      "'" + path + "' cannot be written" + Because(GetLastError()));
}

}  // namespace

// The old content stays in place until all of the new one is on disk.
void WriteWholeFile(const std::string& path, std::string_view content) {
    const std::string unfinished = path + ".new";
    WriteNewFile(unfinished, content);
    if (MoveFileExW(Widen(unfinished).c_str(), Widen(path).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return;
    const DWORD error = GetLastError();
    DeleteFileW(Widen(unfinished).c_str());
    throw Failure(ExitCode::eFailed, "'" + path + "' cannot be made" + Because(error));
}

}  // namespace kora4::tools
