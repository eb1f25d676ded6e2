// SPDX-License-Identifier: MIT
// What the store traces while a test runs: entry and exit lines, results and assertions.
#ifndef KORA4_TESTS_SUPPORT_STORE_TRACED_H
#define KORA4_TESTS_SUPPORT_STORE_TRACED_H

#include <string>
#include <string_view>
#include <vector>

#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {

// Has these categories traced for the length of a scope, and reads what the store wrote.
class StoreTrace {
  public:
    explicit StoreTrace(std::uint32_t categories) : m_flags(categories | trace::eLogFiles) {}

    std::vector<TraceLine> Read(std::string_view tag) const { return m_log.Read(tag); }

    // The texts of the assertions that failed under a tag, in order.
    std::vector<std::string> FailedAssertions(std::string_view tag) const {
        constexpr std::string_view cPrefix = "KALASSERT failed: ";
        std::vector<std::string> texts;
        for (const TraceLine& line : Read(tag)) {
            if (line.message.starts_with(cPrefix))
                texts.push_back(line.message.substr(cPrefix.size()));
        }
        return texts;
    }

    // Under whatever tag.
    std::size_t NumberOfAssertions() const {
        std::size_t count = 0;
        for (const TraceLine& line : m_log.ReadShared())
            count += line.message.starts_with("KALASSERT failed: ") ? 1u : 0u;
        return count;
    }

  private:
    TraceLog m_log;
    TraceFlags m_flags;
};

using Texts = std::vector<std::string>;

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_STORE_TRACED_H
