// SPDX-License-Identifier: MIT
// The trace statement, the process-wide flag word and KALASSERT.
//
// A trace line goes to the debugger's output and, when the flag word says so, is
// appended to the module's log file and to the shared one. The facility keeps
// nothing open, takes no lock and allocates nothing. It may be called from any
// thread at any time, also while the store's named mutex is held.
//
// This header includes no platform header: the platform-free store files trace too.
#ifndef KORA4_TRACE_TRACE_H
#define KORA4_TRACE_TRACE_H

#include <atomic>
#include <cstdint>

#include "contract/trace_flags.h"

// What every format begins with: the tag's base, the source line, the function.
#define KALTRACE_HEAD "%s: %4d %s:"

namespace kora4::trace {

// Where a statement stands: the module tag (it names the log file) and the
// function's qualified name. Both are string literals.
struct Site {
    const char* tag;
    const char* function;
};

// Where the lines go beside the debugger's output: a file for each tag, and one for all. The
// folder is not created.
inline constexpr char cLogFolder[] = "C:\\KalLogs\\";
inline constexpr char cLogExtension[] = ".log";
inline constexpr char cSharedLog[] = "KalTrace";

// Read unsynchronised by every statement; replaced only by CKORA4ASL::Initialize.
inline std::atomic<std::uint32_t> g_flags{cDefaultFlags};

// The flag word of this moment. One copy serves a whole statement.
inline std::uint32_t Flags() {
    return g_flags.load(std::memory_order_relaxed);
}

// Replaces the flag word for the whole process.
inline void SetFlags(std::uint32_t flags) {
    g_flags.store(flags, std::memory_order_relaxed);
}

// Whether a statement with `mask` produces a line. The master switch overrules every bit.
constexpr bool IsEnabled(std::uint32_t flags, std::uint32_t mask) {
    return (flags & eMasterSwitch) != eMasterSwitchOff && (flags & mask) != 0;
}

// Formats and emits one line. `flags` is the caller's copy of the flag word; `format`
// begins with KALTRACE_HEAD, for which the arguments are taken from the site and `line`.
// A tag may hold a path: what follows its last backslash counts. A line of more than 1023
// characters is cut, and whatever it holds it ends with a newline. The thread's last error
// stays as it is. What a format may hold, and what becomes of texts: see line_text.h.
void Write(std::uint32_t flags, const Site& site, int line, const char* format, ...);

// True when a debugger is attached to this process.
bool IsDebuggerAttached();

// Entry and exit lines of one function: ">>" now, "<<" (or "<< hr: 0x%08x" when a
// result is bound) at the end of the scope. The result is read when the scope ends.
class Scope {
  public:
    Scope(const Site& site, int line, std::uint32_t entryMask, std::uint32_t exitMask)
        : m_site(site), m_line(line), m_exitMask(exitMask), m_pResult(nullptr) {
        Enter(entryMask);
    }

    template <typename Result>
    Scope(const Site& site, int line, std::uint32_t entryMask, std::uint32_t exitMask,
          const Result* pResult)
        : m_site(site), m_line(line), m_exitMask(exitMask), m_pResult(pResult) {
        static_assert(sizeof(Result) == sizeof(std::int32_t), "an HRESULT has 32 bits");
        Enter(entryMask);
    }

    ~Scope() {
        const std::uint32_t flags = Flags();
        if (IsEnabled(flags, m_exitMask))
            WriteExit(flags);
    }

    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

  private:
    void Enter(std::uint32_t mask) {
        const std::uint32_t flags = Flags();
        if (IsEnabled(flags, mask))
            Write(flags, m_site, m_line, KALTRACE_HEAD ">>\n");
    }
    void WriteExit(std::uint32_t flags) const;

    const Site& m_site;
    int m_line;
    std::uint32_t m_exitMask;
    const void* m_pResult;
};

}  // namespace kora4::trace

// One trace line. `text` is a string literal, the part of the format after the three
// leading fields, newline included. A suppressed statement evaluates no argument.
#define KALTRACE(mask, site, text, ...) \
    KALTRACE_AT(mask, site, __LINE__, text __VA_OPT__(, ) __VA_ARGS__)

// The same, which shows another source line than its own.
#define KALTRACE_AT(mask, site, line, text, ...)                                  \
    do {                                                                          \
        const std::uint32_t kalFlags_ = ::kora4::trace::Flags();                  \
        if (::kora4::trace::IsEnabled(kalFlags_, (mask)))                         \
            ::kora4::trace::Write(kalFlags_, (site), (line),                      \
                                  KALTRACE_HEAD text __VA_OPT__(, ) __VA_ARGS__); \
    } while (false)

// Stops in place when a debugger is attached.
#if defined(_MSC_VER)
#define KALBREAK() __debugbreak()
#else
#define KALBREAK() __asm__ __volatile__("int $3")
#endif

// Reports a failed invariant, stops in an attached debugger, and goes on: the code
// after an assertion copes with the failed condition. `text` is what the line shows.
#define KALASSERT_TEXT(site, condition, text)                                            \
    do {                                                                                 \
        if (!(condition)) [[unlikely]] {                                                 \
            KALTRACE(::kora4::trace::eAssertions, site, "KALASSERT failed: %s\n", text); \
            if (::kora4::trace::IsDebuggerAttached())                                    \
                KALBREAK();                                                              \
        }                                                                                \
    } while (false)

// The same with the expression's own source text.
#define KALASSERT(site, condition) KALASSERT_TEXT(site, condition, #condition)

#endif  // KORA4_TRACE_TRACE_H
