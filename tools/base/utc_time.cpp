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

std::optional<UtcTime> UtcTime::FromFileStamp(const std::string& stamp) {
    UtcTime time;
    FILETIME ignored{};
    if (std::sscanf(stamp.c_str(), "%4hu%2hu%2huT%2hu%2hu%2hu%3huZ", &time.m_time.wYear,
                    &time.m_time.wMonth, &time.m_time.wDay, &time.m_time.wHour,
                    &time.m_time.wMinute, &time.m_time.wSecond,
                    &time.m_time.wMilliseconds) != 7 ||
        time.FileStamp() != stamp || !SystemTimeToFileTime(&time.m_time, &ignored))
        return {};
    return time;
}

UtcTime UtcTime::Next() const {
    constexpr ULONGLONG cMillisecond = 10000;  // in units of 100 ns
    FILETIME time{};
    SystemTimeToFileTime(&m_time, &time);
    ULARGE_INTEGER ticks{};
    ticks.LowPart = time.dwLowDateTime;
    ticks.HighPart = time.dwHighDateTime;
    ticks.QuadPart += cMillisecond;
    return UtcTime(FILETIME{ticks.LowPart, ticks.HighPart});
}

}  // namespace kora4::tools
