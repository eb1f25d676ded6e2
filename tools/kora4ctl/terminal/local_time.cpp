// SPDX-License-Identifier: MIT
// Reads the local time with its offset from UTC, and writes it in two forms.
#include "kora4ctl/terminal/local_time.h"

#include <cstdlib>

namespace kora4::tools {

namespace {

std::string Digits(int number, std::size_t count) {
    const std::string digits = std::to_string(number);
    return std::string(count > digits.size() ? count - digits.size() : 0, '0') + digits;
}

// File times count tenths of a microsecond.
long long TicksOf(const FILETIME& time) {
    const ULARGE_INTEGER ticks{{time.dwLowDateTime, time.dwHighDateTime}};
    return static_cast<long long>(ticks.QuadPart);
}

constexpr long long cTicksPerMinute = 600'000'000;

}  // namespace

Moment Moment::Now() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    SYSTEMTIME utc;
    Moment moment;
    FILETIME local = now;
    if (FileTimeToSystemTime(&now, &utc) &&
        SystemTimeToTzSpecificLocalTime(nullptr, &utc, &moment.m_local))
        SystemTimeToFileTime(&moment.m_local, &local);
    else
        moment.m_local = utc;
    // Rounded: the way through the calendar drops what is finer than a millisecond.
    const long long east = TicksOf(local) - TicksOf(now);
    const long long half = east < 0 ? -cTicksPerMinute / 2 : cTicksPerMinute / 2;
    moment.m_offset = static_cast<int>((east + half) / cTicksPerMinute);
    return moment;
}

std::string Moment::Clock() const {
    return Digits(m_local.wHour, 2) + ":" + Digits(m_local.wMinute, 2) + ":" +
           Digits(m_local.wSecond, 2) + "." + Digits(m_local.wMilliseconds, 3);
}

std::string Moment::Iso() const {
    const int offset = std::abs(m_offset);
    return Digits(m_local.wYear, 4) + "-" + Digits(m_local.wMonth, 2) + "-" +
           Digits(m_local.wDay, 2) + "T" + Clock() + (m_offset < 0 ? "-" : "+") +
           Digits(offset / 60, 2) + ":" + Digits(offset % 60, 2);
}

}  // namespace kora4::tools
