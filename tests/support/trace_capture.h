// SPDX-License-Identifier: MIT
// What the library traced, read back as lines.
//
// On Windows the lines come from the log files in "C:\KalLogs", which the library writes
// when bit 0x01000000 of its flag word is set (a test of the built library sets the word in
// the store, a unit test with TraceFlags). A native test program that links
// native_trace_sink.cpp gets the same from the sink in memory, whatever that bit says.
#ifndef KORA4_TESTS_SUPPORT_TRACE_CAPTURE_H
#define KORA4_TESTS_SUPPORT_TRACE_CAPTURE_H

#include <string>
#include <string_view>
#include <vector>

namespace kora4::test {

// "tag:  123 function:message". The message is exact but for the one newline that ends
// the line: a message with newlines of its own keeps them.
struct TraceLine {
    std::string tag;
    int line = 0;
    std::string function;
    std::string message;
};

// Splits a log, CR LF or LF, into its lines. Text that does not begin with the three
// fields continues the message before it; at the beginning of the log it is dropped.
std::vector<TraceLine> ParseTrace(std::string_view log);

// The messages alone, in order, for comparing a whole log at once.
std::vector<std::string> Messages(const std::vector<TraceLine>& lines);

// The messages of one function.
std::vector<std::string> MessagesOf(const std::vector<TraceLine>& lines,
                                    std::string_view function);

// The log files. Makes the folder when it is missing and begins with no file in it; one
// test program at a time may use a prefix's logs.
class TraceLog {
  public:
    TraceLog();
    ~TraceLog();
    TraceLog(const TraceLog&) = delete;
    TraceLog& operator=(const TraceLog&) = delete;

    // Deletes every log file.
    void Clear();

    // What was written under a module tag since the last Clear.
    std::vector<TraceLine> Read(std::string_view tag) const;

    // What was written under all tags, in order, from the shared file.
    std::vector<TraceLine> ReadShared() const;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_TRACE_CAPTURE_H
