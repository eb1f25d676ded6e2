// SPDX-License-Identifier: MIT
// Formats events as lines of text or JSON, with the time in each.
#include "kora4sim/engine/reporter.h"

#include "base/utc_time.h"

namespace kora4::tools::sim {

void Reporter::Tell(const std::string& event, const std::string& cause,
                    const std::string& words, const Json& details, Weight weight) {
    if (m_output.quiet && weight == Weight::eNews)
        return;
    if (!m_output.json) {
        m_output.Print(m_output.Paint(Style::eDim, UtcTime::Now().Clock()) + " " + words);
        return;
    }
    Json line = {{"time", UtcTime::Now().Iso()},
                 {"event", event},
                 {"cause", cause},
                 {"picture", m_picture}};
    line.update(details);
    m_output.PrintJsonLine(line);
}

}  // namespace kora4::tools::sim
