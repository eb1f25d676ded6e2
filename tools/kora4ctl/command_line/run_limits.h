// SPDX-License-Identifier: MIT
// --count and --timeout: how long a verb that runs on does so.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "kora4ctl/notifications/message_wait.h"
#include "process/help_text.h"

namespace kora4::tools {

// Belongs to the function that a verb runs.
class RunLimits {
  public:
    // what: what is counted, in the plural.
    void AddTo(CLI::App& verb, const std::string& what) {
        m_what = what;
        verb.add_option("--count", m_count, "end after this many " + what)
            ->transform(Within(1u, 1000000000u))
            ->type_name("N");
        verb.add_option("--timeout", m_seconds,
                        "end after this many seconds; with --count, exit with code 6 if the "
                        "time is up first")
            ->transform(Within(0.0, 1e9))
            ->type_name("S");
    }

    // Starts the clock of --timeout.
    Deadline Start() const { return m_seconds < 0 ? Deadline() : Deadline(m_seconds); }
    // Whether --count is reached.
    bool IsReached(unsigned count) const { return m_count != 0 && count >= m_count; }

    // The time is over. Failure with eTimedOut when more was wanted.
    ExitCode OnTimeout(unsigned count) const {
        if (m_count == 0)
            return ExitCode::eDone;
        throw Failure(ExitCode::eTimedOut, "After " + Decimal(static_cast<float>(m_seconds)) +
                                               " s, there were only " + std::to_string(count) +
                                               " of " + std::to_string(m_count) + " " + m_what +
                                               ".");
    }

  private:
    std::string m_what;
    unsigned m_count = 0;     // 0: no limit
    double m_seconds = -1.0;  // negative: no limit
};

}  // namespace kora4::tools
