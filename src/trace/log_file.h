// SPDX-License-Identifier: MIT
// The log files of the trace.
#pragma once

#include <windows.h>

namespace kora4::trace {

// The platform's calls, replaceable by tests: no test machine has every kind of link.
struct FileCalls {
    decltype(&CreateFileA) pCreateFile = CreateFileA;
    decltype(&GetFileInformationByHandleEx) pGetInformation = GetFileInformationByHandleEx;
    decltype(&WriteFile) pWriteFile = WriteFile;
    decltype(&CloseHandle) pCloseHandle = CloseHandle;
};

// Appends a line to the file of a module and to the shared one, with the line ends of a text
// file. Nothing stays open between lines: a crash loses nothing, and whoever wants to remove a
// file may. A file that cannot be opened is skipped, and so is everything reached through a
// link:
// - the folder, when it is a reparse point, or stands elsewhere than its path says;
// - a file that is a reparse point, has more than one name, or stands elsewhere.
// All of it is asked of the opened handle, so nothing can be exchanged between the look and
// the write. What remains: a folder that is exchanged for a link between the look at it and
// the opening of the file gets an empty file of the log's name behind that link.
void AppendToLogs(const char* pModule, const char* pLine, const FileCalls& calls = {});

}  // namespace kora4::trace
