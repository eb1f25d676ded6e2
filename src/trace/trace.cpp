#include "trace/trace.h"

#include <windows.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace kora4::trace {

namespace {

constexpr std::size_t cLineChars = 1024;

constexpr char cHead[] = KALTRACE_HEAD;

// A statement may stand between a failed system call and the look at its error.
class LastErrorKeeper {
  public:
    LastErrorKeeper() : m_error(GetLastError()) {}
    ~LastErrorKeeper() { SetLastError(m_error); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

  private:
    DWORD m_error;
};

// An open log file.
class LogFile {
  public:
    explicit LogFile(const char* pPath) {
        if (fopen_s(&m_pStream, pPath, "at") != 0)
            m_pStream = nullptr;
    }
    ~LogFile() {
        if (m_pStream != nullptr)
            std::fclose(m_pStream);
    }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    void Append(const char* pLine) {
        if (m_pStream != nullptr)
            std::fputs(pLine, m_pStream);
    }

  private:
    std::FILE* m_pStream = nullptr;
};

const char* BaseOfTag(const char* pTag) {
    const char* const pBackslash = std::strrchr(pTag, '\\');
    return pBackslash != nullptr ? pBackslash + 1 : pTag;
}

// Opened and closed around the line: a crash loses nothing and no handle stays behind.
void AppendToLog(const char* pName, const char* pLine) {
    char path[MAX_PATH];
    const std::size_t length = std::strlen(pName);
    if (sizeof cLogFolder - 1 + length + sizeof cLogExtension > sizeof path)
        return;
    char* p = path;
    std::memcpy(p, cLogFolder, sizeof cLogFolder - 1);
    p += sizeof cLogFolder - 1;
    std::memcpy(p, pName, length);
    std::memcpy(p + length, cLogExtension, sizeof cLogExtension);
    LogFile(path).Append(pLine);
}

// The platform's formatter leaves the buffer without a terminator when the text does not
// fit, and stops in the middle at a wide character that the code page lacks: the buffer is
// clear beforehand, so that what was written is terminated wherever it stopped. It raises
// no error of its own, as the checked kind does in some run-times.
void AppendFormatted(char (&line)[cLineChars], const char* pFormat, std::va_list arguments) {
    const std::size_t length = std::strlen(line);
    _vsnprintf(line + length, sizeof line - 1 - length, pFormat, arguments);
}

void PutHead(char (&line)[cLineChars], const char* pFormat, ...) {
    std::va_list arguments;
    va_start(arguments, pFormat);
    AppendFormatted(line, pFormat, arguments);
    va_end(arguments);
}

// A line that was cut short still ends where the next one can begin.
void EndLine(char (&line)[cLineChars]) {
    const std::size_t length = std::strlen(line);
    if (length != 0 && line[length - 1] == '\n')
        return;
    line[length < sizeof line - 1 ? length : length - 1] = '\n';
}

}  // namespace

void Write(std::uint32_t flags, const Site& site, int line, const char* format, ...) {
    const LastErrorKeeper lastError;
    const char* const pBase = BaseOfTag(site.tag);

    char text[cLineChars] = {};
    PutHead(text, cHead, pBase, line, site.function);
    std::va_list arguments;
    va_start(arguments, format);
    AppendFormatted(text, format + (sizeof cHead - 1), arguments);
    va_end(arguments);
    EndLine(text);

    OutputDebugStringA(text);
    if ((flags & eLogFiles) != 0) {
        AppendToLog(pBase, text);
        AppendToLog(cSharedLog, text);
    }
}

bool IsDebuggerAttached() {
    return IsDebuggerPresent() != FALSE;
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

}  // namespace kora4::trace
