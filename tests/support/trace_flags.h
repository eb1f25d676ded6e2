// SPDX-License-Identifier: MIT
// The flag word of this process for the length of a test.
#ifndef KORA4_TESTS_SUPPORT_TRACE_FLAGS_H
#define KORA4_TESTS_SUPPORT_TRACE_FLAGS_H

#include <cstdint>

#include "trace/trace.h"

namespace kora4::test {

inline constexpr std::uint32_t cEveryCategory = 0x00018F35;

// The flag word for the length of a scope.
class TraceFlags {
  public:
    explicit TraceFlags(std::uint32_t flags) : m_saved(trace::Flags()) {
        trace::SetFlags(flags);
    }
    ~TraceFlags() { trace::SetFlags(m_saved); }
    TraceFlags(const TraceFlags&) = delete;
    TraceFlags& operator=(const TraceFlags&) = delete;

  private:
    std::uint32_t m_saved;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_TRACE_FLAGS_H
