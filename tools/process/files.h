// SPDX-License-Identifier: MIT
// Whole files in and out, with names in UTF-8.
#ifndef KORA4_PROCESS_FILES_H
#define KORA4_PROCESS_FILES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace kora4::tools {

// Far more than any file that a tool reads has.
inline constexpr std::size_t cMaxFileBytes = 16 * 1024 * 1024;

// The bytes of a file, or of standard input for "-". Failure with eBadInput when it cannot be
// read or is larger than cMaxFileBytes.
std::string ReadWholeFile(const std::string& path);

// Makes the file, or replaces its content. Failure with eFailed when it cannot be written.
void WriteWholeFile(const std::string& path, std::string_view content);

}  // namespace kora4::tools

#endif  // KORA4_PROCESS_FILES_H
