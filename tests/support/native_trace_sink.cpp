// SPDX-License-Identifier: MIT
// Stands in for trace.cpp: formats statements into records that TraceLog reads.
#include "support/native_trace_sink.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "support/trace_capture.h"
#include "trace/trace.h"

namespace kora4 {

namespace {

std::mutex& SinkMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string FormatText(const char* format, std::va_list arguments) {
    char text[1024];
    std::vsnprintf(text, sizeof text, format, arguments);
    return text;
}

// The C library here has a wide character of another size than the texts that are traced.
bool PrintsWideStrings(const std::string& format) {
    return format.find("%S") != std::string::npos || format.find("%ls") != std::string::npos;
}

}  // namespace

namespace test {

std::vector<TraceRecord>& TraceRecords() {
    static std::vector<TraceRecord> records;
    return records;
}

TraceLog::TraceLog() {
    Clear();
}

TraceLog::~TraceLog() = default;

void TraceLog::Clear() {
    TraceRecords().clear();
}

std::vector<TraceLine> TraceLog::Read(std::string_view tag) const {
    std::vector<TraceLine> lines = ReadShared();
    std::erase_if(lines, [tag](const TraceLine& line) { return line.tag != tag; });
    return lines;
}

std::vector<TraceLine> TraceLog::ReadShared() const {
    std::string log;
    for (const TraceRecord& record : TraceRecords())
        log += record.text;
    return ParseTrace(log);
}

}  // namespace test

namespace trace {

void Write(std::uint32_t flags, const Site& site, int line, const char* format, ...) {
    const char* const pBackslash = std::strrchr(site.tag, '\\');
    test::TraceRecord record;
    record.tag = pBackslash != nullptr ? pBackslash + 1 : site.tag;
    record.function = site.function;
    record.line = line;
    record.flags = flags;
    record.format = format;

    char head[256];
    std::snprintf(head, sizeof head, KALTRACE_HEAD, record.tag.c_str(), line, site.function);
    const char* const pMessage = format + std::strlen(KALTRACE_HEAD);
    if (PrintsWideStrings(pMessage)) {
        record.text = std::string(head) + pMessage;
    } else {
        std::va_list arguments;
        va_start(arguments, format);
        record.text = head + FormatText(pMessage, arguments);
        va_end(arguments);
    }
    const std::lock_guard<std::mutex> hold(SinkMutex());
    test::TraceRecords().push_back(std::move(record));
}

bool IsDebuggerAttached() {
    return false;
}

void Scope::WriteExit(std::uint32_t flags) const {
    if (m_pResult == nullptr) {
        Write(flags, m_site, m_line, KALTRACE_HEAD "<<\n");
        return;
    }
    std::uint32_t hr;
    std::memcpy(&hr, m_pResult, sizeof hr);
    Write(flags, m_site, m_line, KALTRACE_HEAD "<< hr: 0x%08x\n", hr);
}

}  // namespace trace

}  // namespace kora4
