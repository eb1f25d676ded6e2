// SPDX-License-Identifier: MIT
// Writes a moment in its three forms.
#include "base/utc_time.h"

#include <cstdio>

namespace kora4::tools {

UtcTime UtcTime::Now() {
    UtcTime now;
    GetSystemTime(&now.m_time);
    return now;
}

std::string UtcTime::Iso() const {
    char text[64];
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", m_time.wYear,
                  m_time.wMonth, m_time.wDay, m_time.wHour, m_time.wMinute, m_time.wSecond,
                  m_time.wMilliseconds);
    return text;
}

std::string UtcTime::Clock() const {
    const std::string iso = Iso();
    return iso.substr(iso.find('T') + 1);
}

std::string UtcTime::FileStamp() const {
    std::string stamp = Iso();
    std::erase_if(stamp, [](char c) { return c == '-' || c == ':' || c == '.'; });
    return stamp;
}

}  // namespace kora4::tools
