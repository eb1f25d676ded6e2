// SPDX-License-Identifier: MIT
// Whole files in and out, with names in UTF-8.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "process/win32_failure.h"

namespace kora4::tools {

// Far more than any file that a tool reads has.
inline constexpr std::size_t cMaxFileBytes = 16 * 1024 * 1024;

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

// The bytes of a file, or of standard input for "-". Failure with eBadInput when it cannot be
// read or is larger than cMaxFileBytes.
std::string ReadWholeFile(const std::string& path);

// Makes the file, or replaces its content in one step: what was in it before is there until
// everything new is on disk. Failure with eFailed when it cannot be written.
void WriteWholeFile(const std::string& path, std::string_view content);

// The file that a WriteWholeFile leaves beside the other when its process dies.
std::string UnfinishedPath(const std::string& path);

}  // namespace kora4::tools
