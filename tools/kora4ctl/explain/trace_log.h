// SPDX-License-Identifier: MIT
// The log files of the library's trace.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/messages/trace_text.h"

namespace kora4::tools {

// "KORA4ASL:  120 CKORA4ASL::Initialize:>>" taken apart; views into `line`. None for what the
// trace would not have written.
std::optional<contract::TraceHead> ParseTraceLine(std::string_view line);

// A line as it is in a file. The library writes in the ANSI code page of its process, which is
// the machine's, `codePage`, but for a program that asks for UTF-8 in its manifest. On a
// Western machine a line that is valid UTF-8 is taken for UTF-8: in code page 1252 it would be
// accented capitals followed by signs, which hardly occurs. Words in other code pages can be
// valid UTF-8 by chance, so there the machine's page counts.
std::string TextOfLine(const std::string& bytes, unsigned codePage);

// "C:\KalLogs"
std::string LogFolder();

// Whether the folder exists. The library writes files only then.
bool HasLogFolder();
// The file of a module's tag, or the one of all modules for an empty tag.
std::string LogPath(std::string_view tag);

// One log file as the folder lists it.
struct LogFile {
    std::string name;  // "KORA4ASL.log"
    std::uint64_t bytes = 0;
    std::string changed;  // "2031-05-01T14:03:22.123Z"
};
// By name; empty when there is no folder.
std::vector<LogFile> LogFiles();

// Reads a log that others append to, truncate, remove and recreate meanwhile. The file is
// never kept open: its writers come and go, and whoever wants to remove it may.
class LogReader {
  public:
    explicit LogReader(std::string path) : m_path(std::move(path)) {}

    // The lines that are complete since the last call, without their ends, empty ones left
    // out; at first all of them. None when there is no file.
    std::vector<std::string> NewLines();
    // The file was emptied, removed or replaced before the last NewLines: its lines start
    // over.
    bool BeganAnew() const { return m_beganAnew; }
    // Whether there was a file.
    bool IsThere() const { return m_isThere; }

  private:
    std::string m_path;
    std::string m_incomplete;
    // The last bytes that were read. A new file can have the identity of the one before it
    // and be longer, but not end its lines alike at that place.
    std::string m_tail;
    std::uint64_t m_offset = 0;
    std::uint64_t m_identity = 0;
    bool m_isThere = false;
    bool m_beganAnew = false;
};

}  // namespace kora4::tools
