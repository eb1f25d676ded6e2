// SPDX-License-Identifier: MIT
// The log files of the trace.
#pragma once

#include <windows.h>

namespace kora4::trace {

// The platform calls, which tests replace: no test machine has every kind of link.
struct FileCalls {
    decltype(&CreateFileA) pCreateFile = CreateFileA;
    decltype(&GetFileInformationByHandleEx) pGetInformation = GetFileInformationByHandleEx;
    decltype(&WriteFile) pWriteFile = WriteFile;
    decltype(&CloseHandle) pCloseHandle = CloseHandle;
};

// Appends a line to the file of a module and to the shared one, with the line ends of a text
// file. Nothing stays open between lines, so a crash loses nothing, and a file may be removed
// at any time. A file that cannot be opened is skipped, and so is everything reached through a
// link:
// - the folder, when it is a reparse point, or stands elsewhere than its path says;
// - a file that is a reparse point, has more than one name, or stands elsewhere.
// All of this is tested on the opened handle, so nothing can be replaced between the test and
// the write. What remains: if the folder is replaced by a link between its test and the opening
// of the file, an empty file with the log's name is created through that link.
void AppendToLogs(const char* pModule, const char* pLine, const FileCalls& calls = {});

}  // namespace kora4::trace
