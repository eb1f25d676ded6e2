// SPDX-License-Identifier: MIT
// Moments of this machine's clock: UTC in every form, so that the lines of two programs and of
// two machines can be put side by side.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace kora4::tools {

// A point in time, to the millisecond.
class UtcTime {
  public:
    UtcTime() = default;
    explicit UtcTime(const FILETIME& time) { FileTimeToSystemTime(&time, &m_time); }
    // The time of the call.
    static UtcTime Now();

    // ISO 8601: "2031-05-01T14:03:22.123Z"
    std::string Iso() const;
    std::string Clock() const;      // "14:03:22.123Z"
    std::string FileStamp() const;  // "20310501T140322123Z", for names of files

    // None when there is no such time.
    static std::optional<UtcTime> FromFileStamp(const std::string& stamp);
    UtcTime Next() const;  // a millisecond later

  private:
    SYSTEMTIME m_time{};
};

}  // namespace kora4::tools
