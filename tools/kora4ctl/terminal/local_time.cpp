// SPDX-License-Identifier: MIT
// Reads the local time with its offset from UTC, and writes it in two forms.
#include "kora4ctl/terminal/local_time.h"

#include <cstdio>
#include <cstdlib>

namespace kora4::tools {

namespace {

template <typename... Numbers>
std::string Print(const char* format, Numbers... numbers) {
    char text[64];
    std::snprintf(text, sizeof text, format, numbers...);
    return text;
}

// File times count tenths of a microsecond.
long long TicksOf(const FILETIME& time) {
    const ULARGE_INTEGER ticks{{time.dwLowDateTime, time.dwHighDateTime}};
    return static_cast<long long>(ticks.QuadPart);
}

constexpr long long cTicksPerMinute = 600'000'000;

}  // namespace

Moment::Moment(const FILETIME& time) {
    SYSTEMTIME utc{};
    FILETIME local = time;
    if (FileTimeToSystemTime(&time, &utc) &&
        SystemTimeToTzSpecificLocalTime(nullptr, &utc, &m_local))
        SystemTimeToFileTime(&m_local, &local);
    else
        m_local = utc;
    // Rounded: the way through the calendar drops what is finer than a millisecond.
    const long long east = TicksOf(local) - TicksOf(time);
    const long long half = east < 0 ? -cTicksPerMinute / 2 : cTicksPerMinute / 2;
    m_offset = static_cast<int>((east + half) / cTicksPerMinute);
}

Moment Moment::Now() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return Moment(now);
}

std::string Moment::Date() const {
    return Print("%04u-%02u-%02u", m_local.wYear, m_local.wMonth, m_local.wDay);
}

std::string Moment::Time() const {
    return Print("%02u:%02u:%02u", m_local.wHour, m_local.wMinute, m_local.wSecond);
}

std::string Moment::Clock() const {
    return Time() + Print(".%03u", m_local.wMilliseconds);
}

std::string Moment::Iso() const {
    const int offset = std::abs(m_offset);
    return Date() + "T" + Clock() +
           Print("%c%02d:%02d", m_offset < 0 ? '-' : '+', offset / 60, offset % 60);
}

std::string Moment::FileStamp() const {
    return Print("%04u%02u%02u-%02u%02u%02u-%03u", m_local.wYear, m_local.wMonth, m_local.wDay,
                 m_local.wHour, m_local.wMinute, m_local.wSecond, m_local.wMilliseconds);
}

}  // namespace kora4::tools
