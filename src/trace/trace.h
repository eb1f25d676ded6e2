// SPDX-License-Identifier: MIT
// The trace statement, the process-wide trace word and KALASSERT.
//
// A trace line goes to the debugger's output and, if the trace word says so, is appended to the
// module's log file and to the shared one. The trace keeps nothing open, takes no lock and
// allocates nothing. It may be called from any thread at any time, even while the store's named
// mutex is held.
//
// The messages are defined in contract/messages, one row each: a statement names its row. This
// header includes no platform header, because the platform-free files also trace.
#pragma once

#include <atomic>
#include <cstdint>
#include <source_location>
#include <string_view>

#include "contract/messages/trace_message.h"
#include "contract/messages/trace_messages_general.h"
#include "contract/messages/trace_writers.h"
#include "contract/trace_flags.h"
#include "trace/format_check.h"

namespace kora4::trace {

// A function that writes lines: the tag of its module (which names the log file), its qualified
// name, and the categories that let its entry line and its exit line with a result through.
struct Site {
    const char* tag;
    const char* function;
    std::uint32_t entryMask;
    std::uint32_t resultMask;
};

// Not defined: a call during constant evaluation stops the compilation.
void DoesNotMatchTheCatalogue();

// The site of a function, which must be one of the catalogue's writers.
consteval Site SiteOf(const char* function) {
    Site site{};
    bool isKnown = false;
    for (const contract::TraceWriter& writer : contract::cTraceWriters) {
        if (contract::IsOf(writer, function)) {
            site = {writer.tag, function, writer.entryMask, writer.entryMask | eResults};
            isKnown = true;
        }
    }
    if (!isKnown)
        DoesNotMatchTheCatalogue();
    for (const contract::OddTraceFunction& odd : contract::cOddTraceFunctions) {
        if (std::string_view(function) == odd.name) {
            site.tag = odd.tag;
            site.resultMask = odd.resultMask;
        }
    }
    return site;
}

template <const contract::TraceMessage& message>
inline constexpr Site cSiteOf = SiteOf(message.function);

// A site and the source line that its lines show. A frame takes it as a parameter, so that its
// caller supplies the function and the line.
struct Place {
    consteval Place(const char* function,
                    const std::source_location& location = std::source_location::current())
        : site(SiteOf(function)), line(static_cast<int>(location.line())) {}

    Site site;
    int line;
};

// Read unsynchronised by every statement; replaced only by CKORA4ASL::Initialize.
inline std::atomic<std::uint32_t> g_flags{cDefaultFlags};

// The current trace word. One copy serves a whole statement.
inline std::uint32_t Flags() {
    return g_flags.load(std::memory_order_relaxed);
}

// Replaces the trace word of the whole process.
inline void SetFlags(std::uint32_t flags) {
    g_flags.store(flags, std::memory_order_relaxed);
}

// Whether a statement with `mask` produces a line. The master switch overrules every bit.
constexpr bool IsEnabled(std::uint32_t flags, std::uint32_t mask) {
    return (flags & eMasterSwitch) != eMasterSwitchOff && (flags & mask) != 0;
}

// Formats and emits one line: the head with `line` and what the site says, the message and a
// newline. `flags` is the caller's copy of the trace word. A tag may contain a path: the part
// after its last backslash counts. A line of more than 1023 characters is cut, but always ends
// with a newline. The thread's last error is preserved. See line_text.h for what a format may
// contain and how texts are written.
void Write(std::uint32_t flags, const Site& site, int line, const char* format, ...);

// True when a debugger is attached to this process.
bool IsDebuggerAttached();

// Writes the entry line of a function.
inline void Enter(const Site& site, int line) {
    const std::uint32_t flags = Flags();
    if (IsEnabled(flags, site.entryMask))
        Write(flags, site, line, msg::cEntry.text);
}

// Writes the exit line of a function at the end of the scope, with the result if one is
// bound. The result is read when the scope ends.
class ExitLine {
  public:
    ExitLine(const Site& site, int line)
        : m_site(site), m_line(line), m_mask(site.entryMask), m_pResult(nullptr) {}

    template <typename Result>
    ExitLine(const Site& site, int line, const Result* pResult)
        : m_site(site), m_line(line), m_mask(site.resultMask), m_pResult(pResult) {
        static_assert(sizeof(Result) == sizeof(std::int32_t), "an HRESULT has 32 bits");
    }

    ~ExitLine() {
        const std::uint32_t flags = Flags();
        if (IsEnabled(flags, m_mask))
            WriteExit(flags);
    }

    ExitLine(const ExitLine&) = delete;
    ExitLine& operator=(const ExitLine&) = delete;

  private:
    void WriteExit(std::uint32_t flags) const;

    const Site& m_site;
    int m_line;
    std::uint32_t m_mask;
    const void* m_pResult;
};

// Entry and exit line of one function.
class Scope : public ExitLine {
  public:
    template <typename... Result>
    explicit Scope(const Site& site, int line, const Result*... pResult)
        : ExitLine(site, line, pResult...) {
        Enter(site, line);
    }
};

}  // namespace kora4::trace

// Writes one trace line from a row that names its function. A suppressed statement evaluates no
// argument.
#define KALTRACE(message, ...)                                                \
    KALTRACE_LINE((message).mask, ::kora4::trace::cSiteOf<message>, __LINE__, \
                  (message).text __VA_OPT__(, ) __VA_ARGS__)

// The same for a row without a function; `site` supplies it.
#define KALTRACE_AS(site, message, ...) \
    KALTRACE_LINE((message).mask, site, __LINE__, (message).text __VA_OPT__(, ) __VA_ARGS__)

// What the statements are made of.
#define KALTRACE_LINE(mask, site, line, text, ...)                                             \
    do {                                                                                       \
        static_assert(::kora4::trace::FitsFormat(                                              \
                          text, decltype(::kora4::trace::TypesOf(__VA_ARGS__)){}),             \
                      "the message does not take these arguments");                            \
        const std::uint32_t kalFlags_ = ::kora4::trace::Flags();                               \
        if (::kora4::trace::IsEnabled(kalFlags_, (mask)))                                      \
            ::kora4::trace::Write(kalFlags_, (site), (line), text __VA_OPT__(, ) __VA_ARGS__); \
    } while (false)

// Writes the entry and the exit line of a function, the latter with the result that is pointed
// to, if any. Declares cSite, the site of the function.
#define KALTRACE_SCOPE(function, ...)                                               \
    static constexpr ::kora4::trace::Site cSite = ::kora4::trace::SiteOf(function); \
    const ::kora4::trace::Scope kalScope_(cSite, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

// The same with `hr`, a variable that it declares with its first value.
#define KALTRACE_RESULT(hr, first, function) \
    HRESULT hr = first;                      \
    KALTRACE_SCOPE(function, &hr)

// The whole of a function that returns the result of an expression.
#define KALTRACE_RETURN(function, expression) \
    KALTRACE_RESULT(hr, {}, function);        \
    return hr = (expression)

// Stops in place when a debugger is attached.
#if defined(_MSC_VER)
#define KALBREAK() __debugbreak()
#else
#define KALBREAK() __asm__ __volatile__("int $3")
#endif

// Reports a failed invariant, stops in an attached debugger, and continues: the code after an
// assertion handles the failed condition. The line shows the text of the row.
#define KALASSERT(site, message, condition)           \
    do {                                              \
        if (!(condition)) [[unlikely]] {              \
            KALTRACE_AS(site, message);               \
            if (::kora4::trace::IsDebuggerAttached()) \
                KALBREAK();                           \
        }                                             \
    } while (false)
