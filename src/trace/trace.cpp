// SPDX-License-Identifier: MIT
// Composes a trace line and sends it to the debugger and to the log files.
#include "trace/trace.h"

#include <windows.h>

#include <cstdarg>
#include <cstddef>
#include <cstring>

#include "trace/line_text.h"
#include "trace/log_file.h"

namespace kora4::trace {

namespace {

// A statement may stand between a failed system call and the reading of its error.
class LastErrorKeeper {
  public:
    LastErrorKeeper() : m_error(GetLastError()) {}
    ~LastErrorKeeper() { SetLastError(m_error); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

  private:
    DWORD m_error;
};

const char* BaseOfTag(const char* pTag) {
    const char* const pBackslash = std::strrchr(pTag, '\\');
    return pBackslash != nullptr ? pBackslash + 1 : pTag;
}

}  // namespace

void Write(std::uint32_t flags, const Site& site, int line, const char* format, ...) {
    const LastErrorKeeper lastError;
    const char* const pBase = BaseOfTag(site.tag);

    LineText text(CP_ACP);
    text.Append(contract::cTraceHead, pBase, line, site.function);
    std::va_list arguments;
    va_start(arguments, format);
    text.AppendList(format, &arguments);
    va_end(arguments);
    text.Append("\n");
    const char* const pLine = text.End();

    OutputDebugStringA(pLine);
    if ((flags & eLogFiles) != 0)
        AppendToLogs(pBase, pLine);
}

bool IsDebuggerAttached() {
    return IsDebuggerPresent() != FALSE;
}

void ExitLine::WriteExit(std::uint32_t flags) const {
    if (m_pResult == nullptr) {
        Write(flags, m_site, m_line, msg::cExit.text);
        return;
    }
    std::uint32_t hr;
    std::memcpy(&hr, m_pResult, sizeof hr);
    Write(flags, m_site, m_line, msg::cExitResult.text, hr);
}

}  // namespace kora4::trace
