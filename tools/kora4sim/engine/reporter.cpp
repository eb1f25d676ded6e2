// SPDX-License-Identifier: MIT
// Formats events as lines of text or JSON, with the time in each.
#include "kora4sim/engine/reporter.h"

#include <windows.h>

#include <cstdio>

namespace kora4::tools::sim {

namespace {

// "15:05:09.120"
std::string ClockText(const SYSTEMTIME& time) {
    char text[32];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u.%03u", unsigned{time.wHour},
                  unsigned{time.wMinute}, unsigned{time.wSecond}, unsigned{time.wMilliseconds});
    return text;
}

// "2026-03-09T14:05:09.120Z"
std::string UniversalTime() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    char date[32];
    std::snprintf(date, sizeof date, "%04u-%02u-%02uT", unsigned{now.wYear},
                  unsigned{now.wMonth}, unsigned{now.wDay});
    return date + ClockText(now) + "Z";
}

std::string TimeOfDay() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return ClockText(now);
}

}  // namespace

void Reporter::Tell(const std::string& event, const std::string& cause,
                    const std::string& words, const Json& details, Weight weight) {
    if (m_output.quiet && weight == Weight::eNews)
        return;
    if (!m_output.json) {
        m_output.Print(m_output.Paint(Style::eDim, TimeOfDay()) + " " + words);
        return;
    }
    Json line = {
        {"time", UniversalTime()}, {"event", event}, {"cause", cause}, {"picture", m_picture}};
    line.update(details);
    m_output.PrintJsonLine(line);
}

}  // namespace kora4::tools::sim
