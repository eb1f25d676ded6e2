// SPDX-License-Identifier: MIT
// Whole files in and out, with names in UTF-8.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/text_decoder.h"
#include "platform/handles.h"
#include "process/win32_failure.h"

namespace kora4::tools {

// Far more than any file that a tool reads has.
inline constexpr std::size_t cMaxFileBytes = 16u << 20;

// Whoever has the file open may do anything with it.
inline constexpr DWORD cShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Null, with GetLastError set, when the file cannot be opened. Others may read and replace it
// meanwhile, or what `share` says.
UniqueHandle OpenPath(const std::string& path, DWORD access, DWORD disposition,
                      DWORD share = FILE_SHARE_READ | FILE_SHARE_DELETE);

// "'<path>' cannot be <done>: ...", and what to do when the user lacks the right.
Win32Failure CannotBe(const char* done, const std::string& path, DWORD error,
                      ExitCode code = ExitCode::eFailed);

// Appends what is left of the file, or a little more than `most` bytes of it. False, with
// GetLastError set, when it cannot be read.
bool ReadToEnd(HANDLE file, std::string& content, std::size_t most = SIZE_MAX);

// Whether the path stands for standard input or output: "-", or none.
inline bool IsStream(const std::string& path) {
    return path.empty() || path == "-";
}
// How messages call a file, or standard input.
inline std::string NameOfInput(const std::string& path) {
    return IsStream(path) ? "standard input" : path;
}

// The text of a file, or of standard input, as UTF-8 (text_decoder.h). Failure with eBadInput
// when it cannot be read or is larger than cMaxFileBytes.
std::string ReadWholeFile(const std::string& path);

// The lines of standard input as they come, as UTF-8.
class InputLines {
  public:
    // Without its line end; false at the end of the input.
    bool Next(std::string& line);

  private:
    TextDecoder m_decoder;
    std::string m_text;
    bool m_isAtEnd = false;
};

// Makes the file, or replaces its content in one step: what was in it before is there until
// everything new is on disk. Failure with eFailed when it cannot be written.
void WriteWholeFile(const std::string& path, std::string_view content);

// All of the content, on disk when it returns. Failure with eFailed, which names the path.
void WriteAndFlush(HANDLE file, const std::string& path, std::string_view content);

// The file that a WriteWholeFile leaves beside the other when its process dies.
std::string UnfinishedPath(const std::string& path);

}  // namespace kora4::tools
