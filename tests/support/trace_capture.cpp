// SPDX-License-Identifier: MIT
// Reads the log files of the trace on Windows; native_trace_sink.cpp does it natively.
#include "support/trace_capture.h"

#include <windows.h>

#include <fstream>
#include <iterator>

namespace kora4::test {

namespace {

const std::string cLogFolder = "C:\\KalLogs";

std::vector<TraceLine> ReadFile(std::string_view name) {
    std::ifstream file(cLogFolder + "\\" + std::string(name) + ".log", std::ios::binary);
    const std::string log{std::istreambuf_iterator<char>(file), {}};
    return ParseTrace(log);
}

}  // namespace

TraceLog::TraceLog() {
    CreateDirectoryA(cLogFolder.c_str(), nullptr);
    Clear();
}

TraceLog::~TraceLog() = default;

void TraceLog::Clear() {
    WIN32_FIND_DATAA found;
    const HANDLE find = FindFirstFileA((cLogFolder + "\\*.log").c_str(), &found);
    if (find == INVALID_HANDLE_VALUE)
        return;
    do {
        DeleteFileA((cLogFolder + "\\" + found.cFileName).c_str());
    } while (FindNextFileA(find, &found) != FALSE);
    FindClose(find);
}

std::vector<TraceLine> TraceLog::Read(std::string_view tag) const {
    return ReadFile(tag);
}

std::vector<TraceLine> TraceLog::ReadShared() const {
    return ReadFile("KalTrace");
}

}  // namespace kora4::test
